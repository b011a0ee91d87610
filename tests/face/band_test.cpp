// Bands of the C++ face, beside the calls they stand for.
#include "direct.h"

namespace korvale::test {
namespace {

double distance_between(const Point& a, const Point& b)
{
    return std::hypot(a[0] - b[0], a[1] - b[1], a[2] - b[2]);
}

// An arc of n points that turns left.
Outline arc(int n, double radius, double turn)
{
    Outline line;
    for (int i = 0; i < n; ++i)
        line.push_back({radius * std::cos(turn * i / (n - 1)), radius * std::sin(turn * i / (n - 1)), 0});
    return line;
}

Point plus(const Point& a, double s, const Point& b)
{
    return {a[0] + s * b[0], a[1] + s * b[1], a[2] + s * b[2]};
}

Outline random_line(Random& random)
{
    Outline line = {{0, 0, 0}};
    double heading = random.uniform(0, 6);
    for (int i = random.between(2, 12); i > 0; --i) {
        heading += random.uniform(-1.5, 1.5); // segments of 2 and more, turns below a right angle
        const double length = random.uniform(2, 5);
        line.push_back(plus(line.back(), length, {std::cos(heading), std::sin(heading), 0}));
    }
    return line;
}

void expect_near(const Point& a, const Point& b)
{
    EXPECT_LT(distance_between(a, b), 1e-12) << detail::text_of_point(a) << " and " << detail::text_of_point(b);
}

// Whether both ends of a band's border lie at the distance from the line's ends, square to it.
bool is_beside(const Outline& line, std::span<const Point> border, double distance)
{
    for (const bool at_end : {false, true}) {
        const size_t i = at_end ? line.size() - 1 : 0, inner = at_end ? i - 1 : 1;
        Point along = detail::minus(line[inner], line[i]);
        normalize(along.data());
        const Point step = detail::minus(border[i], line[i]);
        if (std::fabs(detail::dot(step, along)) > 1e-10 ||
            std::fabs(std::sqrt(detail::dot(step, step)) - std::fabs(distance)) > 1e-10)
            return false;
    }
    return true;
}

// Whether no point of a border is nearer to the line than the distance or farther than four of it.
bool is_held(const Outline& line, std::span<const Point> border, double distance)
{
    for (const Point& p : border) {
        double least = std::numeric_limits<double>::infinity();
        for (size_t i = 1; i < line.size(); ++i) {
            const Point along = detail::minus(line[i], line[i - 1]), to = detail::minus(p, line[i - 1]);
            const double t = std::clamp(detail::dot(to, along) / detail::dot(along, along), 0.0, 1.0);
            least = std::min(least, distance_between(p, plus(line[i - 1], t, along)));
        }
        if (least < 0.999999 * std::fabs(distance) || least > 4 * std::fabs(distance))
            return false;
    }
    return true;
}

TEST(FaceBand, IsTheFourCallsToTheBitWhereTheyWork)
{
    Random random(1216);
    int worked = 0, failed = 0;
    for (int round = 0; round < rounds(300); ++round) {
        const Outline line = random_line(random);
        const double distance = random.one_in(2) ? 0.5 : -0.5;
        const Band result = band(line, distance);
        for (const double side : {distance, -distance}) { // which side is right depends on the closed outline
            const std::vector<double> direct = band_by_record(line, side);
            const PointView points = direct;
            if (distance_between(points[0], result.outline[0]) > 0.5)
                continue;
            Outline border;
            for (size_t i = 0; i < line.size(); ++i)
                border.push_back(points[i]);
            const bool is_right = is_beside(line, border, distance) && is_held(line, border, distance);
            (is_right ? worked : failed) += 1;
            if (is_right) {
                ASSERT_TRUE(same_bits(direct, coordinates(result.outline)));
            }
        }
        const bool gave_way = result.narrowed[0] + result.narrowed[line.size() - 1] + result.removed[0] +
                                  result.removed[line.size() - 1] >
                              0;
        ASSERT_TRUE(gave_way || is_beside(line, result.border(), distance)) << "round " << round;
    }
    EXPECT_GT(worked, 50);
    EXPECT_GT(failed, 10);
}

TEST(FaceBand, LiesToTheRightOfTheLine)
{
    const Point down = {0, 0, -1};
    expect_near(band({{0, 0, 0}, {2, 0, 0}, {4, 1, 0}}, 1).border()[0], {0, -1, 0});
    expect_near(band({{0, 0, 0}, {2, 0, 0}, {4, -1, 0}}, 1).border()[0], {0, -1, 0});
    expect_near(band({{0, 0, 0}, {2, 0, 0}, {4, -1, 0}}, -1).border()[0], {0, 1, 0});
    expect_near(band({{0, 0, 0}, {2, 0, 0}, {4, 1, 0}}, 1, {.up = down}).border()[0], {0, 1, 0});
}

TEST(FaceBand, TakesStraightLines)
{
    const Band flat = band({{0, 0, 0}, {1, 0, 0}, {2, 0, 0}}, 1);
    const Outline expected = {{0, -1, 0}, {1, -1, 0}, {2, -1, 0}, {2, 0, 0}, {1, 0, 0}, {0, 0, 0}};
    ASSERT_EQ(flat.outline.size(), 6u);
    for (size_t i = 0; i < 6; ++i)
        expect_near(flat.outline[i], expected[i]);
    EXPECT_FALSE(flat.crossing);

    const Band steep = band({{0, 0, 0}, {3, 0, 4}}, 1); // level to the right
    expect_near(steep.border()[1], {3, -1, 4});
    EXPECT_EQ(refusal_of([] {
                  band({{0, 0, 0}, {0, 0, 1}}, 1);
              }),
              "band: options.up must be given for a line straight up, but it is missing");
}

TEST(FaceBand, KeepsTheEndsOfLinesThatPointAnyWay)
{
    const Outline ess = {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {2, 1, 0}};
    const Outline zed = {{0, 0, 0}, {4, 0, 0}, {0, 4, 0}, {4, 4, 0}};
    const Outline hook = {{0, 0, 0}, {2, 0, 0}, {2, 2, 0}, {0, 2, 0}};
    Outline sine;
    for (int i = 0; i <= 40; ++i)
        sine.push_back({0.25 * i, 2 * std::sin(0.6 * i), 0});
    for (const Outline& line : {ess, zed, hook, sine})
        for (const double distance : {0.1, -0.1})
            EXPECT_TRUE(is_beside(line, band(line, distance).border(), distance));
}

TEST(FaceBand, FollowsALineThatRisesAsSeenFromAbove)
{
    const Outline line = {{0, 0, 0}, {3, 0, 1}, {3, 3, 7}, {6, 3, 4}};
    const Band road = band(line, 1, {.up = Point{0, 0, 1}});
    const Outline expected = {{0, -1, 0}, {4, -1, 1}, {4, 2, 7}, {6, 2, 4}};
    for (size_t i = 0; i < 4; ++i)
        EXPECT_LT(distance_between(road.border()[i], expected[i]), 1e-10);
    EXPECT_EQ(refusal_of([&] {
                  band({{0, 0, 0}, {9, 0, 0}, {9, 5, 0}, {9, 3, 0.5}}, 1);
              }),
              "band: line must be planar, or options.up be given, but its point 3 lies 0.5 off the plane");
}

TEST(FaceBand, LiftsTheBorderTowardsUp)
{
    for (const Outline& line : {Outline{{0, 0, 0}, {2, 0, 0}, {4, 1, 0}}, Outline{{0, 0, 0}, {2, 0, 0}, {4, -1, 0}},
                                Outline{{0, 0, 0}, {2, 0, 0}}})
        for (const double distance : {1.0, -1.0})
            EXPECT_EQ(band(line, distance, {.height = 3}).border()[0][2], 3);
}

TEST(FaceBand, RunsFromSideToSide)
{
    const Outline line = {{0, 0, 0}, {2, 0, 0}, {4, 1, 0}};
    const Band both = band(line, 1, {.both_sides = true}), right = band(line, 1), left = band(line, -1);
    for (size_t i = 0; i < 3; ++i) {
        EXPECT_EQ(both.outline[i], right.outline[i]);
        EXPECT_EQ(both.outline[5 - i], left.outline[i]);
    }
}

TEST(FaceBand, TellsWhereItMeetsItself)
{
    EXPECT_FALSE(band(arc(40, 10, 5), 1).crossing);
    // Nearly a ring: with a wide band the two ends run into each other.
    const Outline ring = arc(40, 10, 6.2);
    const auto crossing = band(arc(40, 10, 6.5), 1).crossing;
    ASSERT_TRUE(crossing);
    EXPECT_LT(crossing->first, crossing->second);
    EXPECT_LT(crossing->second, 80u);
    EXPECT_FALSE(band(ring, 0.2).crossing);
    EXPECT_TRUE(band({{0, 0, 0}, {10, 0, 0}, {10, 10, 0}, {5, 10, 0}, {5, -0.5, 0}}, 1).crossing);
}

TEST(FaceBand, NamesThePointsThatGaveWay)
{
    const Band tight = band({{0, 0, 0}, {5, 0, 0}, {5, 1, 0}, {3, 3, 0}}, -0.8);
    EXPECT_EQ(std::vector<int>(tight.removed.begin(), tight.removed.end()), (std::vector<int>{0, 1, 0, 0}));
    EXPECT_EQ(tight.border()[1], tight.border()[2]);
    EXPECT_FALSE(tight.collapsed);
}

TEST(FaceBand, NarrowsALineThatFoldsBackWithinItsWidth)
{
    const Band folded = band({{0, 0, 0}, {5, 0, 0}, {5, 1, 0}, {0, 1, 0}}, -0.8);
    EXPECT_FALSE(folded.collapsed);
    EXPECT_EQ(std::vector<int>(folded.narrowed.begin(), folded.narrowed.end()), (std::vector<int>{1, 1, 1, 1}));
    EXPECT_LT(distance_between(folded.border()[0], {0, 0.5, 0}), 1e-6);
    EXPECT_LT(distance_between(folded.border()[3], {0, 0.5, 0}), 1e-6);
}

TEST(FaceBand, OfAClosedLineHasTwoOutlines)
{
    const Outline square = {{0, 0, 0}, {4, 0, 0}, {4, 4, 0}, {0, 4, 0}};
    const Band ring = band(square, 1, {.closed = true});
    expect_near(ring.border()[2], {5, 5, 0});
    EXPECT_EQ(ring.other_side()[0], square[3]);
    EXPECT_EQ(ring.other_side().size(), 4u);
}

TEST(FaceBand, KeepsCornersWithinTheMiterLimit)
{
    const Outline spike = {{0, 0, 0}, {10, 0, 0}, {0, 1, 0}};
    EXPECT_NEAR(distance_between(band(spike, 1).border()[1], spike[1]), 4,
                1e-14); // coordinates of 13: rounded by 2e-15
    EXPECT_GT(distance_between(band(spike, 1, {.miter_limit = 25}).border()[1], spike[1]), 20);
}

TEST(FaceThin, NamesThePointsThatDescribeALine)
{
    EXPECT_EQ(thin({{0, 0, 0}, {1, 0.4, 0}, {2, 0, 0}, {3, 0.6, 0}, {4, 0, 0}}, 0.5), (std::vector<size_t>{0, 3, 4}));
    EXPECT_EQ(refusal_of([] { thin({{0, 0, 0}}, -1); }), "thin: tolerance must be 0 or more, but it is -1");
}

TEST(FaceBand, SaysWhatItRefuses)
{
    EXPECT_EQ(refusal_of([] { band(Outline{}, 1); }), "band: line must have at least 1 point, but it has 0");
    EXPECT_TRUE(band({{1, 1, 1}, {1, 1, 1}}, 1).collapsed); // no sides, which is no error
    EXPECT_EQ(refusal_of([] { band({{0, 0, 0}, {1, 0, 0}}, 0); }), "band: distance must be other than 0, but it is 0");
    EXPECT_EQ(refusal_of([] {
                  band({{0, 0, 0}, {1, 0, 0}}, 1, {.up = Point{2, 0, 0}});
              }),
              "band: line must not run along options.up, but it does");
}

TEST(FaceBand, HasItsSidesWhereTheyAreWithoutCaps)
{
    const Outline line = {{0, 0, 0}, {4, 0, 0}, {8, 3, 0}};
    for (const bool both : {false, true}) {
        const Band flat = band(line, 0.5, {.both_sides = both});
        EXPECT_TRUE(flat.sources.empty());
        for (const Cap cap : {Cap::square, Cap::round}) {
            const Band capped = band(line, 0.5, {.both_sides = both, .cap = cap});
            EXPECT_EQ(coordinates(capped.border()), coordinates(flat.border()));
            EXPECT_EQ(coordinates(capped.other_side()), coordinates(flat.other_side()));
            EXPECT_EQ(capped.sources.size(), capped.outline.size());
            EXPECT_GT(capped.outline.size(), 6u);
            EXPECT_EQ(capped, capped.clone());
            const std::vector<double> values = {0, 1, 2};
            const Carried<double> carried = carry(values, capped);
            EXPECT_TRUE(std::ranges::equal(carried, capped.sources));
        }
    }
    EXPECT_EQ(band({{0, 0, 0}, {0, 0, 0}}, 1, {.cap = Cap::round}).other_side().size(), 2u); // no sides, no caps
    EXPECT_EQ(band({{0, 0, 0}, {9, 0, 0}, {9, 9, 0}}, 1, {.closed = true, .cap = Cap::round}).outline.size(), 6u);
    EXPECT_EQ(refusal_of([&] { band(line, 1, {.tolerance = -1}); }),
              "band: options.tolerance must be 0 or more, but it is -1");
}

} // namespace
} // namespace korvale::test
