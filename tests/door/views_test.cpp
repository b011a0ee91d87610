// Buffers of a host as the cores see them.
#include "door/internal/views.h"

#include <cmath>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace korvale::door {
namespace {

using testing::ElementsAre;

/// The sentence of a refusal, without the function.
template <class Body>
std::string refusal_of(Body body)
{
    korvale_error error;
    return answer(&error, "f", body) == KORVALE_OK ? "" : std::string(error.text).substr(3);
}

TEST(PointsIn, PackedDoublesAreReadInPlace)
{
    const double xyz[] = {1, 2, 3, 4, 5, 6};
    for (const int64_t stride : {0, 24}) {
        const korvale_points points = {xyz, 2, stride, 0, KORVALE_DOUBLE};
        const PointsIn in(&points, "points");
        EXPECT_EQ(in.data(), xyz);
        EXPECT_EQ(in.size(), 2);
        EXPECT_EQ(in[1], (Point{4, 5, 6}));
    }
}

TEST(PointsIn, TwoCoordinatesHaveZ0)
{
    const double xy[] = {1, 2, 3, 4};
    const korvale_points points = {xy, 2, 0, 2, KORVALE_DOUBLE};
    const PointsIn in(&points, "points");
    EXPECT_THAT(in.points(), ElementsAre(Point{1, 2, 0}, Point{3, 4, 0}));
    EXPECT_FALSE(std::signbit(in[0].z));
}

TEST(PointsIn, FloatsAndStridesAreReadIntoACopy)
{
    struct Vertex {
        float x, y, z, u, v;
    };
    const Vertex vertices[] = {{0.1f, 2, 3, 9, 9}, {4, 5, 6, 9, 9}};
    const korvale_points points = {&vertices[0].x, 2, sizeof(Vertex), 3, KORVALE_FLOAT};
    const PointsIn in(&points, "points");
    EXPECT_THAT(in.points(), ElementsAre(Point{double{0.1f}, 2, 3}, Point{4, 5, 6}));
}

TEST(PointsIn, StridesMayBeNegativeAndPlacesUnaligned)
{
    const double xyz[] = {1, 2, 3, 4, 5, 6};
    const korvale_points backwards = {xyz + 3, 2, -24, 3, KORVALE_DOUBLE};
    EXPECT_THAT(PointsIn(&backwards, "points").points(), ElementsAre(Point{4, 5, 6}, Point{1, 2, 3}));

    char bytes[25];
    std::memcpy(bytes + 1, xyz, 24);
    const korvale_points odd = {bytes + 1, 1, 0, 3, KORVALE_DOUBLE};
    EXPECT_THAT(PointsIn(&odd, "points").points(), ElementsAre(Point{1, 2, 3}));
}

TEST(PointsIn, RefusesWhatIsNoBuffer)
{
    const double xyz[] = {1, 2, 3};
    const auto text = [](const korvale_points& points) { return refusal_of([&] { PointsIn(&points, "path"); }); };
    EXPECT_EQ(text({xyz, 1, 0, 3, 0}), "");
    EXPECT_EQ(text({nullptr, 0, 0, 3, 0}), "");
    EXPECT_EQ(text({nullptr, 1, 0, 3, 0}), "path must have data, but it is null");
    EXPECT_EQ(text({xyz, -1, 0, 3, 0}), "path must have a count of 0 or more, but it is -1");
    EXPECT_EQ(text({xyz, 1, 0, 4, 0}), "path must have a dim of 2 or 3, but it is 4");
    EXPECT_EQ(text({xyz, 1, 0, 1, 0}), "path must have a dim of 2 or 3, but it is 1");
    EXPECT_EQ(text({xyz, 1, 0, 3, 2}), "path must be of kind KORVALE_DOUBLE or KORVALE_FLOAT, but its kind is 2");
    EXPECT_EQ(text({xyz, 715827882, 0, 3, 0}), ""); // read in place, so nothing is touched
    EXPECT_EQ(text({xyz, 715827883, 0, 3, 0}), "path must have at most 715827882 elements, but it has 715827883");
    EXPECT_EQ(refusal_of([] { PointsIn(nullptr, "path"); }), "path must be given, but it is null");
}

TEST(PointsOut, PackedDoublesAreWrittenInPlace)
{
    double xyz[] = {1, 2, 3};
    const korvale_points_out points = {xyz, 1, 0, 0, KORVALE_DOUBLE};
    PointsOut out(&points, "points", PointsOut::Use::write);
    EXPECT_EQ(out.data(), xyz);
}

TEST(PointsOut, AllElseIsHandedOverAtTheEnd)
{
    float xy[] = {1, 2, 7, 3, 4, 7};
    const korvale_points_out points = {xy, 2, 12, 2, KORVALE_FLOAT};
    PointsOut out(&points, "points", PointsOut::Use::change);
    EXPECT_THAT(out.points(), ElementsAre(Point{1, 2, 0}, Point{3, 4, 0}));
    out[0] = {0.1, 20, 30};
    out[1] = {30, 1e300, 0};
    EXPECT_EQ(xy[0], 1.0f);
    out.give_back();
    EXPECT_THAT(xy, ElementsAre(0.1f, 20.0f, 7.0f, 30.0f, std::numeric_limits<float>::infinity(), 7.0f));
}

TEST(NumbersIn, RowsHaveAWidth)
{
    const double values[] = {1, 2, 3, 4, 5, 6};
    const korvale_numbers packed = {values, 3, 0, 2, KORVALE_DOUBLE}, apart = {values, 3, 16, 1, KORVALE_DOUBLE};
    const NumbersIn rows(&packed, "values"), column(&apart, "values");
    EXPECT_EQ(rows.data(), values);
    EXPECT_EQ(rows.width(), 2);
    EXPECT_THAT(std::span(column.data(), 3), ElementsAre(1, 3, 5));
    const korvale_numbers one = {values, 6, 0, 0, KORVALE_DOUBLE};
    EXPECT_EQ(NumbersIn(&one, "values").width(), 1);
    const korvale_numbers wrong = {values, 1, 0, -1, KORVALE_DOUBLE};
    EXPECT_EQ(refusal_of([&] { NumbersIn(&wrong, "values"); }), "values must have a width of 0 or more, but it is -1");
}

TEST(NumbersOut, StridesAreKept)
{
    double values[] = {1, 2, 3, 4};
    const korvale_numbers_out out = {values, 2, 16, 1, KORVALE_DOUBLE};
    NumbersOut column(&out, "values", PointsOut::Use::change);
    column.data()[0] = 10;
    column.data()[1] = 30;
    column.give_back();
    EXPECT_THAT(values, ElementsAre(10, 2, 30, 4));
}

TEST(IndicesIn, AnyKindIsRead)
{
    const int32_t ints[] = {0, 7};
    const korvale_indices in_place = {ints, 2, 0, KORVALE_INT32};
    EXPECT_EQ(IndicesIn(&in_place, "corners").data(), ints);

    const uint32_t large[] = {7, 4000000000u};
    const int16_t small[] = {7, -2};
    const uint16_t wide[] = {7, 65535};
    const int64_t huge[] = {7, int64_t{1} << 40};
    const korvale_indices a = {large, 2, 0, KORVALE_UINT32}, b = {small, 2, 0, KORVALE_INT16};
    const korvale_indices c = {wide, 2, 0, KORVALE_UINT16}, d = {huge, 2, 0, KORVALE_INT64};
    EXPECT_THAT(IndicesIn(&a, "corners").indices(), ElementsAre(7, -1));
    EXPECT_THAT(IndicesIn(&b, "corners").indices(), ElementsAre(7, -1));
    EXPECT_THAT(IndicesIn(&c, "corners").indices(), ElementsAre(7, 65535));
    EXPECT_THAT(IndicesIn(&d, "corners").indices(), ElementsAre(7, -1));
    EXPECT_EQ(IndicesIn(&a, "corners").given(1), 4000000000);
    EXPECT_EQ(IndicesIn(&b, "corners").given(1), -2);

    const korvale_indices apart = {wide, 1, 4, KORVALE_UINT16};
    EXPECT_THAT(IndicesIn(&apart, "corners").indices(), ElementsAre(7));
}

TEST(IndicesIn, RefusesWhatNamesNoPoint)
{
    const int64_t numbers[] = {0, 3, int64_t{1} << 40};
    const auto text = [&](int64_t count, int64_t points) {
        const korvale_indices indices = {numbers, count, 0, KORVALE_INT64};
        return refusal_of([&] { require_corners(IndicesIn(&indices, "corners"), "corners", points); });
    };
    EXPECT_EQ(text(2, 4), "");
    EXPECT_EQ(text(2, 3), "corners must name vertices 0 to 2, but its corner 1 is 3");
    EXPECT_EQ(text(3, 4), "corners must name vertices 0 to 3, but its corner 2 is 1099511627776");
    const korvale_indices wrong = {numbers, 1, 0, 5};
    EXPECT_EQ(refusal_of([&] { IndicesIn(&wrong, "corners"); }),
              "corners must be of a kind from KORVALE_INT32 to KORVALE_INT64, but their kind is 5");
}

TEST(RequirePoints, RefusesTooFewAndWhatIsNotFinite)
{
    const double xyz[] = {0, 0, 0, 1, NAN, 0};
    const auto text = [&](int64_t count, int64_t least) {
        const korvale_points points = {xyz, count, 0, 3, KORVALE_DOUBLE};
        return refusal_of([&] { require_points(PointsIn(&points, "path"), "path", least); });
    };
    EXPECT_EQ(text(1, 1), "");
    EXPECT_EQ(text(1, 2), "path must have at least 2 points, but it has 1");
    EXPECT_EQ(text(2, 2), "path must be finite, but its point 1 is (1, nan, 0)");
}

/// Options as they might be one day.
struct Options {
    uint32_t size;
    int32_t a;
    double b;
};

void defaults(Options* options, size_t size)
{
    give_defaults(options, size, Options{sizeof(Options), 1, 2.0});
}

TEST(RequirePoints, FindsWhatIsNotFiniteAtEveryPlace)
{
    constexpr double kInfinity = std::numeric_limits<double>::infinity(), kMost = std::numeric_limits<double>::max();
    for (int64_t n = 1; n < 30; ++n) {
        std::vector<Point> points(static_cast<size_t>(n), Point{kMost, -kMost, -0.0});
        const korvale_points buffer = {points.data(), n, 0, 3, KORVALE_DOUBLE};
        const PointsIn in(&buffer, "line");
        EXPECT_NO_THROW(require_points(in, "line", 1));
        for (int64_t i = 0; i < 3 * n; ++i)
            for (const double number : {kInfinity, -kInfinity, std::numeric_limits<double>::quiet_NaN()}) {
                double& place = points[static_cast<size_t>(i / 3)][static_cast<int>(i % 3)];
                const double before = place;
                place = number;
                EXPECT_TRUE(refusal_of([&] {
                                require_points(in, "line", 1);
                            }).starts_with("line must be finite, but its point " + std::to_string(i / 3) + " is"));
                place = before;
            }
    }
}

TEST(Options, OfAnOlderHostGetDefaultsForTheRest)
{
    Options older = {8, 5, 99.0};
    const Options read = options_of(&older, defaults);
    EXPECT_EQ(read.a, 5);
    EXPECT_EQ(read.b, 2.0);
    EXPECT_EQ(options_of<Options>(nullptr, defaults).a, 1);
}

TEST(Options, OfALaterHostMaySetNothingNew)
{
    struct Later {
        Options known;
        int64_t added;
    } later = {{sizeof(Later), 5, 6.0}, 0};
    EXPECT_EQ(options_of(&later.known, defaults).b, 6.0);
    later.added = 1;
    EXPECT_EQ(refusal_of([&] { options_of(&later.known, defaults); }),
              "options must be of this version of the library, but a field of a later one is set");
    const Options unset = {0, 0, 0};
    EXPECT_EQ(refusal_of([&] { options_of(&unset, defaults); }),
              "options.size must be the size of the struct, but it is 0");
}

TEST(Options, DefaultsFillWhatTheHostKnows)
{
    Options options = {7, 7, 7};
    defaults(&options, 8);
    EXPECT_EQ(options.size, 8u);
    EXPECT_EQ(options.a, 1);
    EXPECT_EQ(options.b, 7.0);
    defaults(nullptr, 8);
    defaults(&options, 3);
    EXPECT_EQ(options.size, 8u);
}

} // namespace
} // namespace korvale::door
