#pragma once

#include <vector>

#include <pybind11/numpy.h>

// Vectors, matrices and other plain numbers, as NumPy has them.
namespace korvale::raw {

namespace py = pybind11;

/// Numbers from anything that NumPy takes, exactly `count` of them.
py::array_t<double> numbers(const py::handle& given, py::ssize_t count, const char* function, const char* argument);

/// Numbers that the library writes: `given` itself, which has to be an array of doubles of exactly that shape, or, for
/// None, a new one of zeros.
py::array_t<double> place(const py::handle& given, const std::vector<py::ssize_t>& shape, const char* function,
                          const char* argument);

} // namespace korvale::raw
