// Shape preservation of a squashed torus of triangles with all four terms. The size is the number of points.
#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <memory>

#include "bench/jobs/job.h"
#include "include/korvale.h"

#ifdef KORVALE_HAS_STEPS
#include "tests/reference/preserve.h"
#endif

namespace korvale::bench {
namespace {

/// A record around indices of its own.
struct Indices : DATAstruct {
    Indices(int width, std::vector<int32_t> values) : numbers(std::move(values))
    {
        DATAInitialize(this);
        dim = width;
        type = DATA_TYPE_INT;
        count = static_cast<int32_t>(numbers.size()) / width;
        ivals = numbers.data();
    }
    Indices(const Indices&) = delete;
    Indices& operator=(const Indices&) = delete;

    std::vector<int32_t> numbers;
};

std::vector<double> torus(int around, int along)
{
    std::vector<double> points;
    for (int i = 0; i < around; ++i)
        for (int j = 0; j < along; ++j) {
            const double u = 6.283185307179586 * i / around, v = 6.283185307179586 * j / along;
            const double r = 2.0 + 0.7 * std::cos(v);
            points.insert(points.end(), {r * std::cos(u), r * std::sin(u), 0.7 * std::sin(v)});
        }
    return points;
}

std::vector<int32_t> torus_corners(int around, int along)
{
    std::vector<int32_t> corners;
    for (int i = 0; i < around; ++i)
        for (int j = 0; j < along; ++j) {
            const int i1 = (i + 1) % around, j1 = (j + 1) % along;
            const int quad[] = {i * along + j, i1 * along + j, i1 * along + j1, i * along + j1};
            corners.insert(corners.end(), {quad[0], quad[1], quad[2], quad[0], quad[2], quad[3]});
        }
    return corners;
}

struct Squashed {
    explicit Squashed(int n)
        : along(std::max(3, static_cast<int>(std::sqrt(n)))), around(std::max(3, n / along)),
          points(3, torus(around, along)), moved(3, points.numbers), corners(1, torus_corners(around, along)),
          sizes(1, std::vector<int32_t>(corners.numbers.size() / 3, 3))
    {
        for (size_t z = 2; z < moved.numbers.size(); z += 3)
            moved.numbers[z] *= 0.6;
        squashed = moved.numbers;
        initialize(nullptr);
        for (int term = PRESERVE_LENGTH; term <= PRESERVE_AREA; term *= 2)
            if (PreservePreserve(&status, term, 0.01) < 0)
                std::abort();
        status.cur_points = &moved;
    }

    void initialize(DATAstruct* edges)
    {
        status = {};
        if (PreserveInitialize(&status, &points, edges, &sizes, &corners) < 0)
            std::abort();
    }

    int along, around;
    Around<DATAstruct> points, moved;
    Indices corners, sizes;
    std::vector<double> squashed;
    PreserveStatus status = {};
};

template <void (*run)(Squashed&)>
Work on_torus(int n)
{
    return [torus = std::make_shared<Squashed>(n)] { run(*torus); };
}

void energy(Squashed& torus)
{
    keep(PreserveFindEnergy(&torus.status));
}
void force(Squashed& torus)
{
    keep(PreserveFindForce(&torus.status));
}
void four_steps(Squashed& torus)
{
    std::copy(torus.squashed.begin(), torus.squashed.end(), torus.moved.numbers.begin());
    keep(PreserveCompute(&torus.status, &torus.moved, 4));
}

/// Finds all edges.
void edges(Squashed& torus)
{
    torus.initialize(nullptr);
    DATAstruct* const made = torus.status.edges;
    PreserveDispose(&torus.status);
    DATADispose(made);
    std::free(made);
}

/// With the edges given.
Work initialize(int n)
{
    auto torus = std::make_shared<Squashed>(n);
    DATAstruct* const edges = torus->status.edges;
    PreserveDispose(&torus->status);
    return [torus, edges] {
        torus->initialize(edges);
        PreserveDispose(&torus->status);
    };
}

#ifdef KORVALE_HAS_STEPS
void energy_steps(Squashed& torus)
{
    reference::find_energy(torus.status);
}
void force_steps(Squashed& torus)
{
    reference::find_force(torus.status);
}
void four_plain_steps(Squashed& torus)
{
    std::copy(torus.squashed.begin(), torus.squashed.end(), torus.moved.numbers.begin());
    reference::compute(torus.status, torus.moved, 4);
}
Work initialize_steps(int n)
{
    const auto torus = std::make_shared<Squashed>(n);
    const DATAstruct& made = *torus->status.edges;
    return [torus, edges = std::vector<int>(made.ivals, made.ivals + 2 * made.count)] {
        keep(reference::connectivity(torus->points.count, edges, torus->sizes.numbers, torus->corners.numbers));
    };
}
#endif

} // namespace

std::vector<Job> preserve_jobs()
{
    return {
#ifdef KORVALE_HAS_STEPS
        {"preserve.energy@steps", {100, 1000, 10000}, on_torus<energy_steps>},
        {"preserve.force@steps", {100, 1000, 10000}, on_torus<force_steps>},
        {"preserve.four_steps@steps", {100, 1000, 10000}, on_torus<four_plain_steps>},
        {"preserve.initialize_with_edges@steps", {1000, 10000, 100000}, initialize_steps},
#endif
        {"preserve.energy", {100, 1000, 10000}, on_torus<energy>, 1.05, 2000},
        {"preserve.force", {100, 1000, 10000}, on_torus<force>, 1.05, 2000},
        {"preserve.four_steps", {100, 1000, 10000}, on_torus<four_steps>, 1.1, 500},
        {"preserve.find_edges", {1000, 10000, 100000}, on_torus<edges>, 1.05, 2500},
        {"preserve.initialize_with_edges", {1000, 10000, 100000}, initialize, 1.05, 2000},
    };
}

} // namespace korvale::bench
