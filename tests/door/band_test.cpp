// Bands along lines, through the C interface.
#include <korvale.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <fstream>
#include <limits>
#include <set>
#include <string>
#include <utility>

#include <gmock/gmock.h>

#include "bands.h"
#include "tests/support/heap.h"
#include "tests/support/random.h"

namespace korvale::test {
namespace {

using testing::Each;
using testing::ElementsAre;

/// No point of the outline is farther than `limit` distances from the stretch of the line for which it stands, and one
/// that is told of nothing is not nearer to the line than the distance.
void expect_held(const Numbers& line, double distance, korvale_band_options options, double limit)
{
    options.has_up = 1;
    options.up[2] = 1;
    options.miter_limit = limit;
    const Laid band = laid(line, distance, options);
    const size_t n = line.size() / 3;
    double size = 0;
    for (const double number : line)
        size = std::fmax(size, std::fabs(number));
    for (size_t i = 0; i < (options.both_sides != 0 ? 2 * n : n); ++i) {
        const double away = distance_from(line, options.closed != 0, band.outline[3 * i], band.outline[3 * i + 1]) /
                            std::fabs(distance);
        const size_t point = i < n ? i : 2 * n - 1 - i;
        const Numbers stretch =
            stretch_of(line, options.closed != 0, &band.outline[i < n ? 0 : 3 * (2 * n - 1)], i < n ? 3 : -3, point);
        ASSERT_LE(distance_from(stretch, false, band.outline[3 * i], band.outline[3 * i + 1]),
                  limit * (1 + 1e-9) * std::fabs(distance))
            << "point " << i << " of " << n << ", distance " << distance;
        if (band.removed[point] == 0 && band.narrowed[point] == 0) {
            ASSERT_GE(away, 1 - 2e-6 - 1e-11 * size / std::fabs(distance)) << "point " << i << " of " << n;
        }
    }
}

/// A hairpin: a leg along x, a half circle to the left, a leg back.
Numbers hairpin(double leg, double radius)
{
    Numbers line;
    for (int i = 0; i <= 20; ++i)
        line.insert(line.end(), {leg * i / 20, 0, 0});
    for (int i = 1; i < 16; ++i) {
        const double angle = 3.141592653589793 * i / 16;
        line.insert(line.end(), {leg + radius * std::sin(angle), radius - radius * std::cos(angle), 0});
    }
    for (int i = 20; i >= 0; --i)
        line.insert(line.end(), {leg * i / 20, 2 * radius, 0});
    return line;
}

/// What a receiver writes down on a walk: steps of 8, noise, stops full of jitter, loops, doubled points, switchbacks.
Numbers track(Random& random)
{
    Numbers line;
    double x = 0, y = 0, heading = random.uniform(0, 6);
    const auto add = [&](double noise) {
        line.insert(line.end(), {x + random.uniform(-noise, noise), y + random.uniform(-noise, noise), 0});
    };
    for (int i = random.between(0, 30); i >= 0; --i)
        add(0.5);
    for (int leg = random.between(2, 8); leg > 0; --leg) {
        for (int i = random.between(3, 25); i > 0; --i) {
            heading += random.uniform(-0.3, 0.3);
            x += 8 * std::cos(heading);
            y += 8 * std::sin(heading);
            add(1);
        }
        switch (random.between(0, 3)) {
        case 0: // a stop
            for (int i = random.between(2, 25); i > 0; --i)
                add(2);
            break;
        case 1: // a loop
            for (int i = 0; i < 12; ++i) {
                heading += 0.55;
                x += 5 * std::cos(heading);
                y += 5 * std::sin(heading);
                add(0.5);
            }
            break;
        case 2: // a switchback
            heading += random.uniform(2.9, 3.3);
            break;
        default: // a doubled point
            line.insert(line.end(), line.end() - 3, line.end());
        }
    }
    return line;
}

/// A walk in steps of 12, written down without noise but for one stop, where each point strays by up to three `stray`.
struct StoppedWalk {
    Numbers line;
    double length = 0; ///< of the walk alone
};

StoppedWalk walk_with_stop(Random& random, double stray)
{
    StoppedWalk walk;
    double x = 0, y = 0, heading = random.uniform(0, 6);
    const auto go = [&](int steps) {
        for (; steps > 0; --steps) {
            heading += random.uniform(-0.15, 0.15);
            x += 12 * std::cos(heading);
            y += 12 * std::sin(heading);
            walk.line.insert(walk.line.end(), {x, y, 0});
            walk.length += walk.line.size() > 3 ? 12 : 0;
        }
    };
    const auto noise = [&] { // of that deviation
        return stray * 2 * (random.unit() + random.unit() + random.unit() - 1.5);
    };
    go(random.between(8, 30));
    for (int i = random.between(3, 20); i > 0; --i)
        walk.line.insert(walk.line.end(), {x + noise(), y + noise(), 0});
    go(random.between(8, 30));
    return walk;
}

bool has_three_places(const Numbers& line)
{
    std::set<std::pair<double, double>> places;
    for (size_t i = 0; i < line.size(); i += 3)
        places.insert({line[i], line[i + 1]});
    return places.size() > 2;
}

/// The coasts of fourteen countries, in kilometres.
std::vector<Numbers> read_coasts()
{
    std::ifstream file(KORVALE_EXAMPLE_DATA "/coasts.txt");
    std::vector<Numbers> coasts;
    for (std::string word; file >> word;) {
        size_t count = 0;
        const bool is_outline = word == "outline" && file >> count;
        std::getline(file, word);
        if (!is_outline)
            continue;
        Numbers& coast = coasts.emplace_back();
        for (double x = 0, y = 0; coast.size() < 3 * count && file >> x >> y;)
            coast.insert(coast.end(), {x, y, 0});
    }
    return coasts;
}

double length_of(const Numbers& line)
{
    double sum = 0;
    for (size_t i = 3; i < line.size(); i += 3)
        sum += std::hypot(line[i] - line[i - 3], line[i + 1] - line[i - 2]);
    return sum;
}

TEST(DoorBand, LiesToTheRightOfTheLine)
{
    const Laid right = laid({0, 0, 0, 4, 0, 0}, 1), left = laid({0, 0, 0, 4, 0, 0}, -1);
    expect_near(right.outline, {0, -1, 0, 4, -1, 0, 4, 0, 0, 0, 0, 0});
    expect_near(left.outline, {0, 1, 0, 4, 1, 0, 4, 0, 0, 0, 0, 0});
    EXPECT_THAT(right.removed, ElementsAre(0, 0));
    EXPECT_THAT(right.narrowed, ElementsAre(0, 0));
    EXPECT_FALSE(right.collapsed);
    EXPECT_FALSE(right.crosses);
}

TEST(DoorBand, RunsFromSideToSideAndIsLifted)
{
    korvale_band_options options = options_of(1);
    options.height = 2;
    expect_near(laid({0, 0, 0, 4, 0, 0}, 1, options).outline, {0, -1, 2, 4, -1, 2, 4, 1, 2, 0, 1, 2});
}

TEST(DoorBand, FollowsALineThatRises)
{
    korvale_band_options options = options_of();
    options.has_up = 1;
    options.up[2] = 1;
    const Laid road = laid({0, 0, 0, 3, 0, 1, 3, 3, 7, 6, 3, 4}, 1, options);
    expect_near({road.outline.begin(), road.outline.begin() + 12}, {0, -1, 0, 4, -1, 1, 4, 2, 7, 6, 2, 4}, 1e-10);
}

TEST(DoorBand, TheLegsOfAHairpinKeepBetweenThem)
{
    // Half the distance between the legs is 5: two tenths less than asked for on both sides of the middle.
    const Laid band = laid(hairpin(100, 5), -5.1);
    EXPECT_FALSE(band.collapsed);
    for (size_t i = 0; i <= 18; ++i) {
        EXPECT_LT(band.away(i, 5.0 * static_cast<double>(i), 5), 1e-6) << "point " << i;
        EXPECT_EQ(band.narrowed[i], 1);
        EXPECT_EQ(band.removed[i], 0);
    }
    const Laid outside = laid(hairpin(100, 5), 5.1);
    EXPECT_LT(outside.away(0, 0, -5.1), 1e-12);
    EXPECT_THAT(outside.narrowed, Each(0));
}

/// A road that goes on straight on after a hairpin to its right.
Numbers road_with(const Numbers& pin)
{
    Numbers road;
    for (int i = 0; i < 20; ++i)
        road.insert(road.end(), {-8.0, -200.0 + 10 * i, 0});
    road.insert(road.end(), pin.begin(), pin.end());
    for (int i = 1; i <= 20; ++i)
        road.insert(road.end(), {-8.0, 10.0 + 10 * i, 0});
    return road;
}

TEST(DoorBand, AHairpinInsideALongerRoadKeepsItsLegs)
{
    const Laid band = laid(road_with(hairpin(100, 5)), -5.1);
    for (size_t i = 5; i <= 18; ++i)
        EXPECT_LT(band.away(20 + i, 5.0 * static_cast<double>(i), 5), 1e-6) << "point " << i;
    for (size_t i = 0; i < 18; ++i)
        EXPECT_LT(band.away(i, -13.1, -200.0 + 10 * static_cast<double>(i)), 1e-9) << "point " << i;
}

TEST(DoorBand, AKinkInADeepHairpinGivesUpNoMoreThanItself)
{
    Numbers pin = hairpin(100, 5);
    const Numbers kink = {52, 0.3, 0, 52.01, 0, 0};
    pin.insert(pin.begin() + 3 * 11, kink.begin(), kink.end());
    const Laid band = laid(road_with(pin), -5.1);
    for (const size_t i : {5, 6, 7, 8, 9, 12, 13, 14, 15, 16, 17, 18})
        EXPECT_LT(band.away((i < 11 ? 20 : 22) + i, 5.0 * static_cast<double>(i), 5), 1e-6) << "point " << i;
}

TEST(DoorBand, AKnotWhereATrackStoodStillSendsNoPointAway)
{
    Random random(1230);
    for (int round = 0; round < rounds(200); ++round) {
        Numbers line;
        for (int i = 0; i < 20; ++i)
            line.insert(line.end(), {random.uniform(-0.5, 0.5), random.uniform(-0.5, 0.5), 0});
        for (int i = 1; i < 30; ++i)
            line.insert(line.end(), {8.0 * i, random.uniform(-1, 1), 0});
        expect_held(line, random.uniform(0.5, 6), options_of(1), 4);
    }
}

TEST(DoorBand, ALineThatTurnsBackAtItsEndSendsNoPointAlongItself)
{
    const Numbers line = {504, 0.34,  0, 516, 3.32,  0, 528,   6.23,  0, 540,    9,     0, 552,    11.57, 0,
                          564, 13.88, 0, 576, 15.87, 0, 588.1, 17.36, 0, 587.69, 17.27, 0, 588.55, 17.55, 0};
    const Laid band = laid(line, -4);
    EXPECT_THAT(band.removed, ElementsAre(0, 0, 0, 0, 0, 0, 0, 1, 1, 1));
    EXPECT_THAT(band.narrowed, Each(0));
    for (const size_t i : {7, 8, 9}) // beside their mean, (588.11.., 17.39..), square to the way there from point 6
        EXPECT_LT(band.away(i, 587.61423742512, 21.36207410017672), 1e-9);
    for (size_t i = 0; i < 7; ++i)
        EXPECT_NEAR(band.away(i, line[3 * i], line[3 * i + 1]), 4, 0.001) << "point " << i; // rounded above
}

TEST(DoorBand, TheInnerCornerOfASharpBendStays)
{
    const Laid band = laid({100, 0, 0, 0, 0, 0, 100, 20, 0}, 1); // ten distances from its own point, one from both legs
    // Coordinates of 100 are rounded by 7e-15, and the angle makes ten times that of it.
    EXPECT_NEAR(band.away(1, 0, 0), 1 / std::sin(0.5 * std::atan(0.2)), 1e-13);
    EXPECT_NEAR(band.outline[4], 1, 1e-14);
    EXPECT_THAT(band.removed, Each(0));
    EXPECT_THAT(band.narrowed, Each(0));
}

TEST(DoorBand, PointsBesideASharpBendShareItsInnerCorner)
{
    const Numbers line = {100, 0, 0, 5, 0, 0, 0, 0, 0, 0.5, 0.1, 0, 20, 4, 0, 100, 20, 0};
    const Laid band = laid(line, 1); // as without the points beside the bend
    EXPECT_THAT(band.removed, ElementsAre(0, 1, 1, 0, 0, 0));
    EXPECT_THAT(band.narrowed, Each(0));
    for (const size_t i : {1, 2, 3})
        EXPECT_LT(band.away(i, 1 / std::tan(0.5 * std::atan(0.2)), 1), 1e-9) << "point " << i;
    EXPECT_FALSE(band.crosses);
}

TEST(DoorBand, TheEndOfALineGivesNotWayToACornerAfar)
{
    // The sides would meet at x of 20.05, beyond the end of the first leg.
    const Laid band = laid({16, 0, 0, 4, 0, 0, 0, 0, 0, 0.5, 0.05, 0, 60, 6, 0}, 1);
    EXPECT_EQ(band.removed[0], 0);
    EXPECT_LT(band.away(0, 16, 0), 1);
    EXPECT_LT(band.away(1, 4, 0), 0.3);
    EXPECT_LT(band.away(2, 0, 0), 4 + 1e-9);
    EXPECT_LT(band.away(3, 0.5, 0.05), 0.3);
    EXPECT_NEAR(band.away(4, 60, 6), 1, 1e-12); // coordinates of 60, rounded by 7e-15 and more at the bend
}

TEST(DoorBand, AnEndBesideTheBeginningIsLaidHalfwayThere)
{
    // Square to the last leg the border meets the first one after 0.5, square to the first one the end after 0.5.
    const Laid band = laid({0, 0, 0, 20, 0, 0, 20, 10, 0, 0, 10, 0, 0, 0.5, 0}, 2, options_of(1));
    const double inner[5][2] = {{0, 0.25}, {18, 2}, {18, 8}, {2, 8}, {0.5, 0.5}};
    for (size_t i = 0; i < 5; ++i)
        EXPECT_LT(band.away(9 - i, inner[i][0], inner[i][1]), 1e-8) << "point " << i; // a ball is 1e-09 of itself off
    EXPECT_THAT(band.removed, Each(0));
    EXPECT_THAT(band.narrowed, ElementsAre(1, 0, 0, 0, 1));
    EXPECT_FALSE(band.crosses);
}

TEST(DoorBand, AnEndIsNotLaidAtTheFarEndOfAFoldedLeg)
{
    const Laid band = laid({0, 0, 0, 6, 1, 0, 1, 0, 0, 7, 0, 0}, 2, options_of(1));
    EXPECT_LT(band.away(4, 7, 1), 0.01); // halfway to the first fold
    EXPECT_THAT(band.removed, ElementsAre(1, 1, 0, 0));
    EXPECT_THAT(band.narrowed, ElementsAre(0, 1, 1, 1));
}

/// How much of a line from place to place lies outside an outline, by steps of 0.01.
double length_outside(const Numbers& line, const Numbers& outline)
{
    const size_t n = outline.size() / 3;
    const auto is_inside = [&](double x, double y) {
        bool inside = false;
        for (size_t i = 0; i < n; ++i) {
            const double *const a = &outline[3 * i], *const b = &outline[3 * ((i + 1) % n)];
            if ((a[1] > y) != (b[1] > y) && x < a[0] + (y - a[1]) / (b[1] - a[1]) * (b[0] - a[0]))
                inside = !inside;
        }
        return inside;
    };
    double outside = 0;
    for (size_t i = 3; i < line.size(); i += 3) {
        const double dx = line[i] - line[i - 3], dy = line[i + 1] - line[i - 2];
        const int steps = static_cast<int>(100 * std::hypot(dx, dy)) + 1;
        for (int k = 0; k < steps; ++k) {
            const double share = (k + 0.5) / steps;
            if (!is_inside(line[i - 3] + share * dx, line[i - 2] + share * dy))
                outside += std::hypot(dx, dy) / steps;
        }
    }
    return outside;
}

TEST(DoorBand, ALoopThatComesBackToItsBeginningStaysInItsBand)
{
    Random random(2612);
    int whole = 0;
    for (int round = 0; round < rounds(300); ++round) {
        const int points = random.between(7, 38);
        const double bulge = random.uniform(0, 6);
        Numbers line;
        for (int i = 0; i < points; ++i) {
            const double turn = 6.283185307179586 * i / points, radius = 10 * (1 + 0.15 * std::sin(2 * turn + bulge));
            line.insert(line.end(), {radius * std::cos(turn), radius * std::sin(turn), 0});
        }
        const double gap = random.uniform(0.2, 3), towards = random.uniform(0, 6.3);
        line.insert(line.end(), {line[0] + gap * std::cos(towards), line[1] + gap * std::sin(towards), 0});
        const Laid band = laid(line, 1, options_of(1));
        if (band.crosses)
            continue;
        ++whole;
        // An end lies no farther than 1.12 distances behind the line's, and half of that is outside.
        ASSERT_LT(length_outside(line, band.outline), 0.6) << "round " << round;
    }
    EXPECT_GT(whole, 100);
}

TEST(DoorBand, AStopOnAWalkLeavesNoSpike)
{
    Random random(1237);
    for (int round = 0; round < 300; ++round) {
        const StoppedWalk walk = walk_with_stop(random, random.uniform(0.3, 3));
        for (const double distance : {4.0, -4.0}) {
            expect_held(walk.line, distance, options_of(), 4);
            const Laid band = laid(walk.line, distance);
            const size_t n = walk.line.size() / 3;
            double area = 0;
            for (size_t i = 0; i < 2 * n; ++i) {
                const double *const a = &band.outline[3 * i], *const b = &band.outline[3 * ((i + 1) % (2 * n))];
                area += 0.5 * (a[0] * b[1] - a[1] * b[0]);
                if (i < n) { // the inner corner of a bend may be farther than 4 distances
                    ASSERT_LT(band.away(i, walk.line[3 * i], walk.line[3 * i + 1]), 30) << "point " << i;
                }
            }
            ASSERT_NEAR(area / (distance * walk.length), 1, 0.3) << "round " << round; // corners of the stop: 0.25
        }
    }
}

TEST(DoorBand, GeneratedLinesOfAnyWidthAreHeld)
{
    Random random(1231);
    for (int round = 0; round < rounds(5000); ++round) {
        const Numbers line = random.one_in(4) ? hairpin(random.uniform(5, 100), random.uniform(1, 8))
                                              : wandering(random, random.between(2, 60), random.uniform(0.2, 3.1));
        const double length = length_of(line);
        if (length == 0)
            continue;
        const double distance = length * std::pow(10, random.uniform(-3, 0.5)) * (random.one_in(2) ? 1 : -1);
        const int32_t closed = random.between(0, 1) != 0 && has_three_places(line) ? 1 : 0;
        expect_held(line, distance, options_of(1, closed), random.one_in(2) ? 4 : random.uniform(1, 8));
    }
}

TEST(DoorBand, TracksAreHeld)
{
    Random random(1232);
    for (int round = 0; round < 50; ++round) {
        const Numbers line = track(random);
        for (const double distance : {0.5, 2.0, 5.0, 20.0, 500.0})
            expect_held(line, distance, options_of(1), 4);
    }
}

TEST(DoorBand, CoastsAreHeldAroundAndInPieces)
{
    const std::vector<Numbers> coasts = read_coasts();
    ASSERT_EQ(coasts.size(), 14);
    size_t pieces = 0;
    for (const Numbers& coast : coasts) {
        const double length = length_of(coast);
        for (const double share : {0.001, -0.02})
            expect_held(coast, share * length, options_of(1, 1), 4);
        for (auto at = coast.begin(); coast.end() - at > 3 * 100; at += 3 * 100, ++pieces) {
            const Numbers piece(at, at + 3 * 100);
            for (const double share : {0.001, -0.01, 0.1, -1.5})
                expect_held(piece, share * length_of(piece), options_of(1), 4);
        }
    }
    EXPECT_EQ(pieces, 77);
}

TEST(DoorBand, OfAClosedLineHasTwoOutlines)
{
    const Numbers square = {0, 0, 0, 4, 0, 0, 4, 4, 0, 0, 4, 0};
    const Numbers outer = {-1, -1, 0, 5, -1, 0, 5, 5, 0, -1, 5, 0};
    const Laid ring = laid(square, 1, options_of(0, 1));
    expect_near({ring.outline.begin(), ring.outline.begin() + 12}, outer);
    expect_near({ring.outline.begin() + 12, ring.outline.end()}, {0, 4, 0, 4, 4, 0, 4, 0, 0, 0, 0, 0});
    EXPECT_FALSE(ring.crosses);
    const Laid both = laid(square, 1, options_of(1, 1));
    expect_near({both.outline.begin(), both.outline.begin() + 12}, outer);
    expect_near({both.outline.begin() + 12, both.outline.end()}, {1, 3, 0, 3, 3, 0, 3, 1, 0, 1, 1, 0});
    EXPECT_FALSE(both.crosses);

    const Numbers clockwise = {0, 4, 0, 4, 4, 0, 4, 0, 0, 0, 0, 0};
    const Laid inner = laid(clockwise, 1, options_of(0, 1));
    expect_near({inner.outline.begin(), inner.outline.begin() + 12}, {1, 3, 0, 3, 3, 0, 3, 1, 0, 1, 1, 0});
}

TEST(DoorBand, PointsThatShareAPlaceAroundTheEndOfAClosedLineGiveWayTogether)
{
    // The border of the last point merges into that of the first, and lies too far from it.
    expect_held(
        {0, 0, 0, 0.1312, -0.1977, 0, 0.2968, -0.1315, 0, 0.348, 0.5197, 0, 0.0428, 0.588, 0, -0.3683, -0.9211, 0},
        0.067433, options_of(1, 1), 2.0225);
}

TEST(DoorBand, OfAClosedLineTighterThanTheDistanceGivesWayToOnePlace)
{
    const Numbers square = {0, 4, 0, 4, 4, 0, 4, 0, 0, 0, 0, 0};
    for (const double distance : {2.001, 3.0, 50.0}) { // there is no room for more than 2
        const Laid inner = laid(square, distance, options_of(0, 1)), both = laid(square, -distance, options_of(1, 1));
        for (size_t i = 0; i < 4; ++i) {
            EXPECT_LT(inner.away(i, 2, 2), 1e-9);
            EXPECT_EQ(inner.away(i, inner.outline[0], inner.outline[1]), 0);
            EXPECT_LT(both.away(4 + i, 2, 2), 1e-9);
            EXPECT_NEAR(both.away(i, square[3 * i], square[3 * i + 1]), distance * std::sqrt(2), 1e-15 * distance);
        }
        EXPECT_THAT(inner.removed, Each(1));
        EXPECT_THAT(inner.narrowed, Each(0));
        EXPECT_TRUE(inner.collapsed);
        EXPECT_FALSE(both.collapsed); // it has a border outside
        EXPECT_FALSE(inner.crosses || both.crosses);
    }
    EXPECT_FALSE(laid(square, 1.999, options_of(0, 1)).collapsed);
    // Two rooms, of which the smaller one, 2 wide, has no room for the border.
    const Numbers rooms = {0, 4, 0, 4, 4, 0, 4, 2.5, 0, 6, 2.5, 0, 6, 0.5, 0, 4, 0.5, 0, 4, 0, 0, 0, 0, 0};
    const Laid large = laid(rooms, 1.5, options_of(0, 1));
    EXPECT_FALSE(large.collapsed);
    EXPECT_LT(large.away(0, 1.5, 2.5), 1e-9);
    EXPECT_TRUE(laid(rooms, 2.001, options_of(0, 1)).collapsed);
}

TEST(DoorBand, AClosedLineMayRise)
{
    korvale_band_options options = options_of(0, 1);
    options.has_up = 1;
    options.up[2] = 1;
    const Laid ring = laid({0, 0, 0, 4, 0, 1, 4, 4, 5, 0, 4, 2}, 1, options);
    expect_near({ring.outline.begin(), ring.outline.begin() + 12}, {-1, -1, 0, 5, -1, 1, 5, 5, 5, -1, 5, 2});
}

TEST(DoorBand, OfARampHasAnInnerSideTurnByTurn)
{
    // Two turns to the left, of radius 10, in 23.5 corners each: those of one lie beside the edges of the other.
    Numbers ramp;
    constexpr double kCorner = 3.141592653589793 / 11.75;
    for (int i = 0; i < 48; ++i)
        ramp.insert(ramp.end(), {10 * std::cos(kCorner * i), 10 * std::sin(kCorner * i), 0.25 * i});
    korvale_band_options options = options_of();
    options.has_up = 1;
    options.up[2] = 1;
    EXPECT_THAT(laid(ramp, -2, options).narrowed, Each(1));
    const double inner = 10 - 2 / std::cos(kCorner / 2); // a chord moves by 2
    for (const std::ptrdiff_t first : {0, 16, 32}) {
        const std::ptrdiff_t before = first > 0 ? 1 : 0, after = first < 32 ? 1 : 0;
        const Laid piece =
            laid({ramp.begin() + 3 * (first - before), ramp.begin() + 3 * (first + 16 + after)}, -2, options);
        for (std::ptrdiff_t i = first; i < first + 16; ++i) {
            const auto at = static_cast<size_t>(i - first + before);
            if (i > 0 && i < 47) { // the ends are square to their edges
                EXPECT_LT(piece.away(at, inner * std::cos(kCorner * static_cast<double>(i)),
                                     inner * std::sin(kCorner * static_cast<double>(i))),
                          1e-9);
            }
            EXPECT_EQ(piece.outline[3 * at + 2], 0.25 * static_cast<double>(i));
            EXPECT_EQ(piece.narrowed[at], 0);
        }
    }
}

TEST(DoorBand, HeightsMayBeInAnotherUnit)
{
    constexpr double m = 0x1p-17; // about a metre in degrees
    const Numbers way = {0, 0, 4.125, -0.875, 4.3125, -1, 4.25, -0.9375, 4.25, -0.9375};
    korvale_band_options options = options_of(1);
    options.has_up = 1;
    options.up[2] = 1;
    const auto with_heights = [&](double unit, double rise) {
        Numbers line;
        for (size_t i = 0; i < way.size() / 2; ++i)
            line.insert(line.end(), {unit * way[2 * i], unit * way[2 * i + 1], rise * static_cast<double>(i)});
        return laid(line, unit, options);
    };
    const Laid in_metres = with_heights(1, 0.25);
    for (const double rise : {0.125, 0.25, 10.0, 1000.0}) { // heights that span 1 counted as a large line once
        const Laid band = with_heights(m, rise);
        EXPECT_EQ(band.narrowed, in_metres.narrowed);
        for (size_t i = 0; i < band.outline.size(); ++i) {
            const size_t point = i / 3 < 5 ? i / 3 : 9 - i / 3;
            EXPECT_EQ(band.outline[i], i % 3 == 2 ? rise * static_cast<double>(point) : m * in_metres.outline[i])
                << rise << ", number " << i;
        }
    }
}

TEST(DoorBand, MayBeAsSteepAsRoundingAllows)
{
    korvale_band_options options = options_of();
    options.has_up = 1;
    options.up[2] = 1;
    const Laid steep = laid({0, 0, 0, 1, 0, 0x1p39}, 1, options); // 2^40 is more than 1e12
    expect_near({steep.outline.begin(), steep.outline.begin() + 6}, {0, -1, 0, 1, -1, 0x1p39});
    const Numbers line = {0, 0, 0, 1, 0, 0x1p40};
    const korvale_points points = points_of(line);
    Numbers outline(2 * line.size());
    korvale_band_result band = {outline.data(), nullptr, nullptr, 0, 0, {0, 0}};
    EXPECT_EQ(sentence_of(KORVALE_BAD_ARGUMENT,
                          [&](korvale_error* error) { return korvale_band(&points, 1, &options, &band, error); }),
              "korvale_band: line must not run along options.up, but it does");
}

korvale_band_options limited(double miter_limit)
{
    korvale_band_options options = options_of();
    options.miter_limit = miter_limit;
    return options;
}

TEST(DoorBand, CornersSharperThanTheMiterLimitEndAtIt)
{
    // The outer corner of a turn by 150 degrees is 1 / cos 75 = 3.86.. distances away, 15 degrees to the right.
    const Numbers turn = {0, 0, 0, 10, 0, 0, 10 - 5 * std::sqrt(3.0), 5, 0};
    const Laid held = laid(turn, 1, limited(2));
    EXPECT_LT(held.away(1, 11.931851652578137, -0.5176380902050415), 1e-9);
    EXPECT_THAT(held.narrowed, ElementsAre(0, 1, 0));
    EXPECT_LT(held.away(0, 0, -1), 1e-9);
    const Laid sharp = laid(turn, 1, limited(3.9));
    EXPECT_LT(sharp.away(1, 13.732050807568877, -1), 1e-9); // 10 + tan 75
    EXPECT_THAT(sharp.narrowed, Each(0));
    // Where a line turns back the end lies straight ahead, on either side.
    for (const double side : {1.0, -1.0})
        EXPECT_LT(laid({0, 0, 0, 10, 0, 0, 4, 0, 0}, side, limited(2)).away(1, 12, 0), 1e-9);
}

TEST(DoorBand, InnerCornersAndStraightWaysAreAtAMiterLimitOfOne)
{
    Numbers zigzag;
    for (int i = 0; i < 10; ++i)
        zigzag.insert(zigzag.end(), {0.8 * i, i % 2 * 5.0, 0});
    for (const double unit : {1.0, 1e-6, 0.001, 300.0, 1e7}) {
        Numbers line;
        for (const double number : zigzag)
            line.push_back(unit * number);
        const Laid band = laid(line, -0.4 * unit, limited(1));
        for (size_t i = 0; i < 10; ++i) {
            const bool is_inner = i % 2 == 0 && i > 0;
            EXPECT_NEAR(band.away(i, line[3 * i], line[3 * i + 1]) / unit, is_inner ? 0.5 * std::sqrt(25.64) : 0.4,
                        3e-14) // coordinates of up to 10 units
                << "point " << i << ", unit " << unit;
            EXPECT_EQ(band.narrowed[i], i % 2 == 1 && i < 9) << "point " << i << ", unit " << unit;
        }
    }
    EXPECT_THAT(laid({0, 0, 0, 1, 0.3, 0, 2, 0.6, 0, 3, 0.9, 0}, 0.7, limited(1)).narrowed, Each(0));
}

TEST(DoorBand, FollowsACornerThroughTheMiterLimitSteadily)
{
    constexpr double kStep = 0.0005;
    for (const double limit : {1.0, 1.2, 2.0, 4.0, 10.0, 30.0})
        for (const double unit : {1.0, 1e-6, 1e6}) {
            Numbers before;
            const double at_limit = 2 * std::acos(1 / limit);
            for (double angle = std::max(0.01, at_limit - 0.05); angle < std::min(3.14, at_limit + 0.05);
                 angle += kStep) {
                const double x = 10 + 10 * std::cos(angle), y = 10 * std::sin(angle);
                const Laid band = laid({0, 0, 0, 10 * unit, 0, 0, unit * x, unit * y, 0}, unit, limited(limit));
                for (size_t i = 0; i < 3 && !before.empty(); ++i) {
                    // Its corner goes out by at most limit^2 / 2 and aside by limit / 2, its end round by 11 a radian.
                    ASSERT_LT(band.away(i, before[3 * i], before[3 * i + 1]),
                              unit * kStep * std::max(11.5, limit * limit))
                        << "point " << i << ", limit " << limit << ", angle " << angle;
                }
                before = band.outline;
            }
        }
}

/// A bend to the left by an angle, of two legs with points beside it, all at other distances from it than the others.
struct Bend {
    double before, after;                    ///< the lengths of its legs
    std::vector<double> on_before, on_after; ///< from the end of each leg
    double radius = 0;                       ///< of the arc between the legs
    int arcs = 0;                            ///< edges of that

    Numbers turned(double angle) const
    {
        Numbers line = {-before, 0, 0};
        for (size_t i = on_before.size(); i > 0; --i)
            line.insert(line.end(), {-on_before[i - 1], 0, 0});
        double x = 0, y = 0;
        for (int i = 0; i <= arcs; ++i) {
            const double turn = arcs == 0 ? 0 : angle * i / arcs;
            x = radius * std::sin(turn);
            y = radius * (1 - std::cos(turn));
            line.insert(line.end(), {x, y, 0});
        }
        const auto go = [&](double way) {
            line.insert(line.end(), {x + way * std::cos(angle), y + way * std::sin(angle), 0});
        };
        std::ranges::for_each(on_after, go);
        go(after);
        return line;
    }
};

/// Ascending, below `most`.
std::vector<double> points_on_leg(Random& random, double most, double step)
{
    std::vector<double> ways;
    for (double way = random.uniform(0.05, step); way < most; way += random.uniform(0.05, step))
        ways.push_back(way);
    return ways;
}

TEST(DoorBand, FollowsABendOfSeveralPointsSteadily)
{
    constexpr double kStep = 0.002;
    Random random(1241);
    for (int round = 0; round < rounds(60); ++round) {
        const double before = random.uniform(15, 50), after = random.uniform(15, 50);
        const double most = random.one_in(3) ? 14 : 6, step = random.uniform(0.5, 4);
        Bend bend = {before, after, points_on_leg(random, most, step), points_on_leg(random, most, step)};
        if (random.one_in(3)) {
            bend.radius = random.uniform(0.02, 0.2);
            bend.arcs = random.between(2, 6);
        }
        const double side = random.one_in(4) ? 1 : -1;
        // To where the sides meet beside the end of the shorter leg, or the inner corner is 20 distances away.
        const double last = 3.141592653589793 - 2 * std::atan(1 / (0.93 * std::min({before, after, 21.5})));
        Numbers earlier;
        for (double angle = 2.1; angle < last; angle += kStep) {
            const Laid band = laid(bend.turned(angle), side);
            // An inner corner that is k distances away goes by at most k^2 / 2 + k / 2 a radian, an end round.
            const double away = 1 / std::cos(0.5 * angle), bound = std::max(after + 2, away * away);
            for (size_t i = 0; i < band.removed.size() && !earlier.empty(); ++i) {
                ASSERT_LT(band.away(i, earlier[3 * i], earlier[3 * i + 1]), kStep * bound)
                    << "point " << i << ", round " << round << ", angle " << angle;
            }
            if (side < 0) {
                ASSERT_THAT(band.narrowed, Each(0)) << "round " << round << ", angle " << angle;
                ASSERT_FALSE(band.crosses) << "round " << round << ", angle " << angle;
            }
            earlier = band.outline;
        }
    }
}

/// How far edge i of an outline in z = 0 is from edge k, 0 where they cross.
double apart(const Numbers& outline, size_t i, size_t k)
{
    const size_t n = outline.size() / 3;
    const double *const a = &outline[3 * i], *const b = &outline[3 * ((i + 1) % n)];
    const double *const c = &outline[3 * k], *const d = &outline[3 * ((k + 1) % n)];
    const auto side = [](const double* p, const double* q, const double* r) {
        return (q[0] - p[0]) * (r[1] - p[1]) - (q[1] - p[1]) * (r[0] - p[0]);
    };
    if (side(a, b, c) * side(a, b, d) < 0 && side(c, d, a) * side(c, d, b) < 0)
        return 0;
    const Numbers one = {a[0], a[1], 0, b[0], b[1], 0}, other = {c[0], c[1], 0, d[0], d[1], 0};
    return std::min({distance_from(one, false, c[0], c[1]), distance_from(one, false, d[0], d[1]),
                     distance_from(other, false, a[0], a[1]), distance_from(other, false, b[0], b[1])});
}

TEST(DoorBand, NamesTwoEdgesThatMeet)
{
    // Points of the border that gave way share a place: the edge that meets another begins at the last of them.
    const Laid ring =
        laid({4.9, -.9, 0, 9.7, -2.2, 0, 10.7, 2.7, 0, 8.8, 7.4, 0, 8.2, 2.4, 0, 4.8, -1.3, 0}, 2, options_of(1));
    ASSERT_TRUE(ring.crosses);
    EXPECT_LT(apart(ring.outline, ring.crossing[0], ring.crossing[1]), 1e-9);
    Random random(2611);
    int crossed = 0;
    for (int round = 0; round < 300; ++round) {
        Numbers line;
        for (int i = random.between(4, 12); i > 0; --i)
            line.insert(line.end(), {random.uniform(0, 10), random.uniform(0, 10), 0});
        const Laid band = laid(line, random.uniform(0.5, 3), options_of(1));
        if (!band.crosses)
            continue;
        ++crossed;
        const auto [i, k] = band.crossing;
        ASSERT_LT(i, k);
        ASSERT_LT(k, band.outline.size() / 3);
        ASSERT_LT(apart(band.outline, i, k), 1e-9) << "round " << round << ": " << i << ", " << k;
    }
    EXPECT_GT(crossed, 200);
}

TEST(DoorBand, PointsThatShareAPlaceAreOneToTheBit)
{
    Random random(2612);
    int shared = 0;
    for (int round = 0; round < rounds(300); ++round) {
        const Numbers line = track(random);
        korvale_band_options options = options_of(1, random.one_in(3));
        options.has_up = 1;
        options.up[2] = 1;
        const Laid band = laid(line, random.uniform(0.5, 8), options);
        if (band.crosses)
            continue;
        const size_t n = line.size() / 3;
        for (const size_t begin : {size_t{0}, n})
            for (size_t i = begin; i + 1 < begin + n; ++i) {
                const double *const a = &band.outline[3 * i], *const b = a + 3;
                const bool is_near = std::hypot(a[0] - b[0], a[1] - b[1]) < 1e-9;
                ASSERT_EQ(is_near, a[0] == b[0] && a[1] == b[1]) << "round " << round << ", point " << i;
                shared += is_near;
            }
    }
    EXPECT_GT(shared, 1000);
}

TEST(DoorBand, RepeatedPointsDoNotPullAtAStop)
{
    Random random(2613);
    for (int round = 0; round < rounds(200); ++round) {
        const Numbers line = walk_with_stop(random, random.uniform(0.1, 1)).line;
        Numbers repeated;
        std::vector<size_t> at; // where each point is first
        for (size_t i = 0; i < line.size(); i += 3) {
            at.push_back(repeated.size() / 3);
            for (int copies = random.one_in(3) ? random.between(2, 4) : 1; copies > 0; --copies)
                repeated.insert(repeated.end(), {line[i], line[i + 1], line[i + 2]});
        }
        const Laid once = laid(line, 4), band = laid(repeated, 4);
        if (std::ranges::find(once.removed, 1) == once.removed.end())
            continue; // no stop to be seen
        for (size_t i = 0; i < at.size(); ++i)
            ASSERT_LT(band.away(at[i], once.outline[3 * i], once.outline[3 * i + 1]), 1e-9)
                << "round " << round << ", point " << i << " of " << at.size();
    }
}

TEST(DoorBand, OfTwoStopsHasABorderBetweenThem)
{
    const Laid band =
        laid({0.1, 0, 0, -0.1, 0.1, 0, 0, -0.1, 0, 0, 0.2, 0, 9.1, 0, 0, 8.9, 0.1, 0, 9, -0.1, 0, 9, 0.2, 0}, 1,
             options_of(1));
    EXPECT_THAT(band.removed, Each(1));
    EXPECT_FALSE(band.collapsed);
}

TEST(DoorBand, TellsOfABandWithoutWidth)
{
    const Laid flat = laid({1, 1, 0, 9, 1, 0}, 1e-20); // its border is the line, to the bit
    EXPECT_TRUE(flat.crosses);
    EXPECT_THAT(flat.crossing, ElementsAre(0, 2));
    EXPECT_FALSE(laid({1, 1, 0, 9, 1, 0}, 1e-12).crosses);
}

TEST(DoorBand, OfALineAtOnePlaceStaysThere)
{
    for (const Numbers& line : {Numbers{1, 2, 3}, Numbers{1, 2, 3, 1, 2, 3, 1, 2, 3}}) {
        const Laid band = laid(line, 5, options_of(1));
        EXPECT_TRUE(band.collapsed);
        EXPECT_THAT(band.removed, Each(1));
        for (size_t i = 0; i < band.outline.size(); ++i)
            EXPECT_EQ(band.outline[i], static_cast<double>(i % 3 + 1));
    }
}

/// The power of two that makes a line reach 1 to 2 along the axis on which it reaches furthest.
double factor_for(const Numbers& line)
{
    double most = 0;
    for (size_t axis = 0; axis < 3; ++axis) {
        double low = line[axis], high = low;
        for (size_t i = axis; i < line.size(); i += 3) {
            low = std::min(low, line[i]);
            high = std::max(high, line[i]);
        }
        most = std::max(most, high - low);
    }
    return std::ldexp(1.0, -std::ilogb(most));
}

TEST(DoorBand, ScalingByAPowerOfTwoScalesTheBand)
{
    // Small lines are computed as if they reached 1 to 2, large ones as if it were 2^23 to 2^24. Between these sizes
    // thresholds of the sweep are absolute: two events at nearly the same time are one at one size and two at another.
    Random random(1233);
    for (int round = 0; round < rounds(200); ++round) {
        Numbers line = wandering(random, random.between(3, 30), 1.5);
        line.insert(line.end(), {30, 30, 0});
        const double distance = random.uniform(-6, 6), small = factor_for(line), large = std::ldexp(small, 23);
        for (const double size : {small, large}) {
            const Laid plain = laid(times(size, line), size * distance, options_of(1));
            for (const int exponent : {1, 6, 35, 900}) {
                const double scale = std::ldexp(1.0, size == small ? -exponent : exponent);
                const Laid scaled = laid(times(scale * size, line), scale * size * distance, options_of(1));
                ASSERT_EQ(scaled.outline, times(scale, plain.outline)) << "round " << round << ", " << scale;
                ASSERT_EQ(scaled.removed, plain.removed);
                ASSERT_EQ(scaled.narrowed, plain.narrowed);
            }
        }
    }
}

TEST(DoorBand, DrawsNothing)
{
    Mwsrand(5);
    const int expected = Mwrand();
    Mwsrand(5);
    Random random(1234);
    for (int round = 0; round < 50; ++round)
        laid(times(0.01, wandering(random, 20, 3)), 0.01, options_of(1));
    EXPECT_EQ(Mwrand(), expected);
}

TEST(DoorBand, OfAHundredThousandPointsIsReadySoon)
{
    Random random(1235);
    const Numbers line = wandering(random, 100000, 0.4);
    const Laid band = laid(line, 20, options_of(1));
    EXPECT_FALSE(band.collapsed);
}

TEST(DoorBand, TellsOfItsProgressAndStopsWhenAsked)
{
    Random random(1236);
    const Numbers line = wandering(random, 3000, 0.4);
    for (const int32_t closed : {0, 1}) {
        Course course = {{}, SIZE_MAX};
        korvale_band_options options = options_of(1, closed);
        options.progress = &Course::tell;
        options.user = &course;
        EXPECT_EQ(laid(line, 2, options).outline, laid(line, 2, options_of(1, closed)).outline);
        EXPECT_GT(course.told.size(), 10);
        EXPECT_TRUE(std::ranges::is_sorted(course.told));
        EXPECT_GE(course.told.front(), 0);
        EXPECT_LE(course.told.back(), 1);

        course = {{}, 5};
        const korvale_points points = points_of(line);
        Numbers outline(2 * line.size(), 9);
        korvale_band_result band = {outline.data(), nullptr, nullptr, 7, 7, {7, 7}};
        korvale_error error;
        EXPECT_EQ(korvale_band(&points, 2, &options, &band, &error), KORVALE_STOPPED);
        EXPECT_STREQ(error.text, "korvale_band: it was asked to stop");
        EXPECT_EQ(course.told.size(), 6);
        EXPECT_EQ(band.collapsed, 7);
        EXPECT_THAT(outline, Each(9));
    }
}

TEST(DoorBand, SaysWhatItRefuses)
{
    constexpr double nan = std::numeric_limits<double>::quiet_NaN();
    const Numbers straight = {0, 0, 0, 4, 0, 0};
    const auto refusal = [](const Numbers& line, double distance, const korvale_band_options& options) {
        Numbers outline(2 * line.size() + 1, 9);
        const korvale_points points = points_of(line);
        korvale_band_result band = {outline.data(), nullptr, nullptr, 7, 7, {7, 7}};
        const std::string text = sentence_of(KORVALE_BAD_ARGUMENT, [&](korvale_error* error) {
            return korvale_band(&points, distance, &options, &band, error);
        });
        EXPECT_THAT(outline, Each(9));
        EXPECT_EQ(band.collapsed, 7);
        return text;
    };
    EXPECT_EQ(refusal({}, 1, options_of()), "korvale_band: line must have at least 1 point, but it has 0");
    for (const Numbers& two : {straight, Numbers{0, 0, 0, 4, 0, 0, 4, 0, 0, 0, 0, 0, 4, 0, 0}})
        EXPECT_EQ(refusal(two, 1, options_of(0, 1)),
                  "korvale_band: line must have at least 3 different points where it is closed, but it has 2");
    EXPECT_EQ(refusal({1, 2, 3}, 1, options_of(0, 1)),
              "korvale_band: line must have at least 3 different points where it is closed, but it has 1");
    EXPECT_EQ(refusal(straight, 0, options_of()), "korvale_band: distance must be other than 0, but it is 0");
    EXPECT_EQ(refusal(straight, nan, options_of()), "korvale_band: distance must be finite, but it is nan");
    EXPECT_EQ(refusal({0, 0, 0, 0, 0, 1}, 1, options_of()),
              "korvale_band: options.up must be given for a line straight up, but it is missing");
    EXPECT_EQ(refusal({0, 0, 0, 9, 0, 0, 9, 5, 0, 9, 3, 0.5}, 1, options_of()),
              "korvale_band: line must be planar, or options.up be given, but its point 3 lies 0.5 off the plane");
    korvale_band_options options = options_of();
    options.miter_limit = 0.5;
    EXPECT_EQ(refusal(straight, 1, options), "korvale_band: options.miter_limit must be 1 or more, but it is 0.5");
    options = options_of();
    options.height = nan;
    EXPECT_EQ(refusal(straight, 1, options), "korvale_band: options.height must be finite, but it is nan");
    options = options_of();
    options.has_up = 1;
    EXPECT_EQ(refusal(straight, 1, options), "korvale_band: options.up must be longer than 1e-06, but it is (0, 0, 0)");
    options.up[0] = 2;
    EXPECT_EQ(refusal(straight, 1, options), "korvale_band: line must not run along options.up, but it does");
    options.up[0] = nan;
    EXPECT_EQ(refusal(straight, 1, options), "korvale_band: options.up must be finite, but its point 0 is (nan, 0, 0)");

    const korvale_points points = points_of(straight);
    EXPECT_EQ(sentence_of(KORVALE_BAD_ARGUMENT,
                          [&](korvale_error* error) { return korvale_band(&points, 1, nullptr, nullptr, error); }),
              "korvale_band: band must be given, but it is null");
    korvale_band_result band = {};
    EXPECT_EQ(sentence_of(KORVALE_BAD_ARGUMENT,
                          [&](korvale_error* error) { return korvale_band(&points, 1, nullptr, &band, error); }),
              "korvale_band: band.outline must be given, but it is null");
}

TEST(DoorBand, AnExhaustedHeapWritesNothing)
{
    NEEDS_HEAP_FAILURES();
    const Numbers line = hairpin(10, 1);
    const korvale_points points = points_of(line);
    const auto run = [&](int64_t) {
        std::array<double, 400> outline;
        outline.fill(9);
        korvale_band_result band = {outline.data(), nullptr, nullptr, 7, 7, {7, 7}};
        const korvale_band_options options = options_of(1);
        if (korvale_band(&points, -1.2, &options, &band, nullptr) == KORVALE_NO_MEMORY) {
            EXPECT_THAT(outline, Each(9));
            EXPECT_EQ(band.collapsed, 7);
        }
    };
    run(0); // the thread's room for work stays from the first call on
    EXPECT_GE(fail_each_allocation(run), 10);
}

} // namespace
} // namespace korvale::test
