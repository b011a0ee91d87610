// figures FOLDER: draws what the functions of korvale.hpp do, a small drawing each, for the reference. A drawing has
// the name of its function or class: korvale-offset.svg.

#include <algorithm>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <stdexcept>

#include <korvale.hpp>

#include "plot.h"
#include "svg.h"

namespace gallery {
namespace {

using Line = std::vector<korvale::Point>;

constexpr int kAcross = 340; // pixels, which fit a narrow screen
constexpr double kLetters = 13;

// The box around points as seen from above.
Box2 bounds_of(const Line& points)
{
    Box2 box;
    box.include(plan(points));
    return box;
}

// A drawing, and the part of the plane that it shows.
struct Figure {
    Figure(const std::string& title, int height, const Line& content)
        : Figure(title, height, bounds_of(content).low, bounds_of(content).high)
    {
    }
    Figure(const std::string& title, int height, Point low, Point high)
        : svg(kAcross, height), view({low, high}, {12, 12}, {kAcross - 24.0, height - 24.0})
    {
        svg.title(title);
    }
    template <class Points>
    void outline(const Points& points, Colour colour, double width = 1.8)
    {
        svg.stroke(view(plan(points)), width, colour, true);
    }
    template <class Points>
    void line(const Points& points, Colour colour, double width = 1.8)
    {
        svg.stroke(view(plan(points)), width, colour);
    }
    template <class Points>
    void dots(const Points& points, double radius, Colour colour)
    {
        for (Point p : view(plan(points)))
            svg.dot(p, radius, colour);
    }
    void text(Point at, const std::string& text, Colour colour = kInk, const char* anchor = "start")
    {
        svg.text(view(at), kLetters, text, colour, anchor);
    }

    Svg svg;
    View view;
};

// From where things of space are seen: from the front, the right and above.
korvale::Point seen(const korvale::Point& p)
{
    static const korvale::Transform turn =
        korvale::Transform::rotation({-1.05, 0, 0}) * korvale::Transform::rotation({0, 0, -0.6});
    return turn * p;
}

Line seen(const Line& points)
{
    Line turned;
    for (const korvale::Point& p : points)
        turned.push_back(seen(p));
    return turned;
}

// A mesh: the faces that look this way, the farthest first, lighter where they look up and to the left.
Svg solid(const std::string& title, int height, const korvale::Mesh& mesh)
{
    const Line at = seen(mesh.vertices);
    Figure figure(title, height, at);
    const korvale::Mesh turned = {at, mesh.triangles};
    const std::vector<korvale::Point> normals = turned.normals();
    std::vector<size_t> order;
    for (size_t t = 0; t < mesh.triangles.size(); t++)
        if (normals[t][2] > 0)
            order.push_back(t);
    const auto depth = [&](size_t t) {
        double sum = 0;
        for (int32_t corner : mesh.triangles[t])
            sum += at[size_t(corner)][2];
        return sum;
    };
    std::sort(order.begin(), order.end(), [&](size_t a, size_t b) { return depth(a) < depth(b); });
    for (size_t t : order) {
        const auto [i, j, k] = mesh.triangles[t];
        const Line corners = {at[size_t(i)], at[size_t(j)], at[size_t(k)]};
        const double light = 0.5 - 0.3 * normals[t][0] + 0.4 * normals[t][1];
        figure.svg.fill({figure.view(plan(corners))}, mix(kBlue, kPaper, std::clamp(light, 0.0, 0.85)));
        figure.outline(corners, kInk, 0.7);
    }
    return figure.svg;
}

Svg offset()
{
    Figure figure("offset: the border on either side; every point of it belongs to a point of the outline", 190,
                  {-1.5, -0.8}, {9.5, 5.2});
    const Line house = {{0, 0, 0}, {8, 0, 0}, {8, 4, 0}, {5, 4, 0}, {5, 2, 0}, {3, 2, 0}, {0, 4, 0}};
    figure.svg.fill({figure.view(plan(house))}, kFaint);
    figure.outline(house, kInk);
    const std::pair<double, Colour> borders[] = {{0.6, kBlue}, {-0.6, kOrange}};
    for (const auto& [distance, colour] : borders) {
        const korvale::Offset border = korvale::offset(house, distance);
        for (size_t i = 0; i < house.size(); i++)
            figure.line(Line{house[i], border.points[i]}, kGrey, 0.8);
        figure.outline(border.points, colour);
    }
    figure.text({3.9, 3}, "0.6", kBlue, "end");
    figure.text({4, 0.9}, "-0.6", kOrange, "middle");
    return figure.svg;
}

Svg offset_many()
{
    Figure figure("offset_many: many outlines in one call, each by its own distance", 110, {-0.2, -0.2}, {14.2, 3.2});
    Line points;
    std::vector<int64_t> starts = {0};
    std::vector<double> distances;
    for (double x : {0.0, 3.7, 7.4, 11.1}) {
        for (const korvale::Point& p : Line{{0, 0, 0}, {3, 0, 0}, {3, 3, 0}, {1, 3, 0}, {0, 1.5, 0}})
            points.push_back({x + p[0], p[1], 0});
        starts.push_back(int64_t(points.size()));
        distances.push_back(-0.15 * double(starts.size() - 1));
    }
    const korvale::Borders borders = korvale::offset_many(points, starts, distances);
    for (size_t k = 0; k < borders.size(); k++) {
        figure.outline(Line(points.begin() + starts[k], points.begin() + starts[k + 1]), kInk);
        figure.outline(borders[k], kOrange);
        figure.text({3.7 * double(k) + 1.6, 1.3}, number_text(distances[k]), kOrange, "middle");
    }
    return figure.svg;
}

Svg offset_rings()
{
    Figure figure("offset_rings: where an outline falls apart, every piece goes on; each colour is a ring", 160,
                  {-0.2, -0.2}, {12.2, 5.2});
    const Line bell = {{0, 0, 0},    {5, 0, 0},   {5.5, 2, 0}, {7, 2, 0},   {8, 0.5, 0}, {12, 0.5, 0},
                       {12, 4.5, 0}, {8, 4.5, 0}, {7, 3, 0},   {5.5, 3, 0}, {5, 5, 0},   {0, 5, 0}};
    figure.svg.fill({figure.view(plan(bell))}, kFaint);
    figure.outline(bell, kInk);
    const Colour colours[] = {kBlue, kOrange, kGreen, kRed};
    for (int step = 1; step < 10; step++) {
        const korvale::Rings rings = korvale::offset_rings(bell, -0.25 * step);
        for (size_t k = 0; k < rings.size(); k++)
            if (!rings.collapsed[k])
                figure.outline(rings[k], colours[std::min<size_t>(k, 3)], 1.3);
    }
    return figure.svg;
}

Svg carry()
{
    Figure figure("carry: what belongs to a point goes along to the points of its join, here colours", 150,
                  {-1.4, -1.2}, {9.4, 4.2});
    const Line gable = {{0, 0, 0}, {8, 0, 0}, {8, 2, 0}, {4, 3, 0}, {0, 2, 0}};
    const std::vector<Colour> colours = {kBlue, kOrange, kGreen, kRed, kInk};
    const korvale::Offset border = korvale::offset(gable, 1, {.join = korvale::Join::round, .tolerance = 0.02});
    const korvale::Carried<Colour> carried = korvale::carry(colours, border);
    figure.svg.fill({figure.view(plan(gable))}, kFaint);
    figure.outline(border.points, kInk, 0.8);
    for (size_t i = 0; i < gable.size(); i++)
        figure.dots(Line{gable[i]}, 5, colours[i]);
    for (size_t i = 0; i < carried.size(); i++)
        figure.dots(Line{border.points[i]}, 3, carried[i]);
    return figure.svg;
}

const Line kRoad = {{0, 0, 0}, {2, 2.4, 0}, {5, 2.6, 0}, {6.5, 0.4, 0}, {9, 0.2, 0}, {11, 2.2, 0}};

Svg band()
{
    Figure figure("band: a closed strip along an open line, here to both sides", 130, {-0.8, -0.7}, {11.8, 3.5});
    const korvale::Band road = korvale::band(kRoad, 0.6, {.both_sides = true});
    figure.svg.fill({figure.view(plan(road.outline))}, kFaint);
    figure.outline(road.outline, kBlue);
    figure.line(kRoad, kInk, 1.2);
    figure.dots(kRoad, 3, kInk);
    return figure.svg;
}

Svg thin()
{
    Figure figure("thin: the points that describe a line to within a tolerance", 110, {-0.3, -0.4}, {12.3, 2.8});
    Line track;
    for (int i = 0; i <= 60; i++)
        track.push_back({0.2 * i, 1.2 + std::sin(0.16 * i) + 0.12 * std::sin(7.0 * i), 0});
    Line kept;
    for (size_t i : korvale::thin(track, 0.25))
        kept.push_back(track[i]);
    figure.line(track, kGrey, 0.9);
    figure.dots(track, 1.6, kGrey);
    figure.line(kept, kOrange);
    figure.dots(kept, 3.5, kOrange);
    return figure.svg;
}

Svg flatten()
{
    const korvale::Transform place =
        korvale::Transform::translation({-1, 1, 1.2}) * korvale::Transform::rotation({1.1, 0.35, 0.2});
    Line wall = {{0, 0, 0}, {4, 0, 0}, {4, 3, 0}, {2, 4, 0}, {0, 3, 0}};
    place.apply(wall);
    const korvale::Flattening way = korvale::flatten(wall);
    Line flat = wall;
    way.to_plane.apply(flat);
    const Line ground = {{-2, -2, 0}, {5, -2, 0}, {5, 5, 0}, {-2, 5, 0}};
    Line all = ground;
    all.insert(all.end(), wall.begin(), wall.end());
    Figure figure("flatten: an outline in space, and where its transform lays it into the plane z = 0", 210, seen(all));
    figure.svg.fill({figure.view(plan(seen(ground)))}, kFaint);
    figure.svg.fill({figure.view(plan(seen(flat)))}, kOrange, 0.25);
    figure.outline(seen(flat), kOrange);
    for (size_t i = 0; i < wall.size(); i++)
        figure.line(seen(Line{wall[i], flat[i]}), kGrey, 0.8);
    figure.svg.fill({figure.view(plan(seen(wall)))}, kBlue, 0.25);
    figure.outline(seen(wall), kBlue);
    return figure.svg;
}

// A path that winds upwards.
Line spiral(int points)
{
    Line path;
    for (int i = 0; i < points; i++) {
        const double t = double(i) / (points - 1);
        path.push_back({9 * t, 2 * std::sin(7 * t), 1.5 * std::cos(7 * t)});
    }
    return path;
}

Svg frames()
{
    const Line path = spiral(17);
    Line content = path;
    for (const korvale::Transform& frame : korvale::frames(path))
        content.insert(content.end(), {frame * korvale::Point{0.8, 0, 0}, frame * korvale::Point{0, 0.8, 0}});
    Figure figure("frames: axes carried along a path, x red, y green, z blue along it", 210, seen(content));
    figure.line(seen(path), kInk, 1.2);
    for (const korvale::Transform& frame : korvale::frames(path)) {
        const korvale::Point origin = frame * korvale::Point{0, 0, 0};
        const std::pair<korvale::Point, Colour> axes[] = {
            {{0.8, 0, 0}, kRed}, {{0, 0.8, 0}, kGreen}, {{0, 0, 0.4}, kBlue}};
        for (const auto& [axis, colour] : axes)
            figure.line(seen(Line{origin, frame * axis}), colour, 2);
    }
    return figure.svg;
}

Svg tube()
{
    const Line section = {{0.5, 0, 0},  {0.25, 0.43, 0},   {-0.25, 0.43, 0},
                          {-0.5, 0, 0}, {-0.25, -0.43, 0}, {0.25, -0.43, 0}};
    return solid("tube: an outline swept along a path", 190, korvale::tube(spiral(11), section));
}

const std::vector<Line> kPlate = {{{0, 0, 0}, {8, 0, 0}, {8, 5, 0}, {4, 5, 0}, {4, 3, 0}, {0, 3, 0}},
                                  {{5, 1, 0}, {5, 2, 0}, {7, 2, 0}, {7, 1, 0}}};

Svg bevel()
{
    return solid("bevel: layers of an outline with a hole, with a wall between each two", 170,
                 korvale::bevel(kPlate, {{0, 0}, {0, 1.5}, {-0.35, 2}}));
}

Svg triangulate()
{
    Figure figure("triangulate: an outline with a hole cut into triangles between its points", 190, {-0.3, -0.3},
                  {8.3, 5.3});
    Line points = kPlate[0];
    points.insert(points.end(), kPlate[1].begin(), kPlate[1].end());
    int number = 0;
    for (const auto& [i, j, k] : korvale::triangulate(kPlate)) {
        const Line corners = {points[size_t(i)], points[size_t(j)], points[size_t(k)]};
        figure.svg.fill({figure.view(plan(corners))}, mix(kBlue, kPaper, 0.35 + 0.08 * (number++ % 6)));
        figure.outline(corners, kPaper, 1);
    }
    for (const Line& outline : kPlate)
        figure.outline(outline, kInk);
    figure.dots(points, 3, kInk);
    return figure.svg;
}

Svg shapes()
{
    Figure figure("shapes: outlines in any order sorted into outer ones and their holes; each colour is a shape", 140,
                  {-0.2, -0.2}, {14.2, 5.2});
    const auto box = [](double x, double y, double width, double height) {
        return Line{{x, y, 0}, {x + width, y, 0}, {x + width, y + height, 0}, {x, y + height, 0}};
    };
    const std::vector<Line> outlines = {box(1, 1, 5, 3), box(8, 0, 6, 5),   box(2, 1.8, 1.6, 1.4),
                                        box(0, 0, 7, 5), box(9, 1, 1.5, 3), box(12, 1, 1, 3)};
    const Colour colours[] = {kBlue, kOrange, kGreen};
    size_t number = 0;
    for (const std::vector<size_t>& shape : korvale::shapes(outlines)) {
        Shape area;
        for (size_t k : shape)
            area.push_back(figure.view(plan(outlines[k])));
        figure.svg.fill(area, mix(colours[number % 3], kPaper, 0.55));
        for (size_t k : shape)
            figure.outline(outlines[k], colours[number % 3]);
        number++;
    }
    for (size_t k = 0; k < outlines.size(); k++)
        figure.text({outlines[k][0][0] + 0.2, outlines[k][0][1] + 0.2}, std::to_string(k));
    return figure.svg;
}

Svg scatter()
{
    Figure figure(
        "scatter: points spread over triangles by their areas; a weight makes the one on the right four times "
        "as likely",
        160, {-0.3, -0.3}, {12.3, 5.3});
    const Line vertices = {{0, 0, 0}, {4, 5, 0}, {5, 0, 0}, {9, 5, 0}, {12, 0, 0}};
    const std::vector<korvale::Triangle> triangles = {{0, 2, 1}, {2, 3, 1}, {2, 4, 3}};
    const std::vector<double> weights = {1, 1, 4};
    const korvale::Scattered points = korvale::scatter(vertices, triangles, 90, 7, {}, {.weights = weights});
    for (const auto& [i, j, k] : triangles) {
        const Line corners = {vertices[size_t(i)], vertices[size_t(j)], vertices[size_t(k)]};
        figure.svg.fill({figure.view(plan(corners))}, kFaint);
        figure.outline(corners, kInk, 1.2);
    }
    figure.dots(points.points, 2.2, kBlue);
    return figure.svg;
}

Svg rays()
{
    Figure figure(
        "RayGrid: triangles, seen from their side, in a grid of cells; a ray and what it meets, the nearest in "
        "red",
        190, {-1.4, -0.2}, {12.2, 6.2});
    const Line walls = {{2, 0, 0},   {3, 3, 0}, {4.2, 2, 0},  {5, 5.5, 0}, {5.5, 0.5, 0}, {8, 1.2, 0}, {7, 6, 0},
                        {8.5, 3, 0}, {9, 5, 0}, {10.5, 2, 0}, {0, 5, 0},   {1.5, 6, 0},   {11, 0, 0},  {12, 1, 0}};
    Line corners; // a triangle upright on each wall
    for (size_t i = 0; i < walls.size(); i += 2)
        corners.insert(
            corners.end(),
            {{walls[i][0], walls[i][1], -1}, {walls[i + 1][0], walls[i + 1][1], -1}, {walls[i][0], walls[i][1], 3}});
    const korvale::RayGrid grid(corners, korvale::GridSize{6, 4, 1});
    const korvale::GridSize cells = grid.grid_size();
    for (int i = 0; i <= cells.x; i++)
        figure.line(Line{{12.0 * i / cells.x, 0, 0}, {12.0 * i / cells.x, 6, 0}}, kFaint, 1);
    for (int j = 0; j <= cells.y; j++)
        figure.line(Line{{0, 6.0 * j / cells.y, 0}, {12, 6.0 * j / cells.y, 0}}, kFaint, 1);
    for (size_t i = 0; i < walls.size(); i += 2)
        figure.line(Line{walls[i], walls[i + 1]}, kBlue, 2.2);
    const korvale::Point eye = {-1, 0.9, -0.9}, direction = {12, 3.6, 0};
    figure.line(Line{eye, {12, 4.8, 0}}, kGrey, 1.2);
    figure.dots(Line{eye}, 4, kInk);
    bool is_nearest = true;
    const double length = std::hypot(direction[0], direction[1]);
    for (const korvale::RayHit& hit : grid.hits(eye, direction)) {
        const double share = hit.distance / length;
        figure.dots(Line{{eye[0] + share * direction[0], eye[1] + share * direction[1], 0}}, 4.5,
                    is_nearest ? kRed : kOrange);
        is_nearest = false;
    }
    return figure.svg;
}

Svg relaxer()
{
    Figure figure(
        "Relaxer: a mesh with one corner pulled, left, and after 60 steps towards its lengths, right, its other "
        "side held",
        140, {-0.3, -0.4}, {10.9, 3.7});
    constexpr int kColumns = 4, kRows = 4;
    Line points;
    std::vector<korvale::Triangle> triangles;
    std::vector<bool> is_held;
    for (int j = 0; j < kRows; j++)
        for (int i = 0; i < kColumns; i++) {
            points.push_back({double(i), double(j), 0});
            is_held.push_back(i == 0 || (i == kColumns - 1 && j == kRows - 1));
            const int a = j * kColumns + i;
            if (i + 1 < kColumns && j + 1 < kRows)
                triangles.insert(triangles.end(), {{a, a + 1, a + kColumns + 1}, {a, a + kColumns + 1, a + kColumns}});
        }
    korvale::Relaxer relaxer(points, triangles);
    relaxer.keep("lengths").hold(is_held);
    const auto draw_mesh = [&](double to_the_right, Colour colour) {
        for (const auto& [a, b] : relaxer.edges()) {
            Line edge = {points[size_t(a)], points[size_t(b)]};
            korvale::Transform::translation({to_the_right, 0, 0}).apply(edge);
            figure.line(edge, colour, 1.1);
        }
        for (size_t i = 0; i < points.size(); i++)
            if (is_held[i])
                figure.dots(Line{{points[i][0] + to_the_right, points[i][1], 0}}, 3, kInk);
    };
    points.back() = {4.6, 3.5, 0};
    draw_mesh(0, kOrange);
    relaxer.step(points, 60);
    draw_mesh(6, kBlue);
    return figure.svg;
}

Svg equations()
{
    Svg drawing(kAcross, 200);
    drawing.title("Equations: y = SIN(x) * EXP(0 - x / 6), evaluated over a column of x");
    korvale::Equations wave;
    wave.declare("x y");
    const int y = wave.add("y = SIN(x) * EXP(0 - x / 6)");
    std::vector<double> x;
    for (int i = 0; i <= 100; i++)
        x.push_back(0.15 * i);
    const std::vector<double> heights = wave.evaluate(y, {{"x", x}});
    std::vector<Point> curve;
    for (size_t i = 0; i < x.size(); i++)
        curve.push_back({x[i], heights[i]});
    Plot plot(drawing, {48, 16}, {kAcross - 64.0, 146}, {{0, -1}, {15, 1}});
    plot.axes();
    plot.curve(curve, kBlue, 2);
    return drawing;
}

Svg transform()
{
    Figure figure("Transform: what is scaled, then turned, then moved", 150, {-2, -0.4}, {12.4, 5.4});
    const Line flag = {{0, 0, 0},   {1, 0, 0},   {1, 1.6, 0}, {2.4, 1.6, 0}, {2.4, 2.4, 0},
                       {1, 2.4, 0}, {1, 3.2, 0}, {3, 3.2, 0}, {3, 4, 0},     {0, 4, 0}};
    const korvale::Transform steps[] = {korvale::Transform::scaling({1.3, 0.7, 1}),
                                        korvale::Transform::rotation({0, 0, 0.6}),
                                        korvale::Transform::translation({8, 1, 0})};
    figure.svg.fill({figure.view(plan(flag))}, kFaint);
    figure.outline(flag, kInk);
    korvale::Transform all;
    const Colour colours[] = {kGreen, kOrange, kBlue};
    for (size_t i = 0; i < 3; i++) {
        all = steps[i] * all;
        Line moved = flag;
        all.apply(moved);
        figure.outline(moved, colours[i], i == 2 ? 2.2 : 1.4);
    }
    return figure.svg;
}

void write(const std::filesystem::path& file, const Svg& drawing)
{
    std::ofstream out(file);
    out << drawing.content();
    if (!out.flush())
        throw std::runtime_error("cannot write " + file.string());
}

void write_figures(const std::filesystem::path& folder)
{
    std::filesystem::create_directories(folder);
    const std::pair<const char*, Svg (*)()> all[] = {
        {"offset", offset},
        {"offset_many", offset_many},
        {"offset_rings", offset_rings},
        {"carry", carry},
        {"band", band},
        {"thin", thin},
        {"flatten", flatten},
        {"frames", frames},
        {"tube", tube},
        {"bevel", bevel},
        {"triangulate", triangulate},
        {"shapes", shapes},
        {"scatter", scatter},
        {"RayGrid", rays},
        {"Relaxer", relaxer},
        {"Equations", equations},
        {"Transform", transform},
    };
    for (const auto& [name, draw_it] : all)
        write(folder / ("korvale-" + std::string(name) + ".svg"), draw_it());
}

} // namespace
} // namespace gallery

int main(int argc, char** argv)
{
    if (argc != 2) {
        std::fprintf(stderr, "usage: figures FOLDER\n");
        return 2;
    }
    try {
        gallery::write_figures(argv[1]);
    } catch (const std::exception& problem) {
        std::fprintf(stderr, "figures: %s\n", problem.what());
        return 1;
    }
    return 0;
}
