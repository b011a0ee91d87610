// Rings of moved outlines, taken apart, and outlines that fall into many.
#pragma once

#include <korvale.h>

#include <algorithm>
#include <cmath>

#include <gmock/gmock.h>

#include "rings.h"
#include "support.h"
#include "tests/support/bits.h"
#include "tests/support/heap.h"
#include "tests/support/outlines.h"

namespace korvale::test {

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

inline korvale_numbers numbers_of(const Numbers& numbers)
{
    return {numbers.data(), static_cast<int64_t>(numbers.size()), 0, 1, KORVALE_DOUBLE};
}

/// What becomes of an outline at each of some distances, in one call.
inline std::vector<Copied> rings_of(const Numbers& outline, const Numbers& distances,
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
inline std::string difference(const Copied& a, const Copied& b)
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
inline std::string difference(const Copied& one, const Rings& alone)
{
    return difference(one, Copied(alone.view(), 0, alone.size()));
}

inline double area_of(const Rings& rings)
{
    double area = 0;
    for (int64_t k = 0; k < rings.size(); ++k)
        area += area_of(rings.ring(k));
    return area;
}

inline double length_of(const Rings& rings)
{
    double length = 0;
    for (int64_t k = 0; k < rings.size(); ++k)
        length += length_of(rings.ring(k));
    return length;
}

/// Whether two edges of the rings cross.
inline bool do_cross(const Rings& rings)
{
    std::vector<Numbers> all;
    for (int64_t k = 0; k < rings.size(); ++k)
        all.push_back(rings.ring(k));
    return do_cross(all);
}

inline Numbers any_outline(Random& random)
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
inline Numbers beads(int count)
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
inline Numbers any_crowd(Random& random)
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

} // namespace korvale::test
