// Vectors, matrices, rotations, lines and what else takes plain numbers.
#include <cstdio>
#include <cstdlib>

#include "bind.h"

namespace korvale::raw {
namespace {

void add_vectors(py::module_& m)
{
    def(m, NAMED(dot_product), in<3>("a"), in<3>("b"));
    def(m, NAMED(cross_product), in<3>("a"), in<3>("b"), out<3>());
    def(m, NAMED(norm), in<3>("v"));
    def(m, NAMED(normalize), in_place<3>("v"));
    def(m, NAMED(angle), in<3>("a"), in<3>("b"));
    def(m, NAMED(bbox_intersect), in<6>("box1"), in<6>("box2"));
}

void print_matrix(const py::object& stream, double (*matrix)[4])
{
    char* text = nullptr;
    size_t length = 0;
    FILE* const memory = open_memstream(&text, &length);
    if (memory == nullptr)
        throw std::bad_alloc();
    PrintMatrix(memory, matrix);
    std::fclose(memory);
    const std::unique_ptr<char, decltype(&std::free)> owner(text, &std::free);
    stream.attr("write")(py::str(text, length));
}

void add_transforms(py::module_& m)
{
    def(m, NAMED(make_identity), out<4, 4>("m"));
    def(m, NAMED(TransformVector), in<16>("m"), in<3>("v"), out<3>());
    def(m, NAMED(TransformPoint), in<16>("m"), in<3>("p"), out<3>());
    def(m, NAMED(xfm_pnt), in<16>("m16"), in<3>("p"), out<3>());
    def(m, NAMED(MatrixMultiply), in<16>("a"), in<16>("b"), out<4, 4>());
    def(m, NAMED(MatrixTranspose), in<16>("in_"), out<4, 4>());
    def(m, NAMED(ScaleMatrix), in<3>("s"), out<4, 4>());
    def(m, NAMED(TranslateMatrix), in<3>("t"), out<4, 4>());
    def(m, NAMED(xfm2array), in<16>("m"), out<16>("a16"));
    def(m, NAMED(array2xfm), in<16>("a16"), out<4, 4>("m"));
    def(m, "PrintMatrix", print_matrix, plain("stream"), in<16>("m"));
}

void add_rotations(py::module_& m)
{
    def(m, NAMED(rotation_matrix), in<3>("radians"), out<4, 4>());
    def(m, NAMED(RotationMatrix), in<3>("degrees"), out<4, 4>());
    def(m, NAMED(RotateMatrix), in<3>("degrees"), out<4, 4>());
    def(m, NAMED(SRT2Transform), in<3>("scale"), in<3>("rot"), in<3>("trans"), out<4, 4>());
    def(m, NAMED(SRT2InvTransform), in<3>("scale"), in<3>("rot"), in<3>("trans"), out<4, 4>());
    def(m, NAMED(Transform2SRT), in<16>("m"), out<3>("scale"), out<3>("rot"), out<3>("trans"));
    def(m, NAMED(orientation_xfm), in<3>("origin"), in<3>("zdir"), in<3>("ref"), out<16>("out16"));
    def(m, NAMED(orientation_xfm_and_reverse), in<3>("origin"), in<3>("xdir"), in<3>("zdir"), out<4, 4>("fwd"),
        out<4, 4>("rev"));
}

void add_lines_and_numbers(py::module_& m)
{
    def(m, NAMED(find_line), in<3>("p0"), in<3>("p1"), out<3>("line"));
    def(m, NAMED(line_normalize), in_place<3>("line"));
    def(m, NAMED(find_intersect), in_place<3>("line1"), in_place<3>("line2"), out<3>());
    def(m, NAMED(TwoByTwoDeterminant), in<4>("m"));
    def(m, NAMED(SolveTwoByTwo), in<6>("m"), address("x", 0.0), address("y", 0.0));
    def(m, NAMED(factorial), plain("n"));
    def(m, NAMED(binomial), plain("n"), plain("k"));
    def_unlocked(m, NAMED(power), plain("x"), plain("n"));
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
