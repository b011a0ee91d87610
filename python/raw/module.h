#pragma once

#include <pybind11/pybind11.h>

// What the module is made of, a file for each part.
namespace korvale::raw {

namespace py = pybind11;

/// The comment that the headers have for a function or record.
const char* described(const char* name);

void add_records(py::module_& m);
void add_frame(py::module_& m);
void add_math(py::module_& m);
void add_arrays(py::module_& m);
void add_path(py::module_& m);
void add_border(py::module_& m);
void add_equation(py::module_& m);
void add_preserve(py::module_& m);
void add_ray(py::module_& m);
void add_exchange(py::module_& m);

} // namespace korvale::raw
