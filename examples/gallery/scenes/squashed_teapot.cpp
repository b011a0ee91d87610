// A teapot pressed to 60 % of its height finds back, as far as the measures of the mesh that it is asked to keep lead
// it.

#include "plot.h"
#include "scene.h"
#include "shade.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace gallery {
namespace {

constexpr int kRounds = 60, kStepsPerRound = 10;

// What a relaxation keeps; a weight of 0 leaves the measure alone. Volume and area are squares of large numbers. The
// teapot is open where spout and handle begin, so its volume, which Relaxer refuses, is that seen from the origin.
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
    {"the same, the spout held", 1, 1e-4, 0, true, kRed},
};

korvale::Relaxer relaxer_for(const Mesh& mesh, const Wish& wish)
{
    korvale::Relaxer relaxer(mesh.points, mesh.triangles);
    relaxer.keep("lengths", wish.length);
    if (wish.volume > 0)
        PreservePreserve(&relaxer.status(), PRESERVE_VOLUME, wish.volume);
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
    constexpr int kAcross = kNarrow / 2, kDown = 172;
    Picture picture(kAcross, kDown + 40);
    Stage stage({{10, 16, 46}, {1.2, -0.2, 0}, {0, 1, 0}, 23.5});
    stage.add(mesh, {mix(colour, hex(0xffffff), 0.35), 0.3, 40, 50});
    picture.put(stage.render(kAcross, kDown), 0, 0);
    draw_text(picture, hall.sans(), {kAcross / 2, kDown + 18}, kLettering, title, kInk, Align::middle);
    return picture;
}

// A tower of cells with a strut between any two corners of a cell: stiff, so that its lengths leave one shape only.
struct Tower {
    std::vector<Vec3> joints;
    std::vector<std::array<int, 2>> struts;
};

Tower make_tower(int floors)
{
    Tower tower;
    for (int z = 0; z <= floors; z++)
        for (double y : {-0.5, 0.5})
            for (double x : {-0.5, 0.5})
                tower.joints.push_back({x, y, z - 0.5 * floors});
    const int n = int(tower.joints.size());
    for (int i = 0; i < n; i++)
        for (int k = i + 1; k < n && k / 4 <= i / 4 + 1; k++)
            tower.struts.push_back({i, k});
    return tower;
}

// Pressed to 60 % of its height and twisted by half a radian a unit.
std::vector<Vec3> pressed(const std::vector<Vec3>& joints)
{
    std::vector<Vec3> out;
    for (Vec3 p : joints) {
        const double z = 0.6 * p.z, c = std::cos(0.5 * z), s = std::sin(0.5 * z);
        out.push_back({p.x * c - p.y * s, p.x * s + p.y * c, z});
    }
    return out;
}

// How far joints are off their places, as the root of the mean square.
double distance_between(const std::vector<Vec3>& a, const std::vector<Vec3>& b)
{
    double sum = 0;
    for (size_t i = 0; i < a.size(); i++)
        sum += dot(a[i] - b[i], a[i] - b[i]);
    return std::sqrt(sum / double(a.size()));
}

Picture tower_portrait(const Tower& tower, const std::vector<Vec3>& joints, Colour colour, int width, int height)
{
    Stage stage({{5, -9, 4}, {0, 0, 0}, {0, 0, 1}, 0, 6.9});
    for (const auto& [a, b] : tower.struts) {
        const bool is_diagonal = length(tower.joints[size_t(a)] - tower.joints[size_t(b)]) > 1.1;
        const double r = is_diagonal ? 0.018 : 0.05;
        const std::vector<Vec3> section = {{r, 0, 0}, {0, r, 0}, {-r, 0, 0}, {0, -r, 0}};
        const Mesh strut(korvale::tube(std::vector<Vec3>{joints[size_t(a)], joints[size_t(b)]}, section));
        stage.add(strut, {is_diagonal ? hex(0xb9b2a2) : colour, 0.2, 30, 20});
    }
    return stage.render(width, height);
}

void draw_tower(Gallery& hall)
{
    const Tower tower = make_tower(5);
    korvale::Relaxer relaxer = korvale::Relaxer::of_edges(tower.joints, tower.struts);
    relaxer.keep("lengths");
    constexpr int kPanels = 6, kAcross = kWidth / kPanels, kDown = 400;
    Picture strip(kWidth, kDown + 60);
    const int stops[] = {0, 0, 5, 20, 100, 2000}; // the tower itself, pressed, and after so many steps
    std::vector<Vec3> joints = pressed(tower.joints);
    int steps = 0;
    for (int i = 0; i < kPanels; i++) {
        relaxer.step(joints, stops[i] - std::exchange(steps, stops[i]));
        const std::vector<Vec3>& shown = i == 0 ? tower.joints : joints;
        strip.put(tower_portrait(tower, shown, i == 0 ? hex(0x9aa3ad) : kGreen, kAcross, kDown), i * kAcross, 0);
        const double middle = (i + 0.5) * kAcross;
        draw_text(strip, hall.sans(), {middle, kDown + 20}, 16,
                  i == 0   ? "the tower"
                  : i == 1 ? "pressed and twisted"
                           : std::to_string(stops[i]) + " steps",
                  kInk, Align::middle);
        char note[64];
        std::snprintf(note, sizeof note, "joints %.4f off", distance_between(joints, tower.joints));
        if (i > 0)
            draw_text(strip, hall.sans(), {middle, kDown + 44}, 15, note, kGrey, Align::middle);
    }
    hall.show("pressed-tower.png", strip,
              "Where the measures leave one shape only, a relaxation ends in it: a tower of struts, pressed and "
              "twisted, finds back to the original.");
}

void draw_squashed_teapot(Gallery& hall)
{
    const Mesh teapot = read_obj(hall.data("teapot.obj"));
    Mesh squashed = teapot;
    for (Vec3& p : squashed.points)
        p.y *= 0.6;

    std::vector<Picture> portraits{portrait(hall, teapot, "the teapot", hex(0x9aa3ad)),
                                   portrait(hall, squashed, "pressed to 60 % of its height", hex(0x9aa3ad))};
    Picture curves(kNarrow, 3 * portraits[0].height());
    Plot plot(curves, hall.sans(), {50, 40}, {kNarrow - 80, 390}, {{0, -2}, {kRounds * kStepsPerRound, 5}});
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
        const double row = 502 + 30.0 * double(portraits.size() - 2);
        curves.stroke({{50, row - 5}, {70, row - 5}}, 3, wish.colour);
        draw_text(curves, hall.sans(), {80, row}, kLettering, wish.title);
        portraits.push_back(portrait(hall, relaxed, wish.title, wish.colour));
    }

    Picture strip(kNarrow, 3 * portraits[0].height());
    for (int i = 0; i < int(portraits.size()); i++)
        strip.put(portraits[size_t(i)], i % 2 * portraits[0].width(), i / 2 * portraits[0].height());
    hall.show("squashed-teapot.png", strip,
              "A teapot, the same pressed to 60 % of its height, and what six hundred steps make of that by what they "
              "are to keep; the lid is a piece of its own and stays below.");
    hall.show("squashed-teapot-energy.png", curves,
              "The energy of the four relaxations: each step is halved until it falls.");
    draw_tower(hall);
}

} // namespace

Scene squashed_teapot()
{
    return {"Squashed teapot",
            "A mesh remembers its edge lengths, its volume and its area; a step of steepest descent takes a deformed "
            "copy nearer to them.",
            draw_squashed_teapot, "squashed_teapot.cpp", "preserve.md"};
}

} // namespace gallery
