#pragma once

#include "points.hpp"

namespace korvale {

/// How `offset` works.
struct OffsetOptions {
    double height = 0.0;       ///< lift of the border along the normal from which the outline runs counter-clockwise
    bool keep_vertices = true; ///< a point of the border per vertex of the outline; else removed vertices are left out
    bool split = true; ///< also stop where parts of the outline meet; else only where an edge vanishes (quicker), and
                       ///< parts that meet run through each other
};

/// One border, and what became of every vertex of its outline.
struct Offset {
    Points points;                   ///< the border
    Array<std::uint8_t> removed;     ///< [n] 1 for a vertex that was removed on the way
    Array<std::int32_t> merged_into; ///< [n] the vertex that each one merged into, itself while it stayed
    bool collapsed = false; ///< nothing is left: fewer than three vertices, all within 1.2e-06 of one line, or, where
                            ///< `split` is off, the outline has turned inside out
};

namespace detail {

/// Twice the area that an outline goes round, along the normal from which it runs counter-clockwise. Zero where its
/// parts cancel but for rounding.
inline Point doubled_area_of(PointView outline)
{
    constexpr double kRounding = 1e-12;
    Point sum = {};
    double size = 0.0;
    for (std::size_t i = 1; i + 1 < outline.size(); ++i) {
        const Point a = minus(outline[i], outline[0]), b = minus(outline[i + 1], outline[0]);
        const Point part = {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
        sum = plus(sum, 1.0, part);
        size += std::fabs(part[0]) + std::fabs(part[1]) + std::fabs(part[2]);
    }
    return length(sum) > kRounding * size ? sum : Point{};
}

/// A `BORDERStatus` with its ten arrays, released with the value. They keep their capacity from sweep to sweep.
class Sweep {
public:
    Sweep()
    {
        for (DATAstruct& array : arrays_)
            DATAInitialize(&array);
        DATAstruct** const fields[] = {&status_.path,      &status_.output, &status_.flat, &status_.velocity,
                                       &status_.direction, &status_.line,   &status_.dead, &status_.length,
                                       &status_.rate,      &status_.merge};
        for (std::size_t i = 0; i < kArrays; ++i)
            *fields[i] = &arrays_[i];
    }
    ~Sweep()
    {
        for (DATAstruct& array : arrays_)
            DATADispose(&array);
    }
    Sweep(const Sweep&) = delete;
    Sweep& operator=(const Sweep&) = delete;

    BORDERStatus& status() { return status_; }
    Points border() const { return take_points(*status_.output); }

    /// `BORDER` on one outline, with the status' height. The outline is read in place.
    void run(PointView outline, double distance)
    {
        look_at(outline, distance);
        finish(BORDER(&status_));
    }

    /// `BORDER_BORDER` on one outline.
    void run_flat(PointView outline, double distance)
    {
        look_at(outline, distance);
        finish(BORDER_BORDER(&status_));
    }

    /// `BORDER` on one outline that the record owns and that gains wings.
    void run_with_wings(PointView line, double distance)
    {
        DATAstruct& path = *status_.path;
        path.type = DATA_TYPE_DOUBLE;
        path.count = static_cast<std::int32_t>(line.size());
        path.dim = 3;
        if (DATAAllocate(&path) != 1)
            throw std::bad_alloc();
        std::ranges::copy(line.coordinates(), path.dvals);
        BORDERAddWings(&status_);
        if (path.count != static_cast<std::int32_t>(line.size()) + 2)
            throw std::bad_alloc();
        status_.distance = distance;
        if (BORDER(&status_) != 1)
            throw std::bad_alloc();
    }

    bool is_removed(std::size_t vertex) const { return status_.dead->bvals[vertex] != 0; }

    /// Points of the border, vertices of its outline: none before the first sweep, after one that failed and once the
    /// result has been handed over.
    ///@{
    std::size_t points() const { return held(*status_.output); }
    std::size_t vertices() const { return held(*status_.dead); }
    ///@}

    /// Whether no area is left of the outline. Without splits a part that has shrunk to nothing goes on, inside out,
    /// and grows again; so there the border is compared with the outline.
    bool has_collapsed() const
    {
        constexpr double kThin = 1.2e-06; // neighbours within this merge
        const DATAstruct &output = *status_.output, &dead = *status_.dead;
        const bool kept = output.count == dead.count;
        std::vector<Point> live;
        live.reserve(points());
        for (std::ptrdiff_t i = 0, at = 0; i < dead.count; ++i) {
            if (dead.bvals[i] != 0)
                continue;
            const double* const p = output.dvals + 3 * (kept ? i : at++);
            live.push_back({p[0], p[1], p[2]});
        }
        if (live.size() < 3)
            return true;
        Point along = {};
        for (const Point& p : live)
            if (const Point d = minus(p, live[0]); dot(d, d) > dot(along, along))
                along = d;
        const double reach = length(along);
        if (reach < kThin || std::ranges::all_of(live, [&](const Point& p) {
                return length(cross(along, minus(p, live[0]))) < kThin * reach;
            }))
            return true;
        return status_.split_events == 0 && dot(doubled_area_of(live), area_) < 0.0;
    }

    /// Hands the result over; the arrays it takes start again empty.
    Offset take()
    {
        Offset result;
        result.collapsed = has_collapsed();
        const std::size_t n = vertices();
        result.points = take_points(*status_.output);
        result.removed = {std::exchange(status_.dead->bvals, nullptr), n};
        result.merged_into = {std::exchange(status_.merge->ivals, nullptr), n};
        DATADispose(status_.dead);
        DATADispose(status_.merge);
        return result;
    }

private:
    static constexpr std::size_t kArrays = 10;

    void look_at(PointView outline, double distance)
    {
        DATADispose(status_.path); // a line that has gained wings is the record's own
        *status_.path = record_over(outline);
        status_.distance = distance;
        if (status_.split_events == 0)
            area_ = doubled_area_of(outline);
    }

    void finish(int result)
    {
        DATAInitialize(status_.path); // the points were the caller's
        if (result == 1)
            return;
        for (DATAstruct* const array : {status_.output, status_.dead, status_.merge})
            DATADispose(array);
        throw std::bad_alloc();
    }

    static std::size_t held(const DATAstruct& array)
    {
        return array.count < 0 ? 0 : static_cast<std::size_t>(array.count);
    }

    static Points take_points(DATAstruct& array)
    {
        const std::size_t count = held(array);
        Points points(std::exchange(array.dvals, nullptr), count);
        DATADispose(&array);
        return points;
    }

    DATAstruct arrays_[kArrays];
    BORDERStatus status_ = {};
    Point area_ = {}; // of the outline, where splits are off
};

inline void check_outline(const char* argument, PointView outline)
{
    require_points("offset", argument, outline, 3);
}

inline void check_options(double distance, const OffsetOptions& options)
{
    require_finite("offset", "distance", distance);
    require_finite("offset", "options.height", options.height);
}

} // namespace detail

/// Offsets outlines one after the other in arrays that are kept: the quickest way to many.
///
/// ```
/// korvale::Offsetter offsetter;
/// for (double distance = -1; distance <= 1; distance += 0.1)
///     draw(offsetter(outline, distance).points());
/// ```
class Offsetter {
public:
    /// Offsets one outline; see `offset`. What the accessors show is valid until the next call. They show no points and
    /// no vertices before the first one, after `take` and `shape`, and when the heap was exhausted.
    Offsetter& operator()(PointView outline, double distance, const OffsetOptions& options = {})
    {
        detail::check_outline("outline", outline);
        detail::check_options(distance, options);
        set(options);
        sweep_.run(outline, distance);
        return *this;
    }

    /// The border of the latest outline.
    std::span<const Point> points() const
    {
        return {reinterpret_cast<const Point*>(status().output->dvals), sweep_.points()};
    }

    /// [n] 1 for each vertex of the latest outline that was removed.
    std::span<const std::uint8_t> removed() const { return {status().dead->bvals, sweep_.vertices()}; }

    /// [n] the vertex that each one merged into, itself while it stayed.
    std::span<const std::int32_t> merged_into() const { return {status().merge->ivals, sweep_.vertices()}; }

    /// Whether nothing is left of the latest outline, as in `Offset`; true where the accessors show none.
    bool collapsed() const { return sweep_.has_collapsed(); }

    /// Hands the latest result over; an empty one, `collapsed`, where the accessors show none.
    Offset take() { return sweep_.take(); }

    /// Offsets an outer outline and its holes; see `offset`. The results are handed over, so the accessors show none.
    std::vector<Offset> shape(const ShapeView& outlines, double distance, const OffsetOptions& options = {})
    {
        detail::check_options(distance, options);
        if (outlines.size() == 0)
            throw Error("offset", "outlines", "have an outer outline", "there is none");
        for (std::size_t k = 0; k < outlines.size(); ++k)
            detail::check_outline(("outline " + detail::text_of(k)).c_str(), outlines[k]);
        set(options);

        // The steps of BORDER on a list, one by one, so that each outline's record can be looked at.
        Xfm flat, back;
        DATAstruct outer = detail::record_over(outlines[0]);
        DATA_to_xy_xfms(&outer, flat, back, 1);
        std::vector<Offset> borders;
        for (std::size_t k = 0; k < outlines.size(); ++k) {
            sweep_.run_flat(outlines[k], k == 0 ? distance : -distance);
            DATAstruct& output = *status().output;
            TransformDATA(flat, &output, &output);
            for (std::ptrdiff_t i = 0; i < output.count; ++i)
                output.dvals[3 * i + 2] += options.height;
            TransformDATA(back, &output, &output);
            borders.push_back(sweep_.take());
        }
        return borders;
    }

private:
    const BORDERStatus& status() const { return const_cast<detail::Sweep&>(sweep_).status(); }

    void set(const OffsetOptions& options)
    {
        BORDERStatus& status = sweep_.status();
        status.height = options.height;
        status.keep_collapsed = options.keep_vertices;
        status.split_events = options.split;
    }

    detail::Sweep sweep_;
};

/// The border of a closed, planar outline: every edge moved sideways by `distance` in the outline's own plane, outwards
/// where it is positive, with corners kept sharp.
///
/// The last point joins the first; do not repeat it. The plane may lie anywhere. Edges that shrink to nothing and parts
/// that meet are taken out on the way; `removed` and `collapsed` tell of it. Lengths are absolute: work in units in
/// which an outline measures about 1 or more.
///
/// ```
/// const std::vector<korvale::Point> square = {{0, 0, 0}, {4, 0, 0}, {4, 4, 0}, {0, 4, 0}};
/// korvale::offset(square, 0.5).points;     // a square of side 5
/// korvale::offset(square, -2.5).collapsed; // true
/// ```
///
/// Throws `Error` for fewer than three points and for numbers that are not finite.
inline Offset offset(PointView outline, double distance, const OffsetOptions& options = {})
{
    return Offsetter()(outline, distance, options).take();
}

/// The borders of an outer outline and its holes, in their order. A positive distance grows the outer outline and
/// shrinks the holes, whichever way round each of them runs; all are lifted along the normal of the outer one.
///
/// The outlines do not see each other: a hole that grows can outgrow its outline.
///
/// ```
/// const std::vector<std::vector<korvale::Point>> plate = {
///     {{0, 0, 0}, {10, 0, 0}, {10, 10, 0}, {0, 10, 0}}, {{3, 3, 0}, {7, 3, 0}, {7, 7, 0}, {3, 7, 0}}};
/// auto borders = korvale::offset(plate, 1); // sides of 12 and 2
/// ```
inline std::vector<Offset> offset(const ShapeView& outlines, double distance, const OffsetOptions& options = {})
{
    return Offsetter().shape(outlines, distance, options);
}

} // namespace korvale
