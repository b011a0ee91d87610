#pragma once

#include "points.hpp"
#include "progress.hpp"

namespace korvale {

/// How `offset` works.
struct OffsetOptions {
    double height = 0.0;       ///< lift of the border along the normal from which the outline runs counter-clockwise
    bool keep_vertices = true; ///< a point of the border per vertex of the outline; else removed vertices are left out
    bool split = true; ///< also stop where parts of the outline meet; else only where an edge vanishes (quicker), and
                       ///< parts that meet run through each other
    Progress progress = {}; ///< told while outlines of many points are moved; it may stop that
};

/// One border, and what became of every vertex of its outline.
struct Offset {
    Points points;                   ///< the border
    Array<std::uint8_t> removed;     ///< [n] 1 for a vertex that was removed on the way
    Array<std::int32_t> merged_into; ///< [n] the vertex that each one merged into, itself while it stayed
    bool collapsed = false; ///< nothing is left: fewer than three vertices, all within 1.2e-06 of one line, or, where
                            ///< `split` is off, the outline has turned inside out

    /// The same in memory of its own.
    Offset clone() const { return {points.clone(), removed.clone(), merged_into.clone(), collapsed}; }

    /// The same border, and the same said of its vertices.
    friend bool operator==(const Offset&, const Offset&) = default;
};

namespace detail {

inline korvale_offset_options options_of(const OffsetOptions& options, Told& told)
{
    return {sizeof(korvale_offset_options),
            options.keep_vertices,
            options.split,
            0,
            options.height,
            told.function(),
            told.user()};
}

/// The failure of `offset`; `one_outline` goes by its own name.
inline Failure failure_of_offset(korvale_status status, const korvale_error& error, bool one_outline) noexcept
{
    if (status == KORVALE_STOPPED)
        return Told::stopped("offset");
    if (status == KORVALE_BAD_ARGUMENT && one_outline && std::string_view(error.argument) == "outline 0")
        return Failure("offset", "outline", error.wanted, error.given);
    return Failure("offset", status, error);
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
    Offsetter() : Offsetter(try_make().value()) {}

    /// One, telling of failures by its result.
    static Result<Offsetter> try_make()
    {
        korvale_offsetter* made;
        korvale_error error;
        if (const korvale_status status = korvale_offsetter_new(&made, &error); status != KORVALE_OK)
            return Failure("offset", status, error);
        return Offsetter(made);
    }

    /// Offsets one outline; see `offset`. What the accessors show is valid until the next call. They show no points and
    /// no vertices before the first one, after `take` and `shape`, and when the heap was exhausted.
    Offsetter& operator()(AnyPoints outline, double distance, const OffsetOptions& options = {}) KORVALE_LIFETIMEBOUND
    {
        try_offset(outline.view(), distance, options).value();
        return *this;
    }

    /// The same, telling of failures by its result.
    Result<void> try_offset(AnyPoints outline, double distance, const OffsetOptions& options = {})
    {
        const korvale_points points = detail::view_of(outline);
        return run({&points, 1}, distance, options, true);
    }

    /// The border of the latest outline.
    std::span<const Point> points() const KORVALE_LIFETIMEBOUND
    {
        return {reinterpret_cast<const Point*>(border_.points), static_cast<std::size_t>(border_.count)};
    }

    /// [n] 1 for each vertex of the latest outline that was removed.
    std::span<const std::uint8_t> removed() const KORVALE_LIFETIMEBOUND
    {
        return {border_.removed, static_cast<std::size_t>(border_.vertices)};
    }

    /// [n] the vertex that each one merged into, itself while it stayed.
    std::span<const std::int32_t> merged_into() const KORVALE_LIFETIMEBOUND
    {
        return {border_.merged_into, static_cast<std::size_t>(border_.vertices)};
    }

    /// Whether nothing is left of the latest outline, as in `Offset`; true where the accessors show none.
    bool collapsed() const { return border_.points == nullptr || border_.collapsed != 0; }

    /// Hands the latest result over; an empty one, `collapsed`, where the accessors show none.
    Offset take()
    {
        border_ = {};
        return taken(0);
    }

    /// Offsets an outer outline and its holes; see `offset`. The results are handed over, so the accessors show none.
    std::vector<Offset> shape(AnyOutlines outlines, double distance, const OffsetOptions& options = {})
    {
        return try_shape(outlines.view(), distance, options).value();
    }

    /// The same, telling of failures by its result.
    Result<std::vector<Offset>> try_shape(AnyOutlines outlines, double distance, const OffsetOptions& options = {})
    {
        return detail::within_memory("offset", [&]() -> Result<std::vector<Offset>> {
            std::vector<korvale_points> points;
            for (const PointView outline : outlines)
                points.push_back(detail::view_of(outline));
            if (Result<void> done = run(points, distance, options, false); !done)
                return done.error();
            border_ = {};
            std::vector<Offset> borders;
            for (std::size_t k = 0; k < points.size(); ++k)
                borders.push_back(taken(static_cast<std::int64_t>(k)));
            return borders;
        });
    }

private:
    struct Free {
        void operator()(korvale_offsetter* offsetter) const noexcept { korvale_offsetter_free(offsetter); }
    };

    explicit Offsetter(korvale_offsetter* made) noexcept : offsetter_(made) {}

    Result<void> run(std::span<const korvale_points> outlines, double distance, const OffsetOptions& options,
                     bool one_outline)
    {
        detail::Told told(options.progress);
        const korvale_offset_options how = detail::options_of(options, told);
        korvale_error error;
        const korvale_status status = korvale_offsetter_run(
            offsetter_.get(), outlines.data(), static_cast<std::int64_t>(outlines.size()), distance, &how, &error);
        border_ = korvale_offsetter_border(offsetter_.get(), 0);
        told.rethrow();
        if (status != KORVALE_OK)
            return detail::failure_of_offset(status, error, one_outline);
        return {};
    }

    Offset taken(std::int64_t k)
    {
        const korvale_border border = korvale_offsetter_take(offsetter_.get(), k);
        const auto vertices = static_cast<std::size_t>(border.vertices);
        return {Points(border.points, static_cast<std::size_t>(border.count)),
                {border.removed, vertices},
                {border.merged_into, vertices},
                border.points == nullptr || border.collapsed != 0};
    }

    std::unique_ptr<korvale_offsetter, Free> offsetter_;
    korvale_border border_ = {}; // of the latest outline
};

/// `offset`, telling of failures by its result.
inline Result<Offset> try_offset(AnyPoints outline, double distance, const OffsetOptions& options = {})
{
    return detail::within_memory("offset", [&]() -> Result<Offset> {
        Offset border;
        border.points = Points(outline.size());
        border.removed = Array<std::uint8_t>(outline.size());
        border.merged_into = Array<std::int32_t>(outline.size());
        korvale_border to = {
            border.points.coordinates().data(), border.removed.data(), border.merged_into.data(), 0, 0, 0, 0};
        const korvale_points points = detail::view_of(outline);
        const Result<void> done =
            detail::done("offset", options.progress, [&](korvale_progress told, void* user, korvale_error* error) {
                const korvale_offset_options how = {
                    sizeof how, options.keep_vertices, options.split, 0, options.height, told, user};
                return korvale_offset(&points, distance, &how, &to, error);
            });
        if (!done)
            return done.error();
        border.points = Points(border.points.release(), static_cast<std::size_t>(to.count));
        border.collapsed = to.collapsed != 0;
        return border;
    });
}

/// The border of a closed, planar outline: every edge moved sideways by `distance` in the outline's own plane, outwards
/// where it is positive, with corners kept sharp.
///
/// The last point joins the first; do not repeat it. The plane may lie anywhere. Edges that shrink to nothing and parts
/// that meet are taken out on the way; `removed` and `collapsed` tell of it. No random number is drawn. Outlines may
/// have any size: lengths count as nothing below 1.2e-06, or, where an outline reaches less than 1 along each axis,
/// below about a millionth of that.
///
/// ```
/// const std::vector<korvale::Point> square = {{0, 0, 0}, {4, 0, 0}, {4, 4, 0}, {0, 4, 0}};
/// korvale::offset(square, 0.5).points;     // a square of side 5
/// korvale::offset(square, -2.5).collapsed; // true
/// ```
///
/// Throws `Error` for fewer than three points and for numbers that are not finite.
inline Offset offset(AnyPoints outline, double distance, const OffsetOptions& options = {})
{
    return try_offset(outline.view(), distance, options).value();
}

/// `offset`, telling of failures by its result.
inline Result<std::vector<Offset>> try_offset(AnyOutlines outlines, double distance, const OffsetOptions& options = {})
{
    Result<Offsetter> offsetter = Offsetter::try_make();
    if (!offsetter)
        return offsetter.error();
    return offsetter->try_shape(outlines.view(), distance, options);
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
inline std::vector<Offset> offset(AnyOutlines outlines, double distance, const OffsetOptions& options = {})
{
    return try_offset(outlines.view(), distance, options).value();
}

} // namespace korvale
