// A road from its middle line, and the four calls of the fixed interface behind a band. The sweep wants closed
// outlines: wings carry the closing edge away from the ends of an open line, and the pipe joins the line with its
// border into one closed band.

#include "mesh.h"
#include "scene.h"

#include <algorithm>
#include <cstdlib>
#include <stdexcept>

namespace gallery {
namespace {

// A smooth line through the points (Catmull and Rom 1974), cut into steps of about equal length.
Outline smooth_line(const Outline& through, int steps)
{
    Outline line;
    const int last = int(through.size()) - 1;
    for (int i = 0; i < last; i++) {
        const Point a = through[size_t(std::max(i - 1, 0))], b = through[size_t(i)], c = through[size_t(i + 1)],
                    d = through[size_t(std::min(i + 2, last))];
        for (int k = 0; k < steps; k++) {
            const double t = double(k) / steps;
            const auto blend = [&](double p, double q, double r, double s) {
                return 0.5 * (2 * q + (r - p) * t + (2 * p - 5 * q + 4 * r - s) * t * t +
                              (3 * q - p - 3 * r + s) * t * t * t);
            };
            line.push_back({blend(a.x, b.x, c.x, d.x), blend(a.y, b.y, c.y, d.y)});
        }
    }
    line.push_back(through.back());
    return line;
}

// A mountain road whose ends stand upright on the lower edge, so that the closing edge meets them squarely.
Outline mountain_road()
{
    return smooth_line({{90, -40},   {90, 60},    {90, 170},   {150, 330}, {290, 400},  {400, 320},  {350, 200},
                        {300, 110},  {400, 50},   {520, 110},  {540, 240}, {560, 380},  {680, 430},  {790, 370},
                        {770, 250},  {700, 160},  {760, 70},   {880, 70},  {940, 170},  {930, 310},  {990, 400},
                        {1070, 370}, {1110, 260}, {1110, 130}, {1110, 60}, {1110, -60}, {1110, -200}},
                       12);
}

// The band on both sides of a line.
void fill_road(Picture& picture, const View& view, const Outline& line, double half_width, Colour colour)
{
    picture.fill({view(plan(korvale::band(lifted(line), half_width, {.both_sides = true}).outline))}, colour);
}

Picture draw_road(const Outline& line)
{
    Picture picture(kWidth, 480, hex(0xdfe6cf));
    const View view({{0, 0}, {1200, 480}}, {0, 0}, {1200, 480});
    for (int k = 5; k >= 0; k--)
        fill_road(picture, view, line, 26 + 9 * k, mix(hex(0xbccf9f), hex(0xdfe6cf), k / 5.0));
    fill_road(picture, view, line, 25, hex(0xb3a582));
    fill_road(picture, view, line, 21, hex(0x4b5157));
    for (double distance : {18.0, -18.0})
        picture.stroke(view(plan(korvale::band(lifted(line), distance).border())), 1.6, hex(0xf4f2ea));
    const Outline middle = view(line);
    for (size_t i = 0; i + 2 < middle.size(); i += 4)
        picture.stroke({middle[i], middle[i + 1], middle[i + 2]}, 2, hex(0xf2c230));
    return picture;
}

// What the four calls leave in the record.
struct Calls {
    Outline winged, border, band;
};

Outline outline_in(const DATAstruct& array)
{
    return plan(std::span(reinterpret_cast<const korvale::Point*>(array.dvals), size_t(array.count)));
}

Calls make_calls(const Outline& line, double distance)
{
    BORDERStatus status;
    BORDERInitialize(&status);
    status.path->type = DATA_TYPE_DOUBLE;
    status.path->count = int(line.size());
    status.path->dim = 3;
    if (DATAAllocate(status.path) != 1)
        throw std::bad_alloc();
    const std::vector<Vec3> points = lifted(line);
    std::ranges::copy(korvale::PointView(points).coordinates(), status.path->dvals);
    status.distance = distance;
    status.keep_collapsed = 1; // taking the wings off again needs a border point for each point of the line
    status.split_events = 0;   // a long winding line may come near itself
    Calls calls;
    BORDERAddWings(&status);
    calls.winged = outline_in(*status.path);
    if (BORDER(&status) != 1)
        throw std::runtime_error("the line cannot be offset");
    calls.border = outline_in(*status.output);
    BORDERRemoveWings(&status);
    BORDERMakePipe(&status);
    calls.band = outline_in(*status.output);
    for (DATAstruct* array : {status.path, status.output, status.flat, status.velocity, status.direction, status.line,
                              status.dead, status.length, status.rate, status.merge}) {
        DATADispose(array);
        std::free(array);
    }
    return calls;
}

// The four calls, one panel each.
Svg draw_calls()
{
    const Outline line = smooth_line({{60, 40}, {60, 140}, {130, 210}, {210, 150}, {270, 130}, {300, 60}}, 3);
    const Calls band = make_calls(line, 22);
    Svg drawing(kNarrow, 660);
    const char* const names[] = {"BORDERAddWings", "BORDER", "BORDERRemoveWings", "BORDERMakePipe"};
    const char* const effects[] = {"a point more at each end", "the closed outline, offset",
                                   "line and border, open again", "one band of both"};
    for (int panel = 0; panel < 4; panel++) {
        const Point corner{300.0 * (panel % 2), 330.0 * (panel / 2)};
        const View view({{30, -30}, {340, 250}}, corner + Point{18, 24}, {264, 230});
        if (panel == 3)
            drawing.fill({view(band.band)}, hex(0xf0c48e));
        if (panel < 2) {
            drawing.stroke(view(band.winged), 2, hex(0x9fb6cc));
            drawing.stroke(view({band.winged.back(), band.winged.front()}), 1, hex(0xc9c4b6));
        }
        if (panel == 1)
            drawing.stroke(view(band.border), 2, kOrange, true);
        if (panel >= 2)
            drawing.stroke(view(Outline(band.band.begin(), band.band.begin() + long(line.size()))), 2, kOrange);
        drawing.stroke(view(line), 2.4, kBlue);
        if (panel < 2)
            for (Point p : {band.winged.front(), band.winged.back()})
                drawing.dot(view(p), 4, hex(0x9fb6cc));
        for (Point p : line)
            drawing.dot(view(p), 2.6, kBlue);
        drawing.text(corner + Point{150, 284}, kLettering + 2, names[panel], kInk, "middle");
        drawing.text(corner + Point{150, 306}, kLettering, effects[panel], kGrey, "middle");
    }
    return drawing;
}

void draw_road_band(Gallery& hall)
{
    hall.show("road-band.png", draw_road(mountain_road()),
              "A mountain road from its middle line: verge, gravel and asphalt are bands on either side, and the white "
              "lines are borders without their bands.");
    hall.show("road-band.svg", draw_calls(),
              "The four calls in their order: wings lengthen both ends, the closed outline is offset, the wings come "
              "off again, and the pipe joins line and border into a band.");
}

} // namespace

Scene road_band()
{
    return {"Road band",
            "The sweep offsets closed outlines; with wings that keep its closing edge away from the ends it offsets an "
            "open line as well, and the line and its border make a band.",
            draw_road_band, "road_band.cpp", "border.md"};
}

} // namespace gallery
