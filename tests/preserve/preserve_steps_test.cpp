// The library against the plain steps: equal bits for edges, measures, energy, forces and moved points.
#include <algorithm>
#include <cmath>
#include <functional>

#include <gtest/gtest.h>

#include "tests/preserve/random_meshes.h"
#include "tests/preserve/solver.h"
#include "tests/reference/preserve.h"
#include "tests/support/bits.h"
#include "tests/support/random.h"

namespace korvale::test {
namespace {

/// Everything an evaluation leaves in a status.
testing::AssertionResult same_state(const PreserveStatus& expected, const PreserveStatus& actual)
{
    const std::pair<const char*, std::pair<double, double>> numbers[] = {
        {"energy", {expected.energy, actual.energy}},
        {"nvolume", {expected.nvolume, actual.nvolume}},
        {"narea", {expected.narea, actual.narea}}};
    for (const auto& [name, values] : numbers)
        if (auto result = same_bits(values.first, values.second); !result)
            return result << " in " << name;
    const std::pair<const char*, std::pair<const DATAstruct*, const DATAstruct*>> arrays[] = {
        {"nlen", {expected.nlen, actual.nlen}},
        {"nfang", {expected.nfang, actual.nfang}},
        {"force", {expected.force, actual.force}},
        {"points", {expected.cur_points, actual.cur_points}}};
    for (const auto& [name, pair] : arrays)
        if (pair.first != nullptr && pair.second != nullptr)
            if (auto result = same_array(*pair.first, *pair.second); !result)
                return result << " in " << name;
    return testing::AssertionSuccess();
}

/// What a mesh is made of, and where its points go.
enum class Kind { closed, soup, polygons, overlapping, awkward, collapsed, huge, tiny };

constexpr Kind kKinds[] = {Kind::closed,  Kind::soup,      Kind::polygons, Kind::overlapping,
                           Kind::awkward, Kind::collapsed, Kind::huge,     Kind::tiny};

/// Whether the edges are not more than the list is long, as they may be where faces share corners of it.
bool has_room_for_edges(const Mesh& mesh)
{
    return reference::edges(mesh.sizes, mesh.corners).size() <= 2 * mesh.corners.size();
}

Mesh mesh_of(Kind kind, Random& random)
{
    switch (kind) {
    case Kind::closed:
        return random_closed_mesh(random);
    case Kind::polygons:
        return torus(random.between(3, 8), random.between(3, 8), 2.0, 0.5);
    case Kind::overlapping:
        for (;;) {
            const Mesh mesh = random_overlapping_soup(random, random.between(3, 60), random.between(1, 90));
            if (has_room_for_edges(mesh))
                return mesh;
        }
    default: {
        const int points = random.between(3, 60);
        return random_soup(random, points, random.between(1, 90));
    }
    }
}

std::vector<double> moved_from(const std::vector<double>& points, Kind kind, Random& random)
{
    std::vector<double> moved = shaken(random, points, random.uniform(0.0, 0.5));
    switch (kind) {
    case Kind::awkward:
        for (double& x : moved)
            if (random.one_in(40))
                x = random.awkward();
        return moved;
    case Kind::collapsed: // many points in the same places
        for (double& x : moved)
            x = random.below(2);
        return moved;
    case Kind::huge:
        for (double& x : moved)
            x *= std::pow(10.0, random.uniform(0, 120));
        return moved;
    case Kind::tiny:
        for (double& x : moved)
            x *= std::pow(10.0, random.uniform(-200, 0));
        return moved;
    default:
        return moved;
    }
}

double weight_for(Kind kind, Random& random)
{
    if (kind == Kind::awkward && random.one_in(20))
        return random.awkward();
    return random.one_in(4) ? std::fabs(random.spread()) : random.uniform(0.001, 2.0);
}

/// Two statuses of one mesh at the same positions, tags and terms.
struct Pair {
    Mesh mesh;
    Solver plain, library;

    Pair(Kind kind, Random& random) : Pair(mesh_of(kind, random), kind, random) {}

    Pair(const Mesh& m, Kind kind, Random& random) : mesh(m), plain(m), library(m)
    {
        const int terms = random.one_in(2) ? kAllTerms : random.between(1, kAllTerms);
        for (int slot = 0; slot < 4; ++slot) {
            const double weight = weight_for(kind, random);
            if ((terms & 1 << slot) == 0)
                continue;
            EXPECT_EQ(PreservePreserve(plain, 1 << slot, weight), PreservePreserve(library, 1 << slot, weight));
        }
        if (random.one_in(2)) {
            std::vector<int> tagged;
            const int one_in = random.one_in(8) ? 1 : random.between(2, 5);
            for (int i = 0; i < m.point_count(); ++i)
                if (random.one_in(one_in))
                    tagged.push_back(i);
            plain.tag(tagged);
            library.tag(tagged);
        }
        const std::vector<double> moved = moved_from(m.points, kind, random);
        plain.place(moved);
        library.place(moved);
        plain->cur_points = plain.moved();
        library->cur_points = library.moved();
        plain->nvolume = library->nvolume = plain->narea = library->narea = 0.25;
        fill_work(plain, 0.125);
        fill_work(library, 0.125);
    }

    /// Gives the work arrays the same contents, so that what an evaluation leaves alone compares equal.
    static void fill_work(Solver& s, double value)
    {
        for (DATAstruct* d : {s->nlen, s->nfang, s->force})
            if (d != nullptr && d->dvals != nullptr)
                std::fill(d->dvals, d->dvals + static_cast<int64_t>(d->count) * d->dim, value);
    }
};

void compare(int rounds, uint64_t seed, const std::function<void(Pair&, Random&)>& run)
{
    Random random(seed);
    for (int i = 0; i < korvale::test::rounds(rounds); ++i)
        for (Kind kind : kKinds) {
            Pair pair(kind, random);
            run(pair, random);
            ASSERT_TRUE(same_state(*pair.plain.get(), *pair.library.get()))
                << "round " << i << ", kind " << static_cast<int>(kind) << ", terms " << pair.library->flags;
        }
}

TEST(PreserveSteps, FindTheSameEdges)
{
    Random random(4601);
    for (int i = 0; i < rounds(400); ++i) {
        const Mesh mesh = mesh_of(kKinds[static_cast<size_t>(i) % 4], random);
        Solver solver(mesh);
        if (mesh.corners.empty())
            continue;
        const std::vector<int> expected = reference::edges(mesh.sizes, mesh.corners);
        ASSERT_EQ(solver->edges->count * 2, static_cast<int>(expected.size()));
        ASSERT_TRUE(same_values(expected, solver->edges->ivals)) << "round " << i;
    }
}

TEST(PreserveSteps, RefuseTheSameFacesThatShareCorners)
{
    Random random(4609);
    int refused = 0;
    for (int i = 0; i < rounds(400); ++i) {
        const Mesh mesh = random_overlapping_soup(random, 30, random.between(1, 6));
        if (mesh.corners.empty())
            continue;
        const bool has_room = has_room_for_edges(mesh);
        Solver solver(mesh);
        EXPECT_EQ(solver.result(), has_room ? 1 : -1) << "round " << i;
        refused += has_room ? 0 : 1;
    }
    EXPECT_GT(refused, 0);
}

TEST(PreserveSteps, GroupTheSameEdgesAndFaces)
{
    Random random(4608);
    for (int i = 0; i < rounds(400); ++i) {
        const Mesh mesh = mesh_of(kKinds[static_cast<size_t>(i) % 4], random);
        std::vector<int> edges; // few, so that faces run beyond their points, or many
        for (int ends = 2 * random.below(random.one_in(2) ? 12 : 400); ends > 0; --ends)
            edges.push_back(random.below(mesh.point_count()));
        Solver solver(mesh, edges);
        if (edges.empty() && !mesh.corners.empty())
            edges = reference::edges(mesh.sizes, mesh.corners);
        const reference::Connectivity expected =
            reference::connectivity(mesh.point_count(), edges, mesh.sizes, mesh.corners);
        if (!mesh.corners.empty()) {
            ASSERT_TRUE(same_values(expected.face_starts, solver->face_starts->ivals));
            ASSERT_TRUE(same_values(expected.point_faces, solver->point_faces->ivals)) << "round " << i;
        }
        if (solver->edges == nullptr)
            continue;
        ASSERT_TRUE(same_values(expected.point_edge_count, solver->point_edge_count->ivals));
        ASSERT_TRUE(same_values(expected.point_edge_start, solver->point_edge_start->ivals));
        ASSERT_TRUE(same_values(expected.point_edges, solver->point_edges->ivals));
    }
}

TEST(PreserveSteps, RecordTheSameMeasures)
{
    Random random(4602);
    for (int i = 0; i < rounds(100); ++i)
        for (Kind kind : kKinds) {
            Mesh mesh = mesh_of(kind, random);
            mesh.points = moved_from(mesh.points, kind, random);
            Solver solver(mesh);
            if (mesh.corners.empty())
                continue;
            ASSERT_TRUE(switch_on(solver, kAllTerms));
            ASSERT_TRUE(same_bits(reference::edge_lengths(*solver.get()), solver->olen->dvals));
            for (const auto& [corner, cosine] : reference::corner_cosines(*solver.get()))
                ASSERT_TRUE(same_bits(cosine, solver->ofang->dvals[corner]));
            ASSERT_TRUE(same_bits(reference::volume(*solver.get()), solver->ovolume));
            ASSERT_TRUE(same_bits(reference::area(*solver.get()), solver->oarea));
        }
}

TEST(PreserveSteps, FindTheSameEnergy)
{
    compare(150, 4603, [](Pair& pair, Random&) {
        reference::find_energy(*pair.plain.get());
        EXPECT_EQ(PreserveFindEnergy(pair.library), 1);
    });
}

TEST(PreserveSteps, FindTheSameForce)
{
    compare(150, 4604, [](Pair& pair, Random&) {
        reference::find_energy(*pair.plain.get());
        reference::find_force(*pair.plain.get());
        EXPECT_EQ(PreserveFindEnergy(pair.library), 1);
        EXPECT_EQ(PreserveFindForce(pair.library), 1);
    });
}

TEST(PreserveSteps, AddTheSameSingleTerms)
{
    // On top of whatever stands in energy and force, zeros of either sign included.
    compare(60, 4605, [](Pair& pair, Random& random) {
        const double before = random.one_in(2) ? -0.0 : random.uniform(-1, 1);
        pair.plain->energy = pair.library->energy = before;
        Pair::fill_work(pair.plain, before);
        Pair::fill_work(pair.library, before);
        const struct {
            int term;
            void (*plain)(PreserveStatus&);
            int (*library)(PreserveStatus*);
        } functions[] = {{PRESERVE_LENGTH, reference::find_nlen, PreserveFindNlen},
                         {PRESERVE_FACE_ANGLE, reference::find_nfang, PreserveFindNfang},
                         {PRESERVE_VOLUME, reference::find_nvolume, PreserveFindNvolume},
                         {PRESERVE_AREA, reference::find_narea, PreserveFindNarea},
                         {PRESERVE_LENGTH, reference::find_edge_length_force, PreserveFindEdgeLengthForce},
                         {PRESERVE_FACE_ANGLE, reference::find_face_angle_force, PreserveFindFaceAngleForce},
                         {PRESERVE_VOLUME, reference::find_volume_force, PreserveFindVolumeForce},
                         {PRESERVE_AREA, reference::find_surface_area_force, PreserveFindSurfaceAreaForce}};
        for (const auto& f : functions) {
            if ((pair.library->flags & f.term) == 0)
                continue;
            f.plain(*pair.plain.get());
            EXPECT_EQ(f.library(pair.library), 1);
            ASSERT_TRUE(same_state(*pair.plain.get(), *pair.library.get())) << "after term " << f.term;
        }
    });
}

TEST(PreserveSteps, MoveThePointsAlike)
{
    compare(60, 4606, [](Pair& pair, Random& random) {
        const int steps = random.between(0, 4);
        reference::compute(*pair.plain.get(), *pair.plain.moved(), steps);
        EXPECT_EQ(PreserveCompute(pair.library, pair.library.moved(), steps), 1);
    });
}

/// Changes weights and references as a host may.
void edit(PreserveStatus& s, uint64_t seed)
{
    Random random(seed);
    const auto change = [&random](double& value) {
        if (random.one_in(4))
            value = random.one_in(2) ? random.awkward() : random.uniform(-2, 2);
    };
    for (double& weight : s.weights)
        change(weight);
    change(s.ovolume);
    change(s.oarea);
    for (DATAstruct* d : {s.olen, s.ofang})
        if (d != nullptr && d->count > 0)
            change(d->dvals[random.below(d->count)]);
}

TEST(PreserveSteps, MoveThePointsAlikeTowardsEditedReferences)
{
    compare(60, 4610, [](Pair& pair, Random& random) {
        const uint64_t seed = random.bits();
        edit(*pair.plain.get(), seed);
        edit(*pair.library.get(), seed);
        const int steps = random.between(1, 3);
        reference::compute(*pair.plain.get(), *pair.plain.moved(), steps);
        EXPECT_EQ(PreserveCompute(pair.library, pair.library.moved(), steps), 1);
    });
}

TEST(PreserveSteps, MoveALargeMeshAlike)
{
    Random random(4607);
    const Mesh mesh = icosphere(3);
    for (int i = 0; i < 6; ++i) {
        Pair pair(mesh, Kind::closed, random);
        reference::compute(*pair.plain.get(), *pair.plain.moved(), 6);
        EXPECT_EQ(PreserveCompute(pair.library, pair.library.moved(), 6), 1);
        EXPECT_TRUE(same_state(*pair.plain.get(), *pair.library.get()));
    }
}

} // namespace
} // namespace korvale::test
