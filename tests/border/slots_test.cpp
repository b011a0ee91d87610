// Names of vertices against a list from which the dead are erased one by one.
#include "border/internal/slots.h"

#include <algorithm>
#include <numeric>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/random.h"

namespace korvale::test {
using namespace border;

TEST(Slots, NameTheSameVerticesThroughManyDeaths)
{
    Random random(1);
    for (int round = 0; round < rounds(500) && !testing::Test::HasFailure(); ++round) {
        const int n = 1 + random.below(60);
        std::vector<double> places(n);
        std::vector<int32_t> names(n), live(n);
        std::iota(live.begin(), live.end(), 0);
        Slots slots{0, places.data(), names.data()};
        name_places(slots, n);
        while (live.size() > 1) {
            std::vector<int32_t> gaps;
            for (int32_t i = 0; i < static_cast<int32_t>(live.size()); ++i)
                if (random.one_in(8))
                    gaps.push_back(i);
            if (gaps.empty() || gaps.size() == live.size())
                continue;
            bury_places(slots, gaps.data(), static_cast<int32_t>(gaps.size()), static_cast<int32_t>(live.size()));
            for (auto gap = gaps.rbegin(); gap != gaps.rend(); ++gap)
                live.erase(live.begin() + *gap);
            for (int32_t slot = 0; slot < n; ++slot) {
                const auto found = std::find(live.begin(), live.end(), slot);
                if (found == live.end())
                    EXPECT_LT(place_of(slots, slot), 0);
                else
                    EXPECT_EQ(place_of(slots, slot), found - live.begin());
            }
            const int32_t* const slot = slots.slot;
            EXPECT_EQ(std::vector<int32_t>(slot, slot + live.size()), live);
        }
    }
}

} // namespace korvale::test
