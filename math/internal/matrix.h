#pragma once

#include <cstring>

#include "math/internal/vector.h"
#include "platform/internal/lanes3.h"

// The matrix arithmetic of the library, inline. The exported functions of math/transform.h are doors to these.
namespace korvale::math {

inline void set_identity(double (*m)[4])
{
    static constexpr double kIdentity[4][4] = {{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 1}};
    std::memcpy(m, kIdentity, sizeof kIdentity);
}

/// A row of a matrix, each element broadcast to all lanes.
template <class V>
struct SpreadRow {
    V x, y, z, w;
};

template <class V>
KORVALE_OVER_LANES SpreadRow<V> spread(const double* row)
{
    return {all<V>(row[0]), all<V>(row[1]), all<V>(row[2]), all<V>(row[3])};
}

template <class V>
struct SpreadMatrix {
    SpreadRow<V> x, y, z, w;
};

template <class V>
KORVALE_OVER_LANES SpreadMatrix<V> spread(const double (*m)[4])
{
    return {spread<V>(m[0]), spread<V>(m[1]), spread<V>(m[2]), spread<V>(m[3])};
}

/// A row applied to (x, y, z, 1), summed from the left.
template <class V>
KORVALE_OVER_LANES V carried(const SpreadRow<V>& row, const Lanes3<V>& p)
{
    return row.x * p.x + row.y * p.y + row.z * p.z + row.w;
}

/// Applies `m` to points and divides by their fourth coordinates w. One test serves all lanes: where every w is 1
/// nothing is divided, else all are, since dividing by 1 changes nothing.
template <class V>
KORVALE_OVER_LANES Lanes3<V> carried(const SpreadMatrix<V>& m, const Lanes3<V>& p)
{
    const Lanes3<V> h = {carried(m.x, p), carried(m.y, p), carried(m.z, p)};
    const V w = carried(m.w, p);
    if (any_false(w == all<V>(1.0)))
        return h / w;
    return h;
}

/// Applies `m` to the point `p`; `out` may be `p`.
inline void carry_point(const double (*m)[4], const double* p, double* out)
{
    const Lanes3<double> h = carried(spread<double>(m), vector_of(p));
    out[0] = h.x;
    out[1] = h.y;
    out[2] = h.z;
}

/// A row of a matrix in lanes, one Quad or two Pairs.
template <class V>
struct Row {
    V part[4 / width_of<V>];
};

template <class V>
KORVALE_OVER_LANES Row<V> row_of(double a, double b, double c, double d)
{
    if constexpr (width_of<V> == 4)
        return {{Quad(a, b, c, d)}};
    else
        return {{Pair{a, b}, Pair{c, d}}};
}

template <class V>
KORVALE_OVER_LANES Row<V> load_row(const double* row)
{
    if constexpr (width_of<V> == 4)
        return {{load<V>(row)}};
    else
        return {{load<V>(row), load<V>(row + 2)}};
}

template <class V>
KORVALE_OVER_LANES void store_row(double* to, const Row<V>& row)
{
    for (int k = 0; k < 4 / width_of<V>; ++k)
        store(to + k * width_of<V>, row.part[k]);
}

/// Row `a` times the matrix `b`. Each lane sums its column from the left.
template <class V>
KORVALE_OVER_LANES Row<V> row_product(const double* a, const Row<V> (&b)[4])
{
    const V x = all<V>(a[0]), y = all<V>(a[1]), z = all<V>(a[2]), w = all<V>(a[3]);
    Row<V> product;
    for (int k = 0; k < 4 / width_of<V>; ++k)
        product.part[k] = x * b[0].part[k] + y * b[1].part[k] + z * b[2].part[k] + w * b[3].part[k];
    return product;
}

/// out = a b; `out` may be either.
template <class V>
KORVALE_OVER_LANES void multiply_in_lanes(const double (*a)[4], const double (*b)[4], double (*out)[4])
{
    const Row<V> rows[4] = {load_row<V>(b[0]), load_row<V>(b[1]), load_row<V>(b[2]), load_row<V>(b[3])};
    const Row<V> first = row_product(a[0], rows), second = row_product(a[1], rows); // an array would go to memory
    const Row<V> third = row_product(a[2], rows), last = row_product(a[3], rows);
    store_row(out[0], first);
    store_row(out[1], second);
    store_row(out[2], third);
    store_row(out[3], last);
}

inline void multiply(const double (*a)[4], const double (*b)[4], double (*out)[4])
{
    multiply_in_lanes<Pair>(a, b, out);
}

/// Transposes by blocks of two by two. `out` must not overlap `in`.
inline void transpose(const double (*in)[4], double (*out)[4])
{
    for (int i = 0; i < 4; i += 2)
        for (int j = 0; j < 4; j += 2) {
            const Pair upper = load<Pair>(in[j] + i), lower = load<Pair>(in[j + 1] + i);
            store(out[i] + j, Pair{upper[0], lower[0]});
            store(out[i + 1] + j, Pair{upper[1], lower[1]});
        }
}

} // namespace korvale::math
