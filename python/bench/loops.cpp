// The jobs of bench.py as a C++ program writes them; prints the nanoseconds of one, the fastest of five turns.
#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <string_view>
#include <vector>

#include "korvale.hpp"

namespace {

constexpr size_t kMany = 200'000;

double sink = 0; ///< what is computed is used

template <class Job>
double nanoseconds(size_t times, Job&& job)
{
    double fastest = INFINITY;
    for (int turn = 0; turn < 5; ++turn) {
        const auto start = std::chrono::steady_clock::now();
        for (size_t i = 0; i < times; ++i)
            job();
        const std::chrono::duration<double, std::nano> taken = std::chrono::steady_clock::now() - start;
        fastest = std::min(fastest, taken.count() / static_cast<double>(times));
    }
    return fastest;
}

/// Waves over the square from 0 to 50, 51 points a side: vertices and triangles.
std::pair<std::vector<korvale::Point>, std::vector<korvale::Triangle>> waves()
{
    std::vector<korvale::Point> vertices;
    std::vector<korvale::Triangle> triangles;
    for (int i = 0; i <= 50; ++i)
        for (int j = 0; j <= 50; ++j)
            vertices.push_back({double(i), double(j), std::sin(0.3 * i) * std::cos(0.2 * j)});
    for (int i = 0; i < 50; ++i)
        for (int j = 0; j < 50; ++j) {
            const int v = 51 * i + j;
            triangles.push_back({v, v + 51, v + 52});
            triangles.push_back({v, v + 52, v + 1});
        }
    return {vertices, triangles};
}

double rays()
{
    const auto [vertices, triangles] = waves();
    korvale::RayGrid grid(vertices, triangles);
    std::vector<korvale::Point> origins;
    for (size_t i = 0; i < kMany; ++i)
        origins.push_back({std::fmod(0.618 * double(i), 50.0), std::fmod(0.414 * double(i), 50.0), 10.0});
    return nanoseconds(1, [&] {
        double from[3], down[3] = {0, 0, -1}, distance = 0;
        for (const korvale::Point& origin : origins) {
            std::copy(origin.begin(), origin.end(), from);
            sink += ray_intersect(from, down, &grid.status(), &distance) + distance;
        }
    });
}

double equation()
{
    EquationSystem system;
    EqSystemInitialize(&system);
    char names[] = "y x", text[] = "y = SIN(x) * 2 + x / (1 + x)";
    EqParseVariables(&system, names, 0);
    EqParseEquation(&system, text);
    std::vector<double> x(kMany), y(kMany);
    for (size_t i = 0; i < kMany; ++i)
        x[i] = 1e-4 * double(i);
    const double taken = nanoseconds(1, [&] {
        for (size_t i = 0; i < kMany; ++i) {
            EqSetVariable(&system, 3, x[i]);
            y[i] = EqEvaluate(&system, 0);
        }
    });
    sink += y.back();
    EqSystemDispose(&system);
    return taken;
}

double transform()
{
    double radians[] = {0.1, 0.2, 0.3};
    Xfm turn;
    rotation_matrix(radians, turn);
    std::vector<double> points(3 * kMany), moved(3 * kMany);
    for (size_t i = 0; i < points.size(); ++i)
        points[i] = double(i % 1000);
    const double taken = nanoseconds(1, [&] {
        for (size_t i = 0; i < kMany; ++i)
            TransformPoint(turn, &points[3 * i], &moved[3 * i]);
    });
    sink += moved.back();
    return taken;
}

double offset()
{
    std::vector<korvale::Point> circle;
    for (int i = 0; i < 64; ++i)
        circle.push_back({10 * std::cos(i * M_PI / 32), 10 * std::sin(i * M_PI / 32), 0});
    return nanoseconds(2000, [&] { sink += korvale::offset(circle, 0.5).points[0][0]; });
}

} // namespace

int main(int count, char** arguments)
{
    const std::string_view job = count == 2 ? arguments[1] : "";
    const double taken = job == "rays"        ? rays()
                         : job == "equation"  ? equation()
                         : job == "transform" ? transform()
                         : job == "offset"    ? offset()
                                              : NAN;
    std::printf("%.1f\n", taken);
    return std::isnan(taken) || sink == 0.123;
}
