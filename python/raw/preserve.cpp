// Relaxation of meshes.
#include <cstdlib>

#include "bind.h"

namespace korvale::raw {
namespace {

using TreeHeld = std::shared_ptr<Tree>;
using Field = DATAstruct* PreserveStatus::*;

constexpr Field kConnectivity[] = {&PreserveStatus::face_starts,      &PreserveStatus::point_edge_count,
                                   &PreserveStatus::point_edge_start, &PreserveStatus::point_edges,
                                   &PreserveStatus::point_faces,      &PreserveStatus::force};

bool is_points(const DATAstruct* d)
{
    return d != nullptr && d->type == DATA_TYPE_DOUBLE && d->dim == 3 && d->count >= 0;
}

/// A `PreserveStatus` and the arrays it borrows.
class Mesh : public Whole {
public:
    PreserveStatus status = {};
    TreeHeld points, edges, face_sizes, face_points, tags, masses, cur_points;
    int32_t point_count = -1; ///< when the mesh was taken over; the arrays of the status are made for it

    ~Mesh() override { dispose(); }

    void dispose()
    {
        parts_die();
        if (status.points != nullptr)
            PreserveDispose(&status);
        status = {};
        for (TreeHeld* const borrowed : {&points, &edges, &face_sizes, &face_points, &tags, &masses, &cur_points})
            borrowed->reset();
        point_count = -1;
    }

    void look(Call& call) override
    {
        const std::pair<const TreeHeld&, const char*> borrowed[] = {
            {points, "points"}, {edges, "edges"},   {face_sizes, "face_sizes"}, {face_points, "face_points"},
            {tags, "tags"},     {masses, "masses"}, {cur_points, "cur_points"}};
        for (const auto& [array, name] : borrowed)
            call.take_optional(array, name, Use::read);
        if (points == nullptr)
            return;
        if (!is_points(points->record) || points->record->count != point_count)
            call.refuse("points has changed its kind or its size since PreserveInitialize");
        if (cur_points != nullptr && (!is_points(cur_points->record) || cur_points->record->count != point_count))
            call.refuse("cur_points has changed its kind or its size");
        if (tags != nullptr && (tags->record->type != DATA_TYPE_BYTE || tags->record->count != point_count))
            call.refuse("tags has changed its kind or its size");
        look_at_connectivity(call);
    }

    int initialize(Call& call, const TreeHeld& p, const TreeHeld& e, const TreeHeld& sizes, const TreeHeld& corners)
    {
        for (const TreeHeld& lent : {p, e, sizes, corners})
            borrowable(lent, "PreserveInitialize");
        DATAstruct *const points_in = call.take(p, "points", Use::read), *const edges_in =
                                                                             call.take_optional(e, "edges", Use::read);
        DATAstruct* const sizes_in = call.take_optional(sizes, "face_sizes", Use::read);
        DATAstruct* const corners_in = call.take_optional(corners, "face_points", Use::read);
        for (const auto& [array, name] : {std::pair(e, "edges"), {sizes, "face_sizes"}, {corners, "face_points"}})
            if (array != nullptr && array->record->type != DATA_TYPE_INT && array->record->count > 0)
                call.refuse(std::string(name) + " has to be of kind int");
        if (e != nullptr && e->record->count > 0 && e->record->dim != 2)
            call.refuse("edges has to be of dim 2");
        const PreserveStatus before = status;
        const int result =
            call.run([&] { return PreserveInitialize(&status, points_in, edges_in, sizes_in, corners_in); });
        if (result != 1)
            return result;
        for (const Field field : kConnectivity) // what the library has replaced without releasing it
            if (before.*field != nullptr && before.*field != status.*field) {
                part_dies(before.*field);
                DATADispose(before.*field);
                std::free(before.*field);
            }
        points = p;
        point_count = p->record->count;
        edges = status.edges == nullptr ? nullptr : status.edges == edges_in ? e : Tree::of(status.edges);
        face_sizes = status.face_sizes == nullptr ? nullptr : sizes;
        face_points = status.face_points == nullptr ? nullptr : corners;
        tags.reset();
        masses.reset();
        if (cur_points != nullptr && cur_points->record->count != point_count) {
            cur_points.reset();
            status.cur_points = nullptr;
        }
        return result;
    }

private:
    /// Indices may have been written since the library has looked at them.
    void look_at_connectivity(const Call& call) const
    {
        const auto within = [&](const TreeHeld& array, const char* name) {
            if (array == nullptr || array->record->type != DATA_TYPE_INT || array->record->ivals == nullptr)
                return;
            const DATAstruct& r = *array->record;
            const int64_t n = r.count < 0 || r.dim < 0 ? 0 : int64_t{r.count} * r.dim;
            for (int64_t i = 0; i < n; ++i)
                if (r.ivals[i] < 0 || r.ivals[i] >= point_count)
                    call.refuse(std::string(name) + " names a point that does not exist");
        };
        within(edges, "edges");
        within(face_points, "face_points");
        if (face_sizes == nullptr || face_points == nullptr || status.face_starts == nullptr ||
            face_sizes->record->ivals == nullptr || status.face_starts->ivals == nullptr)
            return;
        const DATAstruct &sizes = *face_sizes->record, &starts = *status.face_starts;
        if (sizes.count > starts.count)
            call.refuse("face_sizes has grown since PreserveInitialize");
        for (int32_t f = 0; f < sizes.count; ++f)
            if (sizes.ivals[f] > 0 &&
                (starts.ivals[f] < 0 || int64_t{starts.ivals[f]} + sizes.ivals[f] > face_points->record->count))
                call.refuse("face_sizes has changed since PreserveInitialize");
        if (edges != nullptr && status.point_edges != nullptr &&
            2 * int64_t{edges->record->count} > int64_t{status.point_edges->count} * status.point_edges->dim)
            call.refuse("edges has grown since PreserveInitialize");
    }
};

} // namespace

template <>
struct ObjectOf<PreserveStatus> : std::type_identity<Mesh> {
};

namespace {

using R = PreserveStatus;

void add_status(py::module_& m)
{
    py::class_<Mesh, Whole, std::shared_ptr<Mesh>> type(m, "PreserveStatus", described("PreserveStatus"));
    type.def(py::init<>())
        .def_property_readonly(
            "flags", [](const Mesh& s) { return s.status.flags; }, "Terms switched on.")
        .def_property_readonly(
            "weights",
            [](const py::object& self) {
                return Array({4}, {sizeof(double)}, self.cast<Mesh&>().status.weights, self);
            },
            "The weights [4] of length, face angle, volume, area; a view.");
    def_number(type, FIELD(R, ovolume), "Six times the enclosed volume, as it was.");
    def_number(type, FIELD(R, oarea), "Twice the surface area, as it was.");
    def_number(type, FIELD(R, nvolume), "Six times the enclosed volume, as it is.");
    def_number(type, FIELD(R, narea), "Twice the surface area, as it is.");
    def_number(type, FIELD(R, energy), "Sum over the terms of weight times squared deviation.");
    type.def_readonly(FIELD(Mesh, points))
        .def_readonly(FIELD(Mesh, edges))
        .def_readonly(FIELD(Mesh, face_sizes))
        .def_readonly(FIELD(Mesh, face_points))
        .def_readonly(FIELD(Mesh, tags))
        .def_readonly(FIELD(Mesh, masses))
        .def_readonly(FIELD(Mesh, cur_points));
    def_part(type, FIELD(R, face_starts), true);
    def_part(type, FIELD(R, point_edge_count), true);
    def_part(type, FIELD(R, point_edge_start), true);
    def_part(type, FIELD(R, point_edges), true);
    def_part(type, FIELD(R, point_faces), true);
    def_part(type, FIELD(R, olen), false);
    def_part(type, FIELD(R, ofang), false);
    def_part(type, FIELD(R, nlen), false);
    def_part(type, FIELD(R, nfang), false);
    def_part(type, FIELD(R, force), false);
}

/// Functions that make the status borrow an array, which is kept where `field` says.
void def_loan(py::module_& m, const char* name, int (*lend)(PreserveStatus*, DATAstruct*), const char* argument,
              TreeHeld Mesh::*field)
{
    def_work<Mesh&, const TreeHeld&>(
        m, name,
        [=](Call& call, Mesh& status, const TreeHeld& array) {
            const int result = lend(&status.status, call.take(borrowable(array, call.function()), argument, Use::read));
            if (result == 1)
                status.*field = array;
            return result;
        },
        status("status"), plain(argument));
}

int initialize(Call& call, Mesh& status, const TreeHeld& points, const TreeHeld& edges, const TreeHeld& face_sizes,
               const TreeHeld& face_points)
{
    return status.initialize(call, points, edges, face_sizes, face_points);
}

int compute(Call& call, Mesh& status, const TreeHeld& points, int iterations)
{
    DATAstruct* const moved = call.take(borrowable(points, call.function()), "points", Use::write);
    const int result = call.run([&] { return PreserveCompute(&status.status, moved, iterations); });
    if (result == 1)
        status.cur_points = points;
    return result;
}

int get_force(Call& call, Mesh& status, const TreeHeld& points, const TreeHeld& force_out)
{
    DATAstruct* const looked_at = call.take(borrowable(points, call.function()), "points", Use::read);
    DATAstruct* const out = call.take_optional(force_out, "force_out", Use::shape);
    const int result = call.run([&] { return PreserveGetForce(&status.status, looked_at, out); });
    if (result == 1)
        status.cur_points = points;
    return result;
}

} // namespace

void add_preserve(py::module_& m)
{
    add_status(m);
    def(m, "PreserveInitialize", initialize, in_any_state("status"), plain("points"), plain("edges", optional),
        plain("face_sizes", optional), plain("face_points", optional));
    def(m, "PreserveDispose", &Mesh::dispose, in_any_state("status"));
    def_loan(m, NAMED(PreserveSetTag), FIELD(Mesh, tags));
    def_loan(m, NAMED(PreserveSetMass), FIELD(Mesh, masses));
    def_loan(m, NAMED(PreserveReInitialize), FIELD(Mesh, points));
    def_unlocked(m, NAMED(PreservePreserve), moving("status"), plain("which"), plain("weight"));
    def_unlocked(m, NAMED(PreserveInitOlen), moving("status"));
    def_unlocked(m, NAMED(PreserveInitOfang), moving("status"));
    def_unlocked(m, NAMED(PreserveInitOvolume), status("status"));
    def_unlocked(m, NAMED(PreserveInitOarea), status("status"));
    def_unlocked(m, NAMED(PreserveFindNlen), status("status"));
    def_unlocked(m, NAMED(PreserveFindNfang), status("status"));
    def_unlocked(m, NAMED(PreserveFindNvolume), status("status"));
    def_unlocked(m, NAMED(PreserveFindNarea), status("status"));
    def_unlocked(m, NAMED(PreserveFindEdgeLengthForce), status("status"));
    def_unlocked(m, NAMED(PreserveFindFaceAngleForce), status("status"));
    def_unlocked(m, NAMED(PreserveFindVolumeForce), status("status"));
    def_unlocked(m, NAMED(PreserveFindSurfaceAreaForce), status("status"));
    def_unlocked(m, NAMED(PreserveFindEnergy), status("status"));
    def_unlocked(m, NAMED(PreserveFindForce), status("status"));
    def(m, "PreserveCompute", compute, status("status"), plain("points"), plain("iterations"));
    def(m, "PreserveGetForce", get_force, status("status"), plain("points"), plain("force_out", optional));
}

} // namespace korvale::raw
