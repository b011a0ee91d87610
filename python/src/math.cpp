// Vectors, transforms, lines and boxes over whole arrays. Rows are what the library's functions take: 3 doubles for a
// vector, 16 for a transform; an argument of one row serves for all rows of the others.
#include <array>

#include "support.h"

namespace korvale::python {
namespace {

using Doubles = py::array_t<double, py::array::c_style>;

/// From so many rows on sums and products take 20 microseconds or more, and sines and their like.
constexpr std::size_t kManyRows = 1000;
constexpr std::size_t kManySines = 200;

/// An argument, one row for each result or one for all.
struct Rows {
    const char* argument;
    double* data; // only read
    std::size_t count, width;

    Rows(const char* name, const Doubles& array)
        : argument(name), data(const_cast<double*>(array.data())), count(static_cast<std::size_t>(array.shape(0))),
          width(static_cast<std::size_t>(count == 0 ? 1 : array.size() / array.shape(0)))
    {
    }
    double* operator[](std::size_t i) const { return data + (count == 1 ? 0 : i) * width; }
    auto matrix(std::size_t i) const { return reinterpret_cast<double(*)[4]>((*this)[i]); }
};

std::size_t common_count(const char* function, std::initializer_list<Rows> arguments)
{
    std::size_t n = 1;
    for (const Rows& rows : arguments)
        if (n == 1)
            n = rows.count;
    for (const Rows& rows : arguments)
        if (rows.count != 1 && rows.count != n)
            throw Error(function, rows.argument, "have 1 row or " + detail::text_of(n),
                        "it has " + detail::text_of(rows.count));
    return n;
}

auto matrix_at(double* first, std::size_t i)
{
    return reinterpret_cast<double(*)[4]>(first + 16 * i);
}

/// An array [n][tail...], each row written by `write(row number, row)`.
template <class Writer>
py::array made(std::size_t n, std::vector<py::ssize_t> tail, Writer write, std::size_t many = kManyRows)
{
    tail.insert(tail.begin(), static_cast<py::ssize_t>(n));
    Doubles out(std::move(tail));
    double* const data = out.mutable_data();
    const std::size_t width = n == 0 ? 0 : static_cast<std::size_t>(out.size()) / n;
    const Unlocked unlocked(n >= many);
    for (std::size_t i = 0; i < n; ++i)
        write(i, data + i * width);
    return out;
}

py::array dot_of(const Doubles& a, const Doubles& b)
{
    const Rows x("a", a), y("b", b);
    return made(common_count("dot", {x, y}), {}, [&](auto i, double* out) { *out = dot_product(x[i], y[i]); });
}

py::array cross_of(const Doubles& a, const Doubles& b)
{
    const Rows x("a", a), y("b", b);
    return made(common_count("cross", {x, y}), {3}, [&](auto i, double* out) { cross_product(x[i], y[i], out); });
}

py::array angle_of(const Doubles& a, const Doubles& b)
{
    const Rows x("a", a), y("b", b);
    return made(
        common_count("angle", {x, y}), {}, [&](auto i, double* out) { *out = angle(x[i], y[i]); }, kManySines);
}

py::array norm_of(const Doubles& a)
{
    const Rows x("vectors", a);
    return made(x.count, {}, [&](auto i, double* out) { *out = norm(x[i]); });
}

py::array normalize_of(const Doubles& a)
{
    const Rows x("vectors", a);
    return made(x.count, {3}, [&](auto i, double* out) {
        std::copy_n(x[i], 3, out);
        normalize(out);
    });
}

// --- Transforms ------------------------------------------------------------------------------------------------------

/// Matrices [n][4][4] of rows [n][3], by one of the functions that make them.
template <void (*Make)(double*, double (*)[4])>
py::array matrices_of(const Doubles& a)
{
    const Rows x("values", a);
    return made(
        x.count, {4, 4}, [&](auto i, double* out) { Make(x[i], matrix_at(out, 0)); }, kManySines);
}

using MakeOfSrt = void(double*, double*, double*, double (*)[4]);

py::array from_srt(MakeOfSrt* make, const char* function, const Doubles& scale, const Doubles& rotation,
                   const Doubles& translation)
{
    const Rows s("scale", scale), r("rotation", rotation), t("translation", translation);
    return made(
        common_count(function, {s, r, t}), {4, 4},
        [&](auto i, double* out) { make(s[i], r[i], t[i], matrix_at(out, 0)); }, kManySines);
}

py::tuple take_apart(const Doubles& matrices)
{
    const Rows m("matrices", matrices);
    const auto n = static_cast<py::ssize_t>(m.count);
    Doubles scale({n, py::ssize_t{3}}), rotation({n, py::ssize_t{3}}), translation({n, py::ssize_t{3}});
    double *const s = scale.mutable_data(), *const r = rotation.mutable_data(), *const t = translation.mutable_data();
    {
        const Unlocked unlocked(m.count >= kManySines);
        for (std::size_t i = 0; i < m.count; ++i)
            Transform2SRT(m.matrix(i), s + 3 * i, r + 3 * i, t + 3 * i);
    }
    return py::make_tuple(scale, rotation, translation);
}

py::array multiply_of(const Doubles& a, const Doubles& b)
{
    const Rows x("a", a), y("b", b);
    return made(common_count("multiply", {x, y}), {4, 4},
                [&](auto i, double* out) { MatrixMultiply(x.matrix(i), y.matrix(i), matrix_at(out, 0)); });
}

py::array transpose_of(const Doubles& a)
{
    const Rows x("matrices", a);
    return made(x.count, {4, 4}, [&](auto i, double* out) { MatrixTranspose(x.matrix(i), matrix_at(out, 0)); });
}

/// Points carried by one transform or by one each, into an array that is there and may be the points'.
void transform_points(const Doubles& matrices, const Doubles& points, py::array out)
{
    const Rows m("matrices", matrices), p("points", points);
    const std::size_t n = common_count("transform_points", {m, p});
    double* const to = static_cast<double*>(out.mutable_data());
    const Unlocked unlocked(n >= 10 * kManyRows);
    if (m.count == 1 && p.count == n) {
        Transform(std::span<const double, 16>(m.data, 16)).apply(PointView::at(p.data, n), PointSpan::at(to, n));
        return;
    }
    for (std::size_t i = 0; i < n; ++i)
        TransformPoint(m.matrix(i), p[i], to + 3 * i);
}

void transform_vectors(const Doubles& matrices, const Doubles& vectors, py::array out)
{
    const Rows m("matrices", matrices), v("vectors", vectors);
    const std::size_t n = common_count("transform_vectors", {m, v});
    double* const to = static_cast<double*>(out.mutable_data());
    const Unlocked unlocked(n >= 10 * kManyRows);
    for (std::size_t i = 0; i < n; ++i)
        TransformVector(m.matrix(i), v[i], to + 3 * i);
}

/// Refuses what gives no frame: a z axis that is too short, or else the other direction.
void require_frame(int result, const char* function, double* z, const char* other, const char* must, std::size_t row)
{
    if (result >= 0)
        return;
    const std::string place = "in row " + detail::text_of(row) + " it is not";
    if (!(norm(z) >= 1e-06))
        throw Error(function, "z", "be longer than 1e-06", place);
    throw Error(function, other, must, place);
}

py::array into_frame(const Doubles& origin, const Doubles& z, const Doubles& reference)
{
    const Rows o("origin", origin), d("z", z), r("reference", reference);
    return made(common_count("into_frame", {o, d, r}), {4, 4}, [&](auto i, double* out) {
        require_frame(orientation_xfm(o[i], d[i], r[i], out), "into_frame", d[i], "reference",
                      "be longer than 1e-06 and not along z", i);
    });
}

/// [n][2][4][4]: into the frame and back.
py::array frame_both_ways(const Doubles& origin, const Doubles& x, const Doubles& z)
{
    const Rows o("origin", origin), a("x", x), b("z", z);
    return made(common_count("frame_both_ways", {o, a, b}), {2, 4, 4}, [&](auto i, double* out) {
        require_frame(orientation_xfm_and_reverse(o[i], a[i], b[i], matrix_at(out, 0), matrix_at(out, 1)),
                      "frame_both_ways", b[i], "x", "be longer than 1e-06", i);
    });
}

// --- Lines, boxes, numbers -------------------------------------------------------------------------------------------

py::array line_through(const Doubles& a, const Doubles& b)
{
    const Rows p("a", a), q("b", b);
    return made(common_count("line_through", {p, q}), {3}, [&](auto i, double* out) {
        if (find_line(p[i], q[i], out) != 1)
            throw Error("line_through", "b", "be at least 1e-06 from a",
                        "in row " + detail::text_of(i) + " it is nearer");
    });
}

py::array normalize_lines(const Doubles& a)
{
    const Rows x("lines", a);
    return made(x.count, {3}, [&](auto i, double* out) {
        std::copy_n(x[i], 3, out);
        line_normalize(out);
    });
}

/// [n][4]: x, y, the sine of the angle between the lines and 1; zeros where they are parallel.
py::array lines_meet(const Doubles& a, const Doubles& b)
{
    const Rows x("a", a), y("b", b);
    return made(common_count("lines_meet", {x, y}), {4}, [&](auto i, double* out) {
        std::array<double, 3> first, second; // both are normalised in place
        std::copy_n(x[i], 3, first.begin());
        std::copy_n(y[i], 3, second.begin());
        std::array<double, 3> place = {0.0, 0.0, 1.0}; // z is written where the lines meet
        const double sine = find_intersect(first.data(), second.data(), place.data());
        const bool has_met = place[2] == 0.0;
        out[0] = place[0];
        out[1] = place[1];
        out[2] = has_met ? sine : 0.0;
        out[3] = has_met ? 1.0 : 0.0;
    });
}

py::array boxes_meet(const Doubles& a, const Doubles& b)
{
    const Rows x("a", a), y("b", b);
    const std::size_t n = common_count("boxes_meet", {x, y});
    py::array_t<bool> out(static_cast<py::ssize_t>(n));
    bool* const to = out.mutable_data();
    const Unlocked unlocked(n >= kManyRows);
    for (std::size_t i = 0; i < n; ++i)
        to[i] = bbox_intersect(x[i], y[i]);
    return out;
}

py::array determinants(const Doubles& a)
{
    const Rows x("matrices", a);
    return made(x.count, {},
                [&](auto i, double* out) { *out = TwoByTwoDeterminant(reinterpret_cast<double(*)[2]>(x[i])); });
}

/// [n][2]: x and y of each system [2][3].
py::array solutions(const Doubles& a)
{
    const Rows x("systems", a);
    return made(x.count, {2}, [&](auto i, double* out) {
        if (SolveTwoByTwo(reinterpret_cast<double(*)[3]>(x[i]), out, out + 1) != 1)
            throw Error("solve", "systems", "have a determinant of 1e-06 or more",
                        "that of row " + detail::text_of(i) + " is less");
    });
}

} // namespace

void bind_math(py::module_& m)
{
    m.def("dot", &dot_of);
    m.def("cross", &cross_of);
    m.def("angle", &angle_of);
    m.def("norm", &norm_of);
    m.def("normalize", &normalize_of);
    m.def("scaling", &matrices_of<&ScaleMatrix>);
    m.def("translation", &matrices_of<&TranslateMatrix>);
    m.def("rotation", &matrices_of<&rotation_matrix>);
    m.def("rotation_in_degrees", &matrices_of<&RotationMatrix>);
    m.def("from_srt", [](const Doubles& scale, const Doubles& rotation, const Doubles& translation) {
        return from_srt(&SRT2Transform, "from_srt", scale, rotation, translation);
    });
    m.def("inverse_from_srt", [](const Doubles& scale, const Doubles& rotation, const Doubles& translation) {
        return from_srt(&SRT2InvTransform, "inverse_from_srt", scale, rotation, translation);
    });
    m.def("take_apart", &take_apart);
    m.def("multiply", &multiply_of);
    m.def("transpose", &transpose_of);
    m.def("transform_points", &transform_points);
    m.def("transform_vectors", &transform_vectors);
    m.def("into_frame", &into_frame);
    m.def("frame_both_ways", &frame_both_ways);
    m.def("line_through", &line_through);
    m.def("normalize_lines", &normalize_lines);
    m.def("lines_meet", &lines_meet);
    m.def("boxes_meet", &boxes_meet);
    m.def("determinant", &determinants);
    m.def("solve", &solutions);
    m.def("factorial", &factorial);
    m.def("binomial", &binomial);
    m.def("power", &power);
}

} // namespace korvale::python
