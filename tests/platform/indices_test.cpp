// are_indices, with a wrong value at every place of a group of lanes.
#include "platform/internal/indices.h"

#include <cstdint>
#include <limits>
#include <vector>

#include <gtest/gtest.h>

namespace korvale::test {
namespace {

using platform::are_indices;

TEST(Indices, OneWrongValueIsSeenAtEveryPlace)
{
    for (int count = 1; count < 14; ++count)
        for (int place = 0; place < count; ++place) {
            std::vector<int32_t> values(static_cast<size_t>(count), 6);
            EXPECT_TRUE(are_indices(values.data(), count, 7));
            for (int32_t wrong : {-1, 7, 8, std::numeric_limits<int32_t>::min(), std::numeric_limits<int32_t>::max()}) {
                values[static_cast<size_t>(place)] = wrong;
                EXPECT_FALSE(are_indices(values.data(), count, 7)) << wrong << " at " << place << " of " << count;
            }
        }
}

TEST(Indices, TheFirstAndTheLastAreIndices)
{
    const int32_t most = std::numeric_limits<int32_t>::max();
    const int32_t values[] = {0, most - 1, 1, 5, 0};
    EXPECT_TRUE(are_indices(values, 5, most));
    EXPECT_FALSE(are_indices(values, 5, most - 1));
    EXPECT_TRUE(are_indices(values, 1, 1));
}

TEST(Indices, ALimitBelowOneHasNone)
{
    const int32_t values[] = {0, 0, 0, 0, -5};
    EXPECT_TRUE(are_indices(values, 0, 0));
    for (int32_t limit : {0, -1, std::numeric_limits<int32_t>::min()}) {
        EXPECT_FALSE(are_indices(values, 5, limit));
        EXPECT_FALSE(are_indices(values + 4, 1, limit));
    }
}

} // namespace
} // namespace korvale::test
