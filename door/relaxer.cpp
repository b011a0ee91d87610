// Meshes that remember their shape: a `PreserveStatus` with copies of what it borrows.
#include <algorithm>

#include "data/internal/kernels.h"
#include "door/internal/closed.h"
#include "door/internal/faces.h"
#include "door/internal/weld.h"
#include "preserve/compute.h"
#include "preserve/status.h"

/// The record borrows the arrays beside it, so a relaxer never moves.
struct korvale_relaxer {
    korvale_relaxer() = default;
    ~korvale_relaxer()
    {
        DATAstruct* const used = status.edges;
        PreserveDispose(&status);
        if (used != nullptr && used != &edge_record) { // edges that were built are the caller's
            DATADispose(used);
            std::free(used);
        }
    }
    korvale_relaxer(const korvale_relaxer&) = delete;
    korvale_relaxer& operator=(const korvale_relaxer&) = delete;

    int64_t size() const { return static_cast<int64_t>(reference.size()) / 3; }

    korvale::door::Vector<double> reference;
    korvale::door::Vector<int32_t> sizes, corners, edges;
    korvale::door::Vector<uint8_t> tags;
    korvale::door::Block<korvale::door::Point> before, start;               ///< points before the latest steps, and
                                                                            ///< before the first ones of a call
    DATAstruct points, size_record, corner_record, edge_record, tag_record; // over the vectors
    PreserveStatus status = {};
};

namespace korvale::door {
namespace {

// Making one.

DATAstruct record_of(const Vector<int32_t>& values, int64_t dim = 1)
{
    return record_over(values.data(), static_cast<int64_t>(values.size()) / dim, dim);
}

/// Whether every array is there that a heap with room for all gives.
bool is_whole(const korvale_relaxer& r)
{
    const PreserveStatus& s = r.status;
    const bool has_edges = !r.edges.empty() || std::any_of(r.sizes.begin(), r.sizes.end(), [](int n) { return n > 1; });
    return s.force != nullptr && s.force->dvals != nullptr && (!has_edges || s.edges != nullptr) &&
           (r.corners.empty() || s.face_starts != nullptr);
}

void take_mesh(korvale_relaxer& r, const korvale_faces* faces, const korvale_indices* edges)
{
    require(faces, "faces");
    const PointsIn points(&faces->points, "vertices");
    require_points(points, "vertices", 1);
    const FacesIn mesh(*faces, points.size());
    r.reference.assign(points.data(), points.data() + 3 * points.size());
    r.sizes = mesh.sizes();
    r.corners.assign(mesh.corners().begin(), mesh.corners().end());
    if (edges != nullptr) {
        const IndicesIn ends(edges, "edges");
        if (ends.size() % 2 != 0)
            throw Refusal("edges", "be pairs of points", Text() << "there are " << ends.size() << " ends");
        require_corners(ends, "edges", points.size());
        r.edges.assign(ends.indices().begin(), ends.indices().end());
    }

    r.points = record_over(r.reference.data(), r.size(), 3);
    r.size_record = record_of(r.sizes);
    r.corner_record = record_of(r.corners);
    r.edge_record = record_of(r.edges, 2);
    require_done(PreserveInitialize(&r.status, &r.points, r.edges.empty() ? nullptr : &r.edge_record,
                                    r.sizes.empty() ? nullptr : &r.size_record,
                                    r.corners.empty() ? nullptr : &r.corner_record));
    if (!is_whole(r))
        throw std::bad_alloc();
}

bool is_measure(int32_t measure)
{
    return measure == KORVALE_LENGTHS || measure == KORVALE_ANGLES || measure == KORVALE_VOLUME ||
           measure == KORVALE_AREA;
}

/// Refuses a mesh that encloses no volume.
void require_volume(const korvale_relaxer& r)
{
    const Vector<int32_t> place =
        first_at_place({reinterpret_cast<const Point*>(r.reference.data()), static_cast<size_t>(r.size())});
    FaceEdges edges(r.corners.size());
    const int32_t* corner = r.corners.data();
    for (const int32_t n : r.sizes) {
        edges.add_face(n, [&](int64_t k) { return place[static_cast<size_t>(corner[k])]; });
        corner += n;
    }
    FaultyEdges open, turned;
    edges.for_each([&](const FaceEdge& edge) {
        if (edge.is_open())
            open.add(edge);
        else if (edge.is_turned())
            turned.add(edge);
    });
    if (open.count > 0)
        throw Refusal("measure", "be one that the mesh has",
                      Text() << "a volume is that of a closed mesh, and " << counted(open.count, "edge")
                             << (open.count == 1 ? " is" : " are") << " open"
                             << std::string_view(open.place("points", open.low, open.high)));
    if (turned.count > 0)
        throw Refusal("measure", "be one that the mesh has",
                      Text() << "a volume is that of a mesh turned one way, and faces are turned two ways at "
                             << counted(turned.count, "edge")
                             << std::string_view(turned.place("points", turned.low, turned.high)));
}

// Moving points.

/// Refuses a relaxer that keeps nothing.
void require_kept(const korvale_relaxer& r)
{
    if (r.status.flags == 0)
        throw Refusal("relaxer", "keep a measure", "it keeps none");
}

/// Whether all that is kept is between points that are held.
bool is_all_held(const korvale_relaxer& r)
{
    const DATAstruct* const tags = r.status.tags;
    if (tags == nullptr || tags->bvals == nullptr || (r.status.flags & (PRESERVE_VOLUME | PRESERVE_AREA)) != 0)
        return false;
    const auto is_held = [tags](int32_t point) { return point < tags->count && tags->bvals[point] != 0; };
    if ((r.status.flags & PRESERVE_LENGTH) != 0) {
        const DATAstruct& edges = *r.status.edges;
        if (!std::all_of(edges.ivals, edges.ivals + 2 * int64_t{edges.count}, is_held))
            return false;
    }
    return (r.status.flags & PRESERVE_FACE_ANGLE) == 0 || std::all_of(r.corners.begin(), r.corners.end(), is_held);
}

void require_size(const korvale_relaxer& r, int64_t points)
{
    if (points != r.size())
        throw Refusal("points", Text() << "be " << r.size() << " like the mesh's", Text() << "there are " << points);
}

void compute(korvale_relaxer& r, std::span<const Point> points, int32_t steps)
{
    DATAstruct record = record_over(points);
    require_done(PreserveCompute(&r.status, &record, steps));
    r.status.cur_points = nullptr; // the record ends here
}

/// Whether no step has divided by a force of 0.
bool has_led_somewhere(const korvale_relaxer& r, std::span<const Point> points)
{
    if (!is_finite(r.status.energy))
        return false;
    return data::are_finite(points[0].data(), 3 * r.size()) ||
           std::none_of(points.begin(), points.end(),
                        [](const Point& p) { return is_nan(p.x) || is_nan(p.y) || is_nan(p.z); });
}

/// Steps; where that leads nowhere the points are as before, and false is returned.
bool step(korvale_relaxer& r, std::span<Point> points, int32_t steps)
{
    r.before.make_room(points.size());
    std::copy(points.begin(), points.end(), r.before.data());
    compute(r, points, steps);
    if (has_led_somewhere(r, points))
        return true;
    std::copy_n(r.before.data(), points.size(), points.begin());
    compute(r, points, 0);
    return false;
}

/// Steps between two reports: a hundredth of all, or those that take some 10 ms.
int32_t steps_to_tell(const korvale_relaxer& r, int32_t steps)
{
    constexpr int64_t kPointsToMove = 1 << 18; // in some 10 ms
    return static_cast<int32_t>(std::max<int64_t>(1, std::min<int64_t>(steps / 100, kPointsToMove / r.size())));
}

/// Steps, telling of them. Where one leads nowhere, or the work is stopped, all points are as before the first.
void step_telling(korvale_relaxer& r, std::span<Point> points, int32_t steps, const Telling& telling)
{
    r.before.make_room(points.size()); // before anything is computed
    r.start.make_room(points.size());
    std::copy(points.begin(), points.end(), r.start.data());
    const auto put_back = [&] {
        std::copy_n(r.start.data(), points.size(), points.begin());
        compute(r, points, 0);
    };
    const auto tell = [&](int32_t done) {
        if (telling.goes_on(static_cast<double>(done) / std::max(steps, 1)))
            return;
        put_back();
        throw Stop();
    };
    const int32_t few = telling.progress == nullptr ? steps : steps_to_tell(r, steps);
    if (steps == 0)
        compute(r, points, 0);
    for (int32_t done = 0, n = 0; done < steps; done += n) {
        tell(done);
        n = std::min(few, steps - done);
        if (step(r, points, n))
            continue;
        for (int32_t k = 0; k < n; ++k) // one at a time does nothing where the energy has become 0
            if (n == 1 || !step(r, points, 1))
                return put_back();
    }
    tell(std::max(steps, 1));
}

korvale_relaxation run(korvale_relaxer& r, std::span<Point> points, const korvale_run_options& options)
{
    r.before.make_room(points.size()); // before anything is computed
    compute(r, points, 0);
    double energy = r.status.energy;
    if (is_all_held(r))
        return {0, KORVALE_RUN_HELD, energy};
    for (int32_t done = 0;; ++done) {
        if (energy <= options.energy)
            return {done, KORVALE_RUN_ENERGY, energy};
        if (done >= options.steps)
            return {done, KORVALE_RUN_STEPS, energy};
        if (!step(r, points, 1))
            return {done, KORVALE_RUN_NO_FORCE, energy};
        const double drop = energy - r.status.energy;
        const bool is_stalled = !(drop > 0.0) || drop < options.least_drop * energy;
        energy = r.status.energy;
        if (options.progress != nullptr && options.progress(done + 1, energy, options.user) == 0)
            return {done + 1, KORVALE_RUN_CANCELLED, energy};
        if (is_stalled && !(energy <= options.energy))
            return {done + 1, KORVALE_RUN_STALLED, energy};
    }
}

} // namespace
} // namespace korvale::door

using namespace korvale::door;

korvale_status korvale_relaxer_new(const korvale_faces* faces, const korvale_indices* edges, korvale_relaxer** relaxer,
                                   korvale_error* error)
{
    if (relaxer != nullptr)
        *relaxer = nullptr;
    return answer(error, "korvale_relaxer_new", [&] {
        require(relaxer, "relaxer");
        Handle<korvale_relaxer> made(make_handle<korvale_relaxer>());
        take_mesh(*made, faces, edges);
        *relaxer = made.release();
    });
}

int64_t korvale_relaxer_size(const korvale_relaxer* relaxer)
{
    return relaxer == nullptr ? 0 : relaxer->size();
}

const int32_t* korvale_relaxer_edges(const korvale_relaxer* relaxer, int64_t* count)
{
    const DATAstruct* const edges = relaxer == nullptr ? nullptr : relaxer->status.edges;
    const bool is_there = edges != nullptr && edges->ivals != nullptr;
    if (count != nullptr)
        *count = is_there ? edges->count : 0;
    return is_there ? edges->ivals : nullptr;
}

korvale_status korvale_relaxer_keep(korvale_relaxer* relaxer, int32_t measure, double weight, korvale_error* error)
{
    return answer(error, "korvale_relaxer_keep", [&] {
        require(relaxer, "relaxer");
        if (!(weight > 0.0) || !is_finite(weight))
            throw Refusal("weight", "be finite and above 0", Text() << "it is " << weight);
        if (!is_measure(measure))
            throw Refusal("measure", "be lengths, angles, volume or area", Text() << "it is " << measure);
        if (relaxer->corners.empty() && (measure != KORVALE_LENGTHS || relaxer->edges.empty()))
            throw Refusal("measure", "be one that the mesh has", "the mesh has no faces or edges for it");
        if (measure == KORVALE_VOLUME)
            require_volume(*relaxer);
        require_done(PreservePreserve(&relaxer->status, measure, weight));
    });
}

korvale_status korvale_relaxer_hold(korvale_relaxer* relaxer, const uint8_t* mask, int64_t count, korvale_error* error)
{
    return answer(error, "korvale_relaxer_hold", [&] {
        require(relaxer, "relaxer");
        korvale_relaxer& r = *relaxer;
        if (mask != nullptr && count != r.size())
            throw Refusal("mask", Text() << "have one value for each of " << counted(r.size(), "point"),
                          Text() << "it has " << count);
        if (r.tags.empty())
            r.tags.resize(static_cast<size_t>(r.size()));
        for (int64_t i = 0; i < r.size(); ++i)
            r.tags[static_cast<size_t>(i)] = mask != nullptr && mask[i] != 0 ? 1 : 0;
        DATAInitialize(&r.tag_record);
        r.tag_record.type = DATA_TYPE_BYTE;
        r.tag_record.count = static_cast<int32_t>(r.size());
        r.tag_record.dim = 1;
        r.tag_record.bvals = r.tags.data();
        require_done(PreserveSetTag(&r.status, &r.tag_record));
    });
}

korvale_status korvale_relaxer_step(korvale_relaxer* relaxer, const korvale_points_out* points, int32_t steps,
                                    double* energy, korvale_progress progress, void* user, korvale_error* error)
{
    return answer(error, "korvale_relaxer_step", [&] {
        require(relaxer, "relaxer");
        PointsOut moving(points, "points", PointsOut::Use::change);
        require_size(*relaxer, moving.size());
        require_finite(moving.points(), "points");
        require_kept(*relaxer);
        if (steps < 0)
            throw Refusal("steps", "be 0 or more", Text() << "it is " << steps);
        step_telling(*relaxer, moving.points(), steps, {progress, user});
        moving.give_back();
        if (energy != nullptr)
            *energy = relaxer->status.energy;
    });
}

void korvale_run_defaults(korvale_run_options* options, size_t size)
{
    give_defaults(options, size, korvale_run_options{sizeof *options, 1000, 0.0, 0.0, nullptr, nullptr});
}

korvale_status korvale_relaxer_run(korvale_relaxer* relaxer, const korvale_points_out* points,
                                   const korvale_run_options* options, korvale_relaxation* result, korvale_error* error)
{
    return answer(error, "korvale_relaxer_run", [&] {
        require(relaxer, "relaxer");
        PointsOut moving(points, "points", PointsOut::Use::change);
        require_size(*relaxer, moving.size());
        require_finite(moving.points(), "points");
        require_kept(*relaxer);
        const korvale_relaxation came_to = run(*relaxer, moving.points(), options_of(options, korvale_run_defaults));
        moving.give_back();
        if (result != nullptr)
            *result = came_to;
    });
}

korvale_status korvale_relaxer_energy(korvale_relaxer* relaxer, const korvale_points* points, double* energy,
                                      korvale_error* error)
{
    return answer(error, "korvale_relaxer_energy", [&] {
        require(relaxer, "relaxer");
        require(energy, "energy");
        const PointsIn at(points, "points");
        require_size(*relaxer, at.size());
        compute(*relaxer, at.points(), 0);
        *energy = relaxer->status.energy;
    });
}

korvale_status korvale_relaxer_forces(korvale_relaxer* relaxer, const korvale_points* points, double* forces,
                                      korvale_error* error)
{
    return answer(error, "korvale_relaxer_forces", [&] {
        require(relaxer, "relaxer");
        require(forces, "forces");
        const PointsIn at(points, "points");
        require_size(*relaxer, at.size());
        DATAstruct record = record_over(at.points()), copy;
        DATAInitialize(&copy);
        require_done(PreserveGetForce(&relaxer->status, &record, &copy));
        relaxer->status.cur_points = nullptr; // the record ends here
        if (copy.dvals == nullptr)
            throw std::bad_alloc();
        std::copy_n(copy.dvals, 3 * at.size(), forces);
        DATADispose(&copy);
    });
}

void* korvale_relaxer_record(korvale_relaxer* relaxer)
{
    return relaxer == nullptr ? nullptr : &relaxer->status;
}

void korvale_relaxer_free(korvale_relaxer* relaxer)
{
    free_handle(relaxer);
}
