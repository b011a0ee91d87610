// Functions of korvale_c.h beside the plain calls of korvale.h that do the same work, in the same run, on packed
// doubles. "plain_ns" is the time of the plain calls, "more_ns" what the C function takes beyond it: under 100 a call,
// and at many points what it costs to look at all numbers once, whether they are finite and how far they reach.
//
// Some are asked for more: a relaxer copies its mesh, equations are read by a stricter grammar first, `grid_nearest` of
// borrowed triangles tells which one is met. `frames` of a loop keep room for as many frames, which at 1,024 points the
// heap takes from the system and gives back each time.
#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <numbers>
#include <vector>

#include <benchmark/benchmark.h>

#include "bench/ratio.h"
#include "include/korvale.h"
#include "include/korvale_c.h"
#include "tests/support/meshes.h"
#include "tests/support/outlines.h"

namespace {

using korvale::bench::need;
using korvale::bench::time_of;
using namespace korvale::test;
using Numbers = std::vector<double>;

/// Times both in turn, so that a clock that drifts meets both.
template <class Door, class Plain>
void measure(benchmark::State& state, Door door, Plain plain)
{
    for (auto _ : state)
        door();
    double of_door = 1e9, of_plain = 1e9;
    for (int round = 0; round < 3; ++round) {
        of_plain = std::min(of_plain, time_of(plain));
        of_door = std::min(of_door, time_of(door));
    }
    state.counters["plain_ns"] = 1e9 * of_plain;
    state.counters["more_ns"] = 1e9 * (of_door - of_plain);
}

korvale_points points_of(const Numbers& xyz)
{
    return {xyz.data(), static_cast<int64_t>(xyz.size() / 3), 0, 3, KORVALE_DOUBLE};
}

korvale_points_out points_to(Numbers& xyz)
{
    return {xyz.data(), static_cast<int64_t>(xyz.size() / 3), 0, 3, KORVALE_DOUBLE};
}

korvale_numbers rows_of(const Numbers& values, int32_t width)
{
    return {values.data(), static_cast<int64_t>(values.size()) / width, 0, width, KORVALE_DOUBLE};
}

korvale_numbers_out rows_to(Numbers& values, int32_t width)
{
    return {values.data(), static_cast<int64_t>(values.size()) / width, 0, width, KORVALE_DOUBLE};
}

/// A record around numbers, with their shape already.
DATAstruct record_of(Numbers& values, int32_t width)
{
    DATAstruct d;
    DATAInitialize(&d);
    d.type = d.alloc_type = DATA_TYPE_DOUBLE;
    d.dim = d.alloc_dim = width;
    d.count = d.alloc_count = static_cast<int32_t>(values.size()) / width;
    d.dvals = values.data();
    return d;
}

Numbers outline_of(const benchmark::State& state)
{
    const auto n = static_cast<int>(state.range(0));
    return n == 4 ? Numbers{0, 0, 0, 4, 0, 0, 4, 4, 0, 0, 4, 0} : wiggly(n, n / 16, 0.5);
}

// --- Outlines --------------------------------------------------------------------------------------------------------

/// A record that keeps its arrays, around an outline that is moved a little, and laid flat once more to be lifted by a
/// height, as `korvale_offset` lifts borders.
struct Border {
    explicit Border(const Numbers& outline)
    {
        BORDERInitialize(&status);
        status.path->count = static_cast<int32_t>(outline.size() / 3);
        status.path->dim = 3;
        need(DATAAllocate(status.path) == 1);
        std::copy(outline.begin(), outline.end(), status.path->dvals);
        status.distance = 0.01;
    }
    ~Border() { release_arrays(status); }

    void move()
    {
        need(BORDER_BORDER(&status) == 1);
        Xfm to_plane, from_plane;
        DATA_to_xy_xfms(status.path, to_plane, from_plane, 1);
        TransformDATA(to_plane, status.output, status.output);
        for (int32_t i = 0; i < status.output->count; ++i)
            status.output->dvals[3 * i + 2] += height;
        TransformDATA(from_plane, status.output, status.output);
    }

    BORDERStatus status;
    double height = 0;
};

void offset(benchmark::State& state)
{
    const Numbers outline = outline_of(state);
    const korvale_points points = points_of(outline);
    Numbers moved(outline.size());
    korvale_border result = {moved.data(), nullptr, nullptr, 0, 0, 0, 0};
    Border border(outline);
    measure(
        state, [&] { need(korvale_offset(&points, 0.01, nullptr, &result, nullptr) == KORVALE_OK); },
        [&] { border.move(); });
}

void offsetter_run(benchmark::State& state)
{
    const Numbers outline = outline_of(state);
    const korvale_points points = points_of(outline);
    korvale_offsetter* offsetter = nullptr;
    need(korvale_offsetter_new(&offsetter, nullptr) == KORVALE_OK);
    Border border(outline);
    measure(
        state, [&] { need(korvale_offsetter_run(offsetter, &points, 1, 0.01, nullptr, nullptr) == KORVALE_OK); },
        [&] { border.move(); });
    korvale_offsetter_free(offsetter);
}

void flatten(benchmark::State& state)
{
    Numbers outline = outline_of(state);
    const korvale_points points = points_of(outline);
    DATAstruct record = record_of(outline, 3);
    Xfm to_plane, from_plane;
    measure(
        state,
        [&] { need(korvale_flatten(&points, nullptr, &to_plane[0][0], &from_plane[0][0], nullptr) == KORVALE_OK); },
        [&] {
            DATA_to_xy_xfms(&record, to_plane, from_plane, 1);
            benchmark::DoNotOptimize(to_plane);
        });
}

void flatten_by_extremes(benchmark::State& state)
{
    Numbers outline = outline_of(state);
    const korvale_points points = points_of(outline);
    korvale_flatten_options options;
    korvale_flatten_defaults(&options, sizeof options);
    options.by_extremes = 1;
    Data record;
    DataInitialize(&record);
    record.dim = 3;
    record.count = static_cast<int32_t>(outline.size() / 3);
    record.dvals = outline.data();
    Xfm to_plane, from_plane;
    measure(
        state,
        [&] { need(korvale_flatten(&points, &options, &to_plane[0][0], &from_plane[0][0], nullptr) == KORVALE_OK); },
        [&] { need(data_to_xy_xfms(&record, to_plane, from_plane, 1) == 1); });
}

/// A line that winds in space, open or closed.
void frames(benchmark::State& state)
{
    const auto n = static_cast<int>(state.range(0));
    const auto closed = static_cast<int32_t>(state.range(1));
    Numbers path;
    for (int i = 0; i < n; ++i) {
        const double t = 2 * std::numbers::pi * i / n, r = 3 + std::cos(7 * t);
        path.insert(path.end(), {r * std::cos(3 * t), r * std::sin(3 * t), std::sin(7 * t)});
    }
    const korvale_points points = points_of(path);
    DATAstruct record = record_of(path, 3);
    Numbers made(16 * static_cast<size_t>(n));
    measure(
        state, [&] { need(korvale_frames(&points, closed, made.data(), nullptr) == KORVALE_OK); },
        [&] { PATH2xfm(&record, closed, reinterpret_cast<Xfm*>(made.data())); });
}

BENCHMARK(offset)->Arg(4)->Arg(64)->Arg(1024);
BENCHMARK(offsetter_run)->Arg(4)->Arg(64)->Arg(1024);
BENCHMARK(flatten)->Arg(4)->Arg(64)->Arg(1024);
BENCHMARK(flatten_by_extremes)->Arg(4)->Arg(64)->Arg(1024);
BENCHMARK(frames)->ArgsProduct({{4, 64, 1024}, {0, 1}});

// --- Triangles -------------------------------------------------------------------------------------------------------

/// The triangles of a torus of n points.
Numbers torus_of(int n)
{
    return triangles_of(triangulated(torus(n / 8, 8, 2.0, 0.7)));
}

void scatter(benchmark::State& state)
{
    Numbers corners = torus_of(64), points(3 * static_cast<size_t>(state.range(0)));
    const korvale_triangles triangles = {points_of(corners), {}};
    const korvale_points_out output = points_to(points);
    DATAstruct from = record_of(corners, 9), to = record_of(points, 3);
    measure(
        state,
        [&] {
            need(korvale_scatter(&triangles, 7, nullptr, &output, nullptr, nullptr, nullptr, nullptr) == KORVALE_OK);
        },
        [&] { DATATriSample(&from, 7, &to, nullptr, nullptr); });
}

constexpr double kOrigin[3] = {2.05, 0.1, 9}, kDirection[3] = {0.01, 0.02, -1};

/// A grid in the given way, and the record on the same triangles and cells.
struct Scene {
    explicit Scene(int32_t borrow) : corners(torus_of(1024))
    {
        const korvale_triangles mesh = {points_of(corners), {}};
        korvale_grid_options options;
        korvale_grid_defaults(&options, sizeof options);
        options.borrow = borrow;
        need(korvale_grid_new(&mesh, &options, &grid, nullptr) == KORVALE_OK);
        int32_t cells[3];
        korvale_grid_cells(grid, cells);
        DataInitialize(&triangles);
        triangles.dim = 9;
        triangles.count = static_cast<int32_t>(corners.size() / 9);
        triangles.dvals = corners.data();
        need(ray_initialize(&status) == 1);
        status.nx = cells[0];
        status.ny = cells[1];
        status.nz = cells[2];
        ray_set_triangles(&triangles, &status);
        ray_classify(&status);
    }
    ~Scene()
    {
        korvale_grid_free(grid);
        ray_declassify(&status);
        DataDispose(&status.bbox);
    }

    /// How many triangles the ray meets.
    int cast(double* distance)
    {
        return ray_intersect(const_cast<double*>(kOrigin), const_cast<double*>(kDirection), &status, distance);
    }

    Numbers corners;
    korvale_grid* grid = nullptr;
    Data triangles;
    RayStatus status = {};
};

void grid_count(benchmark::State& state)
{
    Scene scene(static_cast<int32_t>(state.range(0)));
    double distance = 0;
    measure(
        state, [&] { need(korvale_grid_count(scene.grid, kOrigin, kDirection, &distance) > 0); },
        [&] { need(scene.cast(&distance) > 0); });
}

void grid_nearest(benchmark::State& state)
{
    Scene scene(static_cast<int32_t>(state.range(0)));
    double distance = 0;
    measure(
        state, [&] { need(korvale_grid_nearest(scene.grid, kOrigin, kDirection).triangle >= 0); },
        [&] { need(scene.cast(&distance) > 0); });
}

/// One ray: what a call for many costs.
void grid_cast(benchmark::State& state)
{
    Scene scene(static_cast<int32_t>(state.range(0)));
    const korvale_points origin = {kOrigin, 1, 0, 3, KORVALE_DOUBLE}, direction = {kDirection, 1, 0, 3, KORVALE_DOUBLE};
    double distance = 0;
    int32_t count = 0;
    const korvale_ray_columns columns = {&distance, nullptr, &count, nullptr};
    measure(
        state,
        [&] {
            need(korvale_grid_cast(scene.grid, &origin, &direction, &columns, nullptr, nullptr, nullptr) == KORVALE_OK);
        },
        [&] { need(scene.cast(&distance) > 0); });
}

/// Made over triangles that stay where they are, and released.
void grid_new(benchmark::State& state)
{
    Scene scene(1);
    const korvale_triangles mesh = {points_of(scene.corners), {}};
    korvale_grid_options options;
    korvale_grid_defaults(&options, sizeof options);
    options.borrow = 1;
    korvale_grid_cells(scene.grid, options.cells);
    measure(
        state,
        [&] {
            korvale_grid* grid = nullptr;
            need(korvale_grid_new(&mesh, &options, &grid, nullptr) == KORVALE_OK);
            korvale_grid_free(grid);
        },
        [&] {
            RayStatus status = {};
            need(ray_initialize(&status) == 1);
            status.nx = options.cells[0];
            status.ny = options.cells[1];
            status.nz = options.cells[2];
            ray_set_triangles(&scene.triangles, &status);
            ray_classify(&status);
            ray_declassify(&status);
            DataDispose(&status.bbox);
        });
}

BENCHMARK(scatter)->Arg(1)->Arg(100);
BENCHMARK(grid_new);
BENCHMARK(grid_count)->Arg(0)->Arg(1);
BENCHMARK(grid_nearest)->Arg(0)->Arg(1);
BENCHMARK(grid_cast)->Arg(0)->Arg(1);

// --- Relaxation ------------------------------------------------------------------------------------------------------

/// A relaxer, and the record made of the same torus.
struct Relaxed {
    explicit Relaxed(int n) : mesh(triangulated(torus(n / 4, 4, 2.0, 0.7))), moved(mesh.points)
    {
        for (size_t k = 2; k < moved.size(); k += 3)
            moved[k] *= 0.6;
        const korvale_faces faces = faces_of();
        need(korvale_relaxer_new(&faces, nullptr, &relaxer, nullptr) == KORVALE_OK);
        need(korvale_relaxer_keep(relaxer, KORVALE_LENGTHS, 0.01, nullptr) == KORVALE_OK);
        points = record_of(moved, 3);
    }
    ~Relaxed() { korvale_relaxer_free(relaxer); }

    korvale_faces faces_of() const
    {
        return {points_of(mesh.points),
                {mesh.sizes.data(), static_cast<int64_t>(mesh.sizes.size()), 0, KORVALE_INT32},
                {mesh.corners.data(), static_cast<int64_t>(mesh.corners.size()), 0, KORVALE_INT32}};
    }
    PreserveStatus* record() const { return static_cast<PreserveStatus*>(korvale_relaxer_record(relaxer)); }

    Mesh mesh;
    Numbers moved;
    korvale_relaxer* relaxer = nullptr;
    DATAstruct points;
};

/// Made, which copies the mesh, and released.
void relaxer_new(benchmark::State& state)
{
    Relaxed r(static_cast<int>(state.range(0)));
    const korvale_faces faces = r.faces_of();
    DATAstruct points = record_of(r.mesh.points, 3), sizes, corners;
    for (auto* record : {&sizes, &corners}) {
        DATAInitialize(record);
        record->type = DATA_TYPE_INT;
        record->dim = 1;
    }
    sizes.count = static_cast<int32_t>(r.mesh.sizes.size());
    sizes.ivals = r.mesh.sizes.data();
    corners.count = static_cast<int32_t>(r.mesh.corners.size());
    corners.ivals = r.mesh.corners.data();
    measure(
        state,
        [&] {
            korvale_relaxer* relaxer = nullptr;
            need(korvale_relaxer_new(&faces, nullptr, &relaxer, nullptr) == KORVALE_OK);
            korvale_relaxer_free(relaxer);
        },
        [&] {
            PreserveStatus status = {};
            need(PreserveInitialize(&status, &points, nullptr, &sizes, &corners) == 1);
            DATAstruct* const edges = status.edges;
            PreserveDispose(&status);
            DATADispose(edges);
            std::free(edges);
        });
}

void relaxer_keep(benchmark::State& state)
{
    Relaxed r(16);
    measure(
        state, [&] { need(korvale_relaxer_keep(r.relaxer, KORVALE_LENGTHS, 0.01, nullptr) == KORVALE_OK); },
        [&] { need(PreservePreserve(r.record(), PRESERVE_LENGTH, 0.01) == 1); });
}

void relaxer_step(benchmark::State& state)
{
    Relaxed r(static_cast<int>(state.range(0)));
    const korvale_points_out points = points_to(r.moved);
    measure(
        state,
        [&] { need(korvale_relaxer_step(r.relaxer, &points, 1, nullptr, nullptr, nullptr, nullptr) == KORVALE_OK); },
        [&] { need(PreserveCompute(r.record(), &r.points, 1) == 1); });
}

void relaxer_energy(benchmark::State& state)
{
    Relaxed r(static_cast<int>(state.range(0)));
    const korvale_points points = points_of(r.moved);
    double energy = 0;
    measure(
        state, [&] { need(korvale_relaxer_energy(r.relaxer, &points, &energy, nullptr) == KORVALE_OK); },
        [&] { need(PreserveCompute(r.record(), &r.points, 0) == 1); });
}

void relaxer_forces(benchmark::State& state)
{
    Relaxed r(static_cast<int>(state.range(0)));
    const korvale_points points = points_of(r.moved);
    Numbers forces(r.moved.size());
    DATAstruct out = record_of(forces, 3);
    measure(
        state, [&] { need(korvale_relaxer_forces(r.relaxer, &points, forces.data(), nullptr) == KORVALE_OK); },
        [&] { need(PreserveGetForce(r.record(), &r.points, &out) == 1); });
}

BENCHMARK(relaxer_new)->Arg(16)->Arg(64)->Arg(1024);
BENCHMARK(relaxer_keep);
BENCHMARK(relaxer_step)->Arg(16)->Arg(64)->Arg(1024);
BENCHMARK(relaxer_energy)->Arg(16)->Arg(64)->Arg(1024);
BENCHMARK(relaxer_forces)->Arg(16)->Arg(64)->Arg(1024);

// --- Equations -------------------------------------------------------------------------------------------------------

/// A system of one equation.
struct System {
    System()
    {
        need(korvale_equations_new(&equations, nullptr) == KORVALE_OK);
        need(korvale_equations_declare(equations, "a b x", 0, nullptr) == KORVALE_OK);
        need(korvale_equations_add(equations, "x = a + b * 2", nullptr, nullptr) == KORVALE_OK);
        record = static_cast<EquationSystem*>(korvale_equations_record(equations));
    }
    ~System() { korvale_equations_free(equations); }

    korvale_equations* equations = nullptr;
    EquationSystem* record = nullptr;
};

/// Made with two variables and an equation, and released.
void equations_add(benchmark::State& state)
{
    char names[] = "x a b", text[] = "x = a + b * 2";
    measure(
        state,
        [&] {
            korvale_equations* equations = nullptr;
            need(korvale_equations_new(&equations, nullptr) == KORVALE_OK);
            if (state.range(0) != 0) {
                need(korvale_equations_declare(equations, names, 0, nullptr) == KORVALE_OK);
                need(korvale_equations_add(equations, text, nullptr, nullptr) == KORVALE_OK);
            }
            korvale_equations_free(equations);
        },
        [&] {
            EquationSystem system;
            need(EqSystemInitialize(&system) == 1);
            if (state.range(0) != 0) {
                need(EqParseVariables(&system, names, 0) >= 0);
                need(EqParseEquation(&system, text) >= 0);
            }
            EqSystemDispose(&system);
        });
}

void equations_evaluate(benchmark::State& state)
{
    System s;
    double result = 0;
    measure(
        state, [&] { need(korvale_equations_evaluate(s.equations, 0, &result, nullptr) == KORVALE_OK); },
        [&] { benchmark::DoNotOptimize(EqEvaluate(s.record, 0)); });
}

void equations_pass(benchmark::State& state)
{
    System s;
    measure(
        state, [&] { need(korvale_equations_pass(s.equations, nullptr) == KORVALE_OK); },
        [&] { need(EqSystemEvaluate(s.record) == 1); });
}

void equations_set(benchmark::State& state)
{
    System s;
    char name[] = "a";
    measure(
        state, [&] { need(korvale_equations_set(s.equations, name, 3, nullptr) == KORVALE_OK); },
        [&] { need(EqSetVariableByName(s.record, name, 3) == 1); });
}

void equations_get(benchmark::State& state)
{
    System s;
    char name[] = "a";
    double value = 0;
    measure(
        state, [&] { need(korvale_equations_get(s.equations, name, &value, nullptr) == KORVALE_OK); },
        [&] { benchmark::DoNotOptimize(EqReadVariableByName(s.record, name)); });
}

/// Rows of one column.
void equations_evaluate_rows(benchmark::State& state)
{
    System s;
    Numbers column(static_cast<size_t>(state.range(0)), 3.0), results(column.size());
    const korvale_column a = {"a", rows_of(column, 1)};
    const korvale_numbers_out output = rows_to(results, 1);
    const int variable = EqLookupVariable(s.record, const_cast<char*>("a"));
    measure(
        state,
        [&] {
            need(korvale_equations_evaluate_rows(s.equations, 0, &a, 1, &output, nullptr, nullptr, nullptr) ==
                 KORVALE_OK);
        },
        [&] {
            for (size_t i = 0; i < column.size(); ++i) {
                EqSetVariable(s.record, variable, column[i]);
                results[i] = EqEvaluate(s.record, 0);
            }
        });
}

BENCHMARK(equations_add)->Arg(0)->Arg(1);
BENCHMARK(equations_evaluate);
BENCHMARK(equations_pass);
BENCHMARK(equations_set);
BENCHMARK(equations_get);
BENCHMARK(equations_evaluate_rows)->Arg(1)->Arg(10)->Arg(1000);

// --- Transforms and arrays -------------------------------------------------------------------------------------------

Xfm kTurn = {{0.8, -0.6, 0, 1}, {0.6, 0.8, 0, 2}, {0, 0, 1, 3}, {0, 0, 0, 1}};

void transform_from_srt(benchmark::State& state)
{
    korvale_srt srt = {{1.5, 2.5, 0.7}, {0.3, -1.1, 2.0}, {5, -7, 0.1}};
    Xfm m;
    measure(
        state, [&] { korvale_transform_from_srt(&srt, &m[0][0]); },
        [&] { SRT2Transform(srt.scale, srt.rotation, srt.translation, m); });
}

void transform_inverse_of_srt(benchmark::State& state)
{
    korvale_srt srt = {{1.5, 2.5, 0.7}, {0.3, -1.1, 2.0}, {5, -7, 0.1}};
    Xfm m;
    measure(
        state, [&] { korvale_transform_inverse_of_srt(&srt, &m[0][0]); },
        [&] { SRT2InvTransform(srt.scale, srt.rotation, srt.translation, m); });
}

void transform_take_apart(benchmark::State& state)
{
    korvale_srt srt;
    measure(
        state, [&] { korvale_transform_take_apart(&kTurn[0][0], &srt); },
        [&] { Transform2SRT(kTurn, srt.scale, srt.rotation, srt.translation); });
}

void transform_multiply(benchmark::State& state)
{
    Xfm m;
    measure(
        state, [&] { korvale_transform_multiply(&kTurn[0][0], &kTurn[0][0], &m[0][0]); },
        [&] { MatrixMultiply(kTurn, kTurn, m); });
}

void transform_point(benchmark::State& state)
{
    double point[3] = {1, 2, 3}, moved[3];
    measure(
        state, [&] { korvale_transform_point(&kTurn[0][0], point, moved); },
        [&] { TransformPoint(kTurn, point, moved); });
}

void transform_points(benchmark::State& state)
{
    Numbers from(3 * static_cast<size_t>(state.range(0)), 0.5), to(from.size());
    const korvale_points points = points_of(from);
    const korvale_points_out output = points_to(to);
    DATAstruct source = record_of(from, 3), target = record_of(to, 3);
    measure(
        state, [&] { need(korvale_transform_points(&kTurn[0][0], &points, &output, nullptr) == KORVALE_OK); },
        [&] { TransformDATA(kTurn, &source, &target); });
}

void mix(benchmark::State& state)
{
    Numbers a(3 * static_cast<size_t>(state.range(0)), 0.5), b(a), to(a);
    const korvale_numbers arrays[] = {rows_of(a, 3), rows_of(b, 3)};
    const double weights[] = {0.25, 0.75};
    const korvale_numbers_out output = rows_to(to, 3);
    DATAstruct from_a = record_of(a, 3), from_b = record_of(b, 3), target = record_of(to, 3);
    measure(
        state, [&] { need(korvale_mix(arrays, weights, 2, &output, nullptr) == KORVALE_OK); },
        [&] { need(DATAMix(&from_a, &from_b, 0.25, 0.75, &target) == 1); });
}

void bounds(benchmark::State& state)
{
    Numbers from(3 * static_cast<size_t>(state.range(0)), 0.5), box(6);
    const korvale_numbers array = rows_of(from, 3);
    DATAstruct source = record_of(from, 3), target = record_of(box, 3);
    measure(
        state, [&] { need(korvale_bounds(&array, &box[0], &box[3], nullptr) == KORVALE_OK); },
        [&] { need(DATABBox(&source, &target) == 1); });
}

void reverse(benchmark::State& state)
{
    Numbers rows(3 * static_cast<size_t>(state.range(0)), 0.5);
    const korvale_numbers_out array = rows_to(rows, 3);
    DATAstruct record = record_of(rows, 3);
    measure(
        state, [&] { need(korvale_reverse(&array, nullptr) == KORVALE_OK); }, [&] { DATAReverse(&record); });
}

void seed(benchmark::State& state)
{
    measure(
        state, [] { korvale_seed(7); }, [] { EqSeed(7); });
}

BENCHMARK(transform_from_srt);
BENCHMARK(transform_inverse_of_srt);
BENCHMARK(transform_take_apart);
BENCHMARK(transform_multiply);
BENCHMARK(transform_point);
BENCHMARK(transform_points)->Arg(1)->Arg(100);
BENCHMARK(mix)->Arg(1)->Arg(100);
BENCHMARK(bounds)->Arg(1)->Arg(100);
BENCHMARK(reverse)->Arg(1)->Arg(100);
BENCHMARK(seed);

} // namespace
