// Many outlines moved in one call, against `korvale_offset` on each of them.
#include <korvale.h>

#include <array>
#include <cmath>
#include <cstdlib>
#include <numeric>
#include <thread>

#include <gmock/gmock.h>

#include "support.h"
#include "tests/support/bits.h"
#include "tests/support/heap.h"
#include "tests/support/random.h"

namespace korvale::test {
namespace {

using testing::ElementsAre;

// A square of side 4, then one of side 2 that lies in it and runs the other way, then a triangle.
const Numbers kPoints = {0, 0, 0, 4, 0, 0, 4, 4, 0, 0, 4,  0, 1, 1, 0,  1, 3,
                         0, 3, 3, 0, 3, 1, 0, 9, 9, 5, 12, 9, 5, 9, 13, 5};
const std::vector<int32_t> kStarts = {0, 4, 8, 11};

template <class Index>
korvale_indices indices_of(const std::vector<Index>& starts, int32_t kind = KORVALE_INT32)
{
    return {starts.data(), static_cast<int64_t>(starts.size()), 0, kind};
}

/// Borders of one call.
class Many {
public:
    Many(const korvale_points& points, const korvale_indices& starts, const Numbers& distances,
         korvale_offset_options options = offset_options(0))
    {
        const korvale_numbers numbers = rows_of(distances);
        EXPECT_EQ(korvale_offset_many(&points, &starts, &numbers, &options, &borders_, nullptr), KORVALE_OK);
    }
    ~Many() { korvale_borders_free(borders_); }
    Many(const Many&) = delete;
    Many& operator=(const Many&) = delete;

    korvale_border_arrays view() const { return korvale_borders_view(borders_); }
    int64_t size(int64_t k) const { return view().starts[k + 1] - view().starts[k]; }
    std::vector<int32_t> sources() const { return {view().sources, view().sources + view().starts[view().outlines]}; }
    Numbers border(int64_t k) const
    {
        const korvale_border_arrays all = view();
        return {all.points + 3 * all.starts[k], all.points + 3 * all.starts[k + 1]};
    }
    korvale_borders* get() const { return borders_; }

private:
    korvale_borders* borders_ = nullptr;
};

/// Whether border k is what `korvale_offset` makes of the outline alone. Its vertices are those from `start` on, the
/// entries of vertices those from `at` on.
testing::AssertionResult is_alone(const Many& many, int64_t k, const korvale_points& outline, double distance,
                                  const korvale_offset_options& options, int32_t start, int64_t at)
{
    const auto n = static_cast<size_t>(outline.count);
    Numbers points(3 * n);
    std::vector<uint8_t> removed(n);
    std::vector<int32_t> merged_into(n);
    korvale_border alone = {points.data(), removed.data(), merged_into.data(), 0, 0, 0, 0};
    EXPECT_EQ(korvale_offset(&outline, distance, &options, &alone, nullptr), KORVALE_OK);
    const korvale_border_arrays all = many.view();
    const int64_t first = all.starts[k];
    if (many.size(k) != alone.count)
        return testing::AssertionFailure() << many.size(k) << " points, not " << alone.count;
    if (!same_bits(points.data(), all.points + 3 * first, 3 * alone.count))
        return testing::AssertionFailure() << "other points";
    if (all.collapsed[k] != alone.collapsed)
        return testing::AssertionFailure() << "collapsed " << int{all.collapsed[k]};
    int64_t live = 0;
    for (size_t i = 0; i < n; ++i) {
        const int64_t v = at + static_cast<int64_t>(i);
        if (all.removed[v] != removed[i] || all.merged_into[v] != start + merged_into[i])
            return testing::AssertionFailure() << "other fate of vertex " << i;
        if (options.keep_vertices != 0 || removed[i] == 0)
            if (all.sources[first + live++] != start + static_cast<int32_t>(i))
                return testing::AssertionFailure() << "no point for vertex " << i;
    }
    return live == alone.count ? testing::AssertionSuccess() : testing::AssertionFailure() << live << " sources";
}

TEST(DoorOffsetMany, MovesEachOutlineOutwardsByItself)
{
    const Many many(points_of(kPoints), indices_of(kStarts), {0.5});
    const korvale_border_arrays all = many.view();
    EXPECT_EQ(all.outlines, 3);
    EXPECT_EQ(all.vertices, 11);
    EXPECT_EQ(all.first, 0);
    EXPECT_THAT(std::vector<int64_t>(all.starts, all.starts + 4), ElementsAre(0, 4, 8, 11));
    EXPECT_THAT(many.border(0), testing::Pointwise(testing::DoubleNear(4e-15),
                                                   Numbers({-0.5, -0.5, 0, 4.5, -0.5, 0, 4.5, 4.5, 0, -0.5, 4.5, 0})));
    EXPECT_THAT(many.border(1), testing::Pointwise(testing::DoubleNear(4e-15),
                                                   Numbers({0.5, 0.5, 0, 0.5, 3.5, 0, 3.5, 3.5, 0, 3.5, 0.5, 0})));
    EXPECT_THAT(many.border(2),
                testing::Pointwise(testing::DoubleNear(4e-15), Numbers({8.5, 8.5, 5, 13, 8.5, 5, 8.5, 14.5, 5})));
    EXPECT_THAT(many.sources(), ElementsAre(0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10));
}

TEST(DoorOffsetMany, MovesEachByItsOwnDistance)
{
    const Many many(points_of(kPoints), indices_of(kStarts), {0.5, -0.5, -2});
    EXPECT_NEAR(many.border(0)[0], -0.5, 2e-16); // a rounding
    EXPECT_EQ(many.border(1)[0], 1.5);
    const korvale_border_arrays all = many.view();
    EXPECT_THAT(std::vector<uint8_t>(all.collapsed, all.collapsed + 3), ElementsAre(0, 0, 1));
}

TEST(DoorOffsetMany, NumbersVerticesAsThePointsHandedIn)
{
    // Of the outlines behind the first one, whose notch of point 9 vanishes.
    Numbers points(kPoints.begin(), kPoints.begin() + 12);
    for (const double number : {0., 0., 4., 0., 4., 4., 2.1, 4., 2., 3.9, 1.9, 4., 0., 4.})
        points.push_back(number);
    Numbers flat(points.begin() + 12, points.end()), lifted(points.begin(), points.begin() + 12);
    for (size_t i = 0; i < 7; ++i)
        lifted.insert(lifted.end(), {flat[2 * i], flat[2 * i + 1], 0});
    const Many many(points_of(lifted), indices_of(std::vector<int32_t>{4, 11}), {1}, offset_options(0, 0));
    const korvale_border_arrays all = many.view();
    EXPECT_EQ(all.first, 4);
    EXPECT_EQ(all.vertices, 7);
    EXPECT_THAT(many.sources(), ElementsAre(4, 5, 6, 9, 10));
    EXPECT_THAT(std::vector<uint8_t>(all.removed, all.removed + 7), ElementsAre(0, 0, 0, 1, 1, 0, 0));
    for (int i = 0; i < 7; ++i)
        EXPECT_EQ(all.merged_into[i] == 4 + i, all.removed[i] == 0) << i;
}

TEST(DoorOffsetMany, HasNoBordersOfNoOutlines)
{
    for (const korvale_points& points : {points_of(kPoints), korvale_points{nullptr, 0, 0, 3, KORVALE_DOUBLE}}) {
        const Many many(points, indices_of(std::vector<int32_t>{0}), {1});
        EXPECT_EQ(many.view().outlines, 0);
        EXPECT_EQ(many.view().starts[0], 0);
    }
    EXPECT_EQ(korvale_borders_view(nullptr).points, nullptr);
    EXPECT_EQ(korvale_borders_take(nullptr).starts, nullptr);
    korvale_borders_free(nullptr);
}

TEST(DoorOffsetMany, HandsTheArraysOver)
{
    const Many many(points_of(kPoints), indices_of(kStarts), {0.5});
    const Numbers expected = many.border(2);
    const korvale_border_arrays taken = korvale_borders_take(many.get());
    EXPECT_EQ(Numbers(taken.points + 24, taken.points + 33), expected);
    EXPECT_EQ(taken.vertices, 11);
    EXPECT_EQ(many.view().points, nullptr);
    EXPECT_EQ(many.view().outlines, 0);
    EXPECT_EQ(korvale_borders_take(many.get()).points, nullptr);
    for (void* const block : {static_cast<void*>(taken.points), static_cast<void*>(taken.starts),
                              static_cast<void*>(taken.sources), static_cast<void*>(taken.collapsed),
                              static_cast<void*>(taken.removed), static_cast<void*>(taken.merged_into)})
        std::free(block);
}

/// Outlines of any shape and size, most of them ordinary.
struct Outlines {
    Numbers points;
    std::vector<int64_t> starts;

    Outlines(Random& random, int count)
    {
        for (int skipped = random.below(3); skipped > 0; --skipped)
            points.insert(points.end(), {7, 8, 9});
        starts.push_back(static_cast<int64_t>(points.size() / 3));
        for (int k = 0; k < count; ++k) {
            const double size = random.one_in(8) ? std::pow(10.0, random.uniform(-9, 9)) : random.uniform(1, 20);
            const double tilt = random.one_in(2) ? random.uniform(-1, 1) : 0, at = size * random.uniform(-9, 9);
            const int n = random.one_in(20) ? random.between(60, 300) : random.between(3, 60);
            const double way = random.one_in(2) ? 1 : -1, least = random.one_in(4) ? 1 : random.uniform(0.1, 1);
            for (int i = 0; i < n; ++i) {
                const double angle = way * 6.283185307179586 * i / n, r = size * random.uniform(least, 1);
                const double x = at + r * std::cos(angle), y = r * std::sin(angle);
                points.insert(points.end(), {x, y, tilt * x});
            }
            starts.push_back(static_cast<int64_t>(points.size() / 3));
        }
        for (int skipped = random.below(3); skipped > 0; --skipped)
            points.insert(points.end(), {7, 8, 9});
    }

    int64_t size() const { return static_cast<int64_t>(starts.size()) - 1; }
};

TEST(DoorOffsetMany, GivesWhatEachOutlineGivesAlone)
{
    Random random(1218);
    for (int round = 0; round < rounds(300); ++round) {
        const Outlines outlines(random, random.below(30));
        korvale_offset_options options = offset_options(random.one_in(2) ? 0 : random.uniform(-3, 3));
        options.keep_vertices = random.between(0, 1);
        options.split = random.one_in(4) ? 0 : 1;
        Numbers distances;
        for (int64_t k = random.one_in(3) ? 1 : outlines.size(); k > 0; --k)
            distances.push_back(random.one_in(9) ? 0 : random.uniform(-6, 6));
        if (distances.empty())
            distances.push_back(1);

        // Packed, as floats, and of two coordinates amid others.
        std::vector<float> floats(outlines.points.begin(), outlines.points.end());
        const int64_t count = static_cast<int64_t>(outlines.points.size() / 3);
        const int layout = random.below(3);
        const korvale_points packed = points_of(outlines.points);
        const korvale_points points = layout == 0   ? packed
                                      : layout == 1 ? korvale_points{floats.data(), count, 12, 3, KORVALE_FLOAT}
                                                    : korvale_points{outlines.points.data(), count, 24, 2, 0};
        const Many many(points, indices_of(outlines.starts, KORVALE_INT64), distances, options);
        ASSERT_EQ(many.view().outlines, outlines.size());
        for (int64_t k = 0; k < outlines.size(); ++k) {
            const int64_t start = outlines.starts[static_cast<size_t>(k)];
            korvale_points outline = points;
            outline.data =
                static_cast<const char*>(points.data) + start * points.stride + (points.stride == 0 ? 24 * start : 0);
            outline.count = outlines.starts[static_cast<size_t>(k) + 1] - start;
            const double distance = distances[distances.size() == 1 ? 0 : static_cast<size_t>(k)];
            ASSERT_TRUE(
                is_alone(many, k, outline, distance, options, static_cast<int32_t>(start), start - outlines.starts[0]))
                << "round " << round << ", outline " << k;
        }
    }
}

TEST(DoorOffsetMany, PartsInThreadsGiveWhatTheWholeGives)
{
    Random random(1219);
    const Outlines outlines(random, 500);
    const korvale_points points = points_of(outlines.points);
    const Many whole(points, indices_of(outlines.starts, KORVALE_INT64), {0.3});
    std::vector<std::thread> threads;
    for (int64_t part = 0; part < 4; ++part)
        threads.emplace_back([&, part] {
            const std::vector<int64_t> starts(outlines.starts.begin() + 125 * part,
                                              outlines.starts.begin() + 125 * part + 126);
            for (int again = 0; again < 3; ++again) {
                const Many many(points, indices_of(starts, KORVALE_INT64), {0.3});
                const korvale_border_arrays all = many.view(), of_whole = whole.view();
                const int64_t at = of_whole.starts[125 * part], n = all.starts[125];
                EXPECT_EQ(of_whole.starts[125 * part + 125] - at, n);
                EXPECT_TRUE(same_bits(of_whole.points + 3 * at, all.points, 3 * n));
                EXPECT_TRUE(std::equal(all.sources, all.sources + n, of_whole.sources + at));
            }
        });
    for (std::thread& thread : threads)
        thread.join();
}

/// A call that is refused and leaves no borders; the sentence without the function's name.
std::string refusal(const korvale_points* points, const korvale_indices* starts, const korvale_numbers* distances,
                    const korvale_offset_options* options = nullptr)
{
    int anything = 0;
    auto* borders = reinterpret_cast<korvale_borders*>(&anything);
    const std::string sentence = sentence_of(KORVALE_BAD_ARGUMENT, [&](korvale_error* error) {
        return korvale_offset_many(points, starts, distances, options, &borders, error);
    });
    EXPECT_EQ(borders, nullptr);
    const std::string function = "korvale_offset_many: ";
    EXPECT_EQ(sentence.substr(0, function.size()), function);
    return sentence.substr(function.size());
}

TEST(DoorOffsetMany, SaysWhatItRefuses)
{
    const korvale_points points = points_of(kPoints);
    const korvale_indices starts = indices_of(kStarts);
    const Numbers one = {1}, two = {1, 2}, infinite = {1, INFINITY, 2};
    const korvale_numbers distance = rows_of(one), distances = rows_of(two), endless = rows_of(infinite);
    const auto refusal_of_starts = [&](const std::vector<int64_t>& given) {
        const korvale_indices indices = indices_of(given, KORVALE_INT64);
        return refusal(&points, &indices, &distance);
    };
    EXPECT_EQ(refusal_of_starts({0, 4, 6, 11}), "outline 1 must have at least 3 points, but it has 2");
    EXPECT_EQ(refusal_of_starts({0, 4, 4}), "outline 1 must have at least 3 points, but it has 0");
    EXPECT_EQ(refusal_of_starts({0, 8, 4}), "starts must ascend, but number 2 is 4, behind 8");
    EXPECT_EQ(refusal_of_starts({0, 4, 12}), "starts must be 0 to 11, but number 2 is 12");
    EXPECT_EQ(refusal_of_starts({-1, 4}), "starts must be 0 to 11, but number 0 is -1");
    EXPECT_EQ(refusal_of_starts({0, int64_t{1} << 40}), "starts must be 0 to 11, but number 1 is 1099511627776");
    EXPECT_EQ(refusal_of_starts({}), "starts must have one number more than there are outlines, but there are none");
    EXPECT_EQ(refusal(nullptr, &starts, &distance), "points must be given, but it is null");
    EXPECT_EQ(refusal(&points, nullptr, &distance), "starts must be given, but it is null");
    EXPECT_EQ(refusal(&points, &starts, nullptr), "distances must be given, but it is null");
    EXPECT_EQ(refusal(&points, &starts, &distances),
              "distances must have 1 value, or 3, one for each outline, but they have 2");
    EXPECT_EQ(refusal(&points, &starts, &endless), "distances must be finite, but number 1 is inf");
    const korvale_numbers wide = rows_of(two, 2);
    EXPECT_EQ(refusal(&points, &starts, &wide), "distances must have a width of 1, but it is 2");
    korvale_points bad = points;
    bad.dim = 4;
    EXPECT_EQ(refusal(&bad, &starts, &distance), "points must have a dim of 2 or 3, but it is 4");
    bad = points;
    bad.data = nullptr;
    EXPECT_EQ(refusal(&bad, &starts, &distance), "points must have data, but it is null");
    bad = points;
    bad.count = -3;
    EXPECT_EQ(refusal(&bad, &starts, &distance), "points must have a count of 0 or more, but it is -3");
    Numbers holed = kPoints;
    holed[3 * 6 + 1] = NAN;
    const korvale_points not_finite = points_of(holed);
    EXPECT_EQ(refusal(&not_finite, &starts, &distance), "outline 1 must be finite, but its point 2 is (3, nan, 0)");
    const korvale_offset_options options = offset_options(NAN);
    EXPECT_EQ(refusal(&points, &starts, &distance, &options), "options.height must be finite, but it is nan");
    korvale_error error;
    EXPECT_EQ(korvale_offset_many(&points, &starts, &distance, nullptr, nullptr, &error), KORVALE_BAD_ARGUMENT);
    EXPECT_STREQ(error.text, "korvale_offset_many: borders must be given, but it is null");
    // Points of no outline are not looked at.
    const std::vector<int32_t> before = {0, 4};
    const Many many(not_finite, indices_of(before), {1});
    EXPECT_EQ(many.view().outlines, 1);
}

TEST(DoorOffsetMany, TellsOfItsProgressAndStopsWhenAsked)
{
    Random random(1220);
    Outlines outlines(random, 1000);
    for (int i = 0; i < 20000; ++i) { // one that takes long itself
        const double turn = 6.283185307179586 * i / 20000, radius = i % 2 == 0 ? 10 : 9.9 - 0.001 * (i % 37);
        outlines.points.insert(outlines.points.begin() + 3 * (outlines.starts.back() + i),
                               {radius * std::cos(turn), radius * std::sin(turn), 0});
    }
    outlines.starts.push_back(outlines.starts.back() + 20000);
    const korvale_points points = points_of(outlines.points);
    const korvale_indices starts = indices_of(outlines.starts, KORVALE_INT64);
    Course course = {{}, SIZE_MAX};
    korvale_offset_options options = offset_options(0);
    options.progress = &Course::tell;
    options.user = &course;
    const Many told(points, starts, {0.3}, options), silent(points, starts, {0.3});
    EXPECT_TRUE(same_bits(silent.view().points, told.view().points, 3 * silent.view().starts[1001]));
    EXPECT_GT(course.told.size(), 20u);
    EXPECT_TRUE(std::is_sorted(course.told.begin(), course.told.end()));
    EXPECT_GT(course.told.front(), 0);
    EXPECT_LE(course.told.back(), 1);

    const Numbers one = {0.3};
    const korvale_numbers distance = rows_of(one);
    for (const size_t patience : {size_t{0}, size_t{5}, course.told.size() - 1}) {
        course = {{}, patience};
        int anything = 0;
        auto* borders = reinterpret_cast<korvale_borders*>(&anything);
        korvale_error error;
        EXPECT_EQ(korvale_offset_many(&points, &starts, &distance, &options, &borders, &error), KORVALE_STOPPED);
        EXPECT_STREQ(error.text, "korvale_offset_many: it was asked to stop");
        EXPECT_EQ(borders, nullptr);
        EXPECT_EQ(course.told.size(), patience + 1);
    }
}

TEST(DoorOffsetMany, AnExhaustedHeapLeavesNoBorders)
{
    NEEDS_HEAP_FAILURES();
    Numbers flat; // two coordinates, and 16-bit starts: copies of both
    for (size_t i = 0; i < kPoints.size(); i += 3)
        flat.insert(flat.end(), {kPoints[i], kPoints[i + 1]});
    const korvale_points points = {flat.data(), 11, 0, 2, KORVALE_DOUBLE};
    const std::vector<int16_t> shorts(kStarts.begin(), kStarts.end());
    const korvale_indices starts = indices_of(shorts, KORVALE_INT16);
    const Numbers one = {0.5};
    const korvale_numbers distance = rows_of(one);
    const int64_t failed = fail_each_allocation([&](int64_t) {
        int anything = 0;
        auto* borders = reinterpret_cast<korvale_borders*>(&anything);
        korvale_error error;
        const auto status = korvale_offset_many(&points, &starts, &distance, nullptr, &borders, &error);
        EXPECT_EQ(status, borders == nullptr ? KORVALE_NO_MEMORY : KORVALE_OK);
        if (status != KORVALE_OK) {
            EXPECT_STREQ(error.text, "korvale_offset_many: the heap is exhausted");
        }
        korvale_borders_free(borders);
    });
    EXPECT_GE(failed, 12); // copies, the handle, six arrays, three of the sweep
}

} // namespace
} // namespace korvale::test
