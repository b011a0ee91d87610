// Outlines moved with joins: against joins known by hand, distances from the outline, and the plain call.
#include <algorithm>
#include <cmath>
#include <set>

#include <gmock/gmock.h>

#include "rings.h"
#include "support.h"
#include "tests/support/bits.h"
#include "tests/support/heap.h"
#include "tests/support/outlines.h"
#include "tests/support/random.h"

namespace korvale::test {
namespace {

using testing::ElementsAre;

const Numbers kSquare = {0, 0, 0, 4, 0, 0, 4, 4, 0, 0, 4, 0};
/// The corner at 2, 2 is the one that opens inwards.
const Numbers kHook = {0, 0, 0, 4, 0, 0, 4, 4, 0, 2, 4, 0, 2, 2, 0, 0, 2, 0};

korvale_offset_options with_joins(int32_t join, double miter_limit = 0, double tolerance = 0)
{
    korvale_offset_options options = offset_options(0);
    options.join = join;
    options.miter_limit = miter_limit;
    options.tolerance = tolerance;
    return options;
}

struct Ring {
    Numbers points;
    std::vector<int32_t> sources;
};

/// The rings that are left of an outline.
std::vector<Ring> rings_of(const Numbers& outline, double distance, const korvale_offset_options& options)
{
    const korvale_points points = points_of(outline);
    korvale_rings* made = nullptr;
    korvale_error error;
    EXPECT_EQ(korvale_offset_rings(&points, distance, &options, &made, &error), KORVALE_OK) << error.text;
    const korvale_ring_arrays all = korvale_rings_view(made);
    std::vector<Ring> rings;
    for (int64_t k = 0; k < all.rings; ++k)
        if (all.collapsed[k] == 0)
            rings.push_back({{all.points + 3 * all.starts[k], all.points + 3 * all.starts[k + 1]},
                             {all.sources + all.starts[k], all.sources + all.starts[k + 1]}});
    korvale_rings_free(made);
    return rings;
}

Ring ring_of(const Numbers& outline, double distance, const korvale_offset_options& options)
{
    const std::vector<Ring> rings = rings_of(outline, distance, options);
    EXPECT_EQ(rings.size(), 1u);
    return rings.empty() ? Ring() : rings[0];
}

double distance_to_edge(const double* p, const double* a, const double* b)
{
    const double dx = b[0] - a[0], dy = b[1] - a[1], x = p[0] - a[0], y = p[1] - a[1];
    const double t = std::clamp((x * dx + y * dy) / (dx * dx + dy * dy), 0.0, 1.0);
    return std::hypot(x - t * dx, y - t * dy);
}

double distance_to(const Numbers& outline, const double* p)
{
    double nearest = INFINITY;
    for (size_t i = 0, n = outline.size(); i < n; i += 3)
        nearest = std::min(nearest, distance_to_edge(p, &outline[i], &outline[(i + 3) % n]));
    return nearest;
}

bool do_cross(const Numbers& ring)
{
    const auto side = [&](size_t a, size_t b, size_t c) {
        return (ring[b] - ring[a]) * (ring[c + 1] - ring[a + 1]) - (ring[b + 1] - ring[a + 1]) * (ring[c] - ring[a]);
    };
    const size_t n = ring.size();
    for (size_t i = 0; i < n; i += 3)
        for (size_t k = 0; k < i; k += 3) {
            const size_t j = (i + 3) % n, l = (k + 3) % n;
            if (j == k || l == i)
                continue;
            if (side(i, j, k) * side(i, j, l) < -1e-9 && side(k, l, i) * side(k, l, j) < -1e-9)
                return true;
        }
    return false;
}

} // namespace

TEST(DoorOffsetJoins, ABevelGoesStraightAcross)
{
    const Ring ring = ring_of(kSquare, 1, with_joins(KORVALE_JOIN_BEVEL));
    expect_near(ring.points, {-1, 0, 0, 0, -1, 0, 4, -1, 0, 5, 0, 0, 5, 4, 0, 4, 5, 0, 0, 5, 0, -1, 4, 0});
    EXPECT_THAT(ring.sources, ElementsAre(0, 0, 1, 1, 2, 2, 3, 3));
}

TEST(DoorOffsetJoins, InwardsTheOtherCornersOpen)
{
    const Ring ring = ring_of(kHook, -0.5, with_joins(KORVALE_JOIN_BEVEL));
    expect_near(ring.points, {0.5, 0.5, 0, 3.5, 0.5, 0, 3.5, 3.5, 0, 2.5, 3.5, 0, 2.5, 2, 0, 2, 1.5, 0, 0.5, 1.5, 0});
    EXPECT_THAT(ring.sources, ElementsAre(0, 1, 2, 3, 4, 4, 5));
}

TEST(DoorOffsetJoins, ACornerBeyondTheMiterLimitIsCutOffAtTheDistance)
{
    const double out = std::tan(std::atan(1.0) / 2); // of 22.5 degrees
    expect_near(ring_of(kSquare, 1, with_joins(KORVALE_JOIN_MITER, 1)).points,
                {-1, -out,    0, -out,    -1, 0, 4 + out, -1, 0, 5,  -out,    0,
                 5,  4 + out, 0, 4 + out, 5,  0, -out,    5,  0, -1, 4 + out, 0});
    EXPECT_EQ(ring_of(kSquare, 1, with_joins(KORVALE_JOIN_MITER, 1.414)).sources.size(), 8u);
    EXPECT_EQ(ring_of(kSquare, 1, with_joins(KORVALE_JOIN_MITER, 1.415)).sources.size(), 4u);
    EXPECT_EQ(ring_of(kSquare, 1, with_joins(KORVALE_JOIN_MITER, INFINITY)).sources.size(), 4u);
}

TEST(DoorOffsetJoins, ARoundJoinHalvesTheTurnUntilItIsWithinTheTolerance)
{
    // Corners of a turn of 90 degrees in n steps are at 1 / cos(45 degrees / n): 1.0196 of 4, 1.00482 of 8.
    EXPECT_EQ(ring_of(kSquare, 1, with_joins(KORVALE_JOIN_ROUND, 0, 0.0197)).sources.size(), 4u * 4);
    EXPECT_EQ(ring_of(kSquare, 1, with_joins(KORVALE_JOIN_ROUND, 0, 0.0195)).sources.size(), 4u * 8);
    EXPECT_EQ(ring_of(kSquare, 1, with_joins(KORVALE_JOIN_ROUND)).sources.size(), 4u * 8);
    EXPECT_EQ(ring_of(kSquare, 2, with_joins(KORVALE_JOIN_ROUND)).sources.size(), 4u * 8);
    EXPECT_EQ(ring_of(kSquare, 1, with_joins(KORVALE_JOIN_ROUND, 0, 0.5)).sources.size(), 4u);
    EXPECT_EQ(ring_of(kSquare, 1, with_joins(KORVALE_JOIN_ROUND, 0, 1e-300)).sources.size(), 4u * 1024);
}

TEST(DoorOffsetJoins, EachCornerMayHaveItsOwn)
{
    const int32_t each[] = {KORVALE_JOIN_BEVEL, KORVALE_JOIN_MITER, KORVALE_JOIN_ROUND, KORVALE_JOIN_MITER};
    korvale_offset_options options = with_joins(KORVALE_JOIN_ROUND, 0, 0.1);
    options.corner_joins = {each, 4, 0, KORVALE_INT32};
    EXPECT_THAT(ring_of(kSquare, 1, options).sources, ElementsAre(0, 0, 1, 2, 2, 3));
}

TEST(DoorOffsetJoins, PointsAtOnePlaceAreOneCorner)
{
    const Numbers repeated = {0, 0, 0, 4, 0, 0, 4, 0, 0, 4, 4, 0, 0, 4, 0, 0, 4, 0, 0, 4, 0, 0, 0, 0};
    const Ring ring = ring_of(repeated, 1, with_joins(KORVALE_JOIN_BEVEL));
    expect_near(ring.points, {-1, 0, 0, 0, -1, 0, 4, -1, 0, 5, 0, 0, 5, 4, 0, 4, 5, 0, 0, 5, 0, -1, 4, 0});
    EXPECT_THAT(ring.sources, ElementsAre(0, 0, 2, 2, 3, 3, 6, 6)) << "the last of them, going round";
}

TEST(DoorOffsetJoins, WithoutAnyTheBitsAreThoseOfThePlainCall)
{
    Random random(1301);
    for (int round = 0; round < rounds(500) && !testing::Test::HasFailure(); ++round) {
        const Numbers outline = star(random, random.between(3, 30), 1);
        const double distance = random.uniform(-3, 2);
        const std::vector<Ring> plain = rings_of(outline, distance, offset_options(0)),
                                joined = rings_of(outline, distance, with_joins(KORVALE_JOIN_MITER, 1e9));
        ASSERT_EQ(plain.size(), joined.size());
        for (size_t k = 0; k < plain.size(); ++k) {
            ASSERT_TRUE(same_bits(plain[k].points, joined[k].points.data()));
            ASSERT_EQ(plain[k].sources, joined[k].sources);
        }
    }
}

TEST(DoorOffsetJoins, RoundJoinsKeepTheDistance)
{
    Random random(1302);
    int64_t points = 0, nearer = 0;
    for (int round = 0; round < rounds(300) && !testing::Test::HasFailure(); ++round) {
        const double least = random.uniform(1, 9);
        const Numbers outline = star(random, random.between(3, 30), least);
        const double distance = (random.one_in(2) ? 1 : -1) * std::pow(10, random.uniform(-3, 0.5));
        const double d = std::fabs(distance), tolerance = d * std::pow(10, random.uniform(-3, -1));
        for (const Ring& ring : rings_of(outline, distance, with_joins(KORVALE_JOIN_ROUND, 0, tolerance)))
            for (size_t i = 0; i < ring.points.size(); i += 3) {
                const double reached = distance_to(outline, &ring.points[i]);
                ++points;
                nearer += reached < d - 1e-6;
                ASSERT_LE(reached, d + tolerance + 1e-6) << round;
            }
    }
    EXPECT_GT(points, rounds(300) * 30);
    EXPECT_EQ(nearer, 0);
}

TEST(DoorOffsetJoins, BevelsStayWithinWhatIsCutOffAtTheDistance)
{
    // Beneath the bevel of vertex 2 the short edge behind it has vanished, and would meet the ring far outside of it.
    const Numbers chipped = {0.43,  0.73,  0, -0.87, 0.69,  0, -0.75, -0.71, 0, -0.74, -0.76, 0,
                             -0.85, -0.89, 0, -0.33, -1.26, 0, 0.15,  -0.88, 0, 0.9,   -0.64, 0};
    for (const double distance : {0.3, 0.55, 0.6, 2.0}) {
        const Ring ring = ring_of(chipped, distance, with_joins(KORVALE_JOIN_BEVEL));
        for (size_t i = 0; i < ring.points.size(); i += 3)
            EXPECT_LE(distance_to(chipped, &ring.points[i]), 1.4143 * distance) << distance;
    }
    Random random(1306);
    for (int round = 0; round < rounds(10000) && !testing::Test::HasFailure(); ++round) {
        const double least = random.uniform(1, 9);
        const Numbers outline = star(random, random.between(3, 20), least);
        const double distance = (random.one_in(2) ? 1 : -1) * std::pow(10, random.uniform(-2, 0.7));
        for (const Ring& ring : rings_of(outline, distance, with_joins(KORVALE_JOIN_BEVEL)))
            for (size_t i = 0; i < ring.points.size(); i += 3)
                ASSERT_LE(distance_to(outline, &ring.points[i]), 1.4143 * std::fabs(distance)) << round;
    }
}

TEST(DoorOffsetJoins, DoNotCross)
{
    Random random(1303);
    for (int round = 0; round < rounds(1000) && !testing::Test::HasFailure(); ++round) {
        const double least = random.uniform(1, 9);
        const Numbers outline = star(random, random.between(3, 30), least);
        const double distance = (random.one_in(2) ? 1 : -1) * std::pow(10, random.uniform(-3, 0.5));
        for (const int32_t join : {KORVALE_JOIN_MITER, KORVALE_JOIN_BEVEL, KORVALE_JOIN_ROUND})
            for (const Ring& ring : rings_of(outline, distance, with_joins(join, 1, 0.1 * std::fabs(distance)))) {
                ASSERT_FALSE(do_cross(ring.points)) << "outline " << round << ", join " << join;
                ASSERT_TRUE(std::is_sorted(ring.sources.begin(), ring.sources.end()));
            }
    }
}

TEST(DoorOffsetJoins, PiecesCrossOnlyBesideBevelsAndSeldom)
{
    Random random(1307);
    int crossing[3] = {};
    for (int round = 0; round < rounds(20000); ++round) {
        const double least = random.uniform(1, 9);
        const Numbers outline = star(random, random.between(3, 20), least);
        const double distance = (random.one_in(2) ? 1 : -1) * std::pow(10, random.uniform(-2, 0.7));
        for (const int32_t join : {KORVALE_JOIN_MITER, KORVALE_JOIN_BEVEL, KORVALE_JOIN_ROUND}) {
            std::vector<Numbers> pieces;
            for (Ring& ring : rings_of(outline, distance, with_joins(join)))
                pieces.push_back(std::move(ring.points));
            crossing[join] += do_cross(pieces);
        }
    }
    EXPECT_EQ(crossing[KORVALE_JOIN_MITER], 0);
    EXPECT_LE(crossing[KORVALE_JOIN_BEVEL], rounds(2));
    EXPECT_EQ(crossing[KORVALE_JOIN_ROUND], 0);
}

TEST(DoorOffsetJoins, OutlinesMayHaveAnySize)
{
    Random random(1304);
    for (int round = 0; round < rounds(200) && !testing::Test::HasFailure(); ++round) {
        const Numbers outline = star(random, random.between(3, 20), 2);
        const double distance = random.uniform(-0.5, 0.5);
        const int32_t join = random.between(0, 2), power = random.between(-30, 30);
        Numbers scaled = outline;
        for (double& number : scaled)
            number = std::ldexp(number, power);
        const std::vector<Ring> plain = rings_of(outline, distance, with_joins(join, 1)),
                                other = rings_of(scaled, std::ldexp(distance, power), with_joins(join, 1));
        ASSERT_EQ(plain.size(), other.size());
        for (size_t k = 0; k < plain.size(); ++k) {
            ASSERT_EQ(plain[k].sources, other[k].sources);
            for (size_t i = 0; i < plain[k].points.size(); ++i)
                ASSERT_EQ(plain[k].points[i], std::ldexp(other[k].points[i], -power));
        }
    }
}

TEST(DoorOffsetJoins, ThePlaneMayLieAnywhere)
{
    const Ring ring = ring_of({5, 0, 0, 5, 4, 0, 5, 4, 4, 5, 0, 4}, 1, with_joins(KORVALE_JOIN_BEVEL));
    expect_near(ring.points, {5, -1, 0, 5, 0, -1, 5, 4, -1, 5, 5, 0, 5, 5, 4, 5, 4, 5, 5, 0, 5, 5, -1, 4});
}

TEST(DoorOffsetJoins, ManyOutlinesAndShapesHaveThemToo)
{
    const Numbers two = {0, 0, 0, 9, 0, 0, 9, 9, 0, 0, 9, 0, 3, 3, 0, 6, 3, 0, 6, 6, 0, 3, 6, 0};
    const korvale_points points = points_of(two);
    const int32_t begins[] = {0, 4, 8};
    const double distances[] = {1, -1};
    const korvale_indices starts = {begins, 3, 0, KORVALE_INT32};
    const korvale_numbers each = {distances, 2, 0, 1, KORVALE_DOUBLE};
    const korvale_offset_options options = with_joins(KORVALE_JOIN_BEVEL);
    korvale_borders* borders = nullptr;
    ASSERT_EQ(korvale_offset_many(&points, &starts, &each, &options, &borders, nullptr), KORVALE_OK);
    const korvale_border_arrays all = korvale_borders_view(borders);
    EXPECT_THAT(std::vector<int64_t>(all.starts, all.starts + 3), ElementsAre(0, 8, 12));
    EXPECT_THAT(std::vector<int32_t>(all.sources, all.sources + 12), ElementsAre(0, 0, 1, 1, 2, 2, 3, 3, 4, 5, 6, 7));
    EXPECT_THAT(std::vector<int32_t>(all.merged_into, all.merged_into + 8), ElementsAre(0, 1, 2, 3, 4, 5, 6, 7));

    const korvale_points outlines[] = {{two.data(), 4, 0, 3, KORVALE_DOUBLE},
                                       {two.data() + 12, 4, 0, 3, KORVALE_DOUBLE}};
    korvale_offsetter* offsetter = nullptr;
    ASSERT_EQ(korvale_offsetter_new(&offsetter, nullptr), KORVALE_OK);
    EXPECT_EQ(korvale_offsetter_sources(offsetter, 0), nullptr);
    ASSERT_EQ(korvale_offsetter_run(offsetter, outlines, 2, 1, &options, nullptr), KORVALE_OK);
    for (const int64_t k : {0, 1}) {
        const korvale_border border = korvale_offsetter_border(offsetter, k);
        ASSERT_EQ(border.count, all.starts[k + 1] - all.starts[k]);
        expect_near({border.points, border.points + 3 * border.count},
                    {all.points + 3 * all.starts[k], all.points + 3 * all.starts[k + 1]});
        for (int64_t i = 0; i < border.count; ++i)
            EXPECT_EQ(korvale_offsetter_sources(offsetter, k)[i] + 4 * k, all.sources[all.starts[k] + i]);
    }
    ASSERT_EQ(korvale_offsetter_run(offsetter, outlines, 2, 1, nullptr, nullptr), KORVALE_OK);
    EXPECT_EQ(korvale_offsetter_sources(offsetter, 0), nullptr) << "without joins";
    korvale_offsetter_free(offsetter);
    korvale_borders_free(borders);
}

TEST(DoorOffsetJoins, RemovedVerticesNameWhatTheyMergedInto)
{
    // The edge of 0.14 across the corner is gone at -0.17.
    const Numbers plate = {0, 0, 0, 4, 0, 0, 4, 3.9, 0, 3.9, 4, 0, 0, 4, 0};
    const korvale_points outline = points_of(plate);
    const korvale_offset_options options = with_joins(KORVALE_JOIN_ROUND, 0, 0.1);
    korvale_offsetter* offsetter = nullptr;
    ASSERT_EQ(korvale_offsetter_new(&offsetter, nullptr), KORVALE_OK);
    ASSERT_EQ(korvale_offsetter_run(offsetter, &outline, 1, -0.5, &options, nullptr), KORVALE_OK);
    const korvale_border border = korvale_offsetter_border(offsetter, 0);
    const int32_t* const sources = korvale_offsetter_sources(offsetter, 0);
    const std::set<int32_t> left(sources, sources + border.count);
    for (int32_t i = 0; i < border.vertices; ++i) {
        EXPECT_EQ(border.removed[i] == 0, left.contains(i)) << i;
        EXPECT_EQ(border.removed[i] == 0, border.merged_into[i] == i) << i;
    }
    EXPECT_EQ(left.size(), 4u);
    korvale_offsetter_free(offsetter);
}

TEST(DoorOffsetJoins, SayWhatTheyRefuse)
{
    const korvale_points points = points_of(kSquare);
    const auto refusal = [&](const korvale_offset_options& options) {
        korvale_rings* rings = nullptr;
        return sentence_of(KORVALE_BAD_ARGUMENT, [&](korvale_error* error) {
            return korvale_offset_rings(&points, 1, &options, &rings, error);
        });
    };
    EXPECT_EQ(refusal(with_joins(3)),
              "korvale_offset_rings: options.join must be 0 (miter), 1 (bevel) or 2 (round), but it is 3");
    EXPECT_EQ(refusal(with_joins(0, 0.5)),
              "korvale_offset_rings: options.miter_limit must be 1 or more, or 0 for none, but it is 0.5");
    EXPECT_EQ(refusal(with_joins(2, 0, -1)), "korvale_offset_rings: options.tolerance must be 0 or more, but it is -1");
    const int32_t each[] = {0, 1, 2, 3};
    korvale_offset_options options = offset_options(0);
    options.corner_joins = {each, 3, 0, KORVALE_INT32};
    EXPECT_EQ(refusal(options), "korvale_offset_rings: options.corner_joins must have 4, one for each point, or none, "
                                "but there are 3");
    options.corner_joins.count = 4;
    EXPECT_EQ(refusal(options), "korvale_offset_rings: options.corner_joins must be 0 (miter), 1 (bevel) or 2 (round), "
                                "but number 3 is 3");
    double room[12];
    korvale_border border = {room, nullptr, nullptr, 0, 0, 0, 0};
    options = with_joins(KORVALE_JOIN_ROUND);
    EXPECT_EQ(sentence_of(KORVALE_BAD_ARGUMENT,
                          [&](korvale_error* error) { return korvale_offset(&points, 1, &options, &border, error); }),
              "korvale_offset: options.join must leave corners sharp where there is no room for more points, but it "
              "does not");
}

TEST(DoorOffsetJoins, AnExhaustedHeapLeavesNone)
{
    NEEDS_HEAP_FAILURES();
    const korvale_points points = points_of(kHook);
    const korvale_offset_options options = with_joins(KORVALE_JOIN_BEVEL);
    rings_of(kHook, -0.5, options); // sweeps keep their working memory
    const int64_t failed = fail_each_allocation([&](int64_t) {
        korvale_rings* rings = nullptr;
        const auto status = korvale_offset_rings(&points, -0.5, &options, &rings, nullptr);
        EXPECT_EQ(status, rings == nullptr ? KORVALE_NO_MEMORY : KORVALE_OK);
        korvale_rings_free(rings);
    });
    EXPECT_GT(failed, 20);
}

} // namespace korvale::test
