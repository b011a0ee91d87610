#include "tests/border/shapes.h"

#include <cmath>

namespace korvale::test {
namespace {

void add_point(Coordinates& points, double x, double y)
{
    points.insert(points.end(), {x, y, 0.0});
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

Coordinates rough(Coordinates points, double noise, Random& random)
{
    for (size_t i = 0; i < points.size(); i += 3) {
        const double factor = 1.0 + 0.1 * noise * random.uniform(-1, 1);
        points[i] *= factor;
        points[i + 1] *= factor;
    }
    return points;
}

Coordinates coast(int levels, double roughness, Random& random)
{
    return coast(levels, roughness, [&random] { return random.uniform(-1, 1); });
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
        points = rough(wiggly(n, 1 + random.below(1 + n / 4), random.uniform(0, 3)), random.uniform(0, 0.5), random);
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
        points = rough(wiggly(n, 0, 0), random.uniform(0, 8), random); // a star
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
