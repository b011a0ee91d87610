// Lines with fewer points, through the C interface.
#include <korvale.h>

#include <cmath>
#include <cstddef>
#include <ctime>

#include <gmock/gmock.h>

#include "bands.h"
#include "tests/support/heap.h"
#include "tests/support/random.h"

namespace korvale::test {
namespace {

using testing::Each;
using testing::ElementsAre;

std::vector<int> thinned(const Numbers& line, double tolerance)
{
    const korvale_points points = points_of(line);
    std::vector<int32_t> kept(line.size() / 3, 9);
    int64_t count = 0;
    EXPECT_EQ(korvale_thin(&points, tolerance, kept.data(), &count, nullptr), KORVALE_OK);
    return {kept.begin(), kept.begin() + count};
}

TEST(DoorThin, KeepsWhatIsFartherThanTheTolerance)
{
    const Numbers line = {0, 0, 0, 1, 0.4, 0, 2, 0, 0, 3, 0.6, 0, 4, 0, 0};
    EXPECT_THAT(thinned(line, 0.5), ElementsAre(0, 3, 4));
    EXPECT_THAT(thinned(line, 1), ElementsAre(0, 4));
    EXPECT_THAT(thinned(line, 0), ElementsAre(0, 1, 2, 3, 4));
    EXPECT_THAT(thinned({0, 0, 0, 5, 0, 0, 1, 0, 0}, 0.5), ElementsAre(0, 1, 2)); // beyond the end of the stretch
    EXPECT_THAT(thinned({1, 2, 3}, 0), ElementsAre(0));
    EXPECT_THAT(thinned({1, 2, 3, 1, 2, 3, 1, 2, 3}, 0), ElementsAre(0, 2));
}

TEST(DoorThin, EveryPointLeftOutIsWithinTheTolerance)
{
    Random random(1236);
    for (int round = 0; round < rounds(200); ++round) {
        const double scale = std::pow(10, random.uniform(-9, 9)), tolerance = scale * random.uniform(0, 3);
        const Numbers line = times(scale, wandering(random, random.between(1, 200), 2));
        const std::vector<int> kept = thinned(line, tolerance);
        for (size_t k = 0; k + 1 < kept.size(); ++k) {
            const auto first = static_cast<size_t>(kept[k]), last = static_cast<size_t>(kept[k + 1]);
            const Numbers stretch = {line[3 * first], line[3 * first + 1], 0, line[3 * last], line[3 * last + 1], 0};
            for (size_t i = first; i <= last; ++i)
                ASSERT_LE(distance_from(stretch, false, line[3 * i], line[3 * i + 1]), tolerance * (1 + 1e-12));
        }
    }
}

TEST(DoorThin, OfStepsAndFadingOscillationsIsReadySoon)
{
    // The furthest point is always the next one. A walk of as many points has it anywhere: dividing there alone would
    // take 4,000 times as long here, and takes about 4 times.
    constexpr int kPoints = 200000;
    Random random(1237);
    const Numbers walk = wandering(random, kPoints, 2);
    const auto start = std::clock();
    thinned(walk, 0.1);
    const auto walked = std::clock();
    Numbers steps, fading;
    for (int i = 0; i < kPoints; ++i) {
        steps.insert(steps.end(), {static_cast<double>(i / 2), static_cast<double>((i + 1) / 2), 0});
        const double height = 100.0 * (kPoints - i) / kPoints;
        fading.insert(fading.end(), {static_cast<double>(i), i % 2 == 0 ? height : -height, 0});
    }
    const auto before = std::clock();
    EXPECT_EQ(thinned(steps, 0.1).size(), size_t{kPoints});
    EXPECT_EQ(thinned(steps, 0.8).size(), 2u);
    const std::vector<int> kept = thinned(fading, 0.1);
    EXPECT_LT(std::clock() - before, 200 * (walked - start));
    EXPECT_GT(kept.size(), 199700u); // of the last 200 points some are within the tolerance
    EXPECT_LT(kept.size(), 199990u);
    for (size_t k = 0; k + 1 < kept.size(); ++k)
        for (int i = kept[k] + 1; i < kept[k + 1]; ++i)
            ASSERT_LE(std::fabs(fading[3 * static_cast<size_t>(i) + 1]), 0.2);
}

TEST(DoorThin, SaysWhatItRefuses)
{
    const Numbers line = {0, 0, 0, 4, 0, 0};
    const korvale_points points = points_of(line), none = points_of({});
    int32_t kept[2] = {9, 9};
    int64_t count = 7;
    const auto refusal = [&](const korvale_points* of, double tolerance, int32_t* to, int64_t* number) {
        return sentence_of(KORVALE_BAD_ARGUMENT,
                           [&](korvale_error* error) { return korvale_thin(of, tolerance, to, number, error); });
    };
    EXPECT_EQ(refusal(&none, 1, kept, &count), "korvale_thin: line must have at least 1 point, but it has 0");
    EXPECT_EQ(refusal(nullptr, 1, kept, &count), "korvale_thin: line must be given, but it is null");
    EXPECT_EQ(refusal(&points, -1, kept, &count), "korvale_thin: tolerance must be 0 or more, but it is -1");
    EXPECT_EQ(refusal(&points, INFINITY, kept, &count), "korvale_thin: tolerance must be finite, but it is inf");
    EXPECT_EQ(refusal(&points, 1, nullptr, &count), "korvale_thin: kept must be given, but it is null");
    EXPECT_EQ(refusal(&points, 1, kept, nullptr), "korvale_thin: count must be given, but it is null");
    EXPECT_THAT(kept, Each(9));
    EXPECT_EQ(count, 7);
}

TEST(DoorThin, AnExhaustedHeapWritesNothing)
{
    NEEDS_HEAP_FAILURES();
    const Numbers line = {0, 0, 0, 0.1, 0.4, 0, 0.2, 0, 0, 0.3, 0.6, 0, 0.4, 0, 0};
    const korvale_points points = points_of(line);
    const int64_t failed = fail_each_allocation([&](int64_t) {
        int32_t kept[5] = {9, 9, 9, 9, 9};
        int64_t count = 7;
        if (korvale_thin(&points, 0.05, kept, &count, nullptr) == KORVALE_NO_MEMORY) {
            EXPECT_THAT(kept, Each(9));
            EXPECT_EQ(count, 7);
        }
    });
    EXPECT_GE(failed, 3);
}

} // namespace
} // namespace korvale::test
