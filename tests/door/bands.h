// What the tests of bands share: a band with fewer words, and how far its points are from the line.
#pragma once

#include <cmath>
#include <cstddef>

#include "support.h"
#include "tests/support/random.h"

namespace korvale::test {

inline korvale_band_options options_of(int32_t both_sides = 0, int32_t closed = 0)
{
    korvale_band_options options;
    korvale_band_defaults(&options, sizeof options);
    options.both_sides = both_sides;
    options.closed = closed;
    return options;
}

struct Laid {
    Numbers outline;
    std::vector<uint8_t> removed, narrowed;
    bool collapsed, crosses;
    size_t crossing[2]; ///< where it crosses

    /// The distance of point i of the outline from another point, in z = 0.
    double away(size_t i, double x, double y) const { return std::hypot(outline[3 * i] - x, outline[3 * i + 1] - y); }
};

inline Laid laid(const Numbers& line, double distance, korvale_band_options options = options_of())
{
    const size_t n = line.size() / 3;
    const korvale_points points = points_of(line);
    Laid result = {
        Numbers(2 * line.size(), 9), std::vector<uint8_t>(n, 9), std::vector<uint8_t>(n, 9), false, false, {}};
    korvale_band_result band = {result.outline.data(), result.removed.data(), result.narrowed.data(), 7, 7, {7, 7}};
    korvale_error error;
    EXPECT_EQ(korvale_band(&points, distance, &options, &band, &error), KORVALE_OK) << error.text;
    result.collapsed = band.collapsed != 0;
    result.crosses = band.crosses != 0;
    for (int k = 0; k < 2; ++k)
        result.crossing[k] = static_cast<size_t>(band.crossing[k]);
    return result;
}

/// How far a place in z = 0 is from a line, edge by edge.
inline double distance_from(const Numbers& line, bool closed, double x, double y)
{
    const size_t n = line.size() / 3;
    double least = std::hypot(line[0] - x, line[1] - y);
    for (size_t i = 0; i + (closed ? 0 : 1) < n; ++i) {
        const double *const a = &line[3 * i], *const b = &line[3 * ((i + 1) % n)];
        const double dx = b[0] - a[0], dy = b[1] - a[1], square = dx * dx + dy * dy;
        const double t = square > 0 ? std::fmin(1, std::fmax(0, ((x - a[0]) * dx + (y - a[1]) * dy) / square)) : 0;
        least = std::fmin(least, std::hypot(a[0] + t * dx - x, a[1] + t * dy - y));
    }
    return least;
}

/// The stretch of a line for which point i of a border stands, which begins at `border` and runs by `step`: the points
/// that share its place, and one more on either side.
inline Numbers stretch_of(const Numbers& line, bool closed, const double* border, std::ptrdiff_t step, size_t i)
{
    const size_t n = line.size() / 3;
    const auto is_shared = [&](size_t k) {
        const double* const a = border + step * static_cast<std::ptrdiff_t>(k % n);
        const double* const b = border + step * static_cast<std::ptrdiff_t>(i);
        return std::hypot(a[0] - b[0], a[1] - b[1]) < 1e-9;
    };
    const auto end_of = [&](size_t most, auto point) {
        size_t count = 0;
        while (count < most && is_shared(point(count)))
            ++count;
        return count;
    };
    const size_t back = end_of(closed ? n - 1 : i, [&](size_t k) { return i + n - k; });
    const size_t on = end_of(closed ? n - 1 : n - 1 - i, [&](size_t k) { return i + k; });
    Numbers stretch;
    for (size_t k = i + n - back; k <= i + n + on; ++k)
        stretch.insert(stretch.end(), {line[3 * (k % n)], line[3 * (k % n) + 1], 0});
    return stretch;
}

/// Points that wander, the more wildly the larger `turn` is.
inline Numbers wandering(Random& random, int n, double turn)
{
    Numbers line;
    double x = 0, y = 0, heading = random.uniform(0, 6);
    for (int i = 0; i < n; ++i) {
        line.insert(line.end(), {x, y, 0});
        if (random.one_in(12))
            continue;
        heading += random.uniform(-turn, turn);
        const double step = random.uniform(0.01, 2);
        x += step * std::cos(heading);
        y += step * std::sin(heading);
    }
    return line;
}

} // namespace korvale::test
