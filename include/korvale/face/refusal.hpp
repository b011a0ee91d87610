#pragma once

#include <charconv>
#include <cstddef>
#include <cstdlib>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>

#include "../korvale_c.h"

namespace korvale {
namespace detail {

/// The shortest text that reads back as `value`, under every locale.
template <class Number>
std::string text_of(Number value)
{
    char text[32];
    return {text, std::to_chars(text, text + sizeof text, value).ptr};
}

/// Throws; ends a program that is compiled without exceptions.
template <class Exception>
[[noreturn]] void raise([[maybe_unused]] Exception&& exception)
{
#if defined(__cpp_exceptions)
    throw std::forward<Exception>(exception);
#else
    std::abort();
#endif
}

} // namespace detail

/// An argument that cannot be used. `what()` is one sentence: the function, the argument, what it must be, what came.
class Error : public std::invalid_argument {
public:
    /// "function: argument must `must`, but `but`".
    Error(std::string_view function, std::string_view argument, std::string_view must, std::string_view but)
        : std::invalid_argument(std::string(function) + ": " + std::string(argument) + " must " + std::string(must) +
                                ", but " + std::string(but)),
          function_(function), argument_(argument)
    {
    }

    /// The function or member function that refuses, such as "offset" or "Relaxer::step".
    const std::string& function() const noexcept { return function_; }

    /// The name of the argument it refuses.
    const std::string& argument() const noexcept { return argument_; }

private:
    std::string function_, argument_;
};

/// An equation that is refused: `what()` quotes it and says which word, where, and why.
class EquationError : public Error {
public:
    /// `text` is refused from character `place` on, where `word` stands.
    EquationError(std::string_view text, std::size_t place, std::string_view word, std::string_view why)
        : Error("Equations::add", "text", "be an equation",
                "\"" + std::string(text) + "\" is refused at character " + detail::text_of(place + 1) + ": " +
                    std::string(why)),
          place_(place), word_(word)
    {
    }

    /// What the C interface tells.
    explicit EquationError(const korvale_error& error)
        : Error("Equations::add", error.argument, error.wanted, error.given),
          place_(static_cast<std::size_t>(error.place)), word_(error.word)
    {
    }

    /// Where the trouble starts, counted in characters (bytes) from 0.
    std::size_t place() const noexcept { return place_; }

    /// The word or sign there; empty at the end of the text. One of more than 63 characters ends in "...".
    const std::string& word() const noexcept { return word_; }

private:
    std::size_t place_;
    std::string word_;
};

} // namespace korvale
