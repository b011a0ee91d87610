// Transforms as 16 plain numbers: the library's own functions behind C names, and the inverse.
#include <algorithm>
#include <cmath>

#include "data/operations.h"
#include "door/internal/views.h"
#include "math/orientation.h"
#include "math/rotation.h"
#include "math/transform.h"

namespace korvale::door {
namespace {

/// 16 numbers of a host as the library's matrix, by way of a copy, so that results may overlap.
struct Matrix {
    Xfm m;

    Matrix() = default;
    explicit Matrix(const double* numbers) { std::copy_n(numbers, 16, &m[0][0]); }

    void give(double* numbers) const { std::copy_n(&m[0][0], 16, numbers); }
};

/// Three numbers of a host, which the library's functions take by pointers that are not const.
struct Triple {
    double v[3];

    explicit Triple(const double* numbers) { std::copy_n(numbers, 3, v); }
};

/// 16 numbers of a host where they are, for functions that only read their matrix.
double (*rows_of(const double* numbers))[4]
{
    return reinterpret_cast<double(*)[4]>(const_cast<double*>(numbers));
}

/// Divides by the pivot of column `k` and clears the rest of the column, in `m` and, alike, in `inverse`. The pivot is
/// the largest number of the column that is left.
void eliminate(int k, Xfm m, Xfm inverse)
{
    int pivot = k;
    for (int row = k + 1; row < 4; ++row)
        if (std::fabs(m[row][k]) > std::fabs(m[pivot][k]))
            pivot = row;
    if (m[pivot][k] == 0.0)
        throw Refusal("transform", "be one that another undoes", "its determinant is 0");
    std::swap_ranges(m[k], m[k] + 4, m[pivot]);
    std::swap_ranges(inverse[k], inverse[k] + 4, inverse[pivot]);

    const double divisor = m[k][k];
    for (int column = 0; column < 4; ++column) {
        m[k][column] /= divisor;
        inverse[k][column] /= divisor;
    }
    for (int row = 0; row < 4; ++row) {
        const double factor = m[row][k];
        if (row == k || factor == 0.0)
            continue;
        for (int column = 0; column < 4; ++column) {
            m[row][column] -= factor * m[k][column];
            inverse[row][column] -= factor * inverse[k][column];
        }
    }
}

void require_all_finite(const double* numbers, std::string_view argument)
{
    for (int i = 0; i < 16; ++i)
        if (!is_finite(numbers[i]))
            throw Refusal(argument, "be finite", Text() << "its number " << i << " is " << numbers[i]);
}

/// Reads points, carries each and hands the result over.
template <class Carry>
void carry_all(const char* argument, const double* transform, const korvale_points* points,
               const korvale_points_out* output, Carry carry)
{
    require(transform, "transform");
    const PointsIn from(points, argument);
    PointsOut to(output, "output", PointsOut::Use::write);
    if (to.size() != from.size())
        throw Refusal("output", Text() << "have " << counted(from.size(), "point"), Text() << "it has " << to.size());
    Matrix matrix(transform);
    carry(matrix.m, from, to);
    to.give_back();
}

} // namespace
} // namespace korvale::door

using namespace korvale::door;

void korvale_transform_from_srt(const korvale_srt* srt, double* transform)
{
    if (srt == nullptr || transform == nullptr)
        return;
    korvale_srt parts = *srt;
    Matrix matrix;
    SRT2Transform(parts.scale, parts.rotation, parts.translation, matrix.m);
    matrix.give(transform);
}

void korvale_transform_inverse_of_srt(const korvale_srt* srt, double* transform)
{
    if (srt == nullptr || transform == nullptr)
        return;
    korvale_srt parts = *srt;
    Matrix matrix;
    SRT2InvTransform(parts.scale, parts.rotation, parts.translation, matrix.m);
    matrix.give(transform);
}

void korvale_transform_rotation(const double* radians, double* transform)
{
    if (radians == nullptr || transform == nullptr)
        return;
    Triple angles(radians);
    Matrix matrix;
    rotation_matrix(angles.v, matrix.m);
    matrix.give(transform);
}

void korvale_transform_take_apart(const double* transform, korvale_srt* srt)
{
    if (transform == nullptr || srt == nullptr)
        return;
    Matrix matrix(transform);
    Transform2SRT(matrix.m, srt->scale, srt->rotation, srt->translation);
}

korvale_status korvale_transform_into_frame(const double* origin, const double* z, const double* reference,
                                            double* transform, korvale_error* error)
{
    return answer(error, "korvale_transform_into_frame", [&] {
        require(origin, "origin");
        require(z, "z");
        require(reference, "reference");
        require(transform, "transform");
        Triple from(origin), along(z), beside(reference);
        Matrix matrix;
        if (orientation_xfm(from.v, along.v, beside.v, &matrix.m[0][0]) != 1)
            throw Refusal("z", "be longer than 1e-06 and not along reference",
                          Text() << "it is " << text_of_point(z) << " beside " << text_of_point(reference));
        matrix.give(transform);
    });
}

void korvale_transform_multiply(const double* a, const double* b, double* product)
{
    if (a == nullptr || b == nullptr || product == nullptr)
        return;
    Matrix first(a), second(b), result;
    MatrixMultiply(first.m, second.m, result.m);
    result.give(product);
}

korvale_status korvale_transform_invert(const double* transform, double* inverse, korvale_error* error)
{
    return answer(error, "korvale_transform_invert", [&] {
        require(transform, "transform");
        require(inverse, "inverse");
        require_all_finite(transform, "transform");
        Matrix rest(transform), result;
        make_identity(result.m);
        for (int k = 0; k < 4; ++k)
            eliminate(k, rest.m, result.m);
        for (const double(&row)[4] : result.m)
            for (const double number : row)
                if (!is_finite(number))
                    throw Refusal("transform", "be one that another undoes", "the numbers of that one are too large");
        result.give(inverse);
    });
}

void korvale_transform_point(const double* transform, const double* point, double* output)
{
    if (transform == nullptr || point == nullptr || output == nullptr)
        return;
    Triple moved(point);
    TransformPoint(rows_of(transform), moved.v, moved.v);
    std::copy_n(moved.v, 3, output);
}

void korvale_transform_vector(const double* transform, const double* vector, double* output)
{
    if (transform == nullptr || vector == nullptr || output == nullptr)
        return;
    Triple moved(vector);
    TransformVector(rows_of(transform), moved.v, moved.v);
    std::copy_n(moved.v, 3, output);
}

korvale_status korvale_transform_points(const double* transform, const korvale_points* points,
                                        const korvale_points_out* output, korvale_error* error)
{
    return answer(error, "korvale_transform_points", [&] {
        carry_all("points", transform, points, output, [](Xfm m, const PointsIn& from, PointsOut& to) {
            DATAstruct source = record_over(from.points()), target = record_over(to.points());
            TransformDATA(m, &source, &target);
        });
    });
}

korvale_status korvale_transform_vectors(const double* transform, const korvale_points* vectors,
                                         const korvale_points_out* output, korvale_error* error)
{
    return answer(error, "korvale_transform_vectors", [&] {
        carry_all("vectors", transform, vectors, output, [](Xfm m, const PointsIn& from, PointsOut& to) {
            for (int64_t i = 0; i < from.size(); ++i) {
                Point vector = from[i];
                TransformVector(m, vector.data(), to[i].data());
            }
        });
    });
}
