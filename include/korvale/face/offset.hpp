#pragma once

#include "points.hpp"
#include "progress.hpp"

namespace korvale {

/// What stands at corners that open: at those that stick out where an outline grows, at the others where it shrinks.
enum class Join : std::int32_t {
    miter = KORVALE_JOIN_MITER, ///< edges run on until they meet; with a `miter_limit` sharper corners are cut off
    bevel = KORVALE_JOIN_BEVEL, ///< the ends of the moved edges are joined by an edge straight across
    round = KORVALE_JOIN_ROUND  ///< the ends of the moved edges are joined by an arc around the vertex
};

/// How `offset` works.
struct OffsetOptions {
    double height = 0.0;       ///< lift of the border along the normal from which the outline runs counter-clockwise
    bool keep_vertices = true; ///< a point of the border per vertex of the outline; else removed vertices are left out
    bool split = true; ///< also stop where parts of the outline meet; else only where an edge vanishes (quicker), and
                       ///< parts that meet run through each other
    Progress progress = {};   ///< told while outlines of many points are moved; it may stop that
    Join join = Join::miter;  ///< at all corners
    double miter_limit = 0.0; ///< corners that would be farther than so many distances from their vertex are cut off at
                              ///< the distance; 0: none
    double tolerance = 0.0;   ///< how far a round join may be outside the arc; 0: 1 / 200 of the distance
    std::span<const Join> corner_joins = {}; ///< of each point of the outlines, instead of `join`; empty: none
};

/// One border, and what became of every vertex of its outline.
struct Offset {
    Points points;                   ///< the border
    Array<std::uint8_t> removed;     ///< [n] 1 for a vertex that was removed on the way
    Array<std::int32_t> merged_into; ///< [n] the vertex that each one merged into, itself while it stayed
    bool collapsed = false; ///< nothing is left: fewer than three vertices, all as near to one line as what counts as
                            ///< nothing (see `offset`), or, where `split` is off, the outline has turned inside out
    Array<std::int32_t> sources = {}; ///< [points] with joins the vertex that each point belongs to; else empty: points
                                      ///< are those of the vertices in their order, but for removed ones left out

    /// The same in memory of its own.
    Offset clone() const { return {points.clone(), removed.clone(), merged_into.clone(), collapsed, sources.clone()}; }

    /// The same border, and the same said of its vertices.
    friend bool operator==(const Offset&, const Offset&) = default;
};

namespace detail {

inline korvale_offset_options options_of(const OffsetOptions& options, korvale_progress progress, void* user)
{
    return {sizeof(korvale_offset_options),
            options.keep_vertices,
            options.split,
            0,
            options.height,
            progress,
            user,
            static_cast<std::int32_t>(options.join),
            0,
            options.miter_limit,
            options.tolerance,
            {options.corner_joins.data(), static_cast<std::int64_t>(options.corner_joins.size()), 0, KORVALE_INT32}};
}

/// Whether a vertex may have several points.
inline bool has_joins(const OffsetOptions& options)
{
    return options.join != Join::miter || options.miter_limit != 0.0 || !options.corner_joins.empty();
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

    /// [points] with joins the vertex that each point of the latest border belongs to; else empty, as in `Offset`.
    std::span<const std::int32_t> sources() const KORVALE_LIFETIMEBOUND
    {
        const std::int32_t* const sources = korvale_offsetter_sources(offsetter_.get(), 0);
        return {sources, border_.points == nullptr || sources == nullptr ? 0 : static_cast<std::size_t>(border_.count)};
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
        const korvale_offset_options how = detail::options_of(options, told.function(), told.user());
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
        const std::int32_t* const from = korvale_offsetter_sources(offsetter_.get(), k);
        Array<std::int32_t> sources;
        if (from != nullptr) {
            sources =
                Array<std::int32_t>(static_cast<std::size_t>(korvale_offsetter_border(offsetter_.get(), k).count));
            std::copy_n(from, sources.size(), sources.data());
        }
        const korvale_border border = korvale_offsetter_take(offsetter_.get(), k);
        const auto vertices = static_cast<std::size_t>(border.vertices);
        return {Points(border.points, static_cast<std::size_t>(border.count)),
                {border.removed, vertices},
                {border.merged_into, vertices},
                border.points == nullptr || border.collapsed != 0,
                std::move(sources)};
    }

    std::unique_ptr<korvale_offsetter, Free> offsetter_;
    korvale_border border_ = {}; // of the latest outline
};

/// `offset`, telling of failures by its result.
inline Result<Offset> try_offset(AnyPoints outline, double distance, const OffsetOptions& options = {})
{
    return detail::within_memory("offset", [&]() -> Result<Offset> {
        if (detail::has_joins(options)) {
            Result<Offsetter> offsetter = Offsetter::try_make();
            if (!offsetter)
                return offsetter.error();
            if (const Result<void> done = offsetter->try_offset(outline.view(), distance, options); !done)
                return done.error();
            return offsetter->take();
        }
        Offset border;
        border.points = Points(outline.size());
        border.removed = Array<std::uint8_t>(outline.size());
        border.merged_into = Array<std::int32_t>(outline.size());
        korvale_border to = {
            border.points.coordinates().data(), border.removed.data(), border.merged_into.data(), 0, 0, 0, 0};
        const korvale_points points = detail::view_of(outline);
        const Result<void> done =
            detail::done("offset", options.progress, [&](korvale_progress told, void* user, korvale_error* error) {
                const korvale_offset_options how = detail::options_of(options, told, user);
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
/// where it is positive, with corners kept sharp, or joined as the options say.
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
/// With joins a vertex becomes as many points as its join has corners, which `sources` tells; vertices that are removed
/// have none, and `keep_vertices` is not looked at. What moves is the outline with its joins: these meet other parts,
/// split and vanish as edges do.
///
/// ```
/// auto rounded = korvale::offset(outline, 2, {.join = korvale::Join::round, .tolerance = 0.01});
/// auto cut = korvale::offset(outline, 2, {.miter_limit = 4}); // corners farther than 8 out are cut off at 2
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

/// Distances as an argument: a number for all outlines, or any contiguous range of doubles or `{0.5, -0.25}` with one
/// for each; or those at which one outline is wanted. It cannot be kept.
class AnyDistances {
public:
    /// One for all.
    AnyDistances(double distance)
        : one_(distance), layout_{&one_, 1, 0, 1, KORVALE_DOUBLE} {} // NOLINT: made in passing

    /// One for each.
    ///@{
    template <detail::Contiguous R>
    requires(detail::Number<detail::ElementValue<R>>) AnyDistances(R&& each KORVALE_LIFETIMEBOUND) // NOLINT
        : layout_{std::ranges::data(each), static_cast<std::int64_t>(std::ranges::size(each)), 0, 1,
                  std::same_as<detail::ElementValue<R>, float> ? KORVALE_FLOAT : KORVALE_DOUBLE}
    {
    }
    AnyDistances(std::initializer_list<double> each KORVALE_LIFETIMEBOUND) // NOLINT
        : layout_{each.begin(), static_cast<std::int64_t>(each.size()), 0, 1, KORVALE_DOUBLE}
    {
    }
    ///@}

    AnyDistances(const AnyDistances&) = delete;
    AnyDistances& operator=(const AnyDistances&) = delete;

    /// Where they are, as the C interface takes them.
    const korvale_numbers& layout() const noexcept { return layout_; }

private:
    double one_ = 0.0;
    korvale_numbers layout_;
};

/// Borders of many outlines, one behind the other. Points of the outlines, the vertices here, have the numbers that
/// they have in the points handed in, or in all outlines one after the other.
struct Borders {
    Points points;                 ///< of all borders
    Array<std::int64_t> starts;    ///< [outlines + 1] where each border begins in `points`, and where the last one ends
    Array<std::int32_t> sources;   ///< [points] the vertex that each point belongs to
    Array<std::uint8_t> collapsed; ///< [outlines] 1 where nothing is left, as in `Offset`
    Array<std::uint8_t> removed;   ///< [vertices] 1 for a vertex that was removed on the way
    Array<std::int32_t> merged_into; ///< [vertices] the vertex that each one merged into, itself while it stayed
    std::size_t first = 0;           ///< the number of the first vertex, to which entry 0 of the last two belongs

    /// How many there are.
    std::size_t size() const noexcept { return collapsed.size(); }

    /// The border of outline k.
    std::span<const Point> operator[](std::size_t k) const KORVALE_LIFETIMEBOUND
    {
        const auto begin = static_cast<std::size_t>(starts[k]), end = static_cast<std::size_t>(starts[k + 1]);
        return {points.data() + begin, end - begin};
    }

    /// The same in memory of their own.
    Borders clone() const
    {
        return {points.clone(),      starts.clone(), sources.clone(), collapsed.clone(), removed.clone(),
                merged_into.clone(), first};
    }

    /// The same borders of the same vertices.
    friend bool operator==(const Borders&, const Borders&) = default;
};

/// `offset_many`, telling of failures by its result.
inline Result<Borders> try_offset_many(AnyPoints points, const AnyIndices& starts, const AnyDistances& distances,
                                       const OffsetOptions& options = {})
{
    struct Free {
        void operator()(korvale_borders* borders) const noexcept { korvale_borders_free(borders); }
    };
    const korvale_points view = detail::view_of(points);
    korvale_borders* made = nullptr;
    const Result<void> done =
        detail::done("offset_many", options.progress, [&](korvale_progress told, void* user, korvale_error* error) {
            const korvale_offset_options how = detail::options_of(options, told, user);
            return korvale_offset_many(&view, &starts.layout(), &distances.layout(), &how, &made, error);
        });
    const std::unique_ptr<korvale_borders, Free> owner(made);
    if (!done)
        return done.error();
    const korvale_border_arrays all = korvale_borders_take(made);
    const auto outlines = static_cast<std::size_t>(all.outlines), vertices = static_cast<std::size_t>(all.vertices);
    const auto n = static_cast<std::size_t>(all.starts[all.outlines]);
    return Borders{Points(all.points, n),
                   {all.starts, outlines + 1},
                   {all.sources, n},
                   {all.collapsed, outlines},
                   {all.removed, vertices},
                   {all.merged_into, vertices},
                   static_cast<std::size_t>(all.first)};
}

/// Offsets each of many outlines as `offset` does it alone, in one call: quicker than one by one, and nothing is
/// allocated for each. Every outline is an outer one here; a hole has a distance of its own.
///
/// `starts` has a number more than there are outlines: outline k are the points from number starts[k] up to, but
/// without, number starts[k + 1]. Part of `starts` are part of the outlines, as for one thread of several.
///
/// ```
/// const korvale::Borders borders = korvale::offset_many(vertices, starts, 0.5);
/// for (std::size_t k = 0; k < borders.size(); ++k)
///     if (!borders.collapsed[k])
///         draw(borders[k]);
/// ```
///
/// Throws `Error` for what `offset` refuses of any outline, by its number, before anything is moved.
inline Borders offset_many(AnyPoints points, const AnyIndices& starts, const AnyDistances& distances,
                           const OffsetOptions& options = {})
{
    return try_offset_many(points.view(), starts, distances, options).value();
}

/// `offset_many`, telling of failures by its result.
inline Result<Borders> try_offset_many(AnyOutlines outlines, const AnyDistances& distances,
                                       const OffsetOptions& options = {})
{
    return detail::within_memory("offset_many", [&]() -> Result<Borders> {
        std::vector<std::int64_t> starts = {0};
        for (const PointView outline : outlines)
            starts.push_back(starts.back() + static_cast<std::int64_t>(outline.size()));
        Points points(static_cast<std::size_t>(starts.back()));
        Point* to = points.data();
        for (const PointView outline : outlines)
            to = detail::copy_points(outline, to);
        return try_offset_many(points, starts, distances, options);
    });
}

/// The same of outlines that lie anywhere, which are copied one behind the other first.
///
/// ```
/// const std::vector<std::vector<korvale::Point>> tiles = {{{0, 0, 0}, {4, 0, 0}, {4, 4, 0}, {0, 4, 0}},
///                                                         {{5, 0, 0}, {9, 0, 0}, {9, 4, 0}, {5, 4, 0}}};
/// auto borders = korvale::offset_many(tiles, {-0.5, -1});
/// ```
inline Borders offset_many(AnyOutlines outlines, const AnyDistances& distances, const OffsetOptions& options = {})
{
    return try_offset_many(outlines.view(), distances, options).value();
}

/// All rings that an outline becomes, one behind the other; ring 0 is its own. Each has its points in the order of the
/// outline. One that has come to nothing has none.
struct Rings {
    Points points;                 ///< of all rings
    Array<std::int64_t> starts;    ///< [rings + 1] where each ring begins in `points`, and where the last one ends
    Array<std::int32_t> sources;   ///< [points] the vertex of the outline that each point belongs to
    Array<std::int32_t> parents;   ///< [rings] the ring that each one was cut from, one before it; -1 for ring 0
    Array<double> births;          ///< [rings] the distance at which it was, 0 for ring 0
    Array<double> ends;            ///< [rings] the distance at which it came to nothing, or the whole one
    Array<std::uint8_t> collapsed; ///< [rings] 1 where it has come to nothing

    /// How many there are, those that have come to nothing included.
    std::size_t size() const noexcept { return collapsed.size(); }

    /// Ring k.
    std::span<const Point> operator[](std::size_t k) const KORVALE_LIFETIMEBOUND
    {
        const auto begin = static_cast<std::size_t>(starts[k]), end = static_cast<std::size_t>(starts[k + 1]);
        return {points.data() + begin, end - begin};
    }

    /// The same in memory of their own.
    Rings clone() const
    {
        return {points.clone(), starts.clone(), sources.clone(),  parents.clone(),
                births.clone(), ends.clone(),   collapsed.clone()};
    }

    /// The same rings.
    friend bool operator==(const Rings&, const Rings&) = default;
};

namespace detail {

/// The rings of a handle, which is released.
inline Rings taken(korvale_rings* made) noexcept
{
    const korvale_ring_arrays all = korvale_rings_take(made);
    korvale_rings_free(made);
    const auto rings = static_cast<std::size_t>(all.rings), n = static_cast<std::size_t>(all.starts[all.rings]);
    return {Points(all.points, n), {all.starts, rings + 1}, {all.sources, n},      {all.parents, rings},
            {all.births, rings},   {all.ends, rings},       {all.collapsed, rings}};
}

/// Rings `begin` to `end` of all, in memory of their own.
inline Rings part_of(const Rings& all, std::size_t begin, std::size_t end)
{
    const auto first = static_cast<std::size_t>(all.starts[begin]), last = static_cast<std::size_t>(all.starts[end]);
    const auto copied = []<class T>(const Array<T>& from, std::size_t at, std::size_t count) {
        Array<T> to(count);
        std::copy_n(from.data() + at, count, to.data());
        return to;
    };
    Rings part;
    part.points = Points(last - first);
    std::copy_n(all.points.data() + first, last - first, part.points.data());
    part.starts = copied(all.starts, begin, end - begin + 1);
    for (std::int64_t& start : part.starts)
        start -= static_cast<std::int64_t>(first);
    part.sources = copied(all.sources, first, last - first);
    part.parents = copied(all.parents, begin, end - begin);
    for (std::int32_t& parent : part.parents)
        parent -= parent < 0 ? 0 : static_cast<std::int32_t>(begin);
    part.births = copied(all.births, begin, end - begin);
    part.ends = copied(all.ends, begin, end - begin);
    part.collapsed = copied(all.collapsed, begin, end - begin);
    return part;
}

} // namespace detail

/// `offset_rings`, telling of failures by its result.
inline Result<Rings> try_offset_rings(AnyPoints outline, double distance, const OffsetOptions& options = {})
{
    const korvale_points points = detail::view_of(outline);
    korvale_rings* made = nullptr;
    const Result<void> done =
        detail::done("offset_rings", options.progress, [&](korvale_progress told, void* user, korvale_error* error) {
            const korvale_offset_options how = detail::options_of(options, told, user);
            return korvale_offset_rings(&points, distance, &how, &made, error);
        });
    if (!done)
        return done.error();
    return detail::taken(made);
}

/// `offset` with all pieces: where a vertex runs into an edge both go on, the piece that `offset` drops as an outline
/// of its own. Ring 0 is the outline's own, to the last bit what `offset` gives without `keep_vertices`, at which this
/// function does not look.
///
/// The rings tell what has become of the outline on the way: from which ring each was cut, and at which distance.
/// Outwards, those inside of others are what has been closed in, and run the other way. Rings do not cross each other,
/// but for rounding, unless the outline crosses or touches itself.
///
/// ```
/// const korvale::Rings rings = korvale::offset_rings(outline, -2);
/// for (std::size_t k = 0; k < rings.size(); ++k)
///     if (!rings.collapsed[k])
///         draw(rings[k]);
/// ```
///
/// Throws `Error` for what `offset` refuses.
inline Rings offset_rings(AnyPoints outline, double distance, const OffsetOptions& options = {})
{
    return try_offset_rings(outline.view(), distance, options).value();
}

/// `offset_rings` at many distances, telling of failures by its result.
inline Result<std::vector<Rings>> try_offset_rings(AnyPoints outline, const AnyDistances& distances,
                                                   const OffsetOptions& options = {})
{
    return detail::within_memory("offset_rings", [&]() -> Result<std::vector<Rings>> {
        const korvale_points points = detail::view_of(outline);
        korvale_rings* made = nullptr;
        const Result<void> done = detail::done(
            "offset_rings", options.progress, [&](korvale_progress told, void* user, korvale_error* error) {
                const korvale_offset_options how = detail::options_of(options, told, user);
                return korvale_offset_distances(&points, &distances.layout(), &how, &made, error);
            });
        if (!done)
            return done.error();
        const Rings all = detail::taken(made);
        std::vector<Rings> rings;
        for (std::size_t begin = 0, end = 0; begin < all.size(); begin = end) {
            end = static_cast<std::size_t>(
                std::find(all.parents.begin() + static_cast<std::ptrdiff_t>(begin) + 1, all.parents.end(), -1) -
                all.parents.begin());
            rings.push_back(detail::part_of(all, begin, end));
        }
        return rings;
    });
}

/// The rings of an outline at many distances, in their order, which may be any: each as `offset_rings` gives it for
/// that distance alone, to the last bit. The outline is swept once to the farthest distance each way, and the others
/// are passed on the way, so that all cost little more than the farthest. That does not hold for outlines that cross
/// themselves, and for round joins within a `tolerance` that is given.
///
/// ```
/// const std::vector<double> depths = {-1, -2, -3};
/// for (const korvale::Rings& rings : korvale::offset_rings(outline, depths))
///     for (std::size_t k = 0; k < rings.size(); ++k)
///         draw(rings[k]);
/// ```
///
/// Throws `Error` for what `offset` refuses.
inline std::vector<Rings> offset_rings(AnyPoints outline, const AnyDistances& distances,
                                       const OffsetOptions& options = {})
{
    return try_offset_rings(outline.view(), distances, options).value();
}

} // namespace korvale
