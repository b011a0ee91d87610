// An arrow grown with each kind of join, and a line with each kind of cap. Every point of a border names the vertex it
// belongs to: it is drawn in the colour of that vertex.

#include "mesh.h"
#include "scene.h"

namespace gallery {
namespace {

const Outline kArrow = {{0, -1}, {4, -1}, {4, -2.4}, {7.4, 0}, {4, 2.4}, {4, 1}, {0, 1}, {1, 0}};
const Outline kZigzag = {{0, 0}, {2.2, 1.8}, {4.4, -0.4}, {7, 1.2}};

// A colour of its own for each of n vertices.
Colour colour_of(int vertex, size_t n)
{
    return scale_colour(0.85 * vertex / double(n));
}

// A panel of the picture, with a title below.
struct Panel {
    Point corner, size;
    const char* title;
};

void write_title(Picture& picture, const Font& font, const Panel& panel)
{
    draw_text(picture, font, {panel.corner.x + panel.size.x / 2, panel.corner.y + panel.size.y - 10}, kLettering,
              panel.title, kInk, Align::middle);
}

void draw_joins(Picture& picture, const Font& font, const Panel& panel, const korvale::OffsetOptions& options)
{
    Box2 box{{-3.4, -5.2}, {10, 5.2}};
    const View view(box, panel.corner, panel.size - Point{0, 34});
    for (int k = 3; k >= 1; k--) {
        const korvale::Offset grown = korvale::offset(lifted(kArrow), 0.45 * k, options);
        const Outline border = view(plan(grown.points));
        picture.fill({border}, mix(kBlue, kPaper, 0.45 + 0.15 * k));
        picture.stroke(border, 1.2, kBlue, true);
        for (size_t i = 0; k == 3 && i < border.size(); i++) {
            const int vertex = grown.sources.empty() ? int(i) : grown.sources[i];
            picture.dot(border[i], 3.6, colour_of(vertex, kArrow.size()));
        }
    }
    picture.fill({view(kArrow)}, kPaper);
    picture.stroke(view(kArrow), 2, kInk, true);
    for (size_t i = 0; i < kArrow.size(); i++)
        picture.dot(view(kArrow)[i], 4.6, colour_of(int(i), kArrow.size()));
    write_title(picture, font, panel);
}

void draw_caps(Picture& picture, const Font& font, const Panel& panel, korvale::Cap cap)
{
    Box2 box{{-1, -1.4}, {8, 2.8}};
    const View view(box, panel.corner, panel.size - Point{0, 34});
    const korvale::Band band = korvale::band(lifted(kZigzag), 0.7, {.both_sides = true, .cap = cap});
    const Outline outline = view(plan(band.outline));
    picture.fill({outline}, mix(kOrange, kPaper, 0.65));
    picture.stroke(outline, 1.2, kOrange, true);
    picture.stroke(view(kZigzag), 2, kInk);
    for (size_t i = 0; i < kZigzag.size(); i++)
        picture.dot(view(kZigzag)[i], 4.6, kInk);
    write_title(picture, font, panel);
}

void draw_corners_and_ends(Gallery& hall)
{
    Picture joins(kWidth, 800), caps(kWidth, 240);
    const Point half{kWidth / 2.0, 400}, third{kWidth / 3.0, 240};
    using korvale::Join, korvale::Cap;
    draw_joins(joins, hall.sans(), {{0, 0}, half, "mitred: a point for each point"}, {});
    draw_joins(joins, hall.sans(), {{half.x, 0}, half, "mitred, within 1.5 distances"}, {.miter_limit = 1.5});
    draw_joins(joins, hall.sans(), {{0, half.y}, half, "bevelled"}, {.join = Join::bevel});
    draw_joins(joins, hall.sans(), {half, half, "round"}, {.join = Join::round});
    hall.show("joins.png", joins,
              "An arrow grown three times with each join. The points of the outermost border have the colour of the "
              "vertex they belong to.");
    draw_caps(caps, hall.sans(), {{0, 0}, third, "flat"}, Cap::flat);
    draw_caps(caps, hall.sans(), {{third.x, 0}, third, "square"}, Cap::square);
    draw_caps(caps, hall.sans(), {{2 * third.x, 0}, third, "round"}, Cap::round);
    hall.show("caps.png", caps, "A band along four points with each cap.");
}

} // namespace

Scene corners_and_ends()
{
    return {"Corners and ends",
            "What stands at corners that open and at the ends of a line can be chosen. With each choice every point of "
            "a border tells which point it came from, so colours, widths and heights travel along.",
            draw_corners_and_ends, "corners_and_ends.cpp", "correspondence.md"};
}

} // namespace gallery
