#pragma once

#include <cstdio>
#include <cstring>
#include <exception>
#include <memory>
#include <new>
#include <optional>
#include <type_traits>
#include <variant>

#include "refusal.hpp"

namespace korvale {

/// Why a call could not do what it was asked for: what its exception would say, as a value.
class Failure {
public:
    /// What the C interface tells, in the name of a function of this one, whose name has to stay.
    Failure(const char* function, korvale_status status, const korvale_error& error) noexcept
        : function_(function), status_(status)
    {
        if (status != KORVALE_NO_MEMORY)
            tell(error);
    }

    /// An argument that cannot be used.
    Failure(const char* function, std::string_view argument, std::string_view must, std::string_view but,
            korvale_status status = KORVALE_BAD_ARGUMENT) noexcept
        : function_(function), status_(status)
    {
        korvale_error error;
        error.place = -1;
        error.word[0] = '\0';
        write(error.argument, argument);
        write(error.wanted, must);
        write(error.given, but);
        tell(error);
    }

    /// An equation that is refused.
    explicit Failure(const EquationError& error) noexcept : function_("Equations::add"), status_(KORVALE_BAD_EQUATION)
    {
        korvale_error told;
        told.place = static_cast<std::int32_t>(error.place());
        write(told.word, error.word());
        write(told.argument, error.argument());
        write(told.wanted, "be an equation");
        const std::string_view sentence = error.what();
        write(told.given, sentence.substr(sentence.find(", but ") + 6));
        tell(told);
    }

    /// An exhausted heap.
    static Failure of_memory(const char* function) noexcept { return Failure(function); }

    /// Copies tell the same; where the heap has no room for it, that is what they tell.
    ///@{
    Failure(const Failure& other) noexcept : function_(other.function_), status_(other.status_)
    {
        if (other.told_)
            tell(*other.told_);
    }
    Failure(Failure&&) noexcept = default;
    Failure& operator=(Failure other) noexcept
    {
        function_ = other.function_;
        status_ = other.status_;
        told_ = std::move(other.told_);
        return *this;
    }
    ///@}

    /// KORVALE_BAD_ARGUMENT, KORVALE_BAD_EQUATION, KORVALE_NO_MEMORY or KORVALE_STOPPED.
    korvale_status status() const noexcept { return status_; }

    /// The function or member function that failed, such as "offset" or "Relaxer::step".
    std::string_view function() const noexcept { return function_; }

    /// The argument it refuses; empty where the heap is exhausted.
    std::string_view argument() const noexcept { return told_ ? told_->argument : ""; }

    /// The whole sentence: the function, the argument, what it must be, what came.
    const char* what() const noexcept { return told_ ? told_->text : "the heap is exhausted"; }

    /// Of an equation, where the trouble starts, in characters (bytes) from 0; else -1.
    std::ptrdiff_t place() const noexcept { return told_ ? told_->place : -1; }

    /// Of an equation, the word or sign there; else empty.
    std::string_view word() const noexcept { return told_ ? told_->word : ""; }

    /// Throws what the function without `try_` throws.
    [[noreturn]] void raise() const
    {
        if (!told_)
            detail::raise(std::bad_alloc());
        if (status_ == KORVALE_BAD_EQUATION)
            detail::raise(EquationError(*told_));
        detail::raise(Error(function_, told_->argument, told_->wanted, told_->given));
    }

private:
    struct Free {
        void operator()(korvale_error* error) const noexcept { std::free(error); }
    };

    explicit Failure(const char* function) noexcept : function_(function), status_(KORVALE_NO_MEMORY) {}

    template <std::size_t size>
    static void write(char (&place)[size], std::string_view text) noexcept
    {
        std::snprintf(place, size, "%.*s", static_cast<int>(text.size()), text.data());
    }

    void tell(const korvale_error& error) noexcept
    {
        told_.reset(static_cast<korvale_error*>(std::malloc(sizeof error)));
        if (!told_) {
            status_ = KORVALE_NO_MEMORY;
            return;
        }
        *told_ = error;
        for (const char* object : {"grid", "relaxer"}) // here the value that is asked, and no argument
            if (std::string_view(error.argument) == object)
                std::snprintf(told_->argument, sizeof told_->argument, "the %s", object);
        std::snprintf(told_->text, sizeof told_->text, "%s: %s must %s, but %s", function_, told_->argument,
                      error.wanted, error.given);
    }

    const char* function_;
    korvale_status status_;
    std::unique_ptr<korvale_error, Free> told_; // null where the heap is exhausted
};

/// What a function whose name begins with `try_` gives: a value, or why there is none. Nothing is thrown.
///
/// ```
/// if (auto border = korvale::try_offset(outline, 0.5))
///     draw(border->points);
/// else
///     std::puts(border.error().what());
/// ```
template <class T>
class [[nodiscard]] Result {
public:
    using value_type = T; ///< of the value

    /// A value, or a failure.
    ///@{
    Result(T value) : either_(std::in_place_index<0>, std::move(value)) {}                    // NOLINT
    Result(Failure failure) noexcept : either_(std::in_place_index<1>, std::move(failure)) {} // NOLINT
    ///@}

    /// Whether there is a value.
    ///@{
    bool has_value() const noexcept { return either_.index() == 0; }
    explicit operator bool() const noexcept { return has_value(); }
    ///@}

    /// The value, which has to be there.
    ///@{
    T& operator*() & noexcept { return *std::get_if<0>(&either_); }
    const T& operator*() const& noexcept { return *std::get_if<0>(&either_); }
    T&& operator*() && noexcept { return std::move(*std::get_if<0>(&either_)); }
    T* operator->() noexcept { return std::get_if<0>(&either_); }
    const T* operator->() const noexcept { return std::get_if<0>(&either_); }
    ///@}

    /// The value; where there is none, this throws what the function without `try_` throws.
    ///@{
    T& value() &
    {
        require();
        return **this;
    }
    const T& value() const&
    {
        require();
        return **this;
    }
    T value() &&
    {
        require();
        return *std::move(*this);
    }
    ///@}

    /// The value, or another one.
    template <class U>
    T value_or(U&& other) &&
    {
        return has_value() ? *std::move(*this) : static_cast<T>(std::forward<U>(other));
    }

    /// Why there is no value, where there is none.
    const Failure& error() const noexcept { return *std::get_if<1>(&either_); }

private:
    void require() const
    {
        if (!has_value())
            error().raise();
    }

    std::variant<T, Failure> either_;
};

/// Whether all is done, or why not.
template <>
class [[nodiscard]] Result<void> {
public:
    using value_type = void; ///< there is none

    /// All is done, or a failure.
    ///@{
    Result() noexcept = default;
    Result(Failure failure) noexcept : failure_(std::move(failure)) {} // NOLINT
    ///@}

    /// Whether all is done.
    ///@{
    bool has_value() const noexcept { return !failure_; }
    explicit operator bool() const noexcept { return has_value(); }
    ///@}

    /// Throws what the function without `try_` throws, where not all is done.
    void value() const
    {
        if (failure_)
            failure_->raise();
    }

    /// Why not all is done, where it is not.
    const Failure& error() const noexcept { return *failure_; }

private:
    std::optional<Failure> failure_;
};

namespace detail {

/// What `work` throws; null where it throws nothing.
template <class Work>
std::exception_ptr caught(Work work) noexcept
{
#if defined(__cpp_exceptions)
    try {
        work();
    } catch (...) {
        return std::current_exception();
    }
#else
    work();
#endif
    return nullptr;
}

/// The result of `work`, which may make containers of the standard library: they throw where the heap is exhausted.
template <class Work>
std::invoke_result_t<Work> within_memory([[maybe_unused]] const char* function, Work work)
{
#if defined(__cpp_exceptions)
    try {
        return work();
    } catch (const std::bad_alloc&) {
        return Failure::of_memory(function);
    } catch (const std::length_error&) {
        return Failure::of_memory(function);
    }
#else
    return work();
#endif
}

/// Calls a function of the C interface, which takes an error record last, in the name of one of this.
template <class Call>
Result<void> done(const char* function, Call call)
{
    korvale_error error;
    if (const korvale_status status = call(&error); status != KORVALE_OK)
        return Failure(function, status, error);
    return {};
}

/// The same, with a value that the call fills.
template <class T, class Call>
Result<T> given(const char* function, T& value, Call call)
{
    korvale_error error;
    if (const korvale_status status = call(&error); status != KORVALE_OK)
        return Failure(function, status, error);
    return std::move(value);
}

/// The same, throwing.
template <class Call>
void call(const char* function, Call call)
{
    done(function, call).value();
}

/// Throws what a call of the C interface tells, in the name of a function of this one.
inline void check(const char* function, korvale_status status, const korvale_error& error)
{
    if (status != KORVALE_OK)
        Failure(function, status, error).raise();
}

} // namespace detail
} // namespace korvale
