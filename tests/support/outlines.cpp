#include "tests/support/outlines.h"

#include <cmath>
#include <cstdlib>
#include <numbers>

namespace korvale::test {
namespace {

constexpr double kFullTurn = 2.0 * std::numbers::pi;

void add_point(Coordinates& points, double x, double y)
{
    points.insert(points.end(), {x, y, 0.0});
}

void add_polar(Coordinates& points, double radius, double angle)
{
    add_point(points, radius * std::cos(angle), radius * std::sin(angle));
}

} // namespace

Coordinates wiggly(int n, int waves, double depth)
{
    Coordinates points;
    for (int i = 0; i < n; ++i) {
        const double angle = kFullTurn * i / n;
        add_polar(points, 10.0 + depth * std::sin(waves * angle + std::sin(5 * angle)), angle);
    }
    return points;
}

Coordinates gear(int teeth, double root_radius, double tip_radius)
{
    Coordinates points;
    for (int i = 0; i < 4 * teeth; ++i)
        add_polar(points, i % 4 < 2 ? root_radius : tip_radius, kFullTurn * i / (4 * teeth));
    return points;
}

Coordinates comb(int teeth, double gap)
{
    Coordinates points;
    add_point(points, 0, 0);
    add_point(points, teeth * (1 + gap), 0);
    for (int i = teeth - 1; i >= 0; --i) {
        const double left = i * (1 + gap);
        add_point(points, left + 1, 1);
        add_point(points, left + 1, 5);
        add_point(points, left, 5);
        add_point(points, left, 1);
    }
    return points;
}

Coordinates coast(int levels, double roughness, const std::function<double()>& uniform)
{
    Coordinates points;
    for (int i = 0; i < 4; ++i)
        add_polar(points, 10 + 5 * uniform(), kFullTurn * i / 4);
    for (int level = 0; level < levels; ++level) {
        Coordinates finer;
        const size_t n = points.size();
        for (size_t i = 0; i < n; i += 3) {
            const double *const p = &points[i], *const q = &points[(i + 3) % n];
            const double aside = roughness * uniform();
            add_point(finer, p[0], p[1]);
            add_point(finer, 0.5 * (p[0] + q[0]) + aside * (q[1] - p[1]), 0.5 * (p[1] + q[1]) - aside * (q[0] - p[0]));
        }
        points = finer;
    }
    return points;
}

Coordinates corridors()
{
    constexpr double kHalf = 0.845038025042943;
    Coordinates points;
    add_point(points, -6.7, -3.1);
    add_point(points, -5.093913192110767, -0.5524432777884902);
    add_point(points, -1.6852901899385742, -0.7861015343361891);
    add_point(points, -1.5, -kHalf);
    add_point(points, 4.5, -kHalf);
    add_point(points, 6.5, kHalf);
    add_point(points, -0.5, kHalf);
    add_point(points, -1.5348550251459832, 0.8976284806304757);
    add_point(points, -5.021941419983447, 1.1366653371351958);
    add_point(points, -7.69, 1.6);
    return points;
}

Coordinates turned(Coordinates outline, double angle)
{
    const double c = std::cos(angle), s = std::sin(angle);
    for (size_t i = 0; i < outline.size(); i += 3) {
        const double x = outline[i], y = outline[i + 1];
        outline[i] = x * c - y * s;
        outline[i + 1] = x * s + y * c;
    }
    return outline;
}

void release_arrays(BORDERStatus& status)
{
    for (DATAstruct* const d : {status.path, status.output, status.flat, status.velocity, status.direction, status.line,
                                status.dead, status.length, status.rate, status.merge}) {
        DATADispose(d);
        std::free(d);
    }
}

} // namespace korvale::test
