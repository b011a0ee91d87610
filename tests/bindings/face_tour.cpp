// The tour of examples/bindings by the C++ face, but for the sentences of errors, which name functions of its own.
#include <korvale.hpp>

#include <cstdio>
#include <stdexcept>
#include <vector>

namespace {

void outlines()
{
    const std::vector<korvale::Point> square = {{0, 0, 0}, {4, 0, 0}, {4, 4, 0}, {0, 4, 0}};
    for (const korvale::Point& p : korvale::offset(square, 0.5).points)
        std::printf("%g %g\n", p[0], p[1]);
}

void rays()
{
    std::vector<korvale::Point> hills, eyes;
    for (int i = 0; i <= 32; ++i)
        for (int j = 0; j <= 32; ++j)
            hills.push_back({double(j), double(i), (7 * i + 13 * j) % 5 / 4.0});
    std::vector<korvale::Triangle> corners;
    for (int a = 0; a < 32 * 33; ++a)
        if (a % 33 < 32) {
            corners.push_back({a, a + 1, a + 34});
            corners.push_back({a, a + 34, a + 33});
        }
    for (int k = 0; k < 10000; ++k)
        eyes.push_back({k % 100 * 0.25 + 0.125, k / 100 * 0.25 + 0.0625, 9});
    std::vector<double> distances(eyes.size());
    std::vector<std::int32_t> triangles(eyes.size());
    const std::vector<korvale::Point> down = {{0.015625, 0.0078125, -1}};
    korvale::RayGrid(hills, corners).cast(eyes, down, {.distances = distances, .triangles = triangles});
    double numbers = 0, way = 0;
    for (std::size_t k = 0; k < eyes.size(); ++k) {
        numbers += triangles[k];
        way += distances[k];
    }
    std::printf("triangles %.17g, distances %.17g\n", numbers, way);
}

void equations()
{
    std::vector<double> x, y, z(10000);
    for (int k = 0; k < 10000; ++k) {
        x.push_back(k % 100 - 50);
        y.push_back(k / 100);
    }
    int calls = 0;
    korvale::Equations equations;
    equations.declare("x y z t");
    equations.function("RIPPLE", [&](double a) { return ++calls, a * a / 8; });
    const int wave = equations.add("z = RIPPLE(x) + t * y");
    equations.set("t", 0.5);
    const korvale::Column columns[] = {{"x", x}, {"y", y}};
    equations.evaluate(wave, columns, z);
    double sum = 0;
    for (const double height : z)
        sum += height;
    std::printf("heights %.17g\n", sum);
    equations.function("ROOT", [](double a) { return a < 0 ? throw std::domain_error("no root of -50") : 0.0; });
    try {
        equations.evaluate(equations.add("z = ROOT(x)"), columns, z);
    } catch (const std::domain_error& error) {
        std::printf("%s\n", error.what());
    }
    std::printf("called %d times\n", calls);
}

void relaxation()
{
    std::vector<korvale::Point> cube;
    for (int k = 0; k < 8; ++k)
        cube.push_back({double(k & 1), double(k >> 1 & 1), double(k >> 2)});
    const std::vector<int> sizes(6, 4);
    const std::vector<int> corners = {0, 2, 3, 1, 4, 5, 7, 6, 0, 1, 5, 4, 2, 6, 7, 3, 0, 4, 6, 2, 1, 3, 7, 5};
    korvale::Relaxer relaxer(cube, sizes, corners);
    relaxer.keep(korvale::Measure::lengths, 0.1);
    cube[7][2] = 1.5;
    double last = 0;
    const korvale::RunOptions options = {.progress = [&](int step, double energy) {
        last = energy;
        return step < 20;
    }};
    const korvale::Relaxation came_to = relaxer.run(cube, options);
    std::printf("stopped after %d of %d steps at %.17g: %.17g\n", came_to.steps, options.steps, last, cube[7][2]);
}

} // namespace

int main()
{
    outlines();
    rays();
    equations();
    relaxation();
}
