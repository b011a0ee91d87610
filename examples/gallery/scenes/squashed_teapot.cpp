// A teapot pressed to 60 % of its height finds back, as far as the measures of the mesh that it is asked to keep lead it.

#include "arrays.h"
#include "plot.h"
#include "scene.h"
#include "shade.h"

#include <algorithm>
#include <cstdlib>
#include <stdexcept>

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

// A mesh with its solver, released with the block.
class Solver {
public:
    Solver(const Mesh& mesh, const Wish& wish)
    {
        for (DATAstruct* array : {&reference_, &positions_, &sizes_, &corners_, &tags_})
            DATAInitialize(array);
        fill_points(reference_, mesh.points);
        make(sizes_, DATA_TYPE_INT, mesh.triangles.size());
        make(corners_, DATA_TYPE_INT, 3 * mesh.triangles.size());
        make(tags_, DATA_TYPE_BYTE, mesh.points.size());
        for (size_t i = 0; i < mesh.triangles.size(); i++) {
            sizes_.ivals[i] = 3;
            std::copy_n(mesh.triangles[i].begin(), 3, corners_.ivals + 3 * i);
        }
        for (size_t i = 0; i < mesh.points.size(); i++)
            tags_.bvals[i] = wish.holds_spout && mesh.points[i].x > 7.4;
        if (PreserveInitialize(&status_, &reference_, nullptr, &sizes_, &corners_) != 1)
            throw std::runtime_error("the solver does not take the mesh");
        PreserveSetTag(&status_, &tags_);
        PreservePreserve(&status_, PRESERVE_LENGTH, wish.length);
        PreservePreserve(&status_, PRESERVE_VOLUME, wish.volume);
        PreservePreserve(&status_, PRESERVE_AREA, wish.area);
    }

    ~Solver()
    {
        DATADispose(status_.edges);
        std::free(status_.edges);
        PreserveDispose(&status_);
        for (DATAstruct* array : {&reference_, &positions_, &sizes_, &corners_, &tags_})
            DATADispose(array);
    }
    Solver(const Solver&) = delete;
    Solver& operator=(const Solver&) = delete;

    void start_from(const std::vector<Vec3>& points) { fill_points(positions_, points); }
    void relax(int steps) { PreserveCompute(&status_, &positions_, steps); }
    double energy() const { return status_.energy; }
    std::vector<Vec3> points() const { return points_of(positions_); }

private:
    static void make(DATAstruct& d, int type, size_t count)
    {
        d.count = int(count);
        d.dim = 1;
        d.type = type;
        if (DATAAllocate(&d) != 1)
            throw std::runtime_error("an array cannot be allocated");
    }

    PreserveStatus status_{}; // all zero, as the first initialisation wants it
    DATAstruct reference_, positions_, sizes_, corners_, tags_;
};

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
        Solver solver(teapot, wish);
        solver.start_from(squashed.points);
        std::vector<Point> energies;
        for (int round = 0; round <= kRounds; round++) {
            solver.relax(round == 0 ? 0 : kStepsPerRound);
            energies.push_back({double(round * kStepsPerRound), std::log10(solver.energy())});
            hall.progress((double(portraits.size() - 2) + double(round) / kRounds) / 4);
        }
        plot.curve(energies, wish.colour);
        const double row = 90 + 34.0 * double(portraits.size() - 2);
        curves.stroke({{kWidth - 310, row - 5}, {kWidth - 290, row - 5}}, 3, wish.colour);
        draw_text(curves, hall.sans(), {kWidth - 280, row}, 15, wish.title);
        Mesh relaxed = teapot;
        relaxed.points = solver.points();
        portraits.push_back(portrait(hall, relaxed, wish.title, wish.colour));
    }

    Picture strip(kWidth, 2 * portraits[0].height());
    for (int i = 0; i < int(portraits.size()); i++)
        strip.put(portraits[size_t(i)], i % 3 * portraits[0].width(), i / 3 * portraits[0].height());
    hall.show(
        "squashed-teapot.png", strip,
        "A teapot, the same pressed to 60 % of its height, and what six hundred steps make of that by what they are to "
        "keep; the lid is a piece of its own and stays below.");
    hall.show("squashed-teapot-energy.png", curves,
              "The energy of the four relaxations: each step is halved until it falls.");
}

} // namespace

Scene squashed_teapot()
{
    return {
        "Squashed teapot",
        "A mesh remembers its edge lengths, its volume and its area; a step of steepest descent takes a deformed copy "
        "nearer to them.",
        draw};
}

} // namespace gallery
