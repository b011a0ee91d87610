// Vectors, matrices, rotations, lines and what else takes plain numbers.
#include <cstdio>
#include <cstdlib>

#include "records.h"

namespace korvale::raw {
namespace {

using Array = py::array_t<double>;

double* doubles(const Array& array)
{
    return const_cast<double*>(array.data()); // the library takes its inputs by plain pointers
}

/// A matrix [4][4], or [16], as the library takes one.
auto matrix(const Array& array)
{
    return reinterpret_cast<double(*)[4]>(doubles(array));
}

Array vector_in(const py::handle& given, const char* function, const char* argument)
{
    return numbers(given, 3, function, argument);
}

Array matrix_in(const py::handle& given, const char* function, const char* argument)
{
    return numbers(given, 16, function, argument);
}

Array vector_out(const py::handle& given, const char* function, const char* argument = "out")
{
    return place(given, {3}, function, argument);
}

Array matrix_out(const py::handle& given, const char* function, const char* argument = "out")
{
    return place(given, {4, 4}, function, argument);
}

/// Numbers that are changed in place: an array, not a list.
Array in_place(const py::handle& given, py::ssize_t count, const char* function, const char* argument)
{
    if (given.is_none())
        throw py::type_error(std::string(function) + ": " + argument + " has to be an array of float64");
    return place(given, {count}, function, argument);
}

/// Functions that make a matrix of three numbers.
template <void (*Function)(double*, double (*)[4])>
void def_from_vector(py::module_& m, const char* name, const char* argument)
{
    m.def(
        name,
        [name, argument](const py::object& v, const py::object& out) {
            const Array in = vector_in(v, name, argument), result = matrix_out(out, name);
            Function(doubles(in), matrix(result));
            return result;
        },
        py::arg(argument), py::arg("out") = py::none(), described(name));
}

void add_vectors(py::module_& m)
{
    m.def(
        "dot_product",
        [](const py::object& a, const py::object& b) {
            const Array first = vector_in(a, "dot_product", "a"), second = vector_in(b, "dot_product", "b");
            return dot_product(doubles(first), doubles(second));
        },
        py::arg("a"), py::arg("b"), described("dot_product"));
    m.def(
        "cross_product",
        [](const py::object& a, const py::object& b, const py::object& out) {
            const Array first = vector_in(a, "cross_product", "a"), second = vector_in(b, "cross_product", "b");
            const Array result = vector_out(out, "cross_product");
            cross_product(doubles(first), doubles(second), doubles(result));
            return result;
        },
        py::arg("a"), py::arg("b"), py::arg("out") = py::none(), described("cross_product"));
    m.def(
        "norm", [](const py::object& v) { return norm(doubles(vector_in(v, "norm", "v"))); }, py::arg("v"),
        described("norm"));
    m.def(
        "normalize", [](const py::object& v) { return normalize(doubles(in_place(v, 3, "normalize", "v"))); },
        py::arg("v"), described("normalize"));
    m.def(
        "angle",
        [](const py::object& a, const py::object& b) {
            const Array first = vector_in(a, "angle", "a"), second = vector_in(b, "angle", "b");
            return angle(doubles(first), doubles(second));
        },
        py::arg("a"), py::arg("b"), described("angle"));
    m.def(
        "bbox_intersect",
        [](const py::object& box1, const py::object& box2) {
            const Array first = numbers(box1, 6, "bbox_intersect", "box1");
            const Array second = numbers(box2, 6, "bbox_intersect", "box2");
            return bbox_intersect(doubles(first), doubles(second));
        },
        py::arg("box1"), py::arg("box2"), described("bbox_intersect"));
}

void add_transforms(py::module_& m)
{
    m.def(
        "make_identity",
        [](const py::object& out) {
            const Array result = matrix_out(out, "make_identity", "m");
            make_identity(matrix(result));
            return result;
        },
        py::arg("m") = py::none(), described("make_identity"));
    m.def(
        "TransformVector",
        [](const py::object& by, const py::object& v, const py::object& out) {
            const Array xfm = matrix_in(by, "TransformVector", "m"), in = vector_in(v, "TransformVector", "v");
            const Array result = vector_out(out, "TransformVector");
            TransformVector(matrix(xfm), doubles(in), doubles(result));
            return result;
        },
        py::arg("m"), py::arg("v"), py::arg("out") = py::none(), described("TransformVector"));
    m.def(
        "TransformPoint",
        [](const py::object& by, const py::object& p, const py::object& out) {
            const Array xfm = matrix_in(by, "TransformPoint", "m"), in = vector_in(p, "TransformPoint", "p");
            const Array result = vector_out(out, "TransformPoint");
            TransformPoint(matrix(xfm), doubles(in), doubles(result));
            return result;
        },
        py::arg("m"), py::arg("p"), py::arg("out") = py::none(), described("TransformPoint"));
    m.def(
        "xfm_pnt",
        [](const py::object& by, const py::object& p, const py::object& out) {
            const Array xfm = matrix_in(by, "xfm_pnt", "m16"), in = vector_in(p, "xfm_pnt", "p");
            const Array result = vector_out(out, "xfm_pnt");
            xfm_pnt(doubles(xfm), doubles(in), doubles(result));
            return result;
        },
        py::arg("m16"), py::arg("p"), py::arg("out") = py::none(), described("xfm_pnt"));
    m.def(
        "MatrixMultiply",
        [](const py::object& a, const py::object& b, const py::object& out) {
            const Array first = matrix_in(a, "MatrixMultiply", "a"), second = matrix_in(b, "MatrixMultiply", "b");
            const Array result = matrix_out(out, "MatrixMultiply");
            MatrixMultiply(matrix(first), matrix(second), matrix(result));
            return result;
        },
        py::arg("a"), py::arg("b"), py::arg("out") = py::none(), described("MatrixMultiply"));
    m.def(
        "MatrixTranspose",
        [](const py::object& in, const py::object& out) {
            const Array given = matrix_in(in, "MatrixTranspose", "in_");
            const Array result = matrix_out(out, "MatrixTranspose");
            MatrixTranspose(matrix(given), matrix(result));
            return result;
        },
        py::arg("in_"), py::arg("out") = py::none(), described("MatrixTranspose"));
    def_from_vector<ScaleMatrix>(m, "ScaleMatrix", "s");
    def_from_vector<TranslateMatrix>(m, "TranslateMatrix", "t");
    m.def(
        "xfm2array",
        [](const py::object& by, const py::object& out) {
            const Array xfm = matrix_in(by, "xfm2array", "m"), result = place(out, {16}, "xfm2array", "a16");
            xfm2array(matrix(xfm), doubles(result));
            return result;
        },
        py::arg("m"), py::arg("a16") = py::none(), described("xfm2array"));
    m.def(
        "array2xfm",
        [](const py::object& a16, const py::object& out) {
            const Array flat = matrix_in(a16, "array2xfm", "a16"), result = matrix_out(out, "array2xfm", "m");
            array2xfm(doubles(flat), matrix(result));
            return result;
        },
        py::arg("a16"), py::arg("m") = py::none(), described("array2xfm"));
    m.def(
        "PrintMatrix",
        [](const py::object& stream, const py::object& by) {
            const Array xfm = matrix_in(by, "PrintMatrix", "m");
            char* text = nullptr;
            size_t length = 0;
            FILE* const memory = open_memstream(&text, &length);
            if (memory == nullptr)
                throw std::bad_alloc();
            PrintMatrix(memory, matrix(xfm));
            std::fclose(memory);
            const std::unique_ptr<char, decltype(&std::free)> owner(text, &std::free);
            stream.attr("write")(py::str(text, length));
        },
        py::arg("stream"), py::arg("m"), described("PrintMatrix"));
}

void add_rotations(py::module_& m)
{
    def_from_vector<rotation_matrix>(m, "rotation_matrix", "radians");
    def_from_vector<RotationMatrix>(m, "RotationMatrix", "degrees");
    def_from_vector<RotateMatrix>(m, "RotateMatrix", "degrees");
    const auto def_srt = [&m](const char* name, void (*function)(double*, double*, double*, double(*)[4])) {
        m.def(
            name,
            [name, function](const py::object& scale, const py::object& rot, const py::object& trans,
                             const py::object& out) {
                const Array s = vector_in(scale, name, "scale"), r = vector_in(rot, name, "rot");
                const Array t = vector_in(trans, name, "trans"), result = matrix_out(out, name);
                function(doubles(s), doubles(r), doubles(t), matrix(result));
                return result;
            },
            py::arg("scale"), py::arg("rot"), py::arg("trans"), py::arg("out") = py::none(), described(name));
    };
    def_srt("SRT2Transform", SRT2Transform);
    def_srt("SRT2InvTransform", SRT2InvTransform);
    m.def(
        "Transform2SRT",
        [](const py::object& by, const py::object& scale, const py::object& rot, const py::object& trans) {
            const Array xfm = matrix_in(by, "Transform2SRT", "m"), s = vector_out(scale, "Transform2SRT", "scale");
            const Array r = vector_out(rot, "Transform2SRT", "rot"), t = vector_out(trans, "Transform2SRT", "trans");
            Transform2SRT(matrix(xfm), doubles(s), doubles(r), doubles(t));
            return py::make_tuple(s, r, t);
        },
        py::arg("m"), py::arg("scale") = py::none(), py::arg("rot") = py::none(), py::arg("trans") = py::none(),
        described("Transform2SRT"));
    m.def(
        "orientation_xfm",
        [](const py::object& origin, const py::object& zdir, const py::object& ref, const py::object& out16) {
            const char* const name = "orientation_xfm";
            const Array o = vector_in(origin, name, "origin"), z = vector_in(zdir, name, "zdir");
            const Array r = vector_in(ref, name, "ref"), result = place(out16, {16}, name, "out16");
            const int status = orientation_xfm(doubles(o), doubles(z), doubles(r), doubles(result));
            return py::make_tuple(status, result);
        },
        py::arg("origin"), py::arg("zdir"), py::arg("ref"), py::arg("out16") = py::none(),
        described("orientation_xfm"));
    m.def(
        "orientation_xfm_and_reverse",
        [](const py::object& origin, const py::object& xdir, const py::object& zdir, const py::object& fwd,
           const py::object& rev) {
            const char* const name = "orientation_xfm_and_reverse";
            const Array o = vector_in(origin, name, "origin"), x = vector_in(xdir, name, "xdir");
            const Array z = vector_in(zdir, name, "zdir");
            const Array forward = matrix_out(fwd, name, "fwd"), back = matrix_out(rev, name, "rev");
            const int status =
                orientation_xfm_and_reverse(doubles(o), doubles(x), doubles(z), matrix(forward), matrix(back));
            return py::make_tuple(status, forward, back);
        },
        py::arg("origin"), py::arg("xdir"), py::arg("zdir"), py::arg("fwd") = py::none(), py::arg("rev") = py::none(),
        described("orientation_xfm_and_reverse"));
}

void add_lines_and_numbers(py::module_& m)
{
    m.def(
        "find_line",
        [](const py::object& p0, const py::object& p1, const py::object& line) {
            const Array first = vector_in(p0, "find_line", "p0"), second = vector_in(p1, "find_line", "p1");
            const Array result = vector_out(line, "find_line", "line");
            return py::make_tuple(find_line(doubles(first), doubles(second), doubles(result)), result);
        },
        py::arg("p0"), py::arg("p1"), py::arg("line") = py::none(), described("find_line"));
    m.def(
        "line_normalize",
        [](const py::object& line) { line_normalize(doubles(in_place(line, 3, "line_normalize", "line"))); },
        py::arg("line"), described("line_normalize"));
    m.def(
        "find_intersect",
        [](const py::object& line1, const py::object& line2, const py::object& out) {
            const Array first = in_place(line1, 3, "find_intersect", "line1");
            const Array second = in_place(line2, 3, "find_intersect", "line2");
            const Array result = vector_out(out, "find_intersect");
            const double sine = find_intersect(doubles(first), doubles(second), doubles(result));
            return py::make_tuple(sine, result);
        },
        py::arg("line1"), py::arg("line2"), py::arg("out") = py::none(), described("find_intersect"));
    m.def(
        "TwoByTwoDeterminant",
        [](const py::object& given) {
            const Array four = numbers(given, 4, "TwoByTwoDeterminant", "m");
            return TwoByTwoDeterminant(reinterpret_cast<double(*)[2]>(doubles(four)));
        },
        py::arg("m"), described("TwoByTwoDeterminant"));
    m.def(
        "SolveTwoByTwo",
        [](const py::object& given, double x, double y) {
            const Array six = numbers(given, 6, "SolveTwoByTwo", "m");
            const int status = SolveTwoByTwo(reinterpret_cast<double(*)[3]>(doubles(six)), &x, &y);
            return py::make_tuple(status, x, y);
        },
        py::arg("m"), py::arg("x") = 0.0, py::arg("y") = 0.0, described("SolveTwoByTwo"));
    m.def("factorial", &factorial, py::arg("n"), described("factorial"));
    m.def("binomial", &binomial, py::arg("n"), py::arg("k"), described("binomial"));
    m.def("power", &power, py::arg("x"), py::arg("n"), described("power"), py::call_guard<py::gil_scoped_release>());
}

} // namespace

void add_math(py::module_& m)
{
    add_vectors(m);
    add_transforms(m);
    add_rotations(m);
    add_lines_and_numbers(m);
}

} // namespace korvale::raw
