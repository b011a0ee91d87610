#pragma once

#include "points.hpp"

namespace korvale {

/// Scale, rotation about x, then y, then z in radians, and translation, applied in this order.
struct Srt {
    Point scale = {1.0, 1.0, 1.0};       ///< along x, y and z
    Point rotation = {0.0, 0.0, 0.0};    ///< about x, y and z, in radians
    Point translation = {0.0, 0.0, 0.0}; ///< along x, y and z

    /// The same nine numbers.
    friend bool operator==(const Srt&, const Srt&) = default;
};

namespace detail {

inline korvale_srt plain(const Srt& srt)
{
    const auto& [s, r, t] = srt;
    return {{s[0], s[1], s[2]}, {r[0], r[1], r[2]}, {t[0], t[1], t[2]}};
}

} // namespace detail

/// A 4x4 transform as a value. Points are columns, so `a * b` applies b first and the translation is in column 3.
///
/// ```
/// using korvale::Transform;
/// const Transform place = Transform::translation({10, 0, 0}) * Transform::rotation({0, 0, 1.5707963267948966});
/// const korvale::Point p = place.point({1, 0, 0}); // (10, 1, 0)
/// ```
class Transform {
public:
    /// Element [row][column], the type that `Xfm` names in korvale.h; the identity at first.
    double m[4][4] = {{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 1}};

    /// The identity.
    Transform() = default;

    /// Sixteen numbers, row by row.
    explicit Transform(std::span<const double, 16> rows) { std::ranges::copy(rows, numbers()); }

    /// By s[0] along x, s[1] along y and s[2] along z.
    static Transform scaling(const Point& s)
    {
        Transform t;
        t.m[0][0] = s[0];
        t.m[1][1] = s[1];
        t.m[2][2] = s[2];
        return t;
    }

    /// By a vector.
    static Transform translation(const Point& by)
    {
        Transform t;
        t.m[0][3] = by[0];
        t.m[1][3] = by[1];
        t.m[2][3] = by[2];
        return t;
    }

    /// By `radians` about x first, then y, then z.
    static Transform rotation(const Point& radians)
    {
        Transform t;
        korvale_transform_rotation(radians.data(), t.numbers());
        return t;
    }

    /// The same in degrees, which are converted with the short factor 0.0174533.
    static Transform rotation_in_degrees(const Point& degrees)
    {
        return rotation({degrees[0] * 0.0174533, degrees[1] * 0.0174533, degrees[2] * 0.0174533});
    }

    /// Scales, then turns, then moves.
    static Transform from(const Srt& srt)
    {
        const korvale_srt parts = detail::plain(srt);
        Transform t;
        korvale_transform_from_srt(&parts, t.numbers());
        return t;
    }

    /// The inverse of `from(srt)`. A scale strictly between -1e-06 and 1e-06 is inverted to 1000000, so that the result
    /// stays finite.
    static Transform inverse_of(const Srt& srt)
    {
        const korvale_srt parts = detail::plain(srt);
        Transform t;
        korvale_transform_inverse_of_srt(&parts, t.numbers());
        return t;
    }

    /// From the world into the frame at `origin` whose z axis runs along `z` and whose x axis is `reference` x z.
    static Transform into_frame(const Point& origin, const Point& z, const Point& reference)
    {
        return try_into_frame(origin, z, reference).value();
    }

    /// The same, telling of failures by its result.
    static Result<Transform> try_into_frame(const Point& origin, const Point& z, const Point& reference)
    {
        Transform t;
        return detail::given("Transform::into_frame", t, [&](korvale_error* error) {
            return korvale_transform_into_frame(origin.data(), z.data(), reference.data(), t.numbers(), error);
        });
    }

    /// One element.
    ///@{
    double operator()(std::size_t row, std::size_t column) const { return m[row][column]; }
    double& operator()(std::size_t row, std::size_t column) { return m[row][column]; }
    ///@}

    /// The sixteen numbers, row by row.
    std::span<const double, 16> rows() const KORVALE_LIFETIMEBOUND
    {
        return std::span<const double, 16>(numbers(), 16);
    }

    /// The point moved by the transform; divided by its fourth coordinate unless that is exactly 1.
    Point point(const Point& p) const
    {
        Point out;
        korvale_transform_point(numbers(), p.data(), out.data());
        return out;
    }

    /// The vector turned and scaled, not moved.
    Point vector(const Point& v) const
    {
        Point out;
        korvale_transform_vector(numbers(), v.data(), out.data());
        return out;
    }

    /// Moves points in place.
    void apply(PointSpan points) const { apply(points, points); }

    /// Writes the moved points to `output`, which has as many.
    void apply(AnyPoints points, PointSpan output) const { try_apply(points.view(), output).value(); }

    /// The same, telling of failures by their result.
    ///@{
    Result<void> try_apply(PointSpan points) const { return try_apply(points, points); }
    Result<void> try_apply(AnyPoints points, PointSpan output) const
    {
        const korvale_points from = detail::view_of(points);
        const korvale_points_out to = detail::view_of_output(output);
        return detail::done("Transform::apply", [&](korvale_error* error) {
            return korvale_transform_points(numbers(), &from, &to, error);
        });
    }
    ///@}

    /// First b, then a.
    friend Transform operator*(const Transform& a, const Transform& b)
    {
        Transform product;
        korvale_transform_multiply(a.numbers(), b.numbers(), product.numbers());
        return product;
    }

    /// The point moved, as by `point`.
    friend Point operator*(const Transform& t, const Point& p) { return t.point(p); }

    /// The transform that undoes this one, by Gauss-Jordan elimination with partial pivoting; the last row of the
    /// inverse is exact where that of the transform is 0 0 0 1.
    ///
    /// ```
    /// const korvale::Transform place = korvale::Transform::rotation({0, 0, 0.5});
    /// const korvale::Point local = place.inverse() * eye;
    /// ```
    ///
    /// Throws `Error` for a transform that nothing undoes, such as one that scales by 0, or that is not finite.
    Transform inverse() const { return try_inverse().value(); }

    /// The same, telling of failures by its result.
    Result<Transform> try_inverse() const
    {
        Transform t;
        return detail::given("Transform::inverse", t, [&](korvale_error* error) {
            return korvale_transform_invert(numbers(), t.numbers(), error);
        });
    }

    /// Rows as columns.
    Transform transposed() const
    {
        Transform t;
        for (std::size_t row = 0; row < 4; ++row)
            for (std::size_t column = 0; column < 4; ++column)
                t.m[row][column] = m[column][row];
        return t;
    }

    /// Scale, rotation and translation of a transform made of them. Where the y rotation is a quarter turn (`at_pole`),
    /// x and z turn about one axis and only their sum or difference is known: x comes out as 0.
    Srt take_apart() const
    {
        korvale_srt parts;
        korvale_transform_take_apart(numbers(), &parts);
        return {std::to_array(parts.scale), std::to_array(parts.rotation), std::to_array(parts.translation)};
    }

    /// The same sixteen numbers.
    friend bool operator==(const Transform&, const Transform&) = default;

private:
    double* numbers() noexcept { return &m[0][0]; }
    const double* numbers() const noexcept { return &m[0][0]; }
};

static_assert(sizeof(Transform) == 16 * sizeof(double));

/// Whether a rotation is the one that `Transform::take_apart` gives at the pole, a quarter turn about y.
inline bool at_pole(const Srt& srt)
{
    return srt.rotation[0] == 0.0 && std::fabs(srt.rotation[1]) == 1.5707963;
}

} // namespace korvale
