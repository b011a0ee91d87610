#pragma once

#include <cmath>

// Where points of a plane lie of each other, exactly (Jonathan Richard Shewchuk, Adaptive Precision Floating-Point
// Arithmetic and Fast Robust Geometric Predicates, 1997): a bound of the rounding decides nearly always, sums without
// rounding decide the rest. Exact as long as products of coordinates neither overflow nor underflow.
namespace korvale::door {

/// A point of a plane.
struct Place {
    double x, y;

    friend bool operator==(const Place&, const Place&) = default;
};

/// As they are swept: by x, then by y.
inline bool is_before(const Place& a, const Place& b)
{
    return a.x < b.x || (a.x == b.x && a.y < b.y);
}

/// Lengths that count as nothing where coordinates are at most 1, and shares that do of a sum: 9,000 roundings of
/// 2^-53. Chosen: scaling, turning and moving make tens of them, and 1e-12 of a drawing is nothing to see.
constexpr double kNegligible = 1e-12;

inline int sign_of(double value)
{
    return (value > 0.0) - (value < 0.0);
}

/// How far rounding can move the difference of two products, as a part of their sizes: (3 + 16 u) u with u of 2^-53,
/// the first bound of the two-dimensional orientation test in J. R. Shewchuk, "Adaptive Precision Floating-Point
/// Arithmetic and Fast Robust Geometric Predicates", 1997.
constexpr double kSideRounding = 3.3306690738754716e-16;

/// What `side` answers where rounding could change it.
int exact_side(const Place& a, const Place& b, const Place& c);

/// 1 where c lies to the left of the line from a to b, -1 where it lies to the right, 0 on the line.
inline int side(const Place& a, const Place& b, const Place& c)
{
    const double left = (b.x - a.x) * (c.y - a.y), right = (b.y - a.y) * (c.x - a.x);
    const double difference = left - right;
    if (std::fabs(difference) > kSideRounding * (std::fabs(left) + std::fabs(right)) || left == 0.0 || right == 0.0)
        return sign_of(difference);
    return exact_side(a, b, c);
}

} // namespace korvale::door
