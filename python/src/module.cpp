// The Python module `korvale._korvale`: arrays whose memory NumPy sees without a copy, the border sweep, equations.
//
// What the library reports by -1 becomes a ValueError; shapes are checked before the library is called.
#include <cstdlib>
#include <cstring>
#include <initializer_list>
#include <memory>
#include <new>
#include <string>
#include <vector>

#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>
#include <pybind11/stl.h>

#include "korvale.h"

namespace py = pybind11;

namespace {

using Doubles = py::array_t<double, py::array::c_style | py::array::forcecast>;

void require(bool holds, const char* message)
{
    if (!holds)
        throw py::value_error(message);
}

/// Fills an empty record with a copy of `values`, [n] or [n][dim].
void fill(DATAstruct& record, const Doubles& values)
{
    require(values.ndim() == 1 || values.ndim() == 2, "an array has one or two dimensions");
    require(values.size() > 0 && values.size() <= INT32_MAX, "an array has 1 to 2147483647 numbers");
    record.count = static_cast<int32_t>(values.shape(0));
    record.dim = values.ndim() == 2 ? static_cast<int32_t>(values.shape(1)) : 1;
    if (DATAAllocate(&record) != 1)
        throw std::bad_alloc();
    std::memcpy(record.dvals, values.data(), static_cast<size_t>(values.nbytes()));
}

void fill_outline(DATAstruct& record, const Doubles& points)
{
    require(points.ndim() == 2 && points.shape(1) == 3, "an outline is an array of points [n][3]");
    fill(record, points);
}

Doubles copy_of(const DATAstruct& record)
{
    return Doubles({static_cast<py::ssize_t>(record.count), static_cast<py::ssize_t>(record.dim)}, record.dvals);
}

// --- Arrays ----------------------------------------------------------------------------------------------------------

/// A `DATAstruct` of doubles.
class Array {
public:
    Array() { DATAInitialize(&record_); }
    explicit Array(const Doubles& values) : Array() { fill(record_, values); }
    ~Array() { DATADispose(&record_); }
    Array(const Array&) = delete;
    Array& operator=(const Array&) = delete;

    DATAstruct* record() const { return &record_; }

    /// The array's own memory.
    py::buffer_info view() const
    {
        const auto width = static_cast<py::ssize_t>(sizeof(double));
        return py::buffer_info(record_.dvals, width, py::format_descriptor<double>::format(), 2,
                               {static_cast<py::ssize_t>(record_.count), static_cast<py::ssize_t>(record_.dim)},
                               {record_.dim * width, width});
    }

private:
    mutable DATAstruct record_; // the library's functions take their inputs by plain pointers
};

using Owned = std::unique_ptr<Array>;

Owned joined(const Array& first, const Array& second)
{
    auto output = std::make_unique<Array>();
    require(DATACat(first.record(), second.record(), output->record()) == 1, "the arrays differ in dim");
    return output;
}

Owned mixed(const Array& a, const Array& b, double wa, double wb)
{
    auto output = std::make_unique<Array>();
    require(DATAMix(a.record(), b.record(), wa, wb, output->record()) == 1, "the arrays differ in shape");
    return output;
}

Owned bounds(const Array& array)
{
    auto output = std::make_unique<Array>();
    require(DATABounds(array.record(), output->record()) == 1, "the array has no bounds");
    return output;
}

Owned transformed(const Array& array, const Doubles& matrix)
{
    require(matrix.ndim() == 2 && matrix.shape(0) == 4 && matrix.shape(1) == 4, "a transform is a matrix [4][4]");
    require(array.record()->dim == 3, "only points [n][3] are transformed");
    Xfm m;
    std::memcpy(m, matrix.data(), sizeof m);
    auto output = std::make_unique<Array>();
    output->record()->count = array.record()->count;
    output->record()->dim = 3;
    if (DATAAllocate(output->record()) != 1)
        throw std::bad_alloc();
    TransformDATA(m, array.record(), output->record());
    return output;
}

// --- Borders ---------------------------------------------------------------------------------------------------------

/// A `BORDERStatus` that releases its arrays.
class Sweep {
public:
    Sweep(double distance, double height, bool keep_collapsed, bool split_events)
    {
        BORDERInitialize(&status);
        status.distance = distance;
        status.height = height;
        status.keep_collapsed = keep_collapsed;
        status.split_events = split_events;
    }
    ~Sweep()
    {
        for (DATAstruct* array : {status.path, status.output, status.flat, status.velocity, status.direction,
                                  status.line, status.dead, status.length, status.rate, status.merge}) {
            DATADispose(array);
            std::free(array);
        }
    }
    Sweep(const Sweep&) = delete;
    Sweep& operator=(const Sweep&) = delete;

    DATAstruct& path() const
    {
        if (status.path == nullptr)
            throw std::bad_alloc();
        return *status.path;
    }

    BORDERStatus status;
};

Doubles offset(const Doubles& outline, double distance, double height, bool keep_collapsed, bool split_events)
{
    Sweep sweep(distance, height, keep_collapsed, split_events);
    fill_outline(sweep.path(), outline);
    require(BORDER(&sweep.status) == 1, "the outline has no border");
    return copy_of(*sweep.status.output);
}

std::vector<Doubles> offset_with_holes(const std::vector<Doubles>& outlines, double distance, double height,
                                       bool keep_collapsed, bool split_events)
{
    require(!outlines.empty() && outlines.size() <= INT32_MAX, "there is no outer outline");
    Sweep sweep(distance, height, keep_collapsed, split_events);
    BORDERStatus& status = sweep.status;
    DATAstruct& path = sweep.path();
    path.type = DATA_TYPE_DATA;
    path.count = static_cast<int32_t>(outlines.size());
    path.dim = 1;
    if (DATAAllocate(&path) != 1)
        throw std::bad_alloc();
    for (size_t i = 0; i < outlines.size(); ++i) {
        DATAstruct* const child = DATANew();
        if (child == nullptr)
            throw std::bad_alloc();
        path.pvals[i] = child;
        fill_outline(*child, outlines[i]);
    }
    // A border that fails leaves its own outline and output in the record.
    DATAstruct* const output = status.output;
    const int result = BORDER(&status);
    status.path = &path;
    status.output = output;
    require(result == 1, "an outline has no border");
    std::vector<Doubles> borders;
    for (int32_t i = 0; i < output->count; ++i)
        borders.push_back(copy_of(*static_cast<DATAstruct*>(output->pvals[i])));
    return borders;
}

// --- Equations -------------------------------------------------------------------------------------------------------

/// An `EquationSystem`; names and texts go in as strings.
class Equations {
public:
    Equations() { require(EqSystemInitialize(&system_) == 1, "no memory for a system of equations"); }
    ~Equations() { EqSystemDispose(&system_); }
    Equations(const Equations&) = delete;
    Equations& operator=(const Equations&) = delete;

    void declare(std::string names, bool reserved)
    {
        require(EqParseVariables(&system_, names.data(), reserved) != -1, "a name is too long or a function's");
    }

    /// Its number, for `evaluate`.
    int add(std::string text)
    {
        const int row = system_.equations->count;
        require(text.find('=') != std::string::npos, "an equation needs a variable and \"=\"");
        require(EqParseEquation(&system_, text.data()) != -1, "the equation cannot be read");
        return row < 0 ? 0 : row;
    }

    void set(std::string name, double value) { EqSetVariable(&system_, variable(name), value); }
    double get(std::string name) { return EqReadVariable(&system_, variable(name)); }

    double evaluate(int equation)
    {
        if (equation < 0 || equation >= system_.equations->count)
            throw py::index_error("there is no such equation");
        return EqEvaluate(&system_, equation);
    }

    void evaluate_all() { EqSystemEvaluate(&system_); }

private:
    int variable(std::string& name)
    {
        const int v = EqLookupVariable(&system_, name.data());
        if (v < 0)
            throw py::key_error(name);
        return v;
    }

    EquationSystem system_;
};

} // namespace

PYBIND11_MODULE(_korvale, m)
{
    m.doc() = "Numeric geometry: arrays, borders of outlines, equations.";

    py::class_<Array>(m, "Array", py::buffer_protocol(),
                      "A table of doubles. numpy.asarray(array) shares its memory; Array(values) copies.")
        .def(py::init<const Doubles&>(), py::arg("values"))
        .def_buffer(&Array::view)
        .def(
            "reverse", [](const Array& array) { DATAReverse(array.record()); }, "Reverses the elements in place.")
        .def("bounds", &bounds, "The least and the greatest corner.")
        .def("joined", &joined, py::arg("other"), "This array and then the other.")
        .def("mixed", &mixed, py::arg("other"), py::arg("weight"), py::arg("other_weight"),
             "The weighted sum of two arrays of one shape.")
        .def("transformed", &transformed, py::arg("matrix"), "The points carried by a matrix [4][4].");

    m.def("offset", &offset, py::arg("outline"), py::arg("distance"), py::kw_only(), py::arg("height") = 0.0,
          py::arg("keep_collapsed") = false, py::arg("split_events") = true,
          "The border of a closed planar outline [n][3] at a signed distance.");
    m.def("offset_with_holes", &offset_with_holes, py::arg("outlines"), py::arg("distance"), py::kw_only(),
          py::arg("height") = 0.0, py::arg("keep_collapsed") = false, py::arg("split_events") = true,
          "The borders of an outer outline and of the holes that follow it; holes move the other way.");

    py::class_<Equations>(m, "Equations", "Named variables and equations over them.")
        .def(py::init<>())
        .def("declare", &Equations::declare, py::arg("names"), py::kw_only(), py::arg("reserved") = false)
        .def("add", &Equations::add, py::arg("text"), "Adds an equation and returns its number.")
        .def("__setitem__", &Equations::set)
        .def("__getitem__", &Equations::get)
        .def("evaluate", &Equations::evaluate, py::arg("equation"))
        .def("evaluate_all", &Equations::evaluate_all);
}
