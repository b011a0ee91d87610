// Meshes that remember their shape.
#include "support.h"

namespace korvale::python {
namespace {

using Doubles = py::array_t<double, py::array::c_style>;
using Ints = py::array_t<std::int32_t, py::array::c_style>;

/// From so many points on one step takes 20 microseconds or more.
constexpr std::size_t kManyPoints = 64;

struct Mesh {
    explicit Mesh(Relaxer made) : relaxer(std::move(made)) {}

    bool is_long(int steps = 1) const
    {
        return relaxer.size() * static_cast<std::size_t>(1 + steps) >= 2 * kManyPoints;
    }

    Relaxer relaxer;
    Turns turns;
};

std::span<const std::int32_t> numbers(const Ints& array)
{
    return {array.data(), static_cast<std::size_t>(array.size())};
}

PointView points_in(const Doubles& points)
{
    return PointView::at(points.data(), static_cast<std::size_t>(points.size()) / 3);
}

PointSpan points_to_move(py::array& points)
{
    return PointSpan::at(static_cast<double*>(points.mutable_data()), static_cast<std::size_t>(points.size()) / 3);
}

std::unique_ptr<Mesh> of_faces(const Doubles& vertices, const Ints& sizes, const Ints& corners)
{
    const py::gil_scoped_release unlocked;
    return std::make_unique<Mesh>(Relaxer(points_in(vertices), numbers(sizes), numbers(corners)));
}

std::unique_ptr<Mesh> of_edges(const Doubles& vertices, const Ints& edges)
{
    using Edge = std::array<std::int32_t, 2>;
    const std::span<const Edge> pairs(reinterpret_cast<const Edge*>(edges.data()),
                                      static_cast<std::size_t>(edges.size()) / 2);
    const py::gil_scoped_release unlocked;
    return std::make_unique<Mesh>(Relaxer::of_edges(points_in(vertices), pairs));
}

/// A view that cannot be written: the relaxer goes by them.
py::array edges_of(py::object self)
{
    const auto edges = self.cast<Mesh&>().relaxer.edges();
    py::array view = view_of(const_cast<std::int32_t*>(edges.empty() ? nullptr : edges[0].data()),
                             {static_cast<py::ssize_t>(edges.size()), 2}, self);
    view.attr("flags").attr("writeable") = false;
    return view;
}

void keep(Mesh& mesh, const std::string& measure, double weight)
{
    const Unlocked unlocked(mesh.is_long());
    const Turns::Turn turn(mesh.turns, "Relaxer.keep", mesh.is_long());
    mesh.relaxer.keep(measure, weight);
}

void hold(Mesh& mesh, const py::array_t<bool, py::array::c_style>& mask)
{
    const std::span<const bool> held(mask.data(), static_cast<std::size_t>(mask.size()));
    const Unlocked unlocked(mesh.is_long());
    const Turns::Turn turn(mesh.turns, "Relaxer.hold", mesh.is_long());
    mesh.relaxer.hold(held);
}

/// `report` is told of the thousandths done.
double step(Mesh& mesh, py::array points, int steps, py::handle report)
{
    const PointSpan moving = points_to_move(points);
    const bool is_long = mesh.is_long(steps);
    const Unlocked unlocked(is_long);
    const Turns::Turn turn(mesh.turns, "Relaxer.step", is_long);
    return mesh.relaxer.step(moving, steps, is_long ? Progress(Signals(report)) : Progress());
}

/// Returns (steps, energy, why). What `progress` raises stops the run and is raised again; so is what a signal raises,
/// such as an interrupt from the keyboard, which is looked for now and then.
py::tuple run(Mesh& mesh, py::array points, int steps, double energy, double least_drop, const py::object& progress)
{
    using Clock = std::chrono::steady_clock;
    constexpr auto kPatience = std::chrono::milliseconds(100);
    const PointSpan moving = points_to_move(points);
    std::optional<py::error_already_set> raised;
    const auto tell = [&](int done, double now) {
        const py::gil_scoped_acquire locked;
        try {
            if (PyErr_CheckSignals() != 0)
                throw py::error_already_set();
            return progress.is_none() || progress(done, now).cast<bool>();
        } catch (py::error_already_set& error) {
            raised.emplace(std::move(error));
            return false;
        }
    };
    auto looked = Clock::now();
    const RunOptions options = {steps, energy, least_drop, [&](int done, double now) {
                                    if (progress.is_none() && Clock::now() - looked < kPatience)
                                        return true;
                                    const bool goes_on = tell(done, now);
                                    looked = Clock::now();
                                    return goes_on;
                                }};
    Relaxation result;
    {
        const bool is_long = mesh.is_long(steps);
        const Unlocked unlocked(is_long);
        const Turns::Turn turn(mesh.turns, "Relaxer.run", is_long);
        result = mesh.relaxer.run(moving, options);
    }
    if (raised)
        throw std::move(*raised);
    constexpr const char* kReasons[] = {"steps", "energy", "stalled", "cancelled", "no_force", "held"};
    return py::make_tuple(result.steps, result.energy, kReasons[static_cast<int>(result.stop)]);
}

double energy_at(Mesh& mesh, const Doubles& points)
{
    const PointView view = points_in(points);
    const Unlocked unlocked(mesh.is_long());
    const Turns::Turn turn(mesh.turns, "Relaxer.energy", mesh.is_long());
    return mesh.relaxer.energy(view);
}

py::array forces_at(Mesh& mesh, const Doubles& points)
{
    Points forces;
    {
        const PointView view = points_in(points);
        const Unlocked unlocked(mesh.is_long());
        const Turns::Turn turn(mesh.turns, "Relaxer.forces", mesh.is_long());
        forces = mesh.relaxer.forces(view);
    }
    const auto n = static_cast<py::ssize_t>(forces.size());
    return adopted(forces.release(), {n, 3});
}

} // namespace

void bind_relaxer(py::module_& m)
{
    py::class_<Mesh>(m, "RelaxerMesh")
        .def_static("of_faces", &of_faces)
        .def_static("of_edges", &of_edges)
        .def("__len__", [](const Mesh& self) { return self.relaxer.size(); })
        .def_property_readonly("edges", &edges_of)
        .def("keep", &keep)
        .def("hold", &hold)
        .def("step", &step)
        .def("run", &run)
        .def("energy", &energy_at)
        .def("forces", &forces_at);
}

} // namespace korvale::python
