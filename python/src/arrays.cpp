// Operations on whole arrays, and the random generator of the process.
#include <pybind11/stl.h>

#include "support.h"

namespace korvale::python {
namespace {

using Doubles = py::array_t<double, py::array::c_style>;

/// From so many numbers on each takes 20 microseconds or more.
constexpr py::ssize_t kManyNumbers = 50000;
constexpr py::ssize_t kManyDraws = 1000;

/// Draws between two looks for signals.
constexpr py::ssize_t kDraws = 65536;

/// A record over an array [n][...], which the library only reads, or writes without shaping it.
DATAstruct record_of(const char* function, const py::array& array)
{
    const auto rows = static_cast<std::size_t>(array.shape(0));
    const auto width = rows == 0 ? 1 : static_cast<std::size_t>(array.size()) / rows;
    detail::count_for(function, "the array", rows, std::max<std::size_t>(1, width));
    DATAstruct record;
    DATAInitialize(&record);
    record.type = DATA_TYPE_DOUBLE;
    record.count = static_cast<std::int32_t>(rows);
    record.dim = static_cast<std::int32_t>(width);
    record.dvals = static_cast<double*>(const_cast<void*>(array.data()));
    record.alloc_type = DATA_TYPE_DOUBLE; // of this shape already, so that the library writes into it
    record.alloc_count = record.count;
    record.alloc_dim = record.dim;
    return record;
}

void require_done(int result)
{
    if (result != 1)
        throw std::bad_alloc();
}

/// All have the shape of `out`, which is there and may be one of them.
void mix(const Doubles& a, const Doubles& b, double wa, double wb, py::array out)
{
    DATAstruct x = record_of("mix", a), y = record_of("mix", b), to = record_of("mix", out);
    const Unlocked unlocked(out.size() >= kManyNumbers);
    if (x.count > 0)
        require_done(DATAMix(&x, &y, wa, wb, &to));
}

void mix4(const Doubles& a, const Doubles& b, const Doubles& c, const Doubles& d, const std::array<double, 4>& weights,
          py::array out)
{
    DATAstruct p = record_of("mix4", a), q = record_of("mix4", b), r = record_of("mix4", c), s = record_of("mix4", d);
    DATAstruct to = record_of("mix4", out);
    const Unlocked unlocked(out.size() >= kManyNumbers);
    if (p.count > 0)
        require_done(DATA4Mix(&p, &q, &r, &s, weights[0], weights[1], weights[2], weights[3], &to));
}

/// Into an array [2][width] that is there.
void bounds(const Doubles& a, py::array out)
{
    DATAstruct from = record_of("bounds", a), to = record_of("bounds", out);
    const Unlocked unlocked(a.size() >= kManyNumbers);
    require_done(DATABBox(&from, &to));
}

/// In place.
void reverse(py::array a)
{
    DATAstruct record = record_of("reverse", a);
    const Unlocked unlocked(a.size() >= kManyNumbers);
    DATAReverse(&record);
}

/// Both into an array that is there and has room for both.
void join(const Doubles& a, const Doubles& b, py::array out)
{
    DATAstruct x = record_of("join", a), y = record_of("join", b), to = record_of("join", out);
    const Unlocked unlocked(out.size() >= kManyNumbers);
    require_done(DATACat(&x, &y, &to));
}

/// `count` values of one of the random functions.
template <double (*Draw)()>
py::array draws(py::ssize_t count)
{
    Doubles out(count);
    double* const to = out.mutable_data();
    const Unlocked unlocked(count >= kManyDraws);
    Signals signals;
    for (py::ssize_t i = 0; i < count; ++i) {
        if (i % kDraws == kDraws - 1)
            signals();
        to[i] = Draw();
    }
    return out;
}

} // namespace

void bind_arrays(py::module_& m)
{
    m.def("mix", &mix);
    m.def("mix4", &mix4);
    m.def("bounds", &bounds);
    m.def("reverse", &reverse);
    m.def("join", &join);
    m.def("seed", &EqSeed);
    m.def("random", &draws<&EqFuncRand>);
    m.def("gauss", &draws<&gauss>);
}

} // namespace korvale::python
