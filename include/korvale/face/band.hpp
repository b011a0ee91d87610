#pragma once

#include <optional>

#include "offset.hpp"

namespace korvale {

/// How a band ends at the ends of an open line.
enum class Cap : std::int32_t {
    flat = KORVALE_CAP_FLAT,     ///< at the end of the line, square to it
    square = KORVALE_CAP_SQUARE, ///< a distance beyond it
    round = KORVALE_CAP_ROUND    ///< in an arc around it, of edges outside it
};

/// How `band` works.
struct BandOptions {
    double height = 0.0;     ///< lift of the border along `up`
    bool both_sides = false; ///< from the border on one side to that on the other, instead of to the line itself

    /// The side from which right is right. Without it the line has to be planar, and is seen from the side that is up
    /// in z (in y or x where its plane is upright). With it the line may rise and fall: it is offset as seen along
    /// `up`, and each point of the border is as high as its point of the line. Parts above each other are near each
    /// other as seen from there, so a ramp of more than one turn has no inner side: lay it turn by turn.
    std::optional<Point> up = {};

    bool closed = false;      ///< the last point joins the first (do not repeat it): the band is a ring, two outlines
    double miter_limit = 4.0; ///< no point of the border is farther from the line than this many distances; that of a
                              ///< sharper corner ends there, on the bisector, and the border runs straight to it
    Progress progress = {};   ///< told while bands of many points are laid; it may stop that
    Cap cap = Cap::flat;      ///< at both ends of an open line, where its border has not given way there
    double tolerance = 0.0;   ///< how far a round cap may be outside the arc; 0: 1 / 200 of the distance
};

/// Two edges of a band that meet.
struct Crossing {
    std::size_t first;  ///< an edge; edge i runs from point i of its outline to the next one
    std::size_t second; ///< the other one

    /// The same two edges.
    friend bool operator==(const Crossing&, const Crossing&) = default;
};

/// A closed outline along a line; along a closed line two of them, `border()` and `other_side()`.
struct Band {
    /// the border in the order of the line, then the other side backwards; behind each of them the cap at its end
    Points outline;
    Array<std::uint8_t> removed; ///< [points of the line] 1 where a point gave way and shares the place of others
    bool collapsed = false;      ///< no part of the line has a border at this distance, on any side that was asked for

    /// where the outline crosses or touches itself, if it does: it may then enclose some places twice
    std::optional<Crossing> crossing;

    /// [points of the line] 1 where a point gave way in part: another part of the line is nearer than the distance and
    /// the border keeps between them, or it belongs to a corner sharper than the miter limit and is held there
    Array<std::uint8_t> narrowed;

    /// with caps the point of the line that each point of the outline belongs to; else empty: they are those of the
    /// line in their order, then backwards
    Array<std::int32_t> sources = {};

    /// The same in memory of its own.
    Band clone() const
    {
        return {outline.clone(), removed.clone(), collapsed, crossing, narrowed.clone(), sources.clone()};
    }

    /// The same outline, and the same said of its points.
    friend bool operator==(const Band&, const Band&) = default;

    /// The border alone, one point for each point of the line; a copy of that of a temporary.
    ///@{
    std::span<const Point> border() const& KORVALE_LIFETIMEBOUND { return {outline.data(), removed.size()}; }
    Points border() const&& { return detail::copy_of(border()); }
    ///@}

    /// The rest of the outline: the line or, on both sides, its other border, backwards; a copy of that of a temporary.
    ///@{
    std::span<const Point> other_side() const& KORVALE_LIFETIMEBOUND
    {
        std::size_t start = removed.size();
        while (start + 1 < sources.size() && sources[start + 1] == sources[removed.size()]) // the cap in between
            ++start;
        return {outline.data() + start, removed.size()};
    }
    Points other_side() const&& { return detail::copy_of(other_side()); }
    ///@}
};

/// `band`, telling of failures by its result.
inline Result<Band> try_band(AnyPoints line, double distance, const BandOptions& options = {})
{
    return detail::within_memory("band", [&]() -> Result<Band> {
        const std::size_t n = line.size();
        const Point up = options.up.value_or(Point{});
        Band band;
        band.outline = Points(2 * n);
        band.removed = Array<std::uint8_t>(n);
        band.narrowed = Array<std::uint8_t>(n);
        korvale_band_result result = {
            band.outline.coordinates().data(), band.removed.data(), band.narrowed.data(), 0, 0, {0, 0}};
        const korvale_points points = detail::view_of(line);
        korvale_rings* whole = nullptr;
        const Result<void> done =
            detail::done("band", options.progress, [&](korvale_progress told, void* user, korvale_error* error) {
                const korvale_band_options how = {
                    sizeof how,
                    options.both_sides,
                    options.up.has_value(),
                    options.closed,
                    options.height,
                    {up[0], up[1], up[2]},
                    options.miter_limit,
                    told,
                    user,
                    static_cast<std::int32_t>(options.cap),
                    0,
                    options.tolerance,
                    options.cap == Cap::flat ? nullptr : &whole,
                };
                return korvale_band(&points, distance, &how, &result, error);
            });
        if (!done)
            return done.error();
        if (whole != nullptr) {
            Rings rings = detail::taken(whole);
            band.outline = std::move(rings.points);
            band.sources = std::move(rings.sources);
        }
        band.collapsed = result.collapsed != 0;
        if (result.crosses != 0)
            band.crossing =
                Crossing{static_cast<std::size_t>(result.crossing[0]), static_cast<std::size_t>(result.crossing[1])};
        return band;
    });
}

/// The band between a line and its border at a signed distance: to the right of the line where it is positive.
///
/// The outline has two points for each point of the line. Where a bend is tighter than the distance, points of the
/// border give way and share a place; `removed` names them. Where another part of the line is nearer, as in a hairpin,
/// the border keeps halfway between them; `narrowed` names the points, and those of corners sharper than
/// `options.miter_limit`, which end at it: towards them the border comes nearer to the line, the more the sharper the
/// corner is. Inside a closed line that is tighter than the distance the border gives way to one place; `collapsed`
/// tells where that is all there is. Where the line goes back and forth within a distance, as a track does that stood
/// still, the border passes by as if it were a point there: all points of such a knot share a place, seen along `up`,
/// and keep their heights. So a border ends beside the middle of a knot in which its line ends. `crossing` tells where
/// the outline meets itself after all, as it does where the line crosses itself, and halfway between legs of a hairpin
/// that are nearer to each other than two distances.
///
/// Straight lines, ends that point any way, doubled points and jitter are no harm; a line that rises and falls needs
/// `options.up`. No random number is drawn, and lines may have any size, as outlines of `offset`. Where the distance is
/// below the rounding of the coordinates, border and line are at one place and meet.
///
/// With a `cap` each end of an open line has more points, which belong to the end, as `sources` tells. What a cap runs
/// into does not move it, but `crossing` tells of it.
///
/// ```
/// korvale::Band road = korvale::band(middle, 3.5, {.both_sides = true, .up = korvale::Point{0, 0, 1}}); // 7 wide
/// if (road.crossing)
///     warn_about_edge(road.crossing->first);
/// ```
///
/// Throws `Error` without points, for a closed line of fewer than 3 different points, a distance of 0, a line that is
/// not planar without `options.up`, a miter limit below 1, and numbers that are not finite.
inline Band band(AnyPoints line, double distance, const BandOptions& options = {})
{
    return try_band(line.view(), distance, options).value();
}

/// `thin`, telling of failures by its result.
inline Result<std::vector<std::size_t>> try_thin(AnyPoints line, double tolerance)
{
    return detail::within_memory("thin", [&]() -> Result<std::vector<std::size_t>> {
        std::vector<std::int32_t> kept(line.size());
        std::int64_t count = 0;
        const korvale_points points = detail::view_of(line);
        korvale_error error;
        if (const korvale_status status = korvale_thin(&points, tolerance, kept.data(), &count, &error);
            status != KORVALE_OK)
            return Failure("thin", status, error);
        return std::vector<std::size_t>(kept.begin(), kept.begin() + count);
    });
}

/// The points that describe a line to within a tolerance: every point left out lies within it of the stretch between
/// the two around it that stay. The first and the last stay.
///
/// ```
/// const std::vector<std::size_t> kept = korvale::thin(middle, 2.0);
/// ```
///
/// Throws `Error` without points, for a tolerance below 0, and for numbers that are not finite.
inline std::vector<std::size_t> thin(AnyPoints line, double tolerance)
{
    return try_thin(line.view(), tolerance).value();
}

} // namespace korvale
