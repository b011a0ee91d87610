// Shape preservation of a squashed torus of triangles with all four terms. The size is the number of points.
#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <memory>

#include "bench/job.h"
#include "include/korvale.h"
#include "tests/support/meshes.h"

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

struct Squashed {
    explicit Squashed(int n)
        : along(std::max(3, static_cast<int>(std::sqrt(n)))),
          mesh(test::triangulated(test::torus(std::max(3, n / along), along, 2.0, 0.7))), points(3, mesh.points),
          moved(3, mesh.points), corners(1, mesh.corners), sizes(1, mesh.sizes)
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

    int along;
    test::Mesh mesh;
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
void edges_steps(Squashed& torus)
{
    keep(reference::edges(torus.sizes.numbers, torus.corners.numbers));
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
        {"preserve.find_edges@steps", {1000, 10000}, on_torus<edges_steps>},
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
