// The set of numbers against the standard library's.
#include "door/internal/number_set.h"

#include <set>

#include <gtest/gtest.h>

#include "tests/support/random.h"

namespace korvale::test {
using namespace door;

namespace {

TEST(NumberSet, FindsTheNextNumberAsASortedSetDoes)
{
    Random random(1);
    for (const int bound : {1, 2, 63, 64, 65, 4096, 4097, 300000}) {
        NumberSet numbers(bound);
        std::set<int32_t> expected;
        for (int step = 0; step < rounds(2000); ++step) {
            const int number = random.below(bound), from = random.below(bound);
            if (random.one_in(2)) {
                numbers.insert(number);
                expected.insert(number);
            } else {
                const auto next = expected.lower_bound(number); // one that is there, if any is
                const int32_t gone = next != expected.end() ? *next : number;
                if (expected.erase(gone) != 0)
                    numbers.erase(gone);
            }
            const auto next = expected.lower_bound(from);
            ASSERT_EQ(numbers.next(from), next == expected.end() ? -1 : *next) << "of " << bound;
            ASSERT_EQ(numbers.has(from), expected.contains(from)) << "of " << bound;
        }
    }
}

TEST(NumberSet, OneOfNoNumbersIsEmpty)
{
    const NumberSet numbers(0);
    EXPECT_EQ(numbers.next(0), -1);
}

} // namespace
} // namespace korvale::test
