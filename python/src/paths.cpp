// Outlines laid flat, and frames along paths.
#include "support.h"

namespace korvale::python {
namespace {

/// From so many points on each takes 20 microseconds or more.
constexpr std::size_t kLongOutline = 500, kLongPath = 500;

py::array array_of(const Transform& transform)
{
    py::array_t<double> matrix({4, 4});
    std::ranges::copy(transform.rows(), matrix.mutable_data());
    return matrix;
}

py::tuple flatten_of(py::handle path, py::handle closed, py::handle by_extremes)
{
    const PointsIn points(path, "flatten", "path");
    const FlattenOptions options = {flag_of(closed, "flatten", "closed"),
                                    flag_of(by_extremes, "flatten", "by_extremes")};
    const PointView view = options.closed ? points.outline() : points.view();
    Flattening way;
    {
        const Unlocked unlocked(view.size() >= kLongOutline);
        way = flatten(view, options);
    }
    return py::make_tuple(array_of(way.to_plane), array_of(way.from_plane));
}

py::array frames_of(py::handle path, py::handle closed)
{
    const PointsIn points(path, "frames", "path");
    const bool is_closed = flag_of(closed, "frames", "closed");
    const PointView view = is_closed ? points.outline() : points.view();
    py::array_t<double> output({static_cast<py::ssize_t>(view.size()), py::ssize_t{4}, py::ssize_t{4}});
    const std::span<Transform> frame(reinterpret_cast<Transform*>(output.mutable_data()), view.size());
    const Unlocked unlocked(view.size() >= kLongPath);
    frames(view, frame, is_closed);
    return output;
}

} // namespace

void bind_paths(py::module_& m)
{
    m.def("flatten", &flatten_of);
    m.def("frames", &frames_of);
}

} // namespace korvale::python
