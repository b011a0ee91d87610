#include "../example.h"

using korvale::Point, korvale::Relaxer;

EXAMPLE("korvale::Relaxer korvale::Relaxer::keep korvale::Relaxer::run korvale::RunOptions korvale::Relaxation")
{
    const std::vector<Point> square = {{0, 0, 0}, {4, 0, 0}, {4, 4, 0}, {0, 4, 0}};
    Relaxer relaxer(square, {{0, 1, 2}, {0, 2, 3}});
    relaxer.keep("lengths", 0.25);
    std::vector<Point> pulled = square;
    pulled[2] = {5, 5, 0};
    const korvale::Relaxation done = relaxer.run(pulled, {.steps = 500, .energy = 0.01});
    std::printf("%s\n", done.stop == korvale::Stop::energy ? "in shape again" : "not yet");
    // > in shape again
}

EXAMPLE("korvale::Relaxer::of_edges korvale::Relaxer::edges korvale::Relaxer::size")
{
    const Relaxer stick = Relaxer::of_edges({{0, 0, 0}, {1, 0, 0}}, {{0, 1}});
    std::printf("%zu points, an edge from %d to %d\n", stick.size(), stick.edges()[0][0], stick.edges()[0][1]);
    // > 2 points, an edge from 0 to 1
}

EXAMPLE("korvale::Relaxer::hold korvale::Relaxer::step")
{
    Relaxer stick = Relaxer::of_edges({{0, 0, 0}, {1, 0, 0}}, {{0, 1}});
    stick.keep("lengths", 0.25).hold(std::vector<bool>{true, false});
    std::vector<Point> pulled = {{0, 0, 0}, {2, 0, 0}};
    const double energy = stick.step(pulled, 100);
    std::printf("from %g to %.2f, energy %.6f\n", pulled[0][0], pulled[1][0], energy);
    // > from 0 to 1.04, energy 0.000347
}

EXAMPLE("korvale::Relaxer::energy korvale::Relaxer::forces")
{
    Relaxer stick = Relaxer::of_edges({{0, 0, 0}, {1, 0, 0}}, {{0, 1}});
    stick.keep("lengths");
    const std::vector<Point> pulled = {{0, 0, 0}, {3, 0, 0}};
    const double energy = stick.energy(pulled);
    const korvale::Points forces = stick.forces(pulled);
    std::printf("energy %g, %g and %g along x\n", energy, forces[0][0], forces[1][0]);
    // > energy 4, 4 and -4 along x
}

EXAMPLE("korvale::Relaxer::try_keep korvale::Relaxer::try_make")
{
    auto sheet = Relaxer::try_make({{0, 0, 0}, {4, 0, 0}, {0, 4, 0}}, {{0, 1, 2}});
    if (auto none = sheet->try_keep("volume"); !none)
        std::printf("%s: it is not closed\n", none.error().argument().data());
    // > measure: it is not closed
}

EXAMPLE("korvale::Relaxer::try_run")
{
    Relaxer stick = Relaxer::of_edges({{0, 0, 0}, {1, 0, 0}}, {{0, 1}});
    std::vector<Point> pulled = {{0, 0, 0}, {2, 0, 0}};
    if (auto none = stick.try_run(pulled); !none)
        std::printf("%s\n", none.error().what());
    // > Relaxer::run: the relaxer must keep a measure, but it keeps none
}

EXAMPLE("korvale::Relaxer::status")
{
    Relaxer stick = Relaxer::of_edges({{0, 0, 0}, {3, 4, 0}}, {{0, 1}});
    stick.keep("lengths");
    PreserveStatus& record = stick.status(); // for the functions of korvale.h
    std::printf("length %g\n", record.olen->dvals[0]);
    // > length 5
}
