#pragma once

#include "points.hpp"

namespace korvale {

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
