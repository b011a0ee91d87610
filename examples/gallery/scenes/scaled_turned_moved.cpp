// What a transform is made of, and the pole: where the turn about y is a quarter turn, those about x and z turn about
// one axis, and only their difference can be told from the result.

#include "scene.h"
#include "shade.h"

#include <cstdio>

namespace gallery {
namespace {

using korvale::Srt;
using korvale::Transform;

constexpr double kQuarter = 1.57079632679489662;

// A bevelled F, two units tall, its back in the plane z = 0.
Mesh letter()
{
    const Outline outline = {{-0.6, -1},  {-0.2, -1},  {-0.2, -0.2}, {0.36, -0.2}, {0.36, 0.2},
                             {-0.2, 0.2}, {-0.2, 0.6}, {0.6, 0.6},   {0.6, 1},     {-0.6, 1}};
    const korvale::BevelStep profile[] = {{0, 0}, {0, 0.3}, {-0.06, 0.36}};
    return Mesh(korvale::bevel(lifted(Shape{outline}), profile));
}

Mesh moved(Mesh mesh, const Transform& transform)
{
    transform.apply(mesh.points);
    return mesh;
}

// Thin bars along the axes of the world.
void add_axes(Stage& stage)
{
    const std::vector<Vec3> section = {{0.02, 0, 0}, {0, 0.02, 0}, {-0.02, 0, 0}, {0, -0.02, 0}};
    const Colour colours[] = {kRed, kGreen, kBlue};
    for (int k = 0; k < 3; k++) {
        const std::vector<Vec3> line = {{0, 0, 0}, {k == 0 ? 2.0 : 0.0, k == 1 ? 2.0 : 0.0, k == 2 ? 2.0 : 0.0}};
        stage.add(Mesh(korvale::tube(line, section)), {colours[k], 0, 1, 40, false});
    }
}

Picture portrait(const Mesh& mesh, Colour colour, Vec3 eye, int width, int height)
{
    Stage stage({eye, {0.4, 0.1, 0}, {0, 1, 0}, 0, 4.2});
    stage.add(mesh, {colour, 0.35, 40, 40});
    add_axes(stage);
    return stage.render(width, height);
}

void label(Picture& picture, const Font& font, double middle, double y, const std::string& first,
           const std::string& second)
{
    draw_text(picture, font, {middle, y}, 17, first, kInk, Align::middle);
    draw_text(picture, font, {middle, y + 24}, 15, second, kGrey, Align::middle);
}

std::string text_of(const korvale::Point& p)
{
    char text[64];
    std::snprintf(text, sizeof text, "%.2f, %.2f, %.2f", p[0] + 0.0, p[1] + 0.0, p[2] + 0.0);
    return text;
}

void draw_parts(Gallery& hall)
{
    constexpr int kAcross = kWidth / 4, kDown = 280;
    const Srt parts = {{0.8, 1.3, 1}, {0, 0.7, 0.5}, {0.9, 0.5, 0}};
    const std::pair<const char*, Transform> panels[] = {
        {"as it is", Transform()},
        {"scaled", Transform::scaling(parts.scale)},
        {"then turned", Transform::rotation(parts.rotation) * Transform::scaling(parts.scale)},
        {"then moved", Transform::from(parts)},
    };
    const std::string notes[] = {"x red, y green, z blue", text_of(parts.scale), text_of(parts.rotation) + " radians",
                                 text_of(parts.translation)};
    Picture picture(kWidth, kDown + 60);
    for (int i = 0; i < 4; i++) {
        picture.put(portrait(moved(letter(), panels[i].second), hex(0x3a7cc4), {5, 4, 9}, kAcross, kDown), i * kAcross,
                    0);
        label(picture, hall.sans(), (i + 0.5) * kAcross, kDown + 18, panels[i].first, notes[i]);
        hall.progress((i + 1) / 7.0);
    }
    hall.show("scaled-turned-moved.png", picture,
              "A transform from its parts: the letter is scaled along its own axes, then turned about x, y and z, then "
              "moved.");
}

void draw_pole(Gallery& hall)
{
    constexpr int kAcross = kWidth / 3, kDown = 300;
    const Srt turns[] = {{.rotation = {0.9, kQuarter, 0.4}}, {.rotation = {0.5, kQuarter, 0}}};
    Picture picture(kWidth, kDown + 60);
    Srt told;
    for (int i = 0; i < 3; i++) {
        if (i < 2)
            told = Transform::from(turns[i]).take_apart();
        const Srt& shown = i < 2 ? turns[i] : told;
        picture.put(portrait(moved(letter(), Transform::from(shown)), i < 2 ? hex(0xb0574a) : hex(0x4a8a5c), {10, 3, 4},
                             kAcross, kDown),
                    i * kAcross, 0);
        label(picture, hall.sans(), (i + 0.5) * kAcross, kDown + 18,
              (i < 2 ? "turned by " : "taken apart: ") + text_of(shown.rotation),
              i < 2                     ? "a quarter turn about y"
              : korvale::at_pole(shown) ? "at the pole, x is told as 0"
                                        : "");
        hall.progress((i + 5) / 7.0);
    }
    hall.show("pole.png", picture,
              "The pole: two different triples of angles turn the letter the same way, and taking the transform apart "
              "tells a third that does so too.");
}

void draw_scaled_turned_moved(Gallery& hall)
{
    draw_parts(hall);
    draw_pole(hall);
}

} // namespace

Scene scaled_turned_moved()
{
    return {"Scaled, turned, moved",
            "Transforms are composed from scale, rotation and translation and taken apart again. At the pole angles "
            "are no longer unique, but the transform they make is.",
            draw_scaled_turned_moved, "scaled_turned_moved.cpp", "math.md"};
}

} // namespace gallery
