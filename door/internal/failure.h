#pragma once

#include <concepts>
#include <cstddef>
#include <cstring>
#include <new>
#include <string_view>

#include "include/korvale_c.h"
#include "platform/internal/decimals.h"

// How the door fails. Below the exported functions a `Refusal` is thrown wherever an argument cannot be used, and
// std::bad_alloc where the heap is exhausted; `answer` turns both into a status and a text, and nothing leaves it.
namespace korvale::door {

/// Copies `text` into a place of an error; what is too long ends in "...".
template <size_t kSize>
void put(char (&place)[kSize], std::string_view text)
{
    constexpr std::string_view kMore = "...";
    const bool fits = text.size() < kSize;
    const size_t kept = fits ? text.size() : kSize - 1 - kMore.size();
    std::memcpy(place, text.data(), kept);
    if (!fits)
        std::memcpy(place + kept, kMore.data(), kMore.size());
    place[fits ? kept : kSize - 1] = '\0';
}

/// A sentence put together without a heap. What does not fit is left out.
class Text {
public:
    Text& operator<<(std::string_view text)
    {
        const size_t room = sizeof text_ - size_;
        const size_t n = text.size() < room ? text.size() : room;
        std::memcpy(text_ + size_, text.data(), n);
        size_ += n;
        return *this;
    }

    /// The shortest text that reads back as the number, under every locale.
    Text& operator<<(double number)
    {
        char digits[32];
        const char* const end = platform::write_shortest(digits, sizeof digits, number);
        return *this << std::string_view(digits, static_cast<size_t>(end - digits));
    }

    /// Digit by digit: std::to_chars of integers would add a table of digits to the exported names.
    template <std::integral Integer>
    Text& operator<<(Integer number)
    {
        char digits[24];
        char* const end = digits + sizeof digits;
        char* first = end;
        const bool is_negative = number < 0;
        auto rest = static_cast<uint64_t>(number);
        if (is_negative)
            rest = 0 - rest;
        do
            *--first = static_cast<char>('0' + rest % 10);
        while ((rest /= 10) != 0);
        if (is_negative)
            *--first = '-';
        return *this << std::string_view(first, static_cast<size_t>(end - first));
    }

    operator std::string_view() const { return {text_, size_}; } // NOLINT: a text is one

private:
    char text_[1024];
    size_t size_ = 0;
};

/// "1 point", "3 points".
Text counted(int64_t n, std::string_view noun);

/// "(1, 2, nan)".
Text text_of_point(const double* p);

/// An argument that cannot be used: "`argument` must `wanted`, but `given`".
struct Refusal {
    korvale_error error;

    Refusal(std::string_view argument, std::string_view wanted, std::string_view given);

    /// The text of an equation, from character `place` on, where `word` stands.
    Refusal(int32_t place, std::string_view word, std::string_view given);
};

/// A function of the host has asked to stop.
struct Stop {};

/// Whom long work, or a part of it, tells how far it is.
struct Telling {
    korvale_progress progress = nullptr; ///< null: nobody
    void* user = nullptr;                ///< handed to `progress`
    double before = 0.0;                 ///< of the whole work done before this part
    double share = 1.0;                  ///< of the whole work that this part is

    /// Tells that `done` of this part is done, from 0 to 1, and whether to go on.
    bool goes_on(double done) const { return progress == nullptr || progress(before + share * done, user) != 0; }

    /// The same; throws where the work has to stop.
    void tell(double done) const
    {
        if (!goes_on(done))
            throw Stop();
    }

    /// A part of this part.
    Telling part(double first, double size) const { return {progress, user, before + share * first, share * size}; }
};

/// Asks after every so many steps of long work whether to go on. The number is chosen for each work, as
/// kEdgesPerQuestion: some milliseconds, so a host that stops it does not wait, and the question costs nothing beside
/// the steps.
class Asking {
public:
    Asking(const Telling& telling, int32_t each) : telling_(telling), each_(each), left_(each) {}

    /// A step has been taken, after which `done` of the work is done; throws where it has to stop.
    void step(double done)
    {
        if (--left_ > 0)
            return;
        left_ = each_;
        telling_.tell(done);
    }

private:
    Telling telling_;
    int32_t each_, left_;
};

/// Writes down what happened, for `answer`.
///@{
korvale_status tell(const Refusal& refusal, const char* function, korvale_error* error);
korvale_status tell(korvale_status status, std::string_view text, const char* function, korvale_error* error);
///@}

/// Runs the body of an exported function and returns its status.
template <class Body>
korvale_status answer(korvale_error* error, const char* function, Body body) noexcept
{
    try {
        body();
    } catch (const Refusal& refusal) {
        return tell(refusal, function, error);
    } catch (const std::bad_alloc&) {
        return tell(KORVALE_NO_MEMORY, "the heap is exhausted", function, error);
    } catch (const Stop&) {
        return tell(KORVALE_STOPPED, "it was asked to stop", function, error);
    }
    if (error != nullptr)
        error->status = KORVALE_OK;
    return KORVALE_OK;
}

/// Throws where the heap had no room: for results of the library that tell of nothing else once arguments are sound.
inline void require_done(int result)
{
    if (result != 1)
        throw std::bad_alloc();
}

} // namespace korvale::door
