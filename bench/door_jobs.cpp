// Functions of korvale_c.h beside the plain calls of korvale.h that do the same work, on packed doubles: those are the
// peer `plain`. A call takes under 100 ns more, and at many points what it costs to look at all numbers once, whether
// they are finite and how far they reach.
//
// Some are asked for more: a relaxer copies its mesh, equations are read by a stricter grammar first, `grid_nearest` of
// borrowed triangles tells which one is met. `frames` of a loop keep room for as many frames, which at 1,024 points the
// heap takes from the system and gives back each time.
#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <numbers>

#include "bench/job.h"
#include "include/korvale.h"
#include "include/korvale_c.h"
#include "tests/support/meshes.h"
#include "tests/support/outlines.h"

namespace korvale::bench {
namespace {

using namespace korvale::test;
using Values = std::vector<double>;

/// A call of the door, and the plain calls that do the same work. What they work on is static: the process is the job's
/// own.
struct Both {
    Work door, plain;
};

template <Both (*make)(int)>
void add(std::vector<Job>& jobs, const std::string& name, const std::vector<int>& sizes)
{
    jobs.push_back({"door." + name, sizes, [](int n) { return make(n).door; }});
    jobs.push_back({"door." + name + "@plain", sizes, [](int n) { return make(n).plain; }});
}

korvale_points points_of(const Values& xyz)
{
    return {xyz.data(), static_cast<int64_t>(xyz.size() / 3), 0, 3, KORVALE_DOUBLE};
}

korvale_points_out points_to(Values& xyz)
{
    return {xyz.data(), static_cast<int64_t>(xyz.size() / 3), 0, 3, KORVALE_DOUBLE};
}

korvale_numbers rows_of(const Values& values, int32_t width)
{
    return {values.data(), static_cast<int64_t>(values.size()) / width, 0, width, KORVALE_DOUBLE};
}

korvale_numbers_out rows_to(Values& values, int32_t width)
{
    return {values.data(), static_cast<int64_t>(values.size()) / width, 0, width, KORVALE_DOUBLE};
}

/// A record around numbers, with their shape already.
DATAstruct record_of(Values& values, int32_t width)
{
    DATAstruct d;
    DATAInitialize(&d);
    d.type = d.alloc_type = DATA_TYPE_DOUBLE;
    d.dim = d.alloc_dim = width;
    d.count = d.alloc_count = static_cast<int32_t>(values.size()) / width;
    d.dvals = values.data();
    return d;
}

Values outline_of(int n)
{
    return n == 4 ? Values{0, 0, 0, 4, 0, 0, 4, 4, 0, 0, 4, 0} : wiggly(n, n / 16, 0.5);
}

// --- Outlines --------------------------------------------------------------------------------------------------------

/// A record that keeps its arrays, around an outline that is moved a little, and laid flat once more to be lifted by a
/// height, as `korvale_offset` lifts borders.
struct Border {
    explicit Border(const Values& outline)
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

Both offset(int n)
{
    static const Values outline = outline_of(n);
    static const korvale_points points = points_of(outline);
    static Values moved(outline.size());
    static korvale_border result = {moved.data(), nullptr, nullptr, 0, 0, 0, 0};
    static Border border(outline);
    return {[] { need(korvale_offset(&points, 0.01, nullptr, &result, nullptr) == KORVALE_OK); },
            [] { border.move(); }};
}

Both offsetter_run(int n)
{
    static const Values outline = outline_of(n);
    static const korvale_points points = points_of(outline);
    static korvale_offsetter* offsetter = nullptr;
    need(korvale_offsetter_new(&offsetter, nullptr) == KORVALE_OK);
    static Border border(outline);
    return {[] { need(korvale_offsetter_run(offsetter, &points, 1, 0.01, nullptr, nullptr) == KORVALE_OK); },
            [] { border.move(); }};
}

Both flatten(int n)
{
    static Values outline = outline_of(n);
    static const korvale_points points = points_of(outline);
    static DATAstruct record = record_of(outline, 3);
    static Xfm to_plane, from_plane;
    return {[] { need(korvale_flatten(&points, nullptr, &to_plane[0][0], &from_plane[0][0], nullptr) == KORVALE_OK); },
            [] {
                DATA_to_xy_xfms(&record, to_plane, from_plane, 1);
                keep(to_plane);
            }};
}

Both flatten_by_extremes(int n)
{
    static Values outline = outline_of(n);
    static const korvale_points points = points_of(outline);
    static korvale_flatten_options options;
    korvale_flatten_defaults(&options, sizeof options);
    options.by_extremes = 1;
    static Data record;
    DataInitialize(&record);
    record.dim = 3;
    record.count = static_cast<int32_t>(outline.size() / 3);
    record.dvals = outline.data();
    static Xfm to_plane, from_plane;
    return {[] { need(korvale_flatten(&points, &options, &to_plane[0][0], &from_plane[0][0], nullptr) == KORVALE_OK); },
            [] { need(data_to_xy_xfms(&record, to_plane, from_plane, 1) == 1); }};
}

/// A line that winds in space, open or closed.
template <int32_t closed>
Both frames(int n)
{
    static Values path;
    for (int i = 0; i < n; ++i) {
        const double t = 2 * std::numbers::pi * i / n, r = 3 + std::cos(7 * t);
        path.insert(path.end(), {r * std::cos(3 * t), r * std::sin(3 * t), std::sin(7 * t)});
    }
    static const korvale_points points = points_of(path);
    static DATAstruct record = record_of(path, 3);
    static Values made(16 * static_cast<size_t>(n));
    return {[] { need(korvale_frames(&points, closed, made.data(), nullptr) == KORVALE_OK); },
            [] { PATH2xfm(&record, closed, reinterpret_cast<Xfm*>(made.data())); }};
}

// --- Triangles -------------------------------------------------------------------------------------------------------

/// The triangles of a torus of n points.
Values torus_of(int n)
{
    return triangles_of(triangulated(torus(n / 8, 8, 2.0, 0.7)));
}

Both scatter(int n)
{
    static Values corners = torus_of(64), points(3 * static_cast<size_t>(n));
    static const korvale_triangles triangles = {points_of(corners), {}};
    static const korvale_points_out output = points_to(points);
    static DATAstruct from = record_of(corners, 9), to = record_of(points, 3);
    return {[] {
                need(korvale_scatter(&triangles, 7, nullptr, &output, nullptr, nullptr, nullptr, nullptr) ==
                     KORVALE_OK);
            },
            [] { DATATriSample(&from, 7, &to, nullptr, nullptr); }};
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

    Values corners;
    korvale_grid* grid = nullptr;
    Data triangles;
    RayStatus status = {};
};

template <int32_t borrow>
Both grid_count(int)
{
    static Scene scene(borrow);
    static double distance = 0;
    return {[] { need(korvale_grid_count(scene.grid, kOrigin, kDirection, &distance) > 0); },
            [] { need(scene.cast(&distance) > 0); }};
}

template <int32_t borrow>
Both grid_nearest(int)
{
    static Scene scene(borrow);
    static double distance = 0;
    return {[] { need(korvale_grid_nearest(scene.grid, kOrigin, kDirection).triangle >= 0); },
            [] { need(scene.cast(&distance) > 0); }};
}

/// One ray: what a call for many costs.
template <int32_t borrow>
Both grid_cast(int)
{
    static Scene scene(borrow);
    static const korvale_points origin = {kOrigin, 1, 0, 3, KORVALE_DOUBLE},
                                direction = {kDirection, 1, 0, 3, KORVALE_DOUBLE};
    static double distance = 0;
    static int32_t count = 0;
    static const korvale_ray_columns columns = {&distance, nullptr, &count, nullptr};
    return {[] {
                need(korvale_grid_cast(scene.grid, &origin, &direction, &columns, nullptr, nullptr, nullptr) ==
                     KORVALE_OK);
            },
            [] { need(scene.cast(&distance) > 0); }};
}

/// Made over triangles that stay where they are, and released.
Both grid_new(int)
{
    static Scene scene(1);
    static const korvale_triangles mesh = {points_of(scene.corners), {}};
    static korvale_grid_options options;
    korvale_grid_defaults(&options, sizeof options);
    options.borrow = 1;
    korvale_grid_cells(scene.grid, options.cells);
    return {[] {
                korvale_grid* grid = nullptr;
                need(korvale_grid_new(&mesh, &options, &grid, nullptr) == KORVALE_OK);
                korvale_grid_free(grid);
            },
            [] {
                RayStatus status = {};
                need(ray_initialize(&status) == 1);
                status.nx = options.cells[0];
                status.ny = options.cells[1];
                status.nz = options.cells[2];
                ray_set_triangles(&scene.triangles, &status);
                ray_classify(&status);
                ray_declassify(&status);
                DataDispose(&status.bbox);
            }};
}

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
    Values moved;
    korvale_relaxer* relaxer = nullptr;
    DATAstruct points;
};

/// Made, which copies the mesh, and released.
Both relaxer_new(int n)
{
    static Relaxed r(n);
    static const korvale_faces faces = r.faces_of();
    static DATAstruct points = record_of(r.mesh.points, 3), sizes, corners;
    for (auto* record : {&sizes, &corners}) {
        DATAInitialize(record);
        record->type = DATA_TYPE_INT;
        record->dim = 1;
    }
    sizes.count = static_cast<int32_t>(r.mesh.sizes.size());
    sizes.ivals = r.mesh.sizes.data();
    corners.count = static_cast<int32_t>(r.mesh.corners.size());
    corners.ivals = r.mesh.corners.data();
    return {[] {
                korvale_relaxer* relaxer = nullptr;
                need(korvale_relaxer_new(&faces, nullptr, &relaxer, nullptr) == KORVALE_OK);
                korvale_relaxer_free(relaxer);
            },
            [] {
                PreserveStatus status = {};
                need(PreserveInitialize(&status, &points, nullptr, &sizes, &corners) == 1);
                DATAstruct* const edges = status.edges;
                PreserveDispose(&status);
                DATADispose(edges);
                std::free(edges);
            }};
}

Both relaxer_keep(int)
{
    static Relaxed r(16);
    return {[] { need(korvale_relaxer_keep(r.relaxer, KORVALE_LENGTHS, 0.01, nullptr) == KORVALE_OK); },
            [] { need(PreservePreserve(r.record(), PRESERVE_LENGTH, 0.01) == 1); }};
}

Both relaxer_step(int n)
{
    static Relaxed r(n);
    static const korvale_points_out points = points_to(r.moved);
    return {[] { need(korvale_relaxer_step(r.relaxer, &points, 1, nullptr, nullptr, nullptr, nullptr) == KORVALE_OK); },
            [] { need(PreserveCompute(r.record(), &r.points, 1) == 1); }};
}

Both relaxer_energy(int n)
{
    static Relaxed r(n);
    static const korvale_points points = points_of(r.moved);
    static double energy = 0;
    return {[] { need(korvale_relaxer_energy(r.relaxer, &points, &energy, nullptr) == KORVALE_OK); },
            [] { need(PreserveCompute(r.record(), &r.points, 0) == 1); }};
}

Both relaxer_forces(int n)
{
    static Relaxed r(n);
    static const korvale_points points = points_of(r.moved);
    static Values forces(r.moved.size());
    static DATAstruct out = record_of(forces, 3);
    return {[] { need(korvale_relaxer_forces(r.relaxer, &points, forces.data(), nullptr) == KORVALE_OK); },
            [] { need(PreserveGetForce(r.record(), &r.points, &out) == 1); }};
}

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

/// Made with two variables and an equation or without, and released.
template <bool filled>
Both equations_add(int)
{
    static char names[] = "x a b", text[] = "x = a + b * 2";
    return {[] {
                korvale_equations* equations = nullptr;
                need(korvale_equations_new(&equations, nullptr) == KORVALE_OK);
                if (filled) {
                    need(korvale_equations_declare(equations, names, 0, nullptr) == KORVALE_OK);
                    need(korvale_equations_add(equations, text, nullptr, nullptr) == KORVALE_OK);
                }
                korvale_equations_free(equations);
            },
            [] {
                EquationSystem system;
                need(EqSystemInitialize(&system) == 1);
                if (filled) {
                    need(EqParseVariables(&system, names, 0) >= 0);
                    need(EqParseEquation(&system, text) >= 0);
                }
                EqSystemDispose(&system);
            }};
}

Both equations_evaluate(int)
{
    static System s;
    static double result = 0;
    return {[] { need(korvale_equations_evaluate(s.equations, 0, &result, nullptr) == KORVALE_OK); },
            [] { keep(EqEvaluate(s.record, 0)); }};
}

Both equations_pass(int)
{
    static System s;
    return {[] { need(korvale_equations_pass(s.equations, nullptr) == KORVALE_OK); },
            [] { need(EqSystemEvaluate(s.record) == 1); }};
}

Both equations_set(int)
{
    static System s;
    static char name[] = "a";
    return {[] { need(korvale_equations_set(s.equations, name, 3, nullptr) == KORVALE_OK); },
            [] { need(EqSetVariableByName(s.record, name, 3) == 1); }};
}

Both equations_get(int)
{
    static System s;
    static char name[] = "a";
    static double value = 0;
    return {[] { need(korvale_equations_get(s.equations, name, &value, nullptr) == KORVALE_OK); },
            [] { keep(EqReadVariableByName(s.record, name)); }};
}

/// Rows of one column.
Both equations_evaluate_rows(int n)
{
    static System s;
    static Values column(static_cast<size_t>(n), 3.0), results(column.size());
    static const korvale_column a = {"a", rows_of(column, 1)};
    static const korvale_numbers_out output = rows_to(results, 1);
    static const int variable = EqLookupVariable(s.record, const_cast<char*>("a"));
    return {[] {
                need(korvale_equations_evaluate_rows(s.equations, 0, &a, 1, &output, nullptr, nullptr, nullptr) ==
                     KORVALE_OK);
            },
            [] {
                for (size_t i = 0; i < column.size(); ++i) {
                    EqSetVariable(s.record, variable, column[i]);
                    results[i] = EqEvaluate(s.record, 0);
                }
            }};
}

// --- Transforms and arrays -------------------------------------------------------------------------------------------

Xfm kTurn = {{0.8, -0.6, 0, 1}, {0.6, 0.8, 0, 2}, {0, 0, 1, 3}, {0, 0, 0, 1}};

Both transform_from_srt(int)
{
    static korvale_srt srt = {{1.5, 2.5, 0.7}, {0.3, -1.1, 2.0}, {5, -7, 0.1}};
    static Xfm m;
    return {[] { korvale_transform_from_srt(&srt, &m[0][0]); },
            [] { SRT2Transform(srt.scale, srt.rotation, srt.translation, m); }};
}

Both transform_inverse_of_srt(int)
{
    static korvale_srt srt = {{1.5, 2.5, 0.7}, {0.3, -1.1, 2.0}, {5, -7, 0.1}};
    static Xfm m;
    return {[] { korvale_transform_inverse_of_srt(&srt, &m[0][0]); },
            [] { SRT2InvTransform(srt.scale, srt.rotation, srt.translation, m); }};
}

Both transform_take_apart(int)
{
    static korvale_srt srt;
    return {[] { korvale_transform_take_apart(&kTurn[0][0], &srt); },
            [] { Transform2SRT(kTurn, srt.scale, srt.rotation, srt.translation); }};
}

Both transform_multiply(int)
{
    static Xfm m;
    return {[] { korvale_transform_multiply(&kTurn[0][0], &kTurn[0][0], &m[0][0]); },
            [] { MatrixMultiply(kTurn, kTurn, m); }};
}

Both transform_point(int)
{
    static double point[3] = {1, 2, 3}, moved[3];
    return {[] { korvale_transform_point(&kTurn[0][0], point, moved); }, [] { TransformPoint(kTurn, point, moved); }};
}

Both transform_points(int n)
{
    static Values from(3 * static_cast<size_t>(n), 0.5), to(from.size());
    static const korvale_points points = points_of(from);
    static const korvale_points_out output = points_to(to);
    static DATAstruct source = record_of(from, 3), target = record_of(to, 3);
    return {[] { need(korvale_transform_points(&kTurn[0][0], &points, &output, nullptr) == KORVALE_OK); },
            [] { TransformDATA(kTurn, &source, &target); }};
}

Both mix(int n)
{
    static Values a(3 * static_cast<size_t>(n), 0.5), b(a), to(a);
    static const korvale_numbers arrays[] = {rows_of(a, 3), rows_of(b, 3)};
    static const double weights[] = {0.25, 0.75};
    static const korvale_numbers_out output = rows_to(to, 3);
    static DATAstruct from_a = record_of(a, 3), from_b = record_of(b, 3), target = record_of(to, 3);
    return {[] { need(korvale_mix(arrays, weights, 2, &output, nullptr) == KORVALE_OK); },
            [] { need(DATAMix(&from_a, &from_b, 0.25, 0.75, &target) == 1); }};
}

Both bounds(int n)
{
    static Values from(3 * static_cast<size_t>(n), 0.5), box(6);
    static const korvale_numbers array = rows_of(from, 3);
    static DATAstruct source = record_of(from, 3), target = record_of(box, 3);
    return {[] { need(korvale_bounds(&array, &box[0], &box[3], nullptr) == KORVALE_OK); },
            [] { need(DATABBox(&source, &target) == 1); }};
}

Both reverse(int n)
{
    static Values rows(3 * static_cast<size_t>(n), 0.5);
    static const korvale_numbers_out array = rows_to(rows, 3);
    static DATAstruct record = record_of(rows, 3);
    return {[] { need(korvale_reverse(&array, nullptr) == KORVALE_OK); }, [] { DATAReverse(&record); }};
}

Both seed(int)
{
    return {[] { korvale_seed(7); }, [] { EqSeed(7); }};
}

} // namespace

std::vector<Job> door_jobs()
{
    std::vector<Job> jobs;
    add<offset>(jobs, "offset", {4, 64, 1024});
    add<offsetter_run>(jobs, "offsetter_run", {4, 64, 1024});
    add<flatten>(jobs, "flatten", {4, 64, 1024});
    add<flatten_by_extremes>(jobs, "flatten_by_extremes", {4, 64, 1024});
    add<frames<0>>(jobs, "frames_open", {4, 64, 1024});
    add<frames<1>>(jobs, "frames_closed", {4, 64, 1024});
    add<scatter>(jobs, "scatter", {1, 100});
    add<grid_new>(jobs, "grid_new", {1});
    add<grid_count<0>>(jobs, "grid_count", {1});
    add<grid_count<1>>(jobs, "grid_count_borrowed", {1});
    add<grid_nearest<0>>(jobs, "grid_nearest", {1});
    add<grid_nearest<1>>(jobs, "grid_nearest_borrowed", {1});
    add<grid_cast<0>>(jobs, "grid_cast", {1});
    add<grid_cast<1>>(jobs, "grid_cast_borrowed", {1});
    add<relaxer_new>(jobs, "relaxer_new", {16, 64, 1024});
    add<relaxer_keep>(jobs, "relaxer_keep", {16});
    add<relaxer_step>(jobs, "relaxer_step", {16, 64, 1024});
    add<relaxer_energy>(jobs, "relaxer_energy", {16, 64, 1024});
    add<relaxer_forces>(jobs, "relaxer_forces", {16, 64, 1024});
    add<equations_add<false>>(jobs, "equations_new", {1});
    add<equations_add<true>>(jobs, "equations_add", {1});
    add<equations_evaluate>(jobs, "equations_evaluate", {1});
    add<equations_pass>(jobs, "equations_pass", {1});
    add<equations_set>(jobs, "equations_set", {1});
    add<equations_get>(jobs, "equations_get", {1});
    add<equations_evaluate_rows>(jobs, "equations_evaluate_rows", {1, 10, 1000});
    add<transform_from_srt>(jobs, "transform_from_srt", {1});
    add<transform_inverse_of_srt>(jobs, "transform_inverse_of_srt", {1});
    add<transform_take_apart>(jobs, "transform_take_apart", {1});
    add<transform_multiply>(jobs, "transform_multiply", {1});
    add<transform_point>(jobs, "transform_point", {1});
    add<transform_points>(jobs, "transform_points", {1, 100});
    add<mix>(jobs, "mix", {1, 100});
    add<bounds>(jobs, "bounds", {1, 100});
    add<reverse>(jobs, "reverse", {1, 100});
    add<seed>(jobs, "seed", {1});
    return jobs;
}

} // namespace korvale::bench
