#pragma once

#include <cstdint>

#include "platform/internal/namespaces.h"

// The classic 15-bit linear congruential generator, that of the process and those of calls that draw by themselves, and
// one of 64 bits for what has to be finer.
namespace korvale::platform {

inline constexpr uint32_t kMultiplier = 214013;
inline constexpr uint32_t kIncrement = 2531011;

constexpr uint32_t following(uint32_t state)
{
    return state * kMultiplier + kIncrement;
}

/// The number of a state, 0 to 32767: its bits 16 to 30.
constexpr int number_of(uint32_t state)
{
    return static_cast<int>(state >> 16 & 0x7fff);
}

// Four steps are one step of the same form (leapfrog): state * multiplier^4 + the state four steps after 0.
inline constexpr uint32_t kMultiplierOfFour = kMultiplier * kMultiplier * kMultiplier * kMultiplier;
inline constexpr uint32_t kIncrementOfFour = following(following(following(following(0))));

/// Writes the next `count` numbers after `state`, at first the seed. Returns the state of the last.
inline uint32_t draw_after(uint32_t state, int* numbers, int count)
{
    uint32_t a = following(state), b = following(a), c = following(b), d = following(c);
    int i = 0;
    for (; i + 4 <= count; i += 4) { // four independent chains: one alone waits for its products
        numbers[i] = number_of(a);
        numbers[i + 1] = number_of(b);
        numbers[i + 2] = number_of(c);
        numbers[i + 3] = number_of(d);
        state = d;
        a = a * kMultiplierOfFour + kIncrementOfFour;
        b = b * kMultiplierOfFour + kIncrementOfFour;
        c = c * kMultiplierOfFour + kIncrementOfFour;
        d = d * kMultiplierOfFour + kIncrementOfFour;
    }
    for (; i < count; ++i) {
        state = following(state);
        numbers[i] = number_of(state);
    }
    return state;
}

/// The next 64 bits after a state, which is a seed at first: SplitMix64 (Guy Steele, Doug Lea and Christine Flood, Fast
/// Splittable Pseudorandom Number Generators, 2014).
inline uint64_t draw_word(uint64_t& state)
{
    state += 0x9e3779b97f4a7c15u;
    uint64_t word = state;
    word = (word ^ word >> 30) * 0xbf58476d1ce4e5b9u;
    word = (word ^ word >> 27) * 0x94d049bb133111ebu;
    return word ^ word >> 31;
}

} // namespace korvale::platform
