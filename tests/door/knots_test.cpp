// Bands along tracks that stand still now and then, through the C interface.
#include <algorithm>
#include <cmath>
#include <cstddef>

#include <gmock/gmock.h>

#include "bands.h"
#include "tests/support/random.h"

namespace korvale::test {
namespace {

using testing::Each;
using testing::ElementsAre;

korvale_band_options held_up(int32_t closed = 0)
{
    korvale_band_options options = options_of(1, closed);
    options.has_up = 1;
    options.up[2] = 1;
    return options;
}

/// What a receiver writes down every second of a walk of steps of 1 that stops for a while now and then: points that
/// stray from the walk by a deviation of `noise`, and by no more than three times that along each axis. With a memory
/// near 1 each strays much like the one before.
struct Track {
    Numbers line;
    Numbers truth;     ///< [4 n] of each point: where the walker was, and the direction of the walk
    double length = 0; ///< of the walk

    Track(Random& random, double noise, double memory, int legs)
    {
        double x = 0, y = 0, heading = random.uniform(0, 6), bend = 0, stray_x = 0, stray_y = 0;
        const auto strayed = [&](double before) {
            const double fresh = random.unit() + random.unit() + random.unit() - 1.5;
            return memory * before + (1 - memory) * 2 * noise * fresh;
        };
        const auto write_down = [&] {
            stray_x = strayed(stray_x);
            stray_y = strayed(stray_y);
            line.insert(line.end(), {x + stray_x, y + stray_y, 0});
            truth.insert(truth.end(), {x, y, std::cos(heading), std::sin(heading)});
        };
        for (int leg = legs; leg > 0; --leg) {
            for (int i = random.between(60, 150); i > 0; --i) {
                bend = std::clamp(bend + random.uniform(-0.004, 0.004), -0.02, 0.02);
                heading += bend;
                x += std::cos(heading);
                y += std::sin(heading);
                length += line.empty() ? 0 : 1;
                write_down();
                if (random.one_in(50)) { // a doubled point
                    line.insert(line.end(), line.end() - 3, line.end());
                    truth.insert(truth.end(), truth.end() - 4, truth.end());
                }
            }
            if (leg > 1) // a stop of 10 to 500 points
                for (int i = static_cast<int>(10 * std::pow(50, random.unit())); i > 0; --i)
                    write_down();
        }
    }
};

/// How the border runs beside the walk, in distances.
struct Course {
    double least_aside = 9, most_aside = -9; ///< of the walk, to the border's own side
    double most_along = 0;                   ///< away from where the walker was
    double most_away = 0;                    ///< from the stretch of the line that a point stands for
    double area;                             ///< of the band, in areas of the true strip
};

Course course_of(const Track& track, double width)
{
    const Laid band = laid(track.line, width, held_up());
    const size_t n = track.line.size() / 3;
    Course course;
    double area = 0;
    for (size_t i = 0; i < 2 * n; ++i) {
        const size_t point = i < n ? i : 2 * n - 1 - i;
        const double *const a = &band.outline[3 * i], *const b = &band.outline[3 * ((i + 1) % (2 * n))];
        const double* const truth = &track.truth[4 * point];
        const double x = a[0] - truth[0], y = a[1] - truth[1];
        const double aside = (i < n ? 1 : -1) * (x * truth[3] - y * truth[2]) / width;
        area += 0.5 * (a[0] * b[1] - a[1] * b[0]);
        course.least_aside = std::min(course.least_aside, aside);
        course.most_aside = std::max(course.most_aside, aside);
        course.most_along = std::max(course.most_along, std::fabs(x * truth[2] + y * truth[3]) / width);
        if (i > 0 && a[-3] == a[0] && a[-2] == a[1])
            continue; // the same stretch
        const Numbers stretch =
            stretch_of(track.line, false, &band.outline[i < n ? 0 : 3 * (2 * n - 1)], i < n ? 3 : -3, point);
        course.most_away = std::max(course.most_away, distance_from(stretch, false, a[0], a[1]) / width);
    }
    course.area = area / (2 * width * track.length);
    return course;
}

/// A walk along x in steps of 4 that stands still at 20, for five points around there.
const Numbers kStop = {0,    0,   0, 4,    0,    0, 8,  0, 0, 12, 0, 0, 16, 0, 0, 20.5, 0.4, 0, 19.6, -0.4, 0,
                       20.4, 0.4, 0, 19.5, -0.4, 0, 20, 0, 0, 24, 0, 0, 28, 0, 0, 32,   0,   0, 36,   0,    0};

TEST(DoorKnots, AStopIsPassedByAsIfItWereAPoint)
{
    for (const double side : {1.0, -1.0}) {
        korvale_band_options options = held_up();
        options.both_sides = 0;
        const Laid band = laid(kStop, 4 * side, options);
        for (size_t i = 0; i < 14; ++i) {
            const double x = i < 5 ? 4 * static_cast<double>(i) : i < 10 ? 20 : 4 * static_cast<double>(i - 4);
            EXPECT_LT(band.away(i, x, -4 * side), 0.05) << "point " << i;
        }
        EXPECT_THAT(band.removed, ElementsAre(0, 0, 0, 0, 0, 1, 1, 1, 1, 0, 0, 0, 0, 0)) << "side " << side;
    }
}

TEST(DoorKnots, TracksWithStopsAreBorderedAsTheirWalks)
{
    constexpr double kLeastNoise = 0.3, kGrowth = 10, kMostWidth = 20;
    Random random(1240);
    int smooth = 0, strayed = 0;
    for (int round = 0; round < rounds(250); ++round) {
        const double noise = kLeastNoise * std::pow(kGrowth, random.unit());
        const double width = std::clamp(noise * 40 * std::pow(0.02, random.unit()), 0.5, kMostWidth);
        const int legs = random.between(2, 4);
        const Track track(random, noise, random.one_in(2) ? 0 : 0.8, legs);
        const Course course = course_of(track, width);
        ASSERT_LE(course.most_away, 4 * (1 + 1e-9)) << "round " << round;
        if (noise > width / 10)
            continue;
        ++smooth;
        strayed += course.least_aside < 0.3 || course.most_aside > 2 || course.most_along > 3;
        ASSERT_NEAR(course.area, 1, 0.13 + width / track.length) << "round " << round << ", width " << width;
    }
    EXPECT_GT(smooth, 0);
    EXPECT_LE(strayed, smooth / 100) << "of " << smooth; // of 2,912 in 10,000 tracks there are 13
}

TEST(DoorKnots, AreSweptInStepsThatGrowWithTheLine)
{
    const auto steps = [](int legs) { // a sweep asks after each 100,000 vertices that it looked at
        Random random(1241);
        const Track track(random, 0.5, 0.8, legs);
        korvale_band_options options = held_up();
        int asked = 0;
        options.progress = [](double, void* user) { return ++*static_cast<int*>(user); };
        options.user = &asked;
        laid(track.line, 20, options);
        return asked;
    };
    const int some = steps(40), many = steps(160);
    EXPECT_GT(some, 100);
    EXPECT_LT(many, 5 * some);
}

TEST(DoorKnots, ALongLineMayStayAtOnePlaceExactly)
{
    Numbers line = kStop;
    for (int i = 0; i < 6000; ++i)
        line.insert(line.end(), {40, 0, 0});
    for (int i = 1; i < 100; ++i)
        line.insert(line.end(), {40 + 4.0 * i, 0, 0});
    const Laid band = laid(line, 4, held_up());
    for (size_t i = 14; i < line.size() / 3; ++i)
        ASSERT_LT(band.away(i, line[3 * i], -4), 1e-6) << "point " << i;
}

} // namespace
} // namespace korvale::test
