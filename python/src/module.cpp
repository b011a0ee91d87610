// The compiled half of the Python package: thin doors to korvale.hpp over the memory of NumPy's arrays. The package's
// Python files convert unusual arguments, document and check; what is quick and large happens here.
#include "support.h"

namespace korvale::python {
namespace {

/// A sentence of the C++ face as Python would say it.
std::string in_python(std::string text)
{
    const auto replace = [&](std::string_view from, std::string_view to) {
        for (std::size_t at = 0; (at = text.find(from, at)) != std::string::npos; at += to.size())
            text.replace(at, from.size(), to);
    };
    replace("options.", "");
    replace("columns.", "");
    replace("::", ".");
    return text;
}

void set_error(const char* name, const Error& error, const py::tuple& more)
{
    const py::object type = py::module_::import("korvale._errors").attr(name);
    const py::object function = py::str(in_python(error.function()));
    const py::object argument = py::str(in_python(error.argument()));
    PyErr_SetObject(type.ptr(), type(in_python(error.what()), function, argument, *more).ptr());
}

void translate(std::exception_ptr thrown)
{
    try {
        if (thrown)
            std::rethrow_exception(thrown);
    } catch (const EquationError& error) {
        set_error("EquationError", error, py::make_tuple(error.place(), error.word()));
    } catch (const Error& error) {
        set_error("Error", error, py::make_tuple());
    }
}

} // namespace
} // namespace korvale::python

PYBIND11_MODULE(_korvale, m)
{
    using namespace korvale::python;
    py::options options;
    options.disable_function_signatures();
    m.doc() = "The compiled half of korvale; use the package.";
    py::register_local_exception_translator(&translate);
    m.def("place_of", [](py::handle points) { // for tests: the address that points are read at
        return reinterpret_cast<std::uintptr_t>(PointsIn(points, "place_of", "points").view().data());
    });
    bind_offset(m);
    bind_band(m);
    bind_mesh(m);
    bind_paths(m);
    bind_scatter(m);
    bind_rays(m);
    bind_equations(m);
    bind_relaxer(m);
    bind_math(m);
    bind_arrays(m);
}
