// Equations as text. A drum head is a mesh whose heights an equation gives, one evaluation of the system per point; a
// table of RAND makes its grain, the same in every picture because the row of the table is the number of the point.

#include "plot.h"
#include "scene.h"
#include "shade.h"

namespace gallery {
namespace {

constexpr double kPi = 3.14159265358979323846;

// A disc of rings around a middle point, in the plane z = 0.
Mesh disc(double radius, int rings, int sectors)
{
    Mesh mesh;
    mesh.points.push_back({});
    for (int ring = 1; ring <= rings; ring++) {
        for (int i = 0; i < sectors; i++) {
            const double r = radius * ring / rings, turn = 2 * kPi * i / sectors;
            mesh.points.push_back({r * std::cos(turn), r * std::sin(turn), 0});
        }
    }
    for (int i = 0; i < sectors; i++)
        mesh.triangles.push_back({0, 1 + i, 1 + (i + 1) % sectors});
    for (int ring = 1; ring < rings; ring++) {
        for (int i = 0; i < sectors; i++) {
            const int a = 1 + (ring - 1) * sectors + i, b = 1 + (ring - 1) * sectors + (i + 1) % sectors;
            mesh.triangles.push_back({a, a + sectors, b + sectors});
            mesh.triangles.push_back({a, b + sectors, b});
        }
    }
    return mesh;
}

const char* const kDistance = "r = SQRT(x * x + y * y)";
const char* const kHeight = "h = SIN(r * 6 - t) * EXP(0 - r) + 0.03 * (RAND - 0.5)";

void draw_drum(Gallery& hall)
{
    korvale::Equations equations;
    equations.declare("x y t r h");
    equations.add(kDistance);
    equations.add(kHeight);
    Mesh drum = disc(2.6, 70, 160);
    EqSeed(7);
    equations.make_table("RAND", int(drum.points.size()));

    static const char* const kMoments[] = {"t = 0", "t = PI / 2", "t = PI", "t = 3 PI / 2"};
    constexpr int kFrames = 4, kFrame = kWidth / kFrames, kFrameHeight = 210;
    Picture strip(kWidth, kFrameHeight + 110);
    for (int frame = 0; frame < kFrames; frame++) {
        equations.set("t", frame * kPi / 2);
        std::vector<Colour> colours;
        for (size_t i = 0; i < drum.points.size(); i++) {
            Vec3& p = drum.points[i];
            equations.set("x", p.x);
            equations.set("y", p.y);
            equations.set_table_position(double(i));
            equations.evaluate_all();
            p.z = equations.get("h");
            colours.push_back(scale_colour(0.45 + 0.75 * p.z));
        }
        Stage stage({{0, -8, 5.4}, {0, 0, 0.06}, {0, 0, 1}, 24});
        stage.add(drum, {hex(0xffffff), 0.25, 30, 70}, colours);
        strip.put(stage.render(kFrame, kFrameHeight), frame * kFrame, 0);
        draw_text(strip, hall.sans(), {(frame + 0.5) * kFrame, kFrameHeight + 24}, 15, kMoments[frame], kGrey,
                  Align::middle);
        hall.progress(double(frame + 1) / kFrames);
    }
    draw_text(strip, hall.sans(), {kWidth / 2, kFrameHeight + 64}, 17, kDistance, kInk, Align::middle);
    draw_text(strip, hall.sans(), {kWidth / 2, kFrameHeight + 92}, 17, kHeight, kInk, Align::middle);
    hall.show(
        "drum-head.png", strip,
        "A drum head at four moments, its heights given by the two equations under it, its grain by a table of RAND.");
}

// One equation for each built-in function, in the order of their indices.
const char* const kEquations[] = {"y = x + 1", "y = x - 1", "y = x * x",     "y = 1 / x",  "y = 2 ^ x",
                                  "y = -x",    "y = SIN x", "y = COS x",     "y = TAN x",  "y = SQRT x",
                                  "y = EXP x", "y = LOG x", "y = ASIN x",    "y = ACOS x", "y = ATAN x",
                                  "y = RAND",  "y = GAUSS", "y = x ANGLE -1"};

void draw_functions(Gallery& hall)
{
    constexpr int kColumns = 3, kRows = 6;
    const Point cell{kNarrow / double(kColumns), 190};
    Picture picture(kNarrow, int(cell.y) * kRows + 10);
    for (int i = 0; i < kColumns * kRows; i++) {
        const std::string text = kEquations[i];
        korvale::Equations equations;
        equations.declare("x y");
        const int equation = equations.add(text);
        EqSeed(i);
        const bool is_random = text == "y = RAND" || text == "y = GAUSS";
        std::vector<Point> points;
        for (double at = -5; at <= 5; at += is_random ? 0.05 : 0.01)
            points.push_back({at, 0});
        const korvale::Column x("x", &points[0].x, points.size(), 2);
        equations.evaluate(equation, {&x, 1}, &points[0].y, points.size(), 2);

        const Point corner{cell.x * (i % kColumns) + 38, cell.y * (i / kColumns) + 34};
        Plot plot(picture, hall.sans(), corner, cell - Point{56, 66}, {{-5, -5}, {5, 5}});
        plot.axes(text);
        if (is_random)
            plot.dots(points, 1.6, kOrange);
        else
            plot.curve(points, kBlue);
    }
    hall.show("functions.png", picture,
              "The eighteen built-in functions, each drawn by the equation above it; 1 / x is 0 at 0, and what is no "
              "real number is left out.");
}

void draw_drum_head(Gallery& hall)
{
    draw_drum(hall);
    draw_functions(hall);
}

} // namespace

Scene drum_head()
{
    return {"Drum head",
            "Equations come as text, are parsed once, and are evaluated as often as the host likes: here once for each "
            "of eleven thousand points and each moment.",
            draw_drum_head, "drum_head.cpp", "equations.md"};
}

} // namespace gallery
