#pragma once

#include <cstdint>

#include "platform/internal/lanes.h"

// Three-dimensional vectors in lanes: one value of lanes for each coordinate (a structure of arrays), and the ways to
// and from points in memory.
namespace korvale::platform {

template <class V>
struct Lanes3 {
    V x, y, z;
};

typedef Lanes3<Quad> Quad3;

template <class V>
KORVALE_OVER_LANES Lanes3<V> operator+(const Lanes3<V>& a, const Lanes3<V>& b)
{
    return {a.x + b.x, a.y + b.y, a.z + b.z};
}

template <class V>
KORVALE_OVER_LANES Lanes3<V> operator-(const Lanes3<V>& a, const Lanes3<V>& b)
{
    return {a.x - b.x, a.y - b.y, a.z - b.z};
}

/// The factor is the left operand of each product.
template <class V>
KORVALE_OVER_LANES Lanes3<V> operator*(const std::type_identity_t<V>& f, const Lanes3<V>& a)
{
    return {f * a.x, f * a.y, f * a.z};
}

template <class V>
KORVALE_OVER_LANES Lanes3<V> operator/(const Lanes3<V>& a, const std::type_identity_t<V>& d)
{
    return {a.x / d, a.y / d, a.z / d};
}

/// Summed from the left.
template <class V>
KORVALE_OVER_LANES V dot(const Lanes3<V>& a, const Lanes3<V>& b)
{
    return a.x * b.x + a.y * b.y + a.z * b.z;
}

template <class V>
KORVALE_OVER_LANES Lanes3<V> cross(const Lanes3<V>& a, const Lanes3<V>& b)
{
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

// De-interleaving: three values of lanes as points stand in memory, x0 y0 z0 x1 y1 ..., to one value for each
// coordinate, and back. `listed` and `parted` may be the same.

inline void part_three(const double (&listed)[3], double (&parted)[3])
{
    std::memcpy(parted, listed, sizeof parted);
}

inline void part_three(const Pair (&listed)[3], Pair (&parted)[3])
{
    const Pair a = listed[0], b = listed[1], c = listed[2]; // x0 y0, z0 x1, y1 z1
    parted[0] = __builtin_shufflevector(a, b, 0, 3);
    parted[1] = __builtin_shufflevector(a, c, 1, 2);
    parted[2] = __builtin_shufflevector(b, c, 0, 3);
}

/// The first half of a and the second of b.
KORVALE_QUAD Quad halves(const Quad& a, const Quad& b)
{
#ifdef KORVALE_HAS_WIDE_LANES
    // The plain shuffle below becomes a slower instruction.
    return Quad(Quad::Lanes(__builtin_ia32_blendpd256(a.lanes, b.lanes, 0b1100)));
#else
    return Quad(__builtin_shufflevector(a.lanes, b.lanes, 0, 1, 6, 7));
#endif
}

/// x0 y0 z0 x1, y1 z1 x2 y2, z2 x3 y3 z3 to x0 x1 x2 x3, y0 ..., z0 ...
KORVALE_QUAD void part_three(const Quad (&listed)[3], Quad (&parted)[3])
{
    const Quad a = listed[0], b = listed[1], c = listed[2];
    const Quad::Lanes xy = halves(a, b).lanes;                                    // x0 y0 x2 y2
    const Quad::Lanes zx = __builtin_shufflevector(a.lanes, c.lanes, 2, 3, 4, 5); // z0 x1 z2 x3
    const Quad::Lanes yz = halves(b, c).lanes;                                    // y1 z1 y3 z3
    parted[0] = Quad(__builtin_shufflevector(xy, zx, 0, 5, 2, 7));
    parted[1] = Quad(__builtin_shufflevector(xy, yz, 1, 4, 3, 6));
    parted[2] = Quad(__builtin_shufflevector(zx, yz, 0, 5, 2, 7));
}

inline void list_three(const double (&parted)[3], double (&listed)[3])
{
    std::memcpy(listed, parted, sizeof listed);
}

inline void list_three(const Pair (&parted)[3], Pair (&listed)[3])
{
    const Pair x = parted[0], y = parted[1], z = parted[2];
    listed[0] = __builtin_shufflevector(x, y, 0, 2);
    listed[1] = __builtin_shufflevector(z, x, 0, 3);
    listed[2] = __builtin_shufflevector(y, z, 1, 3);
}

/// x0 x1 x2 x3, y0 ..., z0 ... to x0 y0 z0 x1, y1 z1 x2 y2, z2 x3 y3 z3
KORVALE_QUAD void list_three(const Quad (&parted)[3], Quad (&listed)[3])
{
    const Quad::Lanes x = parted[0].lanes, y = parted[1].lanes, z = parted[2].lanes;
    const Quad::Lanes xy = __builtin_shufflevector(x, y, 0, 4, 2, 6); // x0 y0 x2 y2
    const Quad::Lanes zx = __builtin_shufflevector(z, x, 0, 5, 2, 7); // z0 x1 z2 x3
    const Quad::Lanes yz = __builtin_shufflevector(y, z, 1, 5, 3, 7); // y1 z1 y3 z3
    listed[0] = Quad(__builtin_shufflevector(xy, zx, 0, 1, 4, 5));
    listed[1] = halves(Quad(yz), Quad(xy));
    listed[2] = Quad(__builtin_shufflevector(zx, yz, 2, 3, 6, 7));
}

/// As many points as V has lanes, from [lanes][3] of doubles or integers.
template <class V, class Number>
KORVALE_OVER_LANES Lanes3<V> load_points(const Number* p)
{
    constexpr int n = width_of<V>;
    const V listed[3] = {load<V>(p), load<V>(p + n), load<V>(p + 2 * n)};
    V parted[3];
    part_three(listed, parted);
    return {parted[0], parted[1], parted[2]};
}

template <class V>
KORVALE_OVER_LANES void store_points(double* p, const Lanes3<V>& points)
{
    constexpr int n = width_of<V>;
    const V parted[3] = {points.x, points.y, points.z};
    V listed[3];
    list_three(parted, listed);
    store(p, listed[0]);
    store(p + n, listed[1]);
    store(p + 2 * n, listed[2]);
}

KORVALE_QUAD void gather_points(const double* a, const double* b, const double* c, const double* d, Quad3& to)
{
    const Pair xy0 = load<Pair>(a), xy1 = load<Pair>(b), xy2 = load<Pair>(c), xy3 = load<Pair>(d);
    const Quad::Lanes even = __builtin_shufflevector(xy0, xy2, 0, 1, 2, 3); // x0 y0 x2 y2
    const Quad::Lanes odd = __builtin_shufflevector(xy1, xy3, 0, 1, 2, 3);
    to.x = Quad(__builtin_shufflevector(even, odd, 0, 4, 2, 6));
    to.y = Quad(__builtin_shufflevector(even, odd, 1, 5, 3, 7));
    to.z = Quad(a[2], b[2], c[2], d[2]);
}

/// Vectors as they are added to points one at a time: x and y of a vector side by side, then all z. A point's x and y
/// are updated together.
template <class V>
struct Separate3 {
    double xy[2 * width_of<V>];
    double z[width_of<V>];

    /// Of four lanes 1 and 2 are stored swapped: `store_pairs` unpacks each 128-bit half, and sorting them would cost
    /// two shuffles.
    static constexpr int stored_at(int lane) { return width_of<V> == 4 ? (lane & 1) * 2 + lane / 2 : lane; }

    const double* xy_of(int lane) const { return xy + 2 * stored_at(lane); }
};

KORVALE_QUAD void store_pairs(double* to, const Quad& x, const Quad& y)
{
    store_quad(to, Quad(__builtin_shufflevector(x.lanes, y.lanes, 0, 4, 2, 6)));     // x0 y0 x2 y2
    store_quad(to + 4, Quad(__builtin_shufflevector(x.lanes, y.lanes, 1, 5, 3, 7))); // x1 y1 x3 y3
}

inline void store_pairs(double* to, Pair x, Pair y)
{
    store(to, Pair(__builtin_shufflevector(x, y, 0, 2)));
    store(to + 2, Pair(__builtin_shufflevector(x, y, 1, 3)));
}

inline void store_pairs(double* to, double x, double y)
{
    to[0] = x;
    to[1] = y;
}

template <class V>
KORVALE_OVER_LANES void separate(const Lanes3<V>& v, Separate3<V>& to)
{
    store_pairs(to.xy, v.x, v.y);
    store(to.z, v.z);
}

/// The points of p [][3] numbered i[0], i[step], i[2 step] ...
template <class V>
KORVALE_OVER_LANES Lanes3<V> points_at(const double* p, const int32_t* i, int step)
{
    const double* const a = p + int64_t{3} * i[0];
    if constexpr (width_of<V> == 1) {
        return {a[0], a[1], a[2]};
    } else {
        const double* const b = p + int64_t{3} * i[step];
        Lanes3<V> points;
        if constexpr (width_of<V> == 2)
            points = {Pair{a[0], b[0]}, Pair{a[1], b[1]}, Pair{a[2], b[2]}};
        else
            gather_points(a, b, p + int64_t{3} * i[2 * step], p + int64_t{3} * i[3 * step], points);
        return points;
    }
}

} // namespace korvale::platform
