// Outlines moved with all pieces: against pieces known by hand, the plain call, and what areas and edges say.
#include <korvale.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <numeric>

#include <gmock/gmock.h>

#include "rings.h"
#include "support.h"
#include "tests/support/bits.h"
#include "tests/support/heap.h"
#include "tests/support/outlines.h"
#include "tests/support/random.h"

namespace korvale::test {
namespace {

using test::area_of, test::length_of, test::do_cross;
using testing::Each;
using testing::ElementsAre;

/// What becomes of an outline.
class Rings {
public:
    explicit Rings(korvale_rings* rings) : rings_(rings) {}
    Rings(const Numbers& outline, double distance, korvale_offset_options options = offset_options(0))
    {
        const korvale_points points = points_of(outline);
        korvale_error error;
        EXPECT_EQ(korvale_offset_rings(&points, distance, &options, &rings_, &error), KORVALE_OK) << error.text;
    }
    ~Rings() { korvale_rings_free(rings_); }
    Rings(const Rings&) = delete;
    Rings& operator=(const Rings&) = delete;

    korvale_ring_arrays view() const { return korvale_rings_view(rings_); }
    int64_t size() const { return view().rings; }
    Numbers ring(int64_t k) const
    {
        const korvale_ring_arrays all = view();
        return {all.points + 3 * all.starts[k], all.points + 3 * all.starts[k + 1]};
    }
    std::vector<int32_t> sources(int64_t k) const
    {
        const korvale_ring_arrays all = view();
        return {all.sources + all.starts[k], all.sources + all.starts[k + 1]};
    }

    /// The numbers of the rings that have not come to nothing.
    std::vector<int64_t> left() const
    {
        std::vector<int64_t> numbers;
        for (int64_t k = 0; k < size(); ++k)
            if (view().collapsed[k] == 0)
                numbers.push_back(k);
        return numbers;
    }

private:
    korvale_rings* rings_ = nullptr;
};

/// A copy of what there is of rings, or of some of them one behind the other.
struct Copied {
    std::vector<double> points, births, ends;
    std::vector<int64_t> starts;
    std::vector<int32_t> sources, parents;
    std::vector<uint8_t> collapsed;

    Copied(const korvale_ring_arrays& all, int64_t begin, int64_t end)
        : points(all.points + 3 * all.starts[begin], all.points + 3 * all.starts[end]),
          births(all.births + begin, all.births + end), ends(all.ends + begin, all.ends + end),
          starts(all.starts + begin, all.starts + end + 1),
          sources(all.sources + all.starts[begin], all.sources + all.starts[end]),
          parents(all.parents + begin, all.parents + end), collapsed(all.collapsed + begin, all.collapsed + end)
    {
        for (int64_t& start : starts)
            start -= all.starts[begin];
        for (int32_t& parent : parents)
            parent -= parent < 0 ? 0 : static_cast<int32_t>(begin);
    }

    int64_t left() const { return std::count(collapsed.begin(), collapsed.end(), 0); }
};

korvale_numbers numbers_of(const Numbers& numbers)
{
    return {numbers.data(), static_cast<int64_t>(numbers.size()), 0, 1, KORVALE_DOUBLE};
}

/// What becomes of an outline at each of some distances, in one call.
std::vector<Copied> rings_of(const Numbers& outline, const Numbers& distances,
                             korvale_offset_options options = offset_options(0))
{
    const korvale_points points = points_of(outline);
    const korvale_numbers each = numbers_of(distances);
    korvale_rings* made = nullptr;
    korvale_error error;
    EXPECT_EQ(korvale_offset_distances(&points, &each, &options, &made, &error), KORVALE_OK) << error.text;
    const Rings rings(made);
    const korvale_ring_arrays all = rings.view();
    std::vector<Copied> copies;
    for (int64_t begin = 0, end; begin < all.rings; begin = end) {
        EXPECT_EQ(all.parents[begin], -1);
        end = std::find(all.parents + begin + 1, all.parents + all.rings, -1) - all.parents;
        copies.emplace_back(all, begin, end);
    }
    EXPECT_EQ(copies.size(), distances.size());
    return copies;
}

/// The first array in which rings differ in a bit, or nothing.
std::string difference(const Copied& a, const Copied& b)
{
    const auto are_same = [](const Numbers& p, const Numbers& q) {
        return p.size() == q.size() && same_bits(p, q.data());
    };
    return a.starts != b.starts            ? "starts"
           : a.sources != b.sources        ? "sources"
           : a.parents != b.parents        ? "parents"
           : a.collapsed != b.collapsed    ? "collapsed"
           : !are_same(a.births, b.births) ? "births"
           : !are_same(a.ends, b.ends)     ? "ends"
           : !are_same(a.points, b.points) ? "points"
                                           : "";
}

/// The same for rings of one distance alone.
std::string difference(const Copied& one, const Rings& alone)
{
    return difference(one, Copied(alone.view(), 0, alone.size()));
}

double area_of(const Rings& rings)
{
    double area = 0;
    for (int64_t k = 0; k < rings.size(); ++k)
        area += area_of(rings.ring(k));
    return area;
}

double length_of(const Rings& rings)
{
    double length = 0;
    for (int64_t k = 0; k < rings.size(); ++k)
        length += length_of(rings.ring(k));
    return length;
}

/// Whether two edges of the rings cross.
bool do_cross(const Rings& rings)
{
    std::vector<Numbers> all;
    for (int64_t k = 0; k < rings.size(); ++k)
        all.push_back(rings.ring(k));
    return do_cross(all);
}

Numbers any_outline(Random& random)
{
    switch (random.below(4)) {
    case 0:
        return wiggly(random.between(20, 80), random.between(3, 9), random.uniform(0.5, 3));
    case 1:
        return coast(random.between(2, 4), random.uniform(0.1, 0.3), [&] { return random.uniform(-1, 1); });
    default:
        return star(random, random.between(5, 40), 1);
    }
}

/// Squares of side 4 in a row, with necks of 1 x 1 between them. The neck before square k begins at x = 5 k - 1.
Numbers beads(int count)
{
    Numbers outline;
    for (int k = 0; k < count; ++k) {
        const double x = 5 * k;
        if (k > 0)
            outline.insert(outline.end(), {x, 1.5, 0});
        outline.insert(outline.end(), {x, 0, 0, x + 4, 0, 0});
        if (k + 1 < count)
            outline.insert(outline.end(), {x + 4, 1.5, 0});
    }
    const size_t below = outline.size();
    for (size_t i = below; i > 0; i -= 3)
        outline.insert(outline.end(), {outline[i - 3], 4 - outline[i - 2], 0});
    return outline;
}

/// Outlines in which much happens at one distance, and others that cross themselves.
Numbers any_crowd(Random& random)
{
    switch (random.below(4)) {
    case 0:
        return comb(random.between(3, 20), random.between(1, 8) / 8.0);
    case 1: {
        const double root = random.uniform(3, 8);
        return gear(random.between(5, 30), root, root + random.uniform(0.5, 3));
    }
    case 2:
        return beads(random.between(2, 8));
    default: {
        Numbers scribble;
        for (int i = random.between(5, 30); i > 0; --i) {
            const int x = random.between(0, 12), y = random.between(0, 12);
            scribble.insert(scribble.end(), {double(x), double(y), 0});
        }
        return scribble;
    }
    }
}

} // namespace

TEST(DoorOffsetRings, BothPiecesOfASplitGoOn)
{
    // Two chambers, and between them a neck of 1.5 at a bump, which has a slope of 1 in 4 on either side.
    const Numbers chambers = {0, 0,  0,  10, 0,  0,  10, 4,  0, 12, 4.5, 0, 14, 4,  0,  14, 0, 0,  22, 0,
                              0, 22, 10, 0,  14, 10, 0,  14, 6, 0,  10,  6, 0,  10, 10, 0,  0, 10, 0};
    const Rings rings(chambers, -2);
    ASSERT_THAT(rings.left(), ElementsAre(0, 1));
    const korvale_ring_arrays all = rings.view();
    EXPECT_EQ(all.parents[0], -1);
    EXPECT_EQ(all.parents[1], 0);
    EXPECT_EQ(all.births[0], 0);
    EXPECT_NEAR(all.births[1], -1.5 / (1 + std::sqrt(1.0625)), 1e-14);
    EXPECT_EQ(all.ends[0], -2);
    EXPECT_EQ(all.ends[1], -2);
    EXPECT_NEAR(area_of(rings.ring(0)), 36, 1e-9); // from 2 to 8 either way
    EXPECT_NEAR(area_of(rings.ring(1)), 24, 1e-9); // from 16 to 20
    for (const int32_t source : rings.sources(0))
        EXPECT_TRUE(source <= 3 || source >= 10) << source;
    for (const int32_t source : rings.sources(1))
        EXPECT_TRUE(source >= 3 && source <= 9) << source;
    const std::vector<int32_t> right = rings.sources(1);
    const auto seventh = std::ranges::find(right, 7) - right.begin();
    ASSERT_LT(seventh, static_cast<ptrdiff_t>(right.size()));
    EXPECT_NEAR(rings.ring(1)[3 * static_cast<size_t>(seventh)], 20, 1e-9);
    EXPECT_NEAR(rings.ring(1)[3 * static_cast<size_t>(seventh) + 1], 8, 1e-9);
}

TEST(DoorOffsetRings, ARingEndsWhereItComesToNothing)
{
    // Of a square of side 4 and one of side 10, joined by a neck, the small one is gone at 2.
    const Numbers two = {0,  0, 0, 10, 0, 0, 10, 3.5,  0, 12, 3.25, 0, 12, 2,  0, 16, 2,  0,
                         16, 6, 0, 12, 6, 0, 12, 4.25, 0, 10, 4.5,  0, 10, 10, 0, 0,  10, 0};
    const Rings rings(two, -3);
    ASSERT_THAT(rings.left(), ElementsAre(0));
    EXPECT_NEAR(area_of(rings), 16, 1e-9);
    const korvale_ring_arrays all = rings.view();
    EXPECT_NEAR(*std::min_element(all.ends + 1, all.ends + all.rings), -2, 1e-9);
    for (int64_t k = 1; k < all.rings; ++k)
        EXPECT_EQ(rings.ring(k), Numbers());
}

TEST(DoorOffsetRings, ABayThatIsClosedRunsTheOtherWay)
{
    // A block of 10 x 10 with a bay of 6 x 6, whose mouth is 1 wide outside and 0.8 inside.
    const Numbers block = {0, 0, 0, 10, 0, 0, 10, 10, 0, 5.5, 10, 0, 5.4, 8,  0, 8, 8,  0,
                           8, 2, 0, 2,  2, 0, 2,  8,  0, 4.6, 8,  0, 4.5, 10, 0, 0, 10, 0};
    const Rings rings(block, 1);
    double outer = 0, bay = 0;
    for (const int64_t k : rings.left())
        (area_of(rings.ring(k)) > 0 ? outer : bay) += area_of(rings.ring(k));
    EXPECT_EQ(rings.left().size(), 2u);
    EXPECT_NEAR(outer, 144, 1e-9);
    EXPECT_NEAR(bay, -16, 1e-9);
}

TEST(DoorOffsetRings, ManyPiecesAreAllThere)
{
    const Rings rings(beads(7), -1);
    EXPECT_EQ(rings.left().size(), 7u);
    EXPECT_NEAR(area_of(rings), 7 * 4, 1e-9);
    for (const int64_t k : rings.left()) {
        EXPECT_NEAR(area_of(rings.ring(k)), 4, 1e-9) << k;
        EXPECT_LT(rings.view().parents[k], k);
        EXPECT_NEAR(rings.view().births[k], k == 0 ? 0 : -0.5, 1e-9) << k;
    }
    EXPECT_THAT(Rings(beads(7), -3).left(), ElementsAre());
}

TEST(DoorOffsetRings, KeepTheBitsOfThePlainCall)
{
    Random random(1281);
    int split = 0;
    for (int round = 0; round < rounds(2000) && !testing::Test::HasFailure(); ++round) {
        const Numbers outline = any_outline(random);
        const double distance = random.uniform(-4, 2);
        const korvale_offset_options options = offset_options(random.one_in(2) ? 0 : 1.5, 0, !random.one_in(8));
        Numbers points(outline.size());
        std::vector<uint8_t> removed(outline.size() / 3);
        korvale_border plain = {points.data(), removed.data(), nullptr, 0, 0, 0, 0};
        const korvale_points from = points_of(outline);
        ASSERT_EQ(korvale_offset(&from, distance, &options, &plain, nullptr), KORVALE_OK);
        points.resize(3 * static_cast<size_t>(plain.count));
        const Rings rings(outline, distance, options);
        const korvale_ring_arrays all = rings.view();
        SCOPED_TRACE(testing::Message() << "outline " << round << ", distance " << describe(distance));
        ASSERT_EQ(all.collapsed[0], plain.collapsed);
        if (plain.collapsed == 0) {
            ASSERT_TRUE(same_bits(points, all.points));
            std::vector<int32_t> live;
            for (size_t i = 0; i < removed.size(); ++i)
                if (removed[i] == 0)
                    live.push_back(static_cast<int32_t>(i));
            ASSERT_EQ(rings.sources(0), live);
        }
        split += all.rings > 1;
        if (options.split == 0) {
            ASSERT_EQ(all.rings, 1);
        }
    }
    EXPECT_GT(split, rounds(2000) / 8);
}

TEST(DoorOffsetDistances, GiveTheRingsOfEachInTheOrderOfTheDistances)
{
    // Two squares of side 4 with a neck of 1 between them, which closes at 0.5; nothing is left at 2.
    const Numbers distances = {-1, 0.5, -3, 0, -0.25, -1};
    const std::vector<Copied> rings = rings_of(beads(2), distances);
    const std::vector<int64_t> left = {2, 1, 0, 1, 1, 2};
    const Numbers ends = {-1, 0.5, -2, 0, -0.25, -1}, areas = {4, 50, 0, 33, 25.25, 4}; // of the first ring
    for (size_t i = 0; i < distances.size(); ++i) {
        EXPECT_EQ(rings[i].left(), left[i]) << i;
        EXPECT_NEAR(rings[i].ends[0], ends[i], 1e-9) << i;
        const auto end = rings[i].points.begin() + 3 * rings[i].starts[1];
        EXPECT_NEAR(area_of(Numbers(rings[i].points.begin(), end)), areas[i], 1e-9) << i;
    }
    EXPECT_NEAR(rings[0].births[1], -0.5, 1e-9);
    EXPECT_EQ(rings[0].parents[1], 0);
    EXPECT_EQ(difference(rings[0], rings[5]), "");
    EXPECT_EQ(rings_of(beads(2), {}).size(), 0u);
}

TEST(DoorOffsetDistances, KeepTheBitsOfEachAlone)
{
    Random random(1286);
    int64_t many = 0;
    for (int round = 0; round < rounds(1500) && !testing::Test::HasFailure(); ++round) {
        const Numbers outline = random.one_in(3) ? any_crowd(random) : any_outline(random);
        korvale_offset_options options = offset_options(random.one_in(2) ? 0 : 1.5, 0, !random.one_in(8));
        if (random.one_in(4)) {
            options.join = random.between(KORVALE_JOIN_MITER, KORVALE_JOIN_ROUND);
            options.miter_limit = random.uniform(1, 2);
            options.tolerance = random.one_in(2) ? 0 : 0.1;
        }
        const bool on_a_grid = random.one_in(3);
        Numbers distances;
        for (int i = random.below(12); i >= 0; --i) {
            const double distance = random.one_in(12) ? 0 : random.uniform(-4, 2);
            distances.push_back(on_a_grid ? std::round(4 * distance) / 4 : distance);
        }
        const std::vector<Copied> rings = rings_of(outline, distances, options);
        for (size_t i = 0; i < distances.size(); ++i) {
            const Rings alone(outline, distances[i], options);
            ASSERT_EQ(difference(rings[i], alone), "")
                << "outline " << round << ", distance " << describe(distances[i]) << ", joins " << options.join;
            many += alone.size() > 1;
        }
    }
    EXPECT_GT(many, rounds(1500));
}

TEST(DoorOffsetDistances, KeepTheBitsOfOutlinesThatAreScaledForSome)
{
    // Small outlines are brought to a size that leaves room for the distance, so far ones lie at others.
    Random random(1287);
    for (int round = 0; round < rounds(50) && !testing::Test::HasFailure(); ++round) {
        Numbers outline = star(random, 20, 1);
        for (double& number : outline)
            number = std::ldexp(number, -1000);
        const Numbers distances = {std::ldexp(-1, -1000), 1, 0x1p900, std::ldexp(-2, -1000)};
        const std::vector<Copied> rings = rings_of(outline, distances);
        for (size_t i = 0; i < distances.size(); ++i)
            ASSERT_EQ(difference(rings[i], Rings(outline, distances[i])), "") << round << ", " << i;
    }
}

TEST(DoorOffsetDistances, SayWhatTheyRefuse)
{
    const Numbers square = {0, 0, 0, 4, 0, 0, 4, 4, 0, 0, 4, 0}, distances = {-1, NAN};
    const korvale_points points = points_of(square);
    int anything = 0;
    auto* rings = reinterpret_cast<korvale_rings*>(&anything);
    const auto refusal = [&](const korvale_numbers* each, korvale_rings** to) {
        return sentence_of(KORVALE_BAD_ARGUMENT, [&](korvale_error* error) {
            return korvale_offset_distances(&points, each, nullptr, to, error);
        });
    };
    korvale_numbers each = numbers_of(distances);
    EXPECT_EQ(refusal(&each, &rings), "korvale_offset_distances: distances must be finite, but number 1 is nan");
    EXPECT_EQ(rings, nullptr);
    each.count = 1;
    EXPECT_EQ(refusal(&each, nullptr), "korvale_offset_distances: rings must be given, but it is null");
    each.width = 2;
    EXPECT_EQ(refusal(&each, &rings), "korvale_offset_distances: distances must have a width of 1, but it is 2");
    EXPECT_EQ(refusal(nullptr, &rings), "korvale_offset_distances: distances must be given, but it is null");
}

TEST(DoorOffsetRings, AreOfOneFamily)
{
    Random random(1282);
    for (int round = 0; round < rounds(1000) && !testing::Test::HasFailure(); ++round) {
        const double distance = random.uniform(-6, 3);
        const Numbers outline = any_outline(random);
        const Rings rings(outline, distance);
        const korvale_ring_arrays all = rings.view();
        for (int64_t k = 0; k < all.rings; ++k) {
            ASSERT_EQ(all.parents[k] < 0, k == 0);
            ASSERT_LT(all.parents[k], k);
            ASSERT_EQ(all.collapsed[k] != 0, all.starts[k] == all.starts[k + 1]);
            if (k > 0) {
                ASSERT_GE(std::fabs(all.births[k]), std::fabs(all.births[all.parents[k]]));
                ASSERT_LE(std::fabs(all.births[k]), std::fabs(all.ends[all.parents[k]]));
            }
            ASSERT_LE(std::fabs(all.births[k]), std::fabs(all.ends[k]));
            ASSERT_LE(std::fabs(all.ends[k]), std::fabs(distance));
            if (all.collapsed[k] == 0) {
                ASSERT_EQ(all.ends[k], distance);
            }
            const std::vector<int32_t> sources = rings.sources(k);
            ASSERT_TRUE(std::is_sorted(sources.begin(), sources.end(), std::less_equal<>()));
        }
        ASSERT_LT(all.rings, static_cast<int64_t>(outline.size() / 3));
    }
}

TEST(DoorOffsetRings, DoNotCross)
{
    Random random(1283);
    for (int round = 0; round < rounds(400) && !testing::Test::HasFailure(); ++round) {
        const Numbers outline = star(random, random.between(5, 40), 1);
        const double distance = random.uniform(-3, 2);
        ASSERT_FALSE(do_cross(Rings(outline, distance))) << "outline " << round << ", distance " << describe(distance);
    }
}

// The area grows by the length of the edges for each unit of distance, also where rings part: what is lost is seen.
TEST(DoorOffsetRings, TakeUpTheAreaThatTheirEdgesPassOver)
{
    Random random(1284);
    int many = 0;
    for (int round = 0; round < rounds(15) && !testing::Test::HasFailure(); ++round) {
        const Numbers outline = star(random, random.between(8, 40), 1);
        constexpr int kSteps = 1600;
        const double step = (random.one_in(4) ? 2.0 : -4.0) / kSteps;
        double length = length_of(outline), expected = area_of(outline);
        for (int i = 1; i <= kSteps; ++i) {
            const Rings rings(outline, i * step);
            const double next = length_of(rings);
            expected += 0.5 * step * (length + next);
            length = next;
            many += rings.left().size() > 1;
            ASSERT_NEAR(area_of(rings), expected, 0.02) << "outline " << round << ", distance " << i * step;
        }
    }
    EXPECT_GT(many, rounds(1000));
}

TEST(DoorOffsetRings, ScaleExactlyByPowersOfTwo)
{
    Random random(1285);
    for (int round = 0; round < rounds(50); ++round) {
        Numbers outline = star(random, 20, 1);
        const double distance = random.uniform(-2, 0);
        for (double& number : outline)
            number /= 16;
        const Rings plain(outline, distance / 16);
        for (double& number : outline)
            number = std::ldexp(number, -20);
        const Rings small(outline, std::ldexp(distance / 16, -20));
        ASSERT_EQ(plain.size(), small.size());
        for (int64_t k = 0; k < plain.size(); ++k) {
            ASSERT_EQ(plain.sources(k), small.sources(k));
            ASSERT_EQ(std::ldexp(plain.view().births[k], -20), small.view().births[k]);
        }
    }
}

TEST(DoorOffsetRings, OfNullThereAreNone)
{
    EXPECT_EQ(korvale_rings_view(nullptr).points, nullptr);
    EXPECT_EQ(korvale_rings_take(nullptr).rings, 0);
    korvale_rings_free(nullptr);
}

TEST(DoorOffsetRings, SayWhatTheyRefuse)
{
    const Numbers line = {0, 0, 0, 1, 0, 0}, square = {0, 0, 0, 4, 0, 0, 4, 4, 0, 0, 4, 0};
    const korvale_points few = points_of(line), points = points_of(square);
    int anything = 0;
    auto* rings = reinterpret_cast<korvale_rings*>(&anything);
    const auto refusal = [&](const korvale_points* outline, double distance) {
        return sentence_of(KORVALE_BAD_ARGUMENT, [&](korvale_error* error) {
            return korvale_offset_rings(outline, distance, nullptr, &rings, error);
        });
    };
    EXPECT_EQ(refusal(&few, 1), "korvale_offset_rings: outline must have at least 3 points, but it has 2");
    EXPECT_EQ(refusal(nullptr, 1), "korvale_offset_rings: outline must be given, but it is null");
    EXPECT_EQ(refusal(&points, NAN), "korvale_offset_rings: distance must be finite, but it is nan");
    EXPECT_EQ(rings, nullptr);
    EXPECT_EQ(
        sentence_of(KORVALE_BAD_ARGUMENT,
                    [&](korvale_error* error) { return korvale_offset_rings(&points, 1, nullptr, nullptr, error); }),
        "korvale_offset_rings: rings must be given, but it is null");
}

/// Follows the course of a call that makes rings of 300 beads, and stops it.
template <class Call>
void expect_telling(const Call& call)
{
    Course course = {{}, 1000000};
    korvale_offset_options options = offset_options(0);
    options.progress = &Course::tell;
    options.user = &course;
    const Numbers outline = beads(300);
    const korvale_points points = points_of(outline);
    korvale_rings* rings = nullptr;
    ASSERT_EQ(call(points, options, &rings, nullptr), KORVALE_OK);
    korvale_rings_free(rings);
    EXPECT_TRUE(std::is_sorted(course.told.begin(), course.told.end()));
    ASSERT_GT(course.told.size(), 100u);
    EXPECT_GE(course.told.front(), 0);
    EXPECT_LE(course.told.back(), 1);
    for (const size_t patience : {size_t{0}, size_t{5}, course.told.size() - 1}) {
        course = {{}, patience};
        korvale_error error;
        EXPECT_EQ(call(points, options, &rings, &error), KORVALE_STOPPED);
        EXPECT_EQ(rings, nullptr);
        EXPECT_EQ(course.told.size(), patience + 1);
    }
}

TEST(DoorOffsetRings, TellHowFarTheyAreAndStopWhenAsked)
{
    expect_telling([](const korvale_points& points, const korvale_offset_options& options, korvale_rings** rings,
                      korvale_error* error) { return korvale_offset_rings(&points, -1, &options, rings, error); });
}

TEST(DoorOffsetDistances, TellHowFarTheyAreAndStopWhenAsked)
{
    const Numbers distances = {-1, -0.25, 0.25, -1.5};
    const korvale_numbers each = numbers_of(distances);
    expect_telling(
        [&](const korvale_points& points, const korvale_offset_options& options, korvale_rings** rings,
            korvale_error* error) { return korvale_offset_distances(&points, &each, &options, rings, error); });
}

/// Lets each allocation of a call fail that makes rings of beads.
template <class Call>
void expect_heap_failures(const Call& call)
{
    NEEDS_HEAP_FAILURES();
    const Numbers outline = beads(4);
    const korvale_points points = points_of(outline);
    const Rings before(outline, -1); // sweeps keep their working memory
    const int64_t failed = fail_each_allocation([&](int64_t) {
        int anything = 0;
        auto* rings = reinterpret_cast<korvale_rings*>(&anything);
        korvale_error error;
        const auto status = call(points, &rings, &error);
        EXPECT_EQ(status, rings == nullptr ? KORVALE_NO_MEMORY : KORVALE_OK);
        korvale_rings_free(rings);
    });
    EXPECT_GT(failed, 30);
}

TEST(DoorOffsetRings, AnExhaustedHeapLeavesNone)
{
    expect_heap_failures([](const korvale_points& points, korvale_rings** rings, korvale_error* error) {
        return korvale_offset_rings(&points, -1, nullptr, rings, error);
    });
}

TEST(DoorOffsetDistances, AnExhaustedHeapLeavesNone)
{
    const Numbers distances = {-1, 0.5, -0.25};
    const korvale_numbers each = numbers_of(distances);
    expect_heap_failures([&](const korvale_points& points, korvale_rings** rings, korvale_error* error) {
        return korvale_offset_distances(&points, &each, nullptr, rings, error);
    });
}

} // namespace korvale::test
