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

/// A 4x4 transform as a value. Points are columns, so `a * b` applies b first and the translation is in column 3.
///
/// ```
/// using korvale::Transform;
/// const Transform place = Transform::translation({10, 0, 0}) * Transform::rotation({0, 0, 1.5707963267948966});
/// const korvale::Point p = place.point({1, 0, 0}); // (10, 1, 0)
/// ```
class Transform {
public:
    Xfm m; ///< element [row][column], as the fixed interface wants it

    /// The identity.
    Transform() { make_identity(m); }

    /// Sixteen numbers, row by row.
    explicit Transform(std::span<const double, 16> rows) { array2xfm(detail::unconst(rows.data()), m); }

    /// By s[0] along x, s[1] along y and s[2] along z.
    static Transform scaling(const Point& s)
    {
        Transform t;
        ScaleMatrix(detail::unconst(s.data()), t.m);
        return t;
    }

    /// By a vector.
    static Transform translation(const Point& by)
    {
        Transform t;
        TranslateMatrix(detail::unconst(by.data()), t.m);
        return t;
    }

    /// By `radians` about x first, then y, then z.
    static Transform rotation(const Point& radians)
    {
        Transform t;
        rotation_matrix(detail::unconst(radians.data()), t.m);
        return t;
    }

    /// The same in degrees, which are converted with the short factor 0.0174533.
    static Transform rotation_in_degrees(const Point& degrees)
    {
        Transform t;
        RotationMatrix(detail::unconst(degrees.data()), t.m);
        return t;
    }

    /// Scales, then turns, then moves.
    static Transform from(const Srt& srt)
    {
        Transform t;
        SRT2Transform(detail::unconst(srt.scale.data()), detail::unconst(srt.rotation.data()),
                      detail::unconst(srt.translation.data()), t.m);
        return t;
    }

    /// The inverse of `from(srt)`. A scale strictly between -1e-06 and 1e-06 is inverted to 1000000, so that the result
    /// stays finite.
    static Transform inverse_of(const Srt& srt)
    {
        Transform t;
        SRT2InvTransform(detail::unconst(srt.scale.data()), detail::unconst(srt.rotation.data()),
                         detail::unconst(srt.translation.data()), t.m);
        return t;
    }

    /// From the world into the frame at `origin` whose z axis runs along `z` and whose x axis is `reference` x z.
    static Transform into_frame(const Point& origin, const Point& z, const Point& reference)
    {
        double rows[16];
        if (orientation_xfm(detail::unconst(origin.data()), detail::unconst(z.data()),
                            detail::unconst(reference.data()), rows) != 1)
            throw Error("Transform::into_frame", "z", "be longer than 1e-06 and not along reference",
                        "it is " + detail::text_of_point(z) + " beside " + detail::text_of_point(reference));
        return Transform(rows);
    }

    /// One element.
    ///@{
    double operator()(std::size_t row, std::size_t column) const { return m[row][column]; }
    double& operator()(std::size_t row, std::size_t column) { return m[row][column]; }
    ///@}

    /// The sixteen numbers, row by row.
    std::span<const double, 16> rows() const { return std::span<const double, 16>(&m[0][0], 16); }

    /// The point moved by the transform; divided by its fourth coordinate unless that is exactly 1.
    Point point(const Point& p) const
    {
        Point out;
        TransformPoint(matrix(), detail::unconst(p.data()), out.data());
        return out;
    }

    /// The vector turned and scaled, not moved.
    Point vector(const Point& v) const
    {
        Point out;
        TransformVector(matrix(), detail::unconst(v.data()), out.data());
        return out;
    }

    /// Moves points in place.
    void apply(PointSpan points) const { apply(points, points); }

    /// Writes the moved points to `output`, which has as many.
    void apply(PointView points, PointSpan output) const
    {
        if (output.size() != points.size())
            throw Error("Transform::apply", "output", "have " + detail::counted(points.size(), "point"),
                        "it has " + detail::text_of(output.size()));
        detail::count_for("Transform::apply", "points", points.size(), 3);
        DATAstruct from = detail::record_over(points), to = detail::record_over(output);
        TransformDATA(matrix(), &from, &to);
    }

    /// First b, then a.
    friend Transform operator*(const Transform& a, const Transform& b)
    {
        Transform product;
        MatrixMultiply(a.matrix(), b.matrix(), product.m);
        return product;
    }

    /// Rows as columns.
    Transform transposed() const
    {
        Transform t;
        MatrixTranspose(matrix(), t.m);
        return t;
    }

    /// Scale, rotation and translation of a transform made of them. Where the y rotation is a quarter turn (`at_pole`),
    /// x and z turn about one axis and only their sum or difference is known: x comes out as 0.
    Srt take_apart() const
    {
        Srt srt;
        Transform2SRT(matrix(), srt.scale.data(), srt.rotation.data(), srt.translation.data());
        return srt;
    }

    /// The same sixteen numbers.
    friend bool operator==(const Transform&, const Transform&) = default;

private:
    /// For functions that only read.
    double (*matrix() const)[4] { return const_cast<double(*)[4]>(m); }
};

static_assert(sizeof(Transform) == sizeof(Xfm));

/// Whether a rotation is the one that `Transform::take_apart` gives at the pole, a quarter turn about y.
inline bool at_pole(const Srt& srt)
{
    return srt.rotation[0] == 0.0 && std::fabs(srt.rotation[1]) == 1.5707963;
}

} // namespace korvale
