// The path of a mill that clears letters: one sweep gives the rings of all depths, with all pieces. The letters have no
// holes, since holes and outlines do not see each other.

#include "mesh.h"
#include "scene.h"

#include <algorithm>

namespace gallery {
namespace {

constexpr double kTool = 15; // the width of the mill, 1000 units per em

// The rings half a tool inside the letter, and on from there a little less than a tool apart until nothing is left.
std::vector<korvale::Rings> rings_of(const Outline& letter)
{
    std::vector<double> depths;
    for (double depth = 0.5 * kTool; depth < 120; depth += 0.8 * kTool)
        depths.push_back(-depth);
    return korvale::offset_rings(lifted(letter), depths, {.join = korvale::Join::round});
}

// The path in the order in which a mill runs it, from the innermost ring outwards.
std::vector<Outline> path_in(const Outline& letter)
{
    std::vector<Outline> path;
    for (const korvale::Rings& pieces : rings_of(letter)) {
        for (size_t k = 0; k < pieces.size(); k++) {
            if (!pieces.collapsed[k])
                path.push_back(plan(pieces[k]));
        }
    }
    std::reverse(path.begin(), path.end());
    return path;
}

void draw_contour_fill(Gallery& hall)
{
    std::vector<Outline> letters;
    Box2 box;
    for (const Shape& shape : hall.sans().lay_out("CNC", 30)) {
        letters.insert(letters.end(), shape.begin(), shape.end());
        for (const Outline& outline : shape)
            box.include(outline);
    }
    Picture picture(kWidth, 440);
    const View view(box, {24, 24}, {kWidth - 48, 392});
    const double scale = view({1, 0}).x - view({0, 0}).x;
    for (const Outline& letter : letters) {
        picture.fill({view(letter)}, hex(0x2b2f33));
        const std::vector<Outline> path = path_in(letter);
        for (const Outline& ring : path)
            picture.stroke(view(ring), scale * kTool, hex(0xe3c79a), true);
        for (size_t k = 0; k < path.size(); k++)
            picture.stroke(view(path[k]), 1.6, scale_colour(0.9 * double(k) / double(path.size())), true);
    }
    hall.show("contour-fill.png", picture,
              "Letters cleared by a mill: thin lines are the path of its middle, dark blue first; dark is what it "
              "leaves in sharp corners and behind the last ring.");
}

} // namespace

Scene contour_fill()
{
    return {"Contour fill",
            "All depths of a letter in one sweep, with all pieces, run from the innermost ring outwards.",
            draw_contour_fill, "contour_fill.cpp", "border.md"};
}

} // namespace gallery
