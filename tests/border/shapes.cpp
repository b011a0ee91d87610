#include "tests/border/shapes.h"

#include <cmath>
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

/// Repeats some points, puts some on the line between their neighbours, folds some back.
void disturb(Coordinates& points, Random& random)
{
    const int n = static_cast<int>(points.size() / 3);
    if (n < 4)
        return;
    for (int k = random.below(4); k > 0; --k) {
        const int i = 1 + random.below(n - 2);
        for (int c = 0; c < 2; ++c) {
            double* const p = &points[3 * i + c];
            switch (random.below(4)) {
            case 0:
                p[0] = p[-3];
                break;
            case 1:
                p[0] = 0.5 * (p[-3] + p[3]);
                break;
            case 2:
                p[0] = p[-3] + 1e-06 * random.uniform(-2, 2);
                break;
            default:
                p[0] = p[3 * random.between(-1, 1)];
            }
        }
    }
}

} // namespace

Coordinates wiggly(int n, int waves, double depth, double noise, Random& random)
{
    Coordinates points;
    for (int i = 0; i < n; ++i) {
        const double angle = kFullTurn * i / n;
        add_polar(points, 10.0 + depth * std::sin(waves * angle) + noise * random.uniform(-1, 1), angle);
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

Coordinates coast(int levels, double roughness, Random& random)
{
    Coordinates points;
    for (int i = 0; i < 4; ++i)
        add_polar(points, random.uniform(5, 15), kFullTurn * i / 4);
    for (int level = 0; level < levels; ++level) {
        Coordinates finer;
        const size_t n = points.size();
        for (size_t i = 0; i < n; i += 3) {
            const double *const p = &points[i], *const q = &points[(i + 3) % n];
            const double aside = roughness * random.uniform(-1, 1);
            add_point(finer, p[0], p[1]);
            add_point(finer, 0.5 * (p[0] + q[0]) + aside * (q[1] - p[1]), 0.5 * (p[1] + q[1]) - aside * (q[0] - p[0]));
        }
        points = finer;
    }
    return points;
}

Coordinates grid_walk(int n, int size, Random& random)
{
    Coordinates points;
    for (int i = 0; i < n; ++i)
        if (i > 0 && !random.one_in(4)) { // along a grid line
            const double *const last = &points[3 * (i - 1)], x = last[0], y = last[1];
            const int step = random.between(-2, 2);
            if (random.one_in(2))
                add_point(points, x + step, y);
            else
                add_point(points, x, y + step);
        } else {
            add_point(points, random.below(size), random.below(size));
        }
    return points;
}

Coordinates scramble(int n, Random& random)
{
    Coordinates points;
    for (int i = 0; i < n; ++i)
        add_point(points, random.uniform(-10, 10), random.uniform(-10, 10));
    return points;
}

Coordinates any_outline(int most, Random& random)
{
    const int n = 1 + random.below(most);
    Coordinates points;
    switch (random.below(8)) {
    case 0:
    case 1:
        points = wiggly(n, 1 + random.below(1 + n / 4), random.uniform(0, 3), random.uniform(0, 0.5), random);
        break;
    case 2:
        points = gear(1 + n / 4, random.uniform(2, 9), 10);
        break;
    case 3:
        points = comb(1 + n / 4, random.one_in(2) ? 1.0 : random.uniform(0.1, 2));
        break;
    case 4:
        points = coast(random.below(1 + static_cast<int>(std::log2(1 + n / 4))), random.uniform(0, 0.6), random);
        break;
    case 5:
        points = grid_walk(n, 2 + random.below(12), random);
        break;
    case 6:
        points = scramble(n, random);
        break;
    default:
        points = wiggly(n, 0, 0, random.uniform(0, 8), random); // a star
    }
    if (random.one_in(3))
        disturb(points, random);
    if (random.one_in(4)) {
        const double scale = std::pow(10.0, random.uniform(-6, 9)), x = random.spread(), y = random.spread();
        const bool moves = random.one_in(2);
        for (size_t i = 0; i < points.size(); i += 3) {
            points[i] = points[i] * scale + (moves ? x : 0.0);
            points[i + 1] = points[i + 1] * scale + (moves ? y : 0.0);
        }
    }
    if (random.one_in(4))
        for (size_t i = 0; i < points.size(); ++i)
            if (random.one_in(40))
                points[i] = random.awkward();
    return points;
}

} // namespace korvale::test
