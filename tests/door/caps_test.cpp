// Caps of bands: literal places, distances from the ends, and what keeps a cap away.
#include <algorithm>
#include <array>
#include <cmath>

#include <gmock/gmock.h>

#include "bands.h"
#include "tests/support/heap.h"
#include "tests/support/random.h"

namespace korvale::test {
namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;

/// A band with its caps.
struct Capped {
    Numbers points;
    std::vector<int64_t> starts;
    std::vector<int32_t> sources;
    bool crosses;
    std::array<int64_t, 2> crossing;

    size_t size() const { return sources.size(); }
    double x(size_t i) const { return points[3 * i]; }
    double y(size_t i) const { return points[3 * i + 1]; }
};

korvale_status lay(const Numbers& line, double distance, korvale_band_options options, Capped& capped,
                   korvale_error* error)
{
    Numbers outline(2 * line.size());
    korvale_band_result band = {outline.data(), nullptr, nullptr, 0, 0, {0, 0}};
    korvale_rings* rings = nullptr;
    options.outlines = &rings;
    const korvale_points points = points_of(line);
    if (const korvale_status status = korvale_band(&points, distance, &options, &band, error); status != KORVALE_OK) {
        EXPECT_EQ(rings, nullptr);
        return status;
    }
    const korvale_ring_arrays all = korvale_rings_view(rings);
    const int64_t count = all.starts[all.rings];
    capped = {{all.points, all.points + 3 * count},
              {all.starts, all.starts + all.rings + 1},
              {all.sources, all.sources + count},
              band.crosses != 0,
              {band.crossing[0], band.crossing[1]}};
    EXPECT_EQ(all.parents[0], -1);
    EXPECT_EQ(all.births[0] + all.ends[0], 0);
    EXPECT_EQ(all.collapsed[0] != 0, band.collapsed != 0);
    korvale_rings_free(rings);
    return KORVALE_OK;
}

Capped capped(const Numbers& line, double distance, const korvale_band_options& options)
{
    Capped made;
    korvale_error error;
    EXPECT_EQ(lay(line, distance, options, made, &error), KORVALE_OK) << error.text;
    return made;
}

korvale_band_options with_cap(int32_t cap, int32_t both_sides, double tolerance = 0)
{
    korvale_band_options options = options_of(both_sides);
    options.cap = cap;
    options.tolerance = tolerance;
    return options;
}

void expect_near(const Capped& band, const std::vector<std::array<double, 2>>& expected)
{
    ASSERT_EQ(band.size(), expected.size());
    for (size_t i = 0; i < expected.size(); ++i) { // the outline reaches 1,000 for the sweep: rounded by 1e-13 of that
        EXPECT_NEAR(band.x(i), expected[i][0], 1e-13) << i;
        EXPECT_NEAR(band.y(i), expected[i][1], 1e-13) << i;
    }
}

const Numbers kStraight = {0, 0, 0, 4, 0, 0};

TEST(DoorCaps, FlatOnesAddNothing)
{
    const Capped band = capped(kStraight, 1, with_cap(KORVALE_CAP_FLAT, 1));
    expect_near(band, {{0, -1}, {4, -1}, {4, 1}, {0, 1}});
    EXPECT_THAT(band.sources, ElementsAre(0, 1, 1, 0));
    EXPECT_THAT(band.starts, ElementsAre(0, 4));
}

TEST(DoorCaps, SquareOnesReachADistanceBeyondTheEnds)
{
    const Capped both = capped(kStraight, 1, with_cap(KORVALE_CAP_SQUARE, 1));
    expect_near(both, {{0, -1}, {4, -1}, {5, -1}, {5, 1}, {4, 1}, {0, 1}, {-1, 1}, {-1, -1}});
    EXPECT_THAT(both.sources, ElementsAre(0, 1, 1, 1, 1, 0, 0, 0));
    EXPECT_FALSE(both.crosses);
    const Capped right = capped(kStraight, 1, with_cap(KORVALE_CAP_SQUARE, 0));
    expect_near(right, {{0, -1}, {4, -1}, {5, -1}, {5, 0}, {4, 0}, {0, 0}, {-1, 0}, {-1, -1}});
    EXPECT_FALSE(right.crosses);
    const Capped left = capped(kStraight, -1, with_cap(KORVALE_CAP_SQUARE, 0));
    expect_near(left, {{0, 1}, {4, 1}, {5, 1}, {5, 0}, {4, 0}, {0, 0}, {-1, 0}, {-1, 1}});
}

TEST(DoorCaps, RoundOnesAreOutsideTheArc)
{
    // A quarter halved once has corners of an octagon, tan(22.5 degrees) off the axes, 1.0824 from the end.
    const double off = std::sqrt(2.0) - 1;
    const Capped both = capped(kStraight, 1, with_cap(KORVALE_CAP_ROUND, 1, 0.09));
    expect_near(both, {{0, -1},
                       {4, -1},
                       {4 + off, -1},
                       {5, -off},
                       {5, off},
                       {4 + off, 1},
                       {4, 1},
                       {0, 1},
                       {-off, 1},
                       {-1, off},
                       {-1, -off},
                       {-off, -1}});
    const Capped right = capped(kStraight, 1, with_cap(KORVALE_CAP_ROUND, 0, 0.09));
    expect_near(right,
                {{0, -1}, {4, -1}, {4 + off, -1}, {5, -off}, {5, 0}, {4, 0}, {0, 0}, {-1, 0}, {-1, -off}, {-off, -1}});
    EXPECT_THAT(right.sources, ElementsAre(0, 1, 1, 1, 1, 1, 0, 0, 0, 0));
    EXPECT_EQ(capped(kStraight, 1, with_cap(KORVALE_CAP_ROUND, 1, 0.08)).size(), 20u);
    EXPECT_EQ(capped(kStraight, 1, with_cap(KORVALE_CAP_ROUND, 1)).size(), 36u); // 1 / 200 wants 8 corners a quarter
}

TEST(DoorCaps, AMiterLimitCutsCornersOfCapsOff)
{
    korvale_band_options options = with_cap(KORVALE_CAP_SQUARE, 1);
    options.miter_limit = 1.42;
    EXPECT_EQ(capped(kStraight, 1, options).size(), 8u);
    options.miter_limit = 1.41;
    EXPECT_EQ(capped(kStraight, 1, options).size(), 12u);
    options.miter_limit = 1; // within a millionth: 1024 corners a quarter are 1 + (pi / 4096)^2 / 2 away
    const Capped band = capped(kStraight, 1, options);
    EXPECT_EQ(band.size(), 4100u);
    for (size_t i = 0; i < band.size(); ++i)
        EXPECT_LE(distance_from(kStraight, false, band.x(i), band.y(i)), 1 + 3e-07);
}

TEST(DoorCaps, BelongToTheEndsAndLeaveTheRestOfTheBandAlone)
{
    Random random(7);
    for (int round = 0; round < 300; ++round) {
        Numbers line = {0, 0, 0};
        double heading = random.uniform(0, 6);
        for (int i = random.between(1, 9); i > 0; --i) {
            heading += random.uniform(-1.2, 1.2);
            const double length = random.uniform(1, 4), x = line[line.size() - 3], y = line[line.size() - 2];
            line.insert(line.end(), {x + length * std::cos(heading), y + length * std::sin(heading), 0});
        }
        const size_t n = line.size() / 3;
        const double width = random.uniform(0.05, 0.6), distance = round % 2 == 0 ? width : -width;
        const double tolerance = random.uniform(0.001, 0.2);
        const korvale_band_options how =
            with_cap(round % 3 == 0 ? KORVALE_CAP_SQUARE : KORVALE_CAP_ROUND, round % 5 < 3, tolerance);
        const Capped band = capped(line, distance, how);
        const Laid plain = laid(line, distance, options_of(how.both_sides));
        ASSERT_EQ(plain.narrowed.front() + plain.narrowed.back() + plain.removed.front() + plain.removed.back(), 0);
        const size_t cap = (band.size() - 2 * n) / 2;
        ASSERT_GT(cap, 0u);
        ASSERT_EQ(band.size(), 2 * n + 2 * cap);
        Numbers rest(band.points.begin(), band.points.begin() + static_cast<std::ptrdiff_t>(3 * n));
        rest.insert(rest.end(), band.points.begin() + static_cast<std::ptrdiff_t>(3 * (n + cap)),
                    band.points.begin() + static_cast<std::ptrdiff_t>(3 * (2 * n + cap)));
        ASSERT_THAT(rest, ElementsAreArray(plain.outline));
        const double most = how.cap == KORVALE_CAP_SQUARE ? std::sqrt(2.0) * width : width + tolerance;
        for (size_t i = 0; i < band.size(); ++i) {
            const bool is_end = i >= n && i < n + cap, is_start = i >= 2 * n + cap;
            const size_t source = is_end ? n - 1 : is_start ? 0 : i < n ? i : 2 * n + cap - 1 - i;
            ASSERT_EQ(band.sources[i], static_cast<int32_t>(source));
            if (!is_end && !is_start)
                continue;
            const double away = std::hypot(band.x(i) - line[3 * source], band.y(i) - line[3 * source + 1]);
            ASSERT_GE(away, width * (1 - 1e-9));
            ASSERT_LE(away, most * (1 + 1e-9));
            // Edges of a cap touch the circle around the end.
            const size_t next = i + 1 == band.size() ? 0 : i + 1;
            if ((is_end && i + 1 < n + cap) || (is_start && i + 1 < band.size())) {
                const Numbers edge = {band.x(i), band.y(i), 0, band.x(next), band.y(next), 0};
                ASSERT_NEAR(distance_from(edge, false, line[3 * source], line[3 * source + 1]), width,
                            1e-12); // rounded by 1e-13 in the sweep
            }
        }
    }
}

TEST(DoorCaps, ScaleWithTheLineByPowersOfTwo)
{
    const Numbers line = {0, 0, 0, 3, 1, 0, 5, -2, 0};
    const Capped band = capped(line, 0.7, with_cap(KORVALE_CAP_ROUND, 1, 0.01));
    for (const int power : {-40, -3, 1, 50}) {
        Numbers other = line, expected = band.points;
        for (double& number : other)
            number = std::ldexp(number, power);
        for (double& number : expected)
            number = std::ldexp(number, power);
        const korvale_band_options how = with_cap(KORVALE_CAP_ROUND, 1, std::ldexp(0.01, power));
        EXPECT_THAT(capped(other, std::ldexp(0.7, power), how).points, ElementsAreArray(expected)) << power;
    }
}

TEST(DoorCaps, AreAsHighAsTheirEnds)
{
    korvale_band_options options = with_cap(KORVALE_CAP_SQUARE, 1);
    options.has_up = 1;
    options.up[2] = 1;
    options.height = 10;
    const Capped band = capped({0, 0, 1, 4, 0, 3}, 1, options);
    ASSERT_EQ(band.size(), 8u);
    for (size_t i = 0; i < 8; ++i)
        EXPECT_EQ(band.points[3 * i + 2], band.sources[i] == 0 ? 11 : 13) << i;
    EXPECT_NEAR(band.x(2), 5, 1e-13);
    EXPECT_NEAR(band.y(2), -1, 1e-13);
}

TEST(DoorCaps, GoAroundTheMeanOfAKnotAtAnEnd)
{
    const Numbers track = {0.1, 0, 0, -0.1, 0.1, 0, 0.1, -0.1, 0, -0.1, 0, 0, 9, 0, 0};
    const Capped band = capped(track, 1, with_cap(KORVALE_CAP_SQUARE, 1));
    ASSERT_EQ(band.size(), 14u);
    const double x = 0.5 * (band.x(0) + band.x(11)), y = 0.5 * (band.y(0) + band.y(11));
    for (const size_t i : {12, 13})
        EXPECT_NEAR(std::hypot(band.x(i) - x, band.y(i) - y), std::sqrt(2.0), 1e-12) << i;
    EXPECT_FALSE(band.crosses);
}

TEST(DoorCaps, AreNotWhereAnEndHasGivenWayNorOnClosedLines)
{
    // The line ends 0.5 before itself: its border gives way there, and the beginning alone has a cap.
    const Capped hook = capped({0, 0, 0, 9, 0, 0, 9, 4, 0, 4, 4, 0, 4, 0.5, 0}, 1, with_cap(KORVALE_CAP_SQUARE, 0));
    EXPECT_THAT(hook.sources, ElementsAre(0, 1, 2, 3, 4, 4, 3, 2, 1, 0, 0, 0));
    korvale_band_options ring = options_of(1, 1);
    ring.cap = KORVALE_CAP_ROUND;
    const Capped closed = capped({0, 0, 0, 9, 0, 0, 9, 9, 0, 0, 9, 0}, 1, ring);
    EXPECT_THAT(closed.starts, ElementsAre(0, 4, 8));
    EXPECT_THAT(closed.sources, ElementsAre(0, 1, 2, 3, 3, 2, 1, 0));
    EXPECT_EQ(capped({1, 1, 0, 1, 1, 0}, 1, with_cap(KORVALE_CAP_ROUND, 1)).size(), 4u); // at a single place
}

TEST(DoorCaps, TellWhereTheyMeetTheBand)
{
    const Numbers nearly = {0, 0, 0, 9, 0, 0, 9, 9, 0, 0, 9, 0, 0, 1.9, 0}; // ends 1.9 from its beginning
    EXPECT_FALSE(capped(nearly, 1, with_cap(KORVALE_CAP_FLAT, 1)).crosses);
    const Capped band = capped(nearly, 1, with_cap(KORVALE_CAP_SQUARE, 1));
    ASSERT_TRUE(band.crosses); // the cap at the end, down to 0.9, and the left side of the first edge
    EXPECT_GE(band.crossing[0], 0);
    EXPECT_LT(band.crossing[1], static_cast<int64_t>(band.size()));
}

TEST(DoorCaps, RefuseWhatCannotBeOne)
{
    const auto refused = [](const korvale_band_options& options) {
        Capped made;
        korvale_error error = {};
        EXPECT_EQ(lay(kStraight, 1, options, made, &error), KORVALE_BAD_ARGUMENT);
        return std::string(error.text);
    };
    EXPECT_EQ(refused(with_cap(3, 1)),
              "korvale_band: options.cap must be 0 (flat), 1 (square) or 2 (round), but it is 3");
    EXPECT_EQ(refused(with_cap(KORVALE_CAP_ROUND, 1, -1)),
              "korvale_band: options.tolerance must be 0 or more, but it is -1");
    const korvale_band_options square = with_cap(KORVALE_CAP_SQUARE, 1);
    const korvale_points points = points_of(kStraight);
    Numbers outline(12);
    korvale_band_result band = {outline.data(), nullptr, nullptr, 0, 0, {0, 0}};
    korvale_error error;
    EXPECT_EQ(korvale_band(&points, 1, &square, &band, &error), KORVALE_BAD_ARGUMENT);
    EXPECT_STREQ(error.text, "korvale_band: options.outlines must be given where there are caps, but it is null");
}

TEST(DoorCaps, EachAllocationMayFail)
{
    NEEDS_HEAP_FAILURES();
    const korvale_band_options options = with_cap(KORVALE_CAP_ROUND, 1);
    const Capped expected = capped(kStraight, 1, options);
    const int64_t failures = fail_each_allocation([&](int64_t) {
        Capped made;
        korvale_error error;
        if (lay(kStraight, 1, options, made, &error) == KORVALE_OK) {
            EXPECT_THAT(made.points, ElementsAreArray(expected.points));
        } else {
            EXPECT_EQ(error.status, KORVALE_NO_MEMORY);
        }
    });
    EXPECT_GT(failures, 0);
}

} // namespace
} // namespace korvale::test
