#pragma once

#include <cstdint>
#include <cstdlib>
#include <string>

#include <gtest/gtest.h>

#include "tests/support/draws.h"

namespace korvale::test {

/// Random numbers of a test: every failure during their life names the seed.
class Random : public Draws {
public:
    explicit Random(uint64_t seed)
        : Draws(seed), trace_(__FILE__, __LINE__, "random input of seed " + std::to_string(seed))
    {
    }

private:
    testing::ScopedTrace trace_;
};

/// How many rounds a random test makes that makes `n` by default: the environment's KORVALE_ROUNDS times as many. A
/// longer run begins with the rounds of the shorter one.
inline int rounds(int n)
{
    const char* const factor = std::getenv("KORVALE_ROUNDS");
    return factor == nullptr ? n : n * std::atoi(factor);
}

} // namespace korvale::test
