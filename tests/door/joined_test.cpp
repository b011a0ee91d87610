// Outlines sorted into shapes and joined where they overlap by less than a tolerance.
#include <algorithm>
#include <cmath>

#include <gmock/gmock.h>

#include "support.h"
#include "tests/support/heap.h"
#include "tests/support/random.h"

namespace korvale::test {
namespace {

using testing::ElementsAre;

using Coordinates = std::vector<double>;

Coordinates box(double x0, double y0, double x1, double y1)
{
    return {x0, y0, 0, x1, y0, 0, x1, y1, 0, x0, y1, 0};
}

double area_of(const Coordinates& p)
{
    double sum = 0;
    for (size_t i = 0, n = p.size(); i < n; i += 3)
        sum += (p[i] - p[0]) * (p[(i + 4) % n] - p[1]) - (p[(i + 3) % n] - p[0]) * (p[i + 1] - p[1]);
    return sum / 2;
}

/// Outlines joined within a tolerance, or why they are refused.
struct Joined {
    std::vector<Coordinates> outlines;
    std::vector<std::vector<int32_t>> sources;
    std::vector<int32_t> outer, parents;
    std::vector<int> collapsed;
    std::string refusal;

    Joined(const std::vector<Coordinates>& from, double tolerance) : outer(from.size())
    {
        std::vector<korvale_points> views;
        for (const Coordinates& outline : from)
            views.push_back(points_of(outline));
        korvale_rings* rings = nullptr;
        const korvale_shapes_options options = {sizeof options, 0, tolerance, nullptr, nullptr, &rings};
        korvale_error error = {};
        if (korvale_shapes(views.data(), static_cast<int64_t>(views.size()), &options, outer.data(), &error) !=
            KORVALE_OK) {
            EXPECT_EQ(rings, nullptr);
            refusal = error.text;
            return;
        }
        const korvale_ring_arrays all = korvale_rings_view(rings);
        EXPECT_EQ(all.rings, static_cast<int64_t>(from.size()));
        for (int64_t k = 0; k < all.rings; ++k) {
            outlines.emplace_back(all.points + 3 * all.starts[k], all.points + 3 * all.starts[k + 1]);
            sources.emplace_back(all.sources + all.starts[k], all.sources + all.starts[k + 1]);
            EXPECT_EQ(all.births[k], 0);
            EXPECT_EQ(all.ends[k], 0);
        }
        parents.assign(all.parents, all.parents + all.rings);
        collapsed.assign(all.collapsed, all.collapsed + all.rings);
        korvale_rings_free(rings);
    }

    /// The outlines of shape k.
    std::vector<Coordinates> shape(size_t k) const
    {
        std::vector<Coordinates> shape = {outlines[k]};
        for (size_t i = 0; i < outlines.size(); ++i)
            if (i != k && outer[i] == static_cast<int32_t>(k))
                shape.push_back(outlines[i]);
        return shape;
    }
};

TEST(JoinedShapes, StayAsDrawnWhereNothingOverlaps)
{
    const Coordinates plate = box(0, 0, 8, 8), hole = box(2, 2, 4, 4), beside = box(4.01, 2, 6, 4);
    for (const double tolerance : {0.0, 0.05}) {
        const Joined joined({plate, hole, beside, plate, {}}, tolerance);
        EXPECT_THAT(joined.outlines, ElementsAre(plate, hole, beside, Coordinates{}, Coordinates{}));
        EXPECT_THAT(joined.sources[1], ElementsAre(0, 1, 2, 3));
        EXPECT_THAT(joined.outer, ElementsAre(0, 0, 0, -2, -1));
        EXPECT_EQ(joined.parents, joined.outer);
        EXPECT_THAT(joined.collapsed, ElementsAre(0, 0, 0, 1, 1));
    }
}

TEST(JoinedShapes, AreJoinedWhereTheyOverlapByLessThanTheTolerance)
{
    const Coordinates plate = box(0, 0, 10, 10), hole = box(2, 2, 4.01, 4);
    Joined joined({plate, hole, box(4, 2, 6, 4)}, 0.02);
    EXPECT_THAT(joined.outlines, ElementsAre(plate, hole, box(4.01, 2, 6, 4)));
    EXPECT_THAT(joined.outer, ElementsAre(0, 0, 0));
    // beside part of a side: both get the corner of the other, heights are those along the edge
    joined = Joined({plate, hole, {4, 3, 1, 6, 3, 1, 6, 5, 9, 4, 5, 9}}, 0.02);
    EXPECT_THAT(joined.outlines[1], ElementsAre(2, 2, 0, 4.01, 2, 0, 4.01, 3, 0, 4.01, 4, 0, 2, 4, 0));
    EXPECT_THAT(joined.sources[1], ElementsAre(0, 1, 1, 2, 3));
    EXPECT_THAT(joined.outlines[2], ElementsAre(4.01, 3, 1, 6, 3, 1, 6, 5, 9, 4, 5, 9, 4.01, 4, 5));
    EXPECT_THAT(joined.sources[2], ElementsAre(0, 1, 2, 3, 3));
    // out of its plate, and over the next one
    joined = Joined({plate, box(6, 2, 10.01, 4), box(9.99, 0, 12, 10)}, 0.02);
    EXPECT_THAT(joined.outlines[1], ElementsAre(6, 2, 0, 10, 2, 0, 10, 4, 0, 6, 4, 0));
    EXPECT_THAT(joined.outlines[2], ElementsAre(10, 0, 0, 12, 0, 0, 12, 10, 0, 10, 10, 0, 10, 4, 0, 10, 2, 0));
    EXPECT_THAT(joined.outer, ElementsAre(0, 0, 2));
}

TEST(JoinedShapes, OfWhichNothingIsLeftOnceTheyAreJoinedAreNone)
{
    const Coordinates plate = box(0, 0, 10, 10), sliver = box(9.99, 2, 10.01, 8);
    const Joined joined({plate, sliver}, 0.02);
    EXPECT_THAT(joined.outer, ElementsAre(0, -1));
    EXPECT_THAT(joined.collapsed, ElementsAre(0, 1));
    EXPECT_TRUE(joined.outlines[1].empty());
}

/// What a shape covers less what its triangles cover, and how much of these runs the wrong way.
struct Cover {
    double missing = 0, turned = 0, covered = 0;

    explicit Cover(const std::vector<Coordinates>& shape)
    {
        std::vector<korvale_points> views;
        Coordinates all;
        for (const Coordinates& outline : shape) {
            views.push_back(points_of(outline));
            missing += (all.empty() ? 1 : -1) * std::fabs(area_of(outline));
            all.insert(all.end(), outline.begin(), outline.end());
        }
        std::vector<int32_t> corners(all.size() + 6 * shape.size());
        int64_t written = 0;
        EXPECT_EQ(korvale_triangulate(views.data(), static_cast<int64_t>(views.size()), corners.data(),
                                      static_cast<int64_t>(corners.size() / 3), &written, nullptr, nullptr, nullptr),
                  KORVALE_OK);
        const double way = area_of(shape[0]) < 0 ? -1 : 1;
        for (size_t t = 0; t < static_cast<size_t>(3 * written); t += 3) {
            Coordinates triangle;
            for (size_t k = 0; k < 3; ++k)
                triangle.insert(triangle.end(), &all[3 * static_cast<size_t>(corners[t + k])],
                                &all[3 * static_cast<size_t>(corners[t + k])] + 3);
            const double area = way * area_of(triangle);
            missing -= std::fabs(area);
            covered += std::fabs(area);
            turned += std::max(0.0, -area);
        }
    }
};

std::string bevel_refusal(const std::vector<Coordinates>& shape)
{
    std::vector<korvale_points> views;
    for (const Coordinates& outline : shape)
        views.push_back(points_of(outline));
    const korvale_bevel_step profile[] = {{0, 0}, {0, 1}};
    korvale_mesh* mesh = nullptr;
    korvale_error error = {};
    korvale_bevel(views.data(), static_cast<int64_t>(views.size()), profile, 2, nullptr, &mesh, &error);
    korvale_mesh_free(mesh);
    return error.text;
}

TEST(JoinedShapes, LoseSmallLoops)
{
    // the last corner is crossed a little beyond its place
    const Coordinates looped = {0, 0, 0, 8, 0, 0, 8, 8, 0, -0.01, 8, 0, 0.01, 8.01, 0, 0, 7, 0};
    const Joined joined({looped, box(7.99, 2, 9, 4)}, 0.02);
    EXPECT_EQ(joined.refusal, "");
    EXPECT_EQ(joined.outlines[0].size(), 3u * 7u);
    EXPECT_THAT(joined.sources[0], ElementsAre(0, 1, 1, 1, 2, 3, 5));
    EXPECT_NEAR(Cover(joined.shape(0)).missing, 0, 1e-14); // a sum of areas below 10, rounded by 2e-15
}

/// Squares of a lattice, each with a hole as wide, some of them one behind the other, all corners moved a little, and
/// points on sides.
std::vector<Coordinates> drawing(Random& random, double jitter)
{
    const double c = std::cos(random.uniform(0, 6)), s = std::sqrt(1 - c * c);
    const auto drawn = [&](int x, int y, int columns, int rows) {
        const double corners[][2] = {{0, 0}, {1, 0}, {1, 1}, {0, 1}};
        Coordinates outline;
        for (int i = 0; i < 4; ++i)
            for (const double share : {0.0, random.uniform(0.1, 0.4), random.uniform(0.6, 0.9)}) {
                if (share > 0 && !random.one_in(3))
                    continue;
                const double *const a = corners[i], *const b = corners[(i + 1) % 4];
                const double u = x + columns * (a[0] + share * (b[0] - a[0])) + random.uniform(-jitter, jitter),
                             v = y + rows * (a[1] + share * (b[1] - a[1])) + random.uniform(-jitter, jitter);
                outline.insert(outline.end(), {c * u - s * v, s * u + c * v, 0.0});
            }
        return outline;
    };
    std::vector<Coordinates> outlines;
    for (int x = 0; x < 3; ++x) {
        const int from = 4 * x;
        outlines.push_back(drawn(from, 0, 4, 4));
        for (int y = 0; y < 4; ++y)
            for (int column = from; column < from + 4;) {
                const int columns = std::min(random.between(1, 3), from + 4 - column);
                if (!random.one_in(3))
                    outlines.push_back(drawn(column, y, columns, 1));
                column += columns;
            }
    }
    for (size_t k = outlines.size(); k > 1; --k)
        std::swap(outlines[k - 1], outlines[static_cast<size_t>(random.between(0, static_cast<int>(k) - 1))]);
    return outlines;
}

TEST(JoinedShapes, AreTakenByTriangulateAndBevel)
{
    Random random(4343);
    int refused = 0, filled = 0;
    for (int round = 0; round < rounds(200); ++round) {
        const testing::ScopedTrace trace(__FILE__, __LINE__, testing::Message() << "round " << round);
        const double tolerance = random.one_in(2) ? 0.05 : 0.002;
        const std::vector<Coordinates> outlines = drawing(random, 0.34 * tolerance);
        const Joined joined(outlines, tolerance);
        if (!joined.refusal.empty()) {
            ++refused;
            continue;
        }
        int shapes = 0;
        for (size_t k = 0; k < outlines.size(); ++k) {
            if (joined.outer[k] != static_cast<int32_t>(k))
                continue;
            const std::vector<Coordinates> shape = joined.shape(k);
            const Cover cover(shape);
            EXPECT_NEAR(cover.missing, 0, 1e-12); // a sum of some areas below 400, rounded by 6e-14
            EXPECT_LE(cover.turned, 1e-9);
            const bool is_filled = cover.covered < 1e-9;
            filled += is_filled ? 1 : 0;
            EXPECT_EQ(bevel_refusal(shape), is_filled ? "korvale_bevel: outlines must be an outer one and holes that "
                                                        "leave some of it, but the holes fill it"
                                                      : "");
            ++shapes;
        }
        EXPECT_GE(shapes, 3);
        for (size_t k = 0; k < outlines.size(); ++k)
            for (size_t i = 0, last = SIZE_MAX; i < joined.sources[k].size(); ++i) {
                const auto source = static_cast<size_t>(joined.sources[k][i]);
                if (source == last)
                    continue; // on the edge behind
                last = source;
                const double far = std::hypot(joined.outlines[k][3 * i] - outlines[k][3 * source],
                                              joined.outlines[k][3 * i + 1] - outlines[k][3 * source + 1]);
                EXPECT_LE(far, 2 * tolerance);
            }
    }
    EXPECT_EQ(refused, 0);
    EXPECT_GT(filled, 0);
}

TEST(JoinedShapes, SayWhereTheyCannotBeJoined)
{
    // along a way there and back whose sides cross
    const Coordinates way = {0, 0, 0, 9, 0, 0, 9, 9, 0, 0, 9, 0, 0, 5, 0, 3, 4.99, 0,
                             3, 6, 0, 6, 6, 0, 6, 3, 0, 3, 3, 0, 3, 5, 0, 0, 4.99, 0};
    EXPECT_EQ(
        Joined({way}, 0.02).refusal,
        "korvale_shapes: outline 0 must not cross itself by less than the tolerance, but it does near (1.5, 4.995); "
        "set a smaller tolerance, or mend it there");
}

TEST(JoinedShapes, SayWhenTheHeapIsExhausted)
{
    NEEDS_HEAP_FAILURES();
    const Coordinates plate = box(0, 0, 10, 10), hole = box(2, 2, 4.01, 4), beside = box(4, 3, 6, 5);
    const korvale_points outlines[] = {points_of(plate), points_of(hole), points_of(beside)};
    const int64_t failed = fail_each_allocation([&](int64_t) {
        korvale_error error = {};
        int32_t outer[3] = {-7, -7, -7};
        korvale_rings* rings = nullptr;
        const korvale_shapes_options options = {sizeof options, 0, 0.02, nullptr, nullptr, &rings};
        if (korvale_shapes(outlines, 3, &options, outer, &error) == KORVALE_OK) {
            EXPECT_THAT(outer, ElementsAre(0, 0, 0));
        } else {
            EXPECT_STREQ(error.text, "korvale_shapes: the heap is exhausted");
            EXPECT_THAT(outer, ElementsAre(-7, -7, -7));
            EXPECT_EQ(rings, nullptr);
        }
        korvale_rings_free(rings);
    });
    EXPECT_GT(failed, 20);
}

TEST(JoinedShapes, TellHowFarTheyAreAndStopWhenAsked)
{
    Random random(4344);
    std::vector<Coordinates> boxes;
    std::vector<korvale_points> views;
    for (int i = 0; i < 2000; ++i)
        boxes.push_back(box(i - random.uniform(0, 0.01), 0, i + 1, 1));
    for (const Coordinates& outline : boxes)
        views.push_back(points_of(outline));
    std::vector<int32_t> outer(2000), stopped(2000, -7);
    Told told;
    korvale_rings* rings = nullptr;
    korvale_shapes_options options = {sizeof options, 0, 0.02, &Told::tell, &told, &rings};
    ASSERT_EQ(korvale_shapes(views.data(), 2000, &options, outer.data(), nullptr), KORVALE_OK);
    korvale_rings_free(rings);
    EXPECT_TRUE(std::ranges::is_sorted(told.done));
    EXPECT_GE(told.done.front(), 0);
    EXPECT_LE(told.done.back(), 1);
    for (const double end : {0.0, 0.3, 0.5, 0.6}) {
        told = {{}, end};
        korvale_error error;
        EXPECT_EQ(korvale_shapes(views.data(), 2000, &options, stopped.data(), &error), KORVALE_STOPPED) << end;
        EXPECT_EQ(stopped, std::vector<int32_t>(2000, -7));
        EXPECT_EQ(rings, nullptr);
    }
}

} // namespace
} // namespace korvale::test
