// Relaxation of meshes.
#include <cstdlib>

#include "records.h"

namespace korvale::raw {
namespace {

using Held = std::shared_ptr<Tree>;
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
    Held points, edges, face_sizes, face_points, tags, masses, cur_points;
    int32_t point_count = -1; ///< when the mesh was taken over; the arrays of the status are made for it

    ~Mesh() override { dispose(); }

    void dispose()
    {
        parts_die();
        if (status.points != nullptr)
            PreserveDispose(&status);
        status = {};
        for (Held* const borrowed : {&points, &edges, &face_sizes, &face_points, &tags, &masses, &cur_points})
            borrowed->reset();
        point_count = -1;
    }

    /// Looks at all arrays that the status borrows before the library does.
    void use_borrowed(Call& call)
    {
        const std::pair<const Held&, const char*> borrowed[] = {
            {points, "points"}, {edges, "edges"},   {face_sizes, "face_sizes"}, {face_points, "face_points"},
            {tags, "tags"},     {masses, "masses"}, {cur_points, "cur_points"}};
        for (const auto& [array, name] : borrowed)
            call.read_optional(array, name);
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

    /// Before the library may free or move arrays of the status.
    void stand_apart() { parts_stand_apart(); }

    int initialize(Call& call, const Held& p, const Held& e, const Held& sizes, const Held& corners)
    {
        for (const Held& lent : {p, e, sizes, corners})
            borrowable(lent, "PreserveInitialize");
        DATAstruct *const points_in = call.read(p, "points"), *const edges_in = call.read_optional(e, "edges");
        DATAstruct* const sizes_in = call.read_optional(sizes, "face_sizes");
        DATAstruct* const corners_in = call.read_optional(corners, "face_points");
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
        const auto within = [&](const Held& array, const char* name) {
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

using MeshHeld = std::shared_ptr<Mesh>;

void add_status(py::module_& m)
{
    py::class_<Mesh, Whole, MeshHeld> type(m, "PreserveStatus", described("PreserveStatus"));
    type.def(py::init<>())
        .def_property_readonly(
            "flags", [](const Mesh& s) { return s.status.flags; }, "Terms switched on.")
        .def_property_readonly(
            "weights",
            [](const py::object& self) {
                return py::array_t<double>({4}, {sizeof(double)}, self.cast<Mesh&>().status.weights, self);
            },
            "The weights [4] of length, face angle, volume, area; a view.");
    const auto number = [&type](const char* name, double PreserveStatus::*field, const char* text) {
        type.def_property(
            name, [field](const Mesh& s) { return s.status.*field; },
            [field](Mesh& s, double value) { s.status.*field = value; }, text);
    };
    number("ovolume", &PreserveStatus::ovolume, "Six times the enclosed volume, as it was.");
    number("oarea", &PreserveStatus::oarea, "Twice the surface area, as it was.");
    number("nvolume", &PreserveStatus::nvolume, "Six times the enclosed volume, as it is.");
    number("narea", &PreserveStatus::narea, "Twice the surface area, as it is.");
    number("energy", &PreserveStatus::energy, "Sum over the terms of weight times squared deviation.");
    const auto borrowed = [&type](const char* name, Held Mesh::*field) {
        type.def_property_readonly(name, [field](const Mesh& s) { return s.*field; });
    };
    borrowed("points", &Mesh::points);
    borrowed("edges", &Mesh::edges);
    borrowed("face_sizes", &Mesh::face_sizes);
    borrowed("face_points", &Mesh::face_points);
    borrowed("tags", &Mesh::tags);
    borrowed("masses", &Mesh::masses);
    borrowed("cur_points", &Mesh::cur_points);
    const auto owned = [&type](const char* name, Field field, bool is_locked) {
        type.def_property_readonly(name, [field, is_locked](Mesh& s) { return s.part(s.status.*field, is_locked); });
    };
    owned("face_starts", &PreserveStatus::face_starts, true);
    owned("point_edge_count", &PreserveStatus::point_edge_count, true);
    owned("point_edge_start", &PreserveStatus::point_edge_start, true);
    owned("point_edges", &PreserveStatus::point_edges, true);
    owned("point_faces", &PreserveStatus::point_faces, true);
    owned("olen", &PreserveStatus::olen, false);
    owned("ofang", &PreserveStatus::ofang, false);
    owned("nlen", &PreserveStatus::nlen, false);
    owned("nfang", &PreserveStatus::nfang, false);
    owned("force", &PreserveStatus::force, false);
}

void add_setting_up(py::module_& m)
{
    m.def(
        "PreserveInitialize",
        [](const MeshHeld& status, const Held& points, const Held& edges, const Held& face_sizes,
           const Held& face_points) {
            Call call("PreserveInitialize");
            call.use(status, "status");
            return status->initialize(call, points, edges, face_sizes, face_points);
        },
        py::arg("status"), py::arg("points"), py::arg("edges") = py::none(), py::arg("face_sizes") = py::none(),
        py::arg("face_points") = py::none(), described("PreserveInitialize"));
    m.def(
        "PreserveDispose",
        [](const MeshHeld& status) {
            Call call("PreserveDispose");
            call.use(status, "status");
            status->dispose();
        },
        py::arg("status"), described("PreserveDispose"));
    const auto def_lend = [&m](const char* name, int (*function)(PreserveStatus*, DATAstruct*), const char* argument,
                               Held Mesh::*field) {
        m.def(
            name,
            [=](const MeshHeld& status, const Held& array) {
                Call call(name);
                call.use(status, "status");
                status->use_borrowed(call);
                DATAstruct* const lent = call.read(borrowable(array, name), argument);
                const int result = function(&status->status, lent);
                if (result == 1)
                    (*status).*field = array;
                return result;
            },
            py::arg("status"), py::arg(argument), described(name));
    };
    def_lend("PreserveSetTag", PreserveSetTag, "tags", &Mesh::tags);
    def_lend("PreserveSetMass", PreserveSetMass, "masses", &Mesh::masses);
    def_lend("PreserveReInitialize", PreserveReInitialize, "points", &Mesh::points);
    m.def(
        "PreservePreserve",
        [](const MeshHeld& status, int which, double weight) {
            Call call("PreservePreserve");
            call.use(status, "status");
            status->use_borrowed(call);
            status->stand_apart();
            return call.run([&] { return PreservePreserve(&status->status, which, weight); });
        },
        py::arg("status"), py::arg("which"), py::arg("weight"), described("PreservePreserve"));
}

} // namespace

void add_preserve(py::module_& m)
{
    add_status(m);
    add_setting_up(m);
    const auto def_step = [&m](const char* name, int (*function)(PreserveStatus*), bool may_allocate = false) {
        m.def(
            name,
            [name, function, may_allocate](const MeshHeld& status) {
                Call call(name);
                call.use(status, "status");
                status->use_borrowed(call);
                if (may_allocate)
                    status->stand_apart();
                return call.run([&] { return function(&status->status); });
            },
            py::arg("status"), described(name));
    };
    def_step("PreserveInitOlen", PreserveInitOlen, true);
    def_step("PreserveInitOfang", PreserveInitOfang, true);
    def_step("PreserveInitOvolume", PreserveInitOvolume);
    def_step("PreserveInitOarea", PreserveInitOarea);
    def_step("PreserveFindNlen", PreserveFindNlen);
    def_step("PreserveFindNfang", PreserveFindNfang);
    def_step("PreserveFindNvolume", PreserveFindNvolume);
    def_step("PreserveFindNarea", PreserveFindNarea);
    def_step("PreserveFindEdgeLengthForce", PreserveFindEdgeLengthForce);
    def_step("PreserveFindFaceAngleForce", PreserveFindFaceAngleForce);
    def_step("PreserveFindVolumeForce", PreserveFindVolumeForce);
    def_step("PreserveFindSurfaceAreaForce", PreserveFindSurfaceAreaForce);
    def_step("PreserveFindEnergy", PreserveFindEnergy);
    def_step("PreserveFindForce", PreserveFindForce);
    m.def(
        "PreserveCompute",
        [](const MeshHeld& status, const Held& points, int iterations) {
            Call call("PreserveCompute");
            call.use(status, "status");
            status->use_borrowed(call);
            DATAstruct* const moved = call.write(borrowable(points, "PreserveCompute"), "points");
            const int result = call.run([&] { return PreserveCompute(&status->status, moved, iterations); });
            if (result == 1)
                status->cur_points = points;
            return result;
        },
        py::arg("status"), py::arg("points"), py::arg("iterations"), described("PreserveCompute"));
    m.def(
        "PreserveGetForce",
        [](const MeshHeld& status, const Held& points, const Held& force_out) {
            Call call("PreserveGetForce");
            call.use(status, "status");
            status->use_borrowed(call);
            DATAstruct* const looked_at = call.read(borrowable(points, "PreserveGetForce"), "points");
            DATAstruct* const out = force_out == nullptr ? nullptr : call.shape(force_out, "force_out");
            const int result = call.run([&] { return PreserveGetForce(&status->status, looked_at, out); });
            if (result == 1)
                status->cur_points = points;
            return result;
        },
        py::arg("status"), py::arg("points"), py::arg("force_out") = py::none(), described("PreserveGetForce"));
}

} // namespace korvale::raw
