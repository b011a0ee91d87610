// A teapot pressed to 60 % of its height finds back, as far as the measures of the mesh that it is asked to keep lead
// it.

#include "plot.h"
#include "scene.h"
#include "shade.h"

#include <cmath>

namespace gallery {
namespace {

constexpr int kRounds = 60, kStepsPerRound = 10;

// What a relaxation keeps; a weight of 0 leaves the measure alone. Volume and area are squares of large numbers.
struct Wish {
    const char* title;
    double length, volume, area;
    bool holds_spout;
    Colour colour;
};

const Wish kWishes[] = {
    {"lengths", 1, 0, 0, false, kBlue},
    {"lengths and area", 1, 0, 1e-3, false, kOrange},
    {"lengths and volume", 1, 1e-4, 0, false, kGreen},
    {"lengths and volume, the spout held", 1, 1e-4, 0, true, kRed},
};

korvale::Relaxer relaxer_for(const Mesh& mesh, const Wish& wish)
{
    korvale::Relaxer relaxer(mesh.points, mesh.triangles);
    relaxer.keep("lengths", wish.length);
    if (wish.volume > 0)
        relaxer.keep("volume", wish.volume);
    if (wish.area > 0)
        relaxer.keep("area", wish.area);
    std::vector<bool> held;
    for (const Vec3& p : mesh.points)
        held.push_back(wish.holds_spout && p.x > 7.4);
    relaxer.hold(held);
    return relaxer;
}

Picture portrait(const Gallery& hall, const Mesh& mesh, const char* title, Colour colour)
{
    constexpr int kAcross = kWidth / 3, kDown = 230;
    Picture picture(kAcross, kDown + 40);
    Stage stage({{10, 16, 46}, {1.2, -0.2, 0}, {0, 1, 0}, 23.5});
    stage.add(mesh, {mix(colour, hex(0xffffff), 0.35), 0.3, 40, 50});
    picture.put(stage.render(kAcross, kDown), 0, 0);
    draw_text(picture, hall.sans(), {kAcross / 2, kDown + 18}, 17, title, kInk, Align::middle);
    return picture;
}

void draw(Gallery& hall)
{
    const Mesh teapot = read_obj(hall.data("teapot.obj"));
    Mesh squashed = teapot;
    for (Vec3& p : squashed.points)
        p.y *= 0.6;

    std::vector<Picture> portraits{portrait(hall, teapot, "the teapot", hex(0x9aa3ad)),
                                   portrait(hall, squashed, "pressed to 60 % of its height", hex(0x9aa3ad))};
    Picture curves(kWidth, 380);
    Plot plot(curves, hall.sans(), {70, 50}, {kWidth - 400, 270}, {{0, -2}, {kRounds * kStepsPerRound, 5}});
    plot.axes("energy, as a power of ten", "steps of steepest descent");
    for (const Wish& wish : kWishes) {
        korvale::Relaxer relaxer = relaxer_for(teapot, wish);
        Mesh relaxed = squashed;
        std::vector<Point> energies;
        for (int round = 0; round <= kRounds; round++) {
            const double energy = relaxer.step(relaxed.points, round == 0 ? 0 : kStepsPerRound);
            energies.push_back({double(round * kStepsPerRound), std::log10(energy)});
            hall.progress((double(portraits.size() - 2) + double(round) / kRounds) / 4);
        }
        plot.curve(energies, wish.colour);
        const double row = 90 + 34.0 * double(portraits.size() - 2);
        curves.stroke({{kWidth - 310, row - 5}, {kWidth - 290, row - 5}}, 3, wish.colour);
        draw_text(curves, hall.sans(), {kWidth - 280, row}, 15, wish.title);
        portraits.push_back(portrait(hall, relaxed, wish.title, wish.colour));
    }

    Picture strip(kWidth, 2 * portraits[0].height());
    for (int i = 0; i < int(portraits.size()); i++)
        strip.put(portraits[size_t(i)], i % 3 * portraits[0].width(), i / 3 * portraits[0].height());
    hall.show("squashed-teapot.png", strip,
              "A teapot, the same pressed to 60 % of its height, and what six hundred steps make of that by what they "
              "are to keep; the lid is a piece of its own and stays below.");
    hall.show("squashed-teapot-energy.png", curves,
              "The energy of the four relaxations: each step is halved until it falls.");
}

} // namespace

Scene squashed_teapot()
{
    return {"Squashed teapot",
            "A mesh remembers its edge lengths, its volume and its area; a step of steepest descent takes a deformed "
            "copy nearer to them.",
            draw};
}

} // namespace gallery
