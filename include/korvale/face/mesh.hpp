#pragma once

#include "frames.hpp"
#include "offset.hpp"

namespace korvale {

/// A box along the axes.
struct Bounds {
    Point least;    ///< its corner with the least coordinates
    Point greatest; ///< the one with the greatest

    /// The same corners.
    friend bool operator==(const Bounds&, const Bounds&) = default;
};

/// Triangles on shared vertices.
///
/// ```
/// const korvale::Mesh pipe = korvale::tube(path, octagon);
/// const double weight = 7.85 * pipe.volume();
/// const korvale::Bounds box = pipe.bounds();
/// ```
struct Mesh {
    std::vector<Point> vertices;     ///< shared by the triangles
    std::vector<Triangle> triangles; ///< numbers of vertices

    /// Of `bevel`: the distance that each step has reached, the one asked for unless it was held back. Else empty.
    std::vector<double> reached = {};

    /// The unit normal of each triangle, on the side from which it runs counter-clockwise; 0 0 0 where it has no area.
    std::vector<Point> normals() const { return try_normals().value(); }

    /// The area of each triangle.
    std::vector<double> areas() const { return try_areas().value(); }

    /// The box around the triangles. Throws `Error` where there are none, and for numbers that are not finite.
    Bounds bounds() const { return try_bounds().value(); }

    /// The volume inside, negative where the triangles face inwards. Vertices at exactly one place count as one. Throws
    /// `Error` for a mesh that is not closed: each edge has to be run through as often one way as the other.
    double volume() const { return try_volume().value(); }

    /// The same four, telling of failures by their result.
    ///@{
    Result<std::vector<Point>> try_normals() const
    {
        return detail::within_memory("Mesh::normals", [&]() -> Result<std::vector<Point>> {
            std::vector<Point> normals(triangles.size());
            const korvale_triangles all = detail::triangles_of(vertices, triangles);
            double* const to = normals.empty() ? nullptr : normals[0].data();
            return detail::given("Mesh::normals", normals,
                                 [&](korvale_error* error) { return korvale_mesh_normals(&all, to, error); });
        });
    }
    Result<std::vector<double>> try_areas() const
    {
        return detail::within_memory("Mesh::areas", [&]() -> Result<std::vector<double>> {
            std::vector<double> areas(triangles.size());
            const korvale_triangles all = detail::triangles_of(vertices, triangles);
            return detail::given("Mesh::areas", areas,
                                 [&](korvale_error* error) { return korvale_mesh_areas(&all, areas.data(), error); });
        });
    }
    Result<Bounds> try_bounds() const
    {
        Bounds box;
        const korvale_triangles all = detail::triangles_of(vertices, triangles);
        return detail::given("Mesh::bounds", box, [&](korvale_error* error) {
            return korvale_mesh_bounds(&all, box.least.data(), box.greatest.data(), error);
        });
    }
    Result<double> try_volume() const
    {
        double volume = 0.0;
        const korvale_triangles all = detail::triangles_of(vertices, triangles);
        return detail::given("Mesh::volume", volume,
                             [&](korvale_error* error) { return korvale_mesh_volume(&all, &volume, error); });
    }
    ///@}

    /// The same vertices and triangles, in the same order.
    friend bool operator==(const Mesh& a, const Mesh& b)
    {
        return a.vertices == b.vertices && a.triangles == b.triangles;
    }
};

namespace detail {

/// Outlines as the C interface takes them.
inline std::vector<korvale_points> views_of(const ShapeView& outlines)
{
    std::vector<korvale_points> views;
    for (const PointView outline : outlines)
        views.push_back(view_of(outline));
    return views;
}

/// Takes what a function of the C interface has made.
inline Mesh taken(korvale_mesh* made)
{
    struct Free {
        void operator()(korvale_mesh* mesh) const noexcept { korvale_mesh_free(mesh); }
    };
    const std::unique_ptr<korvale_mesh, Free> owner(made);
    const korvale_triangles view = korvale_mesh_view(made);
    const auto* const points = static_cast<const Point*>(view.points.data);
    const auto* const corners = static_cast<const Triangle*>(view.corners.data);
    std::int64_t steps = 0;
    const double* const reached = korvale_mesh_reached(made, &steps);
    return {
        {points, points + view.points.count}, {corners, corners + view.corners.count / 3}, {reached, reached + steps}};
}

} // namespace detail

/// `triangulate`, telling of failures by its result.
inline Result<std::vector<Triangle>> try_triangulate(AnyShape outlines, const Progress& progress = {})
{
    return detail::within_memory("triangulate", [&]() -> Result<std::vector<Triangle>> {
        const std::vector<korvale_points> views = detail::views_of(outlines);
        std::vector<Triangle> triangles;
        for (const korvale_points& outline : views)
            triangles.resize(triangles.size() + static_cast<std::size_t>(outline.count) + 2);
        std::int64_t written = 0;
        const Result<void> cut =
            detail::done("triangulate", progress, [&](korvale_progress tell, void* user, korvale_error* error) {
                return korvale_triangulate(views.data(), static_cast<std::int64_t>(views.size()),
                                           triangles.empty() ? nullptr : triangles[0].data(),
                                           static_cast<std::int64_t>(triangles.size()), &written, tell, user, error);
            });
        if (!cut)
            return cut.error();
        triangles.resize(static_cast<std::size_t>(written));
        return triangles;
    });
}

/// Cuts a planar outline with holes into triangles: as many as there are points less two, and two more for each hole.
/// They number the points of all outlines in their order and run counter-clockwise where the outer outline does; the
/// outlines may run either way round. Holes may touch each other and the outer outline, at points and along edges;
/// where outlines cross by more than rounding, triangles may overlap. The progress is told while many points are cut.
inline std::vector<Triangle> triangulate(AnyShape outlines, const Progress& progress = {})
{
    return try_triangulate(outlines.view(), progress).value();
}

/// How `shapes` works.
struct ShapesOptions {
    double tolerance = 0.0;  ///< outlines that lie within it of each other everywhere are one
    bool crossing = false;   ///< outlines that cross, also themselves, are sorted all the same, instead of refused
    Progress progress = {};  ///< told while many outlines are sorted; it may stop that
    Rings* joined = nullptr; ///< where it is given it becomes the outlines as they do not overlap
};

/// `shapes`, telling of failures by its result.
inline Result<std::vector<std::vector<std::size_t>>> try_shapes(AnyOutlines outlines, const ShapesOptions& options = {})
{
    return detail::within_memory("shapes", [&]() -> Result<std::vector<std::vector<std::size_t>>> {
        const std::vector<korvale_points> views = detail::views_of(outlines);
        std::vector<std::int32_t> outer(views.size());
        korvale_rings* made = nullptr;
        const Result<void> sorted =
            detail::done("shapes", options.progress, [&](korvale_progress tell, void* user, korvale_error* error) {
                const korvale_shapes_options how = {sizeof how,
                                                    options.crossing,
                                                    options.tolerance,
                                                    tell,
                                                    user,
                                                    options.joined == nullptr ? nullptr : &made};
                return korvale_shapes(views.data(), static_cast<std::int64_t>(views.size()), &how, outer.data(), error);
            });
        if (!sorted)
            return sorted.error();
        if (options.joined != nullptr)
            *options.joined = detail::taken(made);
        std::vector<std::vector<std::size_t>> shapes;
        std::vector<std::size_t> place(views.size());
        for (const bool holes : {false, true})
            for (std::size_t k = 0; k < outer.size(); ++k)
                if (const std::int32_t m = outer[k]; m >= 0 && (m != static_cast<std::int32_t>(k)) == holes) {
                    if (!holes) {
                        place[k] = shapes.size();
                        shapes.emplace_back();
                    }
                    shapes[place[static_cast<std::size_t>(m)]].push_back(k);
                }
        return shapes;
    });
}

/// Sorts outlines seen from above, along z, into shapes: numbers of outlines, that of an outer one first and then those
/// of its holes.
///
/// An outline inside an even number of others is an outer one, whichever way round it runs. Outlines may touch. One
/// that is there twice is taken once, and one of fewer than three points is left out. With a tolerance outlines that
/// are within it of each other everywhere, corners within twice that, are one, and so are those that a chain of such
/// ones joins.
///
/// Outlines may overlap by less than the tolerance then, and triangles of them too. `joined` are rings that do not, one
/// for each outline: those that overlap are joined, each to the ones before it, by moving points no farther than the
/// tolerance and adding some, and so again where they cross in their new places. `sources` are the points of each
/// outline, or those at which the edges of added points begin, `parents` the outer outlines.
///
/// ```
/// for (const std::vector<std::size_t>& shape : korvale::shapes(letter))
///     draw(letter[shape[0]], shape.size() - 1);
/// ```
///
/// Throws `Error` for numbers that are not finite, a tolerance below 0, and outlines that cross themselves or each
/// other by more than the tolerance, unless they are sorted all the same, and for outlines whose details are so small
/// beside the tolerance that they cannot be joined.
inline std::vector<std::vector<std::size_t>> shapes(AnyOutlines outlines, const ShapesOptions& options = {})
{
    return try_shapes(outlines.view(), options).value();
}

/// One layer of a bevel.
struct BevelStep {
    double distance; ///< outwards
    double height;   ///< upwards: along z over outlines at one z, else along the normal of the outer outline
};

/// `bevel`, telling of failures by its result.
inline Result<Mesh> try_bevel(AnyShape outlines, std::span<const BevelStep> profile, bool split = true,
                              const Progress& progress = {}, bool crossing = false)
{
    static_assert(sizeof(BevelStep) == sizeof(korvale_bevel_step));
    return detail::within_memory("bevel", [&]() -> Result<Mesh> {
        const auto* const steps = reinterpret_cast<const korvale_bevel_step*>(profile.data());
        const std::vector<korvale_points> views = detail::views_of(outlines);
        korvale_mesh* made = nullptr;
        const Result<void> solid =
            detail::done("bevel", progress, [&](korvale_progress tell, void* user, korvale_error* error) {
                const korvale_bevel_options how = {sizeof how, split, tell, user, crossing, 0};
                return korvale_bevel(views.data(), static_cast<std::int64_t>(views.size()), steps,
                                     static_cast<std::int64_t>(profile.size()), &how, &made, error);
            });
        if (!solid)
            return solid.error();
        return detail::taken(made);
    });
}

/// A closed mesh from an outline with holes and a profile: a layer for each step, strips between neighbours, a cap on
/// the first and on the last layer. Its triangles face outwards.
///
/// Each layer is `offset` of the outlines, so edges that shrink to nothing close like the hips of a roof. A step that
/// would lose a part is held back: it keeps its height, goes as far as nothing is lost, and `Mesh::reached` tells how
/// far that is. It is
///
/// - where an outline would fall apart, as at a neck narrower than twice the way in, or a limb of it vanish, all of it
///   at once; outlines that touch themselves go nowhere;
/// - where the outer outline has come to nothing, at the ridge of a roof. Holes may vanish;
/// - to a millionth where two outlines would cross, as those of a frame moved in by more than half its width.
///
/// A layer that would cross itself or collapse without `split` is made with it. So caps do not overlap, unless the
/// outlines do: those that cross are refused, or with `crossing` taken as they are, and go no way on which they would
/// still cross.
///
/// Vertices at exactly one place are one vertex of the mesh. No random number is drawn, and outlines may have any size,
/// as those of `offset`.
///
/// ```
/// const korvale::Mesh solid = korvale::bevel(letter, {{0, 0}, {0, 8}, {-1, 9}}); // a wall with a chamfer on top
/// ```
///
/// The progress is told step by step.
///
/// Throws `Error` for fewer than two steps, no outline, fewer than three points, numbers that are not finite, outlines
/// that cross themselves or each other, and holes that leave nothing of the outer outline.
inline Mesh bevel(AnyShape outlines, std::span<const BevelStep> profile, bool split = true,
                  const Progress& progress = {}, bool crossing = false)
{
    return try_bevel(outlines.view(), profile, split, progress, crossing).value();
}

/// The same with a profile written out.
inline Mesh bevel(AnyShape outlines, std::initializer_list<BevelStep> profile, bool split = true,
                  const Progress& progress = {}, bool crossing = false)
{
    return bevel(outlines.view(), std::span(profile.begin(), profile.size()), split, progress, crossing);
}

/// How `tube` works.
struct TubeOptions {
    bool closed = false;    ///< the last point of the path joins the first
    bool caps = true;       ///< close the two ends of an open tube
    Progress progress = {}; ///< told while many points are made; it may stop that
};

/// `tube`, telling of failures by its result.
inline Result<Mesh> try_tube(AnyPoints path, AnyPoints section, const TubeOptions& options = {})
{
    return detail::within_memory("tube", [&]() -> Result<Mesh> {
        const korvale_points along = detail::view_of(path), around = detail::view_of(section);
        korvale_mesh* made = nullptr;
        const Result<void> tube =
            detail::done("tube", options.progress, [&](korvale_progress tell, void* user, korvale_error* error) {
                const korvale_tube_options how = {sizeof how, options.closed, options.caps, 0, tell, user};
                return korvale_tube(&along, &around, &how, &made, error);
            });
        if (!tube)
            return tube.error();
        return detail::taken(made);
    });
}

/// A mesh from a path and a section: the section, an outline in the plane z = 0 around the origin, is carried to every
/// point of the path by `frames` and neighbours are joined by strips. Its triangles face outwards.
///
/// Vertex k of ring i is at i * section.size() + k. Mitres keep the section's size at a bend; the wall gets thinner
/// there.
///
/// ```
/// const korvale::Mesh pipe = korvale::tube(path, octagon);
/// const korvale::Mesh ring = korvale::tube(loop, octagon, {.closed = true});
/// ```
///
/// Throws `Error` for fewer than two points of a path (three of a closed one), fewer than three of a section, and
/// numbers that are not finite.
inline Mesh tube(AnyPoints path, AnyPoints section, const TubeOptions& options = {})
{
    return try_tube(path.view(), section.view(), options).value();
}

} // namespace korvale
