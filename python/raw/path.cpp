// Flattening transforms and frames along a polyline.
#include "records.h"

namespace korvale::raw {
namespace {

using Array = py::array_t<double>;
using Matrix = double (*)[4];

Matrix matrix(Array& array)
{
    return reinterpret_cast<Matrix>(array.mutable_data());
}

template <class Object, class R>
void def_frames(py::module_& m, const char* name, void (*function)(R*, int, double (*)[4][4]))
{
    m.def(
        name,
        [name, function](const std::shared_ptr<Object>& path, int closed, const py::object& frames) {
            Call call(name);
            R* const points = call.read(path, "path");
            Array result = place(frames, {points->count < 0 ? 0 : points->count, 4, 4}, name, "frames");
            auto* const first = reinterpret_cast<double(*)[4][4]>(result.mutable_data());
            call.run([&] { function(points, closed, first); });
            return result;
        },
        py::arg("path"), py::arg("closed"), py::arg("frames") = py::none(), described(name));
}

} // namespace

void add_path(py::module_& m)
{
    m.def(
        "data_to_xy_xfms",
        [](const std::shared_ptr<Table>& path, const py::object& xfm, const py::object& reverse, int closed) {
            Call call("data_to_xy_xfms");
            Data* const points = call.read_optional(path, "path");
            Array there = place(xfm, {4, 4}, "data_to_xy_xfms", "xfm");
            Array back = place(reverse, {4, 4}, "data_to_xy_xfms", "reverse");
            const Matrix t = matrix(there), b = matrix(back);
            const int status = call.run([&] { return data_to_xy_xfms(points, t, b, closed); });
            return py::make_tuple(status, there, back);
        },
        py::arg("path"), py::arg("xfm") = py::none(), py::arg("reverse") = py::none(), py::arg("closed") = 1,
        described("data_to_xy_xfms"));
    m.def(
        "DATA_to_xy_xfms",
        [](const std::shared_ptr<Tree>& path, const py::object& xfm, const py::object& reverse, int closed) {
            Call call("DATA_to_xy_xfms");
            DATAstruct* const points = call.read_optional(path, "path");
            Array there = place(xfm, {4, 4}, "DATA_to_xy_xfms", "xfm");
            Array back = place(reverse, {4, 4}, "DATA_to_xy_xfms", "reverse");
            const Matrix t = matrix(there), b = matrix(back);
            call.run([&] { DATA_to_xy_xfms(points, t, b, closed); });
            return py::make_tuple(there, back);
        },
        py::arg("path"), py::arg("xfm") = py::none(), py::arg("reverse") = py::none(), py::arg("closed") = 1,
        described("DATA_to_xy_xfms"));
    def_frames<Table>(m, "path2xfm", path2xfm);
    def_frames<Tree>(m, "PATH2xfm", PATH2xfm);
}

} // namespace korvale::raw
