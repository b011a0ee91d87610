#include "numbers.h"

#include <algorithm>
#include <cstring>

namespace korvale::raw {

namespace {

std::string shape_of(const py::array& array)
{
    return py::str(array.attr("shape")).cast<std::string>();
}

} // namespace

py::array_t<double> numbers(const py::handle& given, py::ssize_t count, const char* function, const char* argument)
{
    const auto array = py::array_t<double, py::array::c_style | py::array::forcecast>::ensure(given);
    if (!array) {
        PyErr_Clear();
        throw py::type_error(std::string(function) + ": " + argument + " has to be " + std::to_string(count) +
                             " numbers");
    }
    if (array.size() != count)
        throw py::value_error(std::string(function) + ": " + argument + " has to be " + std::to_string(count) +
                              " numbers, not of shape " + shape_of(array));
    return array;
}

py::array_t<double> place(const py::handle& given, const std::vector<py::ssize_t>& shape, const char* function,
                          const char* argument)
{
    if (given.is_none()) {
        py::array_t<double> made(shape);
        std::memset(made.mutable_data(), 0, static_cast<size_t>(made.nbytes()));
        return made;
    }
    const std::string named = std::string(function) + ": " + argument;
    if (!py::isinstance<py::array>(given) || !py::isinstance<py::array_t<double>>(given))
        throw py::type_error(named + " has to be an array of float64");
    const auto array = py::reinterpret_borrow<py::array>(given);
    py::ssize_t size = 1;
    for (const py::ssize_t n : shape)
        size *= n;
    const bool fits = array.ndim() == static_cast<py::ssize_t>(shape.size())
                          ? std::equal(shape.begin(), shape.end(), array.shape())
                          : array.ndim() == 1 && array.size() == size;
    if (!fits)
        throw py::value_error(named + " has to hold " + std::to_string(size) + " numbers, not shape " +
                              shape_of(array));
    if ((array.flags() & py::array::c_style) == 0 || !array.writeable())
        throw py::value_error(named + " has to be contiguous and writable");
    return py::reinterpret_borrow<py::array_t<double>>(given);
}

} // namespace korvale::raw
