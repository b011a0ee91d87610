// Tubes around knots. Each point of a line gets a frame; a circle carried by every frame makes the tube, and the
// colours run around it from the x axis on, so that they show how the frames turn.

#include "scene.h"
#include "shade.h"

#include <cmath>

namespace gallery {
namespace {

constexpr double kFullTurn = 6.28318530717958648;
constexpr int kAround = 36; // points of the circle

std::vector<Vec3> trefoil(int n)
{
    std::vector<Vec3> points;
    for (int i = 0; i < n; i++) {
        const double t = kFullTurn * (double(i) / n + 1.0 / 4); // starts at the top
        points.push_back(
            {std::sin(t) + 2 * std::sin(2 * t), std::cos(t) - 2 * std::cos(2 * t), -1.2 * std::sin(3 * t)});
    }
    return points;
}

// Three times around the axis, seven times through the hole of a ring.
std::vector<Vec3> torus_knot(int n)
{
    std::vector<Vec3> points;
    for (int i = 0; i < n; i++) {
        const double t = kFullTurn * (double(i) / n + 1.0 / 28); // starts at the top
        const double radius = 2.1 + 0.85 * std::cos(7 * t);
        points.push_back({radius * std::cos(3 * t), radius * std::sin(3 * t), 0.95 * std::sin(7 * t)});
    }
    return points;
}

// Orange along the x axis, blue against it.
Colour around(double angle)
{
    const double towards = std::cos(angle);
    const Colour pale = hex(0xf1ece0);
    return towards > 0 ? mix(pale, hex(0xd9600f), std::pow(towards, 3))
                       : mix(pale, hex(0x1f5fa8), std::pow(-towards, 3));
}

void add_tube(Stage& stage, const std::vector<Vec3>& path, double radius, bool closed)
{
    std::vector<Vec3> circle;
    std::vector<Colour> colours;
    for (int k = 0; k < kAround; k++) {
        const double angle = kFullTurn * k / kAround;
        circle.push_back({radius * std::cos(angle), radius * std::sin(angle), 0});
    }
    for (size_t i = 0; i < path.size(); i++)
        for (int k = 0; k < kAround; k++)
            colours.push_back(around(kFullTurn * k / kAround));
    const Mesh tube(korvale::tube(path, circle, {.closed = closed, .caps = false}));
    stage.add(tube, {kPaper, 0.35, 50, 60}, colours);
}

// Parallel rays, so that a place of the picture is easily found.
constexpr int kSide = kNarrow;
const Vec3 kEye{0, -9, 14};

Point seen(Vec3 p, double height)
{
    const Vec3 back = unit(kEye), right{1, 0, 0}, up = cross(back, right);
    return {kSide / 2.0 + dot(p, right) * kSide / height, kSide / 2.0 - dot(p, up) * kSide / height};
}

Picture draw_tube(const std::vector<Vec3>& loop, double radius, bool closed, double height)
{
    std::vector<Vec3> points = loop;
    if (!closed)
        points.push_back(loop.front()); // the same loop as an open line that ends where it starts
    Stage stage({kEye, {0, 0, 0}, {0, 1, 0}, 0, height});
    add_tube(stage, points, radius, closed);
    Picture picture = stage.render(kSide, kSide);
    picture.dot(seen(loop.front(), height), 6, kInk);
    return picture;
}

void show_knot(Gallery& hall, const std::string& file, const std::vector<Vec3>& loop, double radius, double height,
               const std::string& sentence)
{
    Picture picture(kWidth, kSide);
    for (const bool closed : {false, true}) {
        const int left = closed ? kSide : 0;
        picture.put(draw_tube(loop, radius, closed, height), left, 0);
        hall.progress(closed ? 1 : 0.5);
    }
    hall.show(file, picture, sentence);
}

void draw_swept_tubes(Gallery& hall)
{
    show_knot(hall, "trefoil.png", trefoil(400), 0.55, 8.2,
              "A trefoil: on the left the colours do not meet where the line ends at its start, at the dot; on the "
              "right the same line as a loop, without a seam, as the turn left over is spread.");
    show_knot(
        hall, "torus-knot.png", torus_knot(900), 0.24, 6.6,
        "The torus knot that runs three times around and seven times through the hole: little is left over here.");
}

} // namespace

Scene swept_tubes()
{
    return {"Swept tubes",
            "Every point of a line gets a frame whose x axis turns as little as it can. The tubes are orange along the "
            "x axes and blue against them.",
            draw_swept_tubes, "swept_tubes.cpp", "path.md"};
}

} // namespace gallery
