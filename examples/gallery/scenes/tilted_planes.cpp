// A letter in four tilted planes, and where two kinds of flattening lay it: by its first corner, which lets every
// outline run counter-clockwise, and by its extremes, which look at the plane from whichever side the points suggest.

#include "mesh.h"
#include "scene.h"

namespace gallery {
namespace {

// An R, which shows when it is seen from behind.
const Outline kLetter = {{0, 0}, {1, 0}, {1, 1.6}, {2.6, 0}, {4, 0}, {2, 2.2}, {3.4, 3.6}, {2.4, 5}, {0, 5}};

const Vec3 kTilts[] = {{0.9, 0.2, 0.1}, {1.17, -2.13, -0.28}, {2.3, 0.4, 2.0}, {1.55, 1.91, -1.45}}; // radians

// Space as seen along a slant, x to the right, z upwards.
Outline seen(const std::vector<Vec3>& points)
{
    Outline outline;
    for (Vec3 p : points)
        outline.push_back({p.x - 0.45 * p.y, p.z + 0.3 * p.y});
    return outline;
}

// The outline in the middle of a panel, blue where it runs counter-clockwise, its first corner marked.
void draw_panel(Picture& picture, const Outline& outline, Point corner, Point size, bool is_flat)
{
    const Colour colour = !is_flat ? kGrey : signed_area(outline) > 0 ? kBlue : kOrange;
    Box2 box;
    box.include(outline);
    const double reach = 6.4; // the same scale in all panels
    const Point middle = box.middle(), half{0.5 * reach * size.x / size.y, 0.5 * reach};
    const View view({middle - half, middle + half}, corner, size);
    picture.fill({view(outline)}, mix(colour, kPaper, 0.72));
    picture.stroke(view(outline), 2, colour, true);
    picture.dot(view(outline[0]), 4.5, colour);
    const Point a = outline[0], along = outline[1] - a;
    const Point tip = a + 0.75 * along, side{-along.y, along.x};
    picture.stroke({view(tip - 0.3 * along + 0.2 * side), view(tip), view(tip - 0.3 * along - 0.2 * side)}, 2, colour);
}

void draw_tilted_planes(Gallery& hall)
{
    constexpr int kColumns = 4, kLeft = 170, kTop = 26, kPanel = 190;
    constexpr double kAcross = (kWidth - kLeft) / double(kColumns);
    Picture picture(kWidth, kTop + 3 * kPanel + 30);
    const char* const rows[] = {"in space", "by the first corner", "by the extremes"};
    for (int row = 0; row < 3; row++)
        draw_text(picture, hall.sans(), {24, kTop + (row + 0.5) * kPanel}, 17, rows[row]);
    for (int i = 0; i < kColumns; i++) {
        const korvale::Transform tilt = korvale::Transform::rotation({kTilts[i].x, kTilts[i].y, kTilts[i].z});
        std::vector<Vec3> letter = lifted(kLetter);
        tilt.apply(letter);
        const Point size{kAcross - 20, kPanel - 16};
        const auto corner = [&](int row) { return Point{kLeft + i * kAcross + 10, kTop + row * double(kPanel) + 8}; };
        draw_panel(picture, seen(letter), corner(0), size, false);
        for (const bool by_extremes : {false, true}) {
            std::vector<Vec3> flat = letter;
            korvale::flatten(letter, {.by_extremes = by_extremes}).to_plane.apply(flat);
            draw_panel(picture, plan(flat), corner(by_extremes ? 2 : 1), size, true);
        }
    }
    hall.show(
        "tilted-planes.png", picture,
        "An F in four tilted planes, and laid into the plane z = 0 in two ways: blue where it runs counter-clockwise, "
        "orange where it is seen from behind; the dot is its first corner, the axes start at the origin.");
}

} // namespace

Scene tilted_planes()
{
    return {"Tilted planes",
            "Flattening finds the plane of an outline and the transforms into the plane z = 0 and back. Offsets use "
            "the first way, in which outwards is outwards whichever way an outline runs.",
            draw_tilted_planes, "tilted_planes.cpp", "path.md"};
}

} // namespace gallery
