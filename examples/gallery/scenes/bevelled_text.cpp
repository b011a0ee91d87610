// A word as a bevelled solid. Each letter is a list of outlines, the outer one and its holes, that are moved sideways
// and lifted, once for every step of a profile. Each step has the points of the one before, so that strips between
// neighbouring steps close the sides.

#include "scene.h"
#include "shade.h"

namespace gallery {
namespace {

using korvale::BevelStep; // thousandths of an em

// From the foot upwards: a cove that narrows, a wall, a round edge.
std::vector<BevelStep> profile()
{
    constexpr double kQuarter = 1.57079632679489662;
    std::vector<BevelStep> steps{{16, 0}, {16, 10}};
    for (int i = 1; i <= 6; i++) {
        const double turn = kQuarter * i / 6;
        steps.push_back({16 - 16 * std::sin(turn), 10 + 26 * (1 - std::cos(turn))});
    }
    steps.push_back({0, 90});
    for (int i = 1; i <= 7; i++) {
        const double turn = kQuarter * i / 7;
        steps.push_back({-20 * (1 - std::cos(turn)), 90 + 20 * std::sin(turn)});
    }
    return steps;
}

// The letters at even distances from one another, so that the feet of none touch.
std::vector<Shape> spaced(std::vector<Shape> letters, double gap)
{
    double x = 0;
    for (Shape& letter : letters) {
        Box2 box;
        box.include(letter[0]);
        for (Outline& outline : letter)
            for (Point& p : outline)
                p.x += x - box.low.x;
        x += box.size().x + gap;
    }
    return letters;
}

// The outlines of one letter at every step.
using Layers = std::vector<Shape>;

Layers layers_of(const Shape& letter, const std::vector<BevelStep>& steps)
{
    korvale::Offsetter offsetter;
    Layers layers;
    for (const BevelStep& step : steps) {
        layers.emplace_back();
        for (const korvale::Offset& border : offsetter.shape(lifted(letter), step.distance))
            layers.back().push_back(plan(border.points));
    }
    return layers;
}

// All steps of all letters as contour lines, and the profile they follow.
Svg draw_plan(const std::vector<Layers>& letters, const std::vector<BevelStep>& steps, const Box2& bounds)
{
    Svg drawing(kWidth, 360);
    const auto colour = [&](const BevelStep& step) { return scale_colour(0.9 * step.height / steps.back().height); };
    const View view(bounds, {50, 30}, {850, 300});
    for (const Layers& letter : letters)
        drawing.fill(view(letter[0]), hex(0xe9e5da));
    for (size_t s = 0; s < steps.size(); s++)
        for (const Layers& letter : letters)
            for (const Outline& outline : view(letter[s]))
                drawing.stroke(outline, 0.9, colour(steps[s]), true);

    const View side({{-30, 0}, {30, 115}}, {970, 40}, {170, 255});
    Outline line;
    for (const BevelStep& step : steps)
        line.push_back(side({step.distance, step.height}));
    drawing.stroke({side({0, -8}), side({0, 115})}, 1, kFaint);
    drawing.stroke({side({-36, 0}), side({36, 0})}, 1, kFaint);
    drawing.stroke(line, 2, kGrey);
    for (size_t s = 0; s < steps.size(); s++)
        drawing.dot(line[s], 5, colour(steps[s]));
    drawing.text(side({0, 0}) + Point{0, 44}, 15, "distance 0", kGrey, "middle");
    drawing.text(side({16, 0}) + Point{12, -8}, 15, "16", kGrey);
    drawing.text(side({-20, 110}) + Point{-12, 5}, 15, "-20", kGrey, "end");
    drawing.text(side({0, 110}) + Point{14, 5}, 15, "height 110", kGrey);
    return drawing;
}

Picture shade(const Mesh& text, const Box2& bounds)
{
    const Point middle = bounds.middle();
    const double wide = bounds.size().x;
    const Vec3 target{middle.x, middle.y - 6, 30};
    Stage stage({target + wide * Vec3{-0.14, -0.62, 1.2}, target, {0, 1, 0}, 16.2});
    stage.light_from({-0.8, 0.75, 0.8});
    stage.add(text, {hex(0x3a7cc4), 0.45, 40, 28});
    const double far = 0.95 * wide;
    const Mesh wall{{{middle.x - far, middle.y - far, 0},
                     {middle.x + far, middle.y - far, 0},
                     {middle.x + far, middle.y + far, 0},
                     {middle.x - far, middle.y + far, 0}},
                    {{0, 1, 2}, {0, 2, 3}}};
    stage.add(wall, {hex(0xe4dccb), 0, 1, 40, false});
    return stage.render(kWidth, 400);
}

void draw_bevelled_text(Gallery& hall)
{
    const Font serif(hall.data("serif-bold.txt"));
    const std::vector<Shape> word = spaced(serif.lay_out("korvale"), 50);
    const std::vector<BevelStep> steps = profile();

    std::vector<Layers> letters;
    Mesh text;
    Box2 bounds;
    for (const Shape& letter : word) {
        letters.push_back(layers_of(letter, steps));
        append(text, Mesh(korvale::bevel(lifted(letter), steps)));
        for (const Outline& outline : letters.back().front())
            bounds.include(outline);
        hall.progress(0.5 * double(letters.size()) / double(word.size()));
    }

    hall.show("bevelled-text.png", shade(text, bounds),
              "Seven letters with their holes, offset and lifted in sixteen steps: a foot wider than the letter, a "
              "cove, a wall, and a round edge narrower than the letter.");
    hall.show("bevelled-text.svg", draw_plan(letters, steps, bounds),
              "The steps as contour lines from above, paler with height, and the profile they follow.");
    hall.attach("bevelled-text.obj", obj_text(text, "The word as a closed mesh, 1000 units per em."),
                "the solid as a closed mesh.");
}

} // namespace

Scene bevelled_text()
{
    return {"Bevelled text",
            "Outlines of a font, outer and holes together, are offset in several steps of distance and height; what "
            "comes back has the same number of points each time, so that neighbouring steps are joined by strips.",
            draw_bevelled_text, "bevelled_text.cpp", "border.md"};
}

} // namespace gallery
