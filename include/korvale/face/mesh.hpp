#pragma once

#include <cstring>
#include <unordered_map>

#include "frames.hpp"
#include "offset.hpp"

namespace korvale {

namespace detail {

inline std::span<const std::int32_t> corners_of(std::span<const Triangle> triangles)
{
    return {triangles.empty() ? nullptr : triangles[0].data(), 3 * triangles.size()};
}

/// Triangles on shared vertices as the C interface takes them.
inline korvale_triangles view_of(PointView vertices, std::span<const Triangle> triangles)
{
    korvale_triangles view = {view_of(vertices), view_of(corners_of(triangles))};
    if (triangles.empty())
        view.points.count = 0;
    return view;
}

} // namespace detail

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

    /// The unit normal of each triangle, on the side from which it runs counter-clockwise; 0 0 0 where it has no area.
    std::vector<Point> normals() const
    {
        std::vector<Point> normals(triangles.size());
        const korvale_triangles all = detail::view_of(vertices, triangles);
        double* const to = normals.empty() ? nullptr : normals[0].data();
        detail::call("Mesh::normals", [&](korvale_error* error) { return korvale_mesh_normals(&all, to, error); });
        return normals;
    }

    /// The area of each triangle.
    std::vector<double> areas() const
    {
        std::vector<double> areas(triangles.size());
        const korvale_triangles all = detail::view_of(vertices, triangles);
        detail::call("Mesh::areas",
                     [&](korvale_error* error) { return korvale_mesh_areas(&all, areas.data(), error); });
        return areas;
    }

    /// The box around the vertices. Throws `Error` without any, and for numbers that are not finite.
    Bounds bounds() const
    {
        detail::require_points("Mesh::bounds", "vertices", vertices, 1);
        const korvale_numbers rows = {vertices.data(), static_cast<std::int64_t>(vertices.size()), 0, 3,
                                      KORVALE_DOUBLE};
        Bounds box;
        detail::call("Mesh::bounds", [&](korvale_error* error) {
            return korvale_bounds(&rows, box.least.data(), box.greatest.data(), error);
        });
        return box;
    }

    /// The volume inside, negative where the triangles face inwards. Vertices at exactly one place count as one. Throws
    /// `Error` for a mesh that is not closed: each edge has to be run through as often one way as the other.
    double volume() const
    {
        double volume = 0.0;
        const korvale_triangles all = detail::view_of(vertices, triangles);
        detail::call("Mesh::volume", [&](korvale_error* error) { return korvale_mesh_volume(&all, &volume, error); });
        return volume;
    }

    /// The same vertices and triangles, in the same order.
    friend bool operator==(const Mesh&, const Mesh&) = default;
};

namespace detail {

/// A corner of a ring that is being cut into triangles.
struct RingCorner {
    double x, y;
    std::int32_t number; // of the point among all points of the shape
};
using Ring = std::vector<RingCorner>;

/// Positive where c lies to the left of the line from a to b.
inline double side(const RingCorner& a, const RingCorner& b, const RingCorner& c)
{
    return (b.x - a.x) * (c.y - a.y) - (b.y - a.y) * (c.x - a.x);
}

inline bool in_triangle(const RingCorner& p, const RingCorner& a, const RingCorner& b, const RingCorner& c)
{
    return side(a, b, p) >= 0 && side(b, c, p) >= 0 && side(c, a, p) >= 0;
}

inline bool same_place(const RingCorner& a, const RingCorner& b)
{
    return a.x == b.x && a.y == b.y;
}

inline double doubled_area(const Ring& ring)
{
    double sum = 0;
    for (std::size_t i = 0; i < ring.size(); ++i) {
        const RingCorner &p = ring[i], &q = ring[(i + 1) % ring.size()];
        sum += p.x * q.y - q.x * p.y;
    }
    return sum;
}

/// The corner of `ring` that sees the rightmost point of a hole (David Eberly, Triangulation by Ear Clipping, 2002): a
/// ray to the right meets an edge, whose end further right sees the point unless a corner stands between.
inline std::size_t bridge_corner(const Ring& ring, const RingCorner& from)
{
    double nearest = std::numeric_limits<double>::infinity();
    std::size_t seen = 0;
    for (std::size_t i = 0; i < ring.size(); ++i) {
        const RingCorner &a = ring[i], &b = ring[(i + 1) % ring.size()];
        if (!(a.y <= from.y && b.y >= from.y) || a.y == b.y)
            continue;
        const double x = a.x + (from.y - a.y) / (b.y - a.y) * (b.x - a.x);
        if (x >= from.x && x < nearest) {
            nearest = x;
            seen = a.x > b.x ? i : (i + 1) % ring.size();
        }
    }
    const RingCorner hit = {nearest, from.y, -1}, end = ring[seen];
    double best_slope = std::numeric_limits<double>::infinity();
    std::size_t best = seen;
    for (std::size_t i = 0; i < ring.size(); ++i) {
        const RingCorner& p = ring[i];
        const bool below = end.y < from.y;
        if (same_place(p, end) || p.x < from.x || !in_triangle(p, from, below ? end : hit, below ? hit : end))
            continue;
        const double slope = std::fabs(p.y - from.y) / (p.x - from.x);
        if (slope < best_slope) {
            best_slope = slope;
            best = i;
        }
    }
    return best;
}

inline void join_hole(Ring& ring, Ring hole)
{
    const auto rightmost = std::ranges::max_element(hole, {}, &RingCorner::x);
    std::rotate(hole.begin(), rightmost, hole.end());
    const std::size_t at = bridge_corner(ring, hole[0]);
    hole.push_back(hole[0]);
    hole.push_back(ring[at]);
    ring.insert(ring.begin() + static_cast<std::ptrdiff_t>(at) + 1, hole.begin(), hole.end());
}

inline bool is_ear(const Ring& ring, std::size_t i)
{
    const std::size_t n = ring.size();
    const RingCorner &a = ring[(i + n - 1) % n], &b = ring[i], &c = ring[(i + 1) % n];
    if (side(a, b, c) <= 0)
        return false;
    for (const RingCorner& p : ring)
        if (!same_place(p, a) && !same_place(p, b) && !same_place(p, c) && in_triangle(p, a, b, c))
            return false;
    return true;
}

/// The corner to clip next: an ear; else one without area; else, in an outline that crosses itself, any.
inline std::size_t corner_to_clip(const Ring& ring, std::size_t start)
{
    const std::size_t n = ring.size();
    for (std::size_t k = 0; k < n; ++k)
        if (is_ear(ring, (start + k) % n))
            return (start + k) % n;
    for (std::size_t i = 0; i < n; ++i)
        if (side(ring[(i + n - 1) % n], ring[i], ring[(i + 1) % n]) == 0)
            return i;
    return 0;
}

/// Cuts rings, the outer one first, into triangles that run counter-clockwise. Holes are joined to the outer ring by
/// bridges, then ears are clipped.
inline std::vector<Triangle> triangulate(std::vector<Ring> rings)
{
    if (doubled_area(rings[0]) < 0)
        std::ranges::reverse(rings[0]);
    for (std::size_t k = 1; k < rings.size(); ++k)
        if (doubled_area(rings[k]) > 0)
            std::ranges::reverse(rings[k]);
    const auto reach = [](const Ring& r) { return std::ranges::max(r, {}, &RingCorner::x).x; };
    std::sort(rings.begin() + 1, rings.end(), [&](const Ring& a, const Ring& b) { return reach(a) > reach(b); });
    Ring& ring = rings[0];
    for (std::size_t k = 1; k < rings.size(); ++k)
        join_hole(ring, std::move(rings[k]));

    std::vector<Triangle> triangles;
    std::size_t start = 0;
    while (ring.size() >= 3) {
        const std::size_t n = ring.size(), i = corner_to_clip(ring, start);
        triangles.push_back({ring[(i + n - 1) % n].number, ring[i].number, ring[(i + 1) % n].number});
        ring.erase(ring.begin() + static_cast<std::ptrdiff_t>(i));
        start = (i + 1) % ring.size(); // skipping a corner keeps the triangles from becoming a fan
    }
    return triangles;
}

/// The points as a ring in the plane z = 0 of `to_plane`.
inline Ring ring_of(PointView points, const Transform& to_plane, std::int32_t first_number)
{
    Ring ring;
    for (std::size_t i = 0; i < points.size(); ++i) {
        const Point p = to_plane.point(points[i]);
        ring.push_back({p[0], p[1], first_number + static_cast<std::int32_t>(i)});
    }
    return ring;
}

/// Makes vertices at exactly one place one, and drops the triangles that lose their area by it and unused vertices.
inline void weld(Mesh& mesh)
{
    const auto hash = [](const Point& p) {
        std::size_t h = 0;
        for (const double v : p)
            h = (h ^ std::hash<double>()(v)) * 0x9e3779b97f4a7c15u;
        return h ^ h >> 32;
    };
    std::unordered_map<Point, std::int32_t, decltype(hash)> places(mesh.vertices.size(), hash);
    Mesh out;
    for (const Triangle& t : mesh.triangles) {
        Triangle welded = {};
        for (std::size_t k = 0; k < 3; ++k) {
            const Point& p = mesh.vertices[static_cast<std::size_t>(t[k])];
            const auto [place, is_new] = places.try_emplace(p, static_cast<std::int32_t>(out.vertices.size()));
            if (is_new)
                out.vertices.push_back(p);
            welded[k] = place->second;
        }
        if (welded[0] != welded[1] && welded[1] != welded[2] && welded[2] != welded[0])
            out.triangles.push_back(welded);
    }
    mesh = std::move(out);
}

/// Outlines as the C interface takes them.
inline std::vector<korvale_points> views_of(const ShapeView& outlines)
{
    std::vector<korvale_points> views;
    for (const PointView outline : outlines)
        views.push_back(view_of(outline));
    return views;
}

/// Six times the volume inside the triangles, negative where they are turned inside out.
inline double volume(const Mesh& mesh)
{
    double sum = 0;
    const auto corner = [&](std::int32_t v) {
        return minus(mesh.vertices[static_cast<std::size_t>(v)], mesh.vertices[0]);
    };
    for (const Triangle& t : mesh.triangles)
        sum += dot(corner(t[0]), cross(corner(t[1]), corner(t[2])));
    return sum;
}

inline void turn_inside_out(Mesh& mesh)
{
    for (Triangle& t : mesh.triangles)
        std::swap(t[1], t[2]);
}

/// Joins two rings of n vertices by a strip. Seen from outside, the first runs to the right below the second, or to the
/// left where the strip is `turned`.
inline void add_strip(Mesh& mesh, std::int32_t first, std::int32_t second, std::int32_t n, bool turned)
{
    for (std::int32_t i = 0; i < n; ++i) {
        const std::int32_t next = (i + 1) % n;
        Triangle lower = {first + i, first + next, second + next}, upper = {first + i, second + next, second + i};
        if (turned) {
            std::swap(lower[1], lower[2]);
            std::swap(upper[1], upper[2]);
        }
        mesh.triangles.push_back(lower);
        mesh.triangles.push_back(upper);
    }
}

} // namespace detail

/// Cuts a planar outline with holes into triangles: as many as there are points less two, and two more for each hole.
/// They number the points of all outlines in their order and run counter-clockwise where the outer outline does; the
/// outlines may run either way round. A shape that crosses itself gets triangles, some of which overlap.
inline std::vector<Triangle> triangulate(AnyShape outlines)
{
    const std::vector<korvale_points> views = detail::views_of(outlines);
    std::vector<Triangle> triangles;
    for (const korvale_points& outline : views)
        triangles.resize(triangles.size() + static_cast<std::size_t>(outline.count) + 2);
    korvale_error error;
    std::int64_t written = 0;
    const korvale_status status = korvale_triangulate(views.data(), static_cast<std::int64_t>(views.size()),
                                                      triangles.empty() ? nullptr : triangles[0].data(),
                                                      static_cast<std::int64_t>(triangles.size()), &written, &error);
    detail::check("triangulate", status, error);
    triangles.resize(static_cast<std::size_t>(written));
    return triangles;
}

/// Sorts outlines seen from above, along z, into shapes: numbers of outlines, that of an outer one first and then those
/// of its holes.
///
/// An outline inside an even number of others is an outer one, whichever way round it runs. Outlines may touch, but not
/// cross. One that is there twice is taken once, and one without points is left out.
///
/// ```
/// for (const std::vector<std::size_t>& shape : korvale::shapes(outlines))
///     fill(outlines[shape[0]], shape.size() - 1);
/// ```
inline std::vector<std::vector<std::size_t>> shapes(AnyShape outlines)
{
    const std::vector<korvale_points> views = detail::views_of(outlines);
    std::vector<std::int32_t> outer(views.size());
    korvale_error error;
    detail::check("shapes", korvale_shapes(views.data(), static_cast<std::int64_t>(views.size()), outer.data(), &error),
                  error);
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
}

/// One layer of a bevel.
struct BevelStep {
    double distance; ///< outwards
    double height;   ///< along the normal of the outer outline
};

/// A closed mesh from an outline with holes and a profile: a layer for each step, strips between neighbours, a cap on
/// the first and on the last layer. Its triangles face outwards.
///
/// Each layer is `offset` of the outlines, so edges that shrink to nothing close like the hips of a roof. A layer in
/// which an outline collapses without `split` is made with it, as it may be inside out. Vertices at exactly one place
/// are one vertex of the mesh.
///
/// ```
/// const korvale::BevelStep edge[] = {{0, 0}, {0, 8}, {-1, 9}}; // a wall with a chamfer on top
/// const korvale::Mesh solid = korvale::bevel(letter, edge);
/// ```
inline Mesh bevel(AnyShape outlines, std::span<const BevelStep> profile, bool split = true)
{
    if (profile.size() < 2)
        throw Error("bevel", "profile", "have at least 2 steps", "it has " + detail::text_of(profile.size()));
    for (const BevelStep& step : profile) {
        detail::require_finite("bevel", "profile", step.distance);
        detail::require_finite("bevel", "profile", step.height);
    }
    Mesh mesh;
    Offsetter offsetter;
    const auto layer_at = [&](const BevelStep& step) {
        std::vector<Offset> borders = offsetter.shape(outlines.view(), step.distance, {step.height, true, split});
        if (!split && std::ranges::any_of(borders, &Offset::collapsed))
            borders = offsetter.shape(outlines.view(), step.distance, {step.height, true, true});
        return borders;
    };
    std::vector<Offset> layer = layer_at(profile[0]);
    const Transform to_plane = flatten(outlines[0]).to_plane;
    const auto add_cap = [&](std::int32_t first, bool is_bottom) {
        std::vector<detail::Ring> rings;
        for (const Offset& border : layer) {
            rings.push_back(detail::ring_of(border.points, to_plane, first));
            first += static_cast<std::int32_t>(border.points.size());
        }
        for (const Triangle& t : detail::triangulate(std::move(rings)))
            mesh.triangles.push_back(is_bottom ? Triangle{t[0], t[2], t[1]} : t);
    };

    std::int32_t before = 0, here = 0;
    for (std::size_t s = 0; s < profile.size(); ++s) {
        if (s > 0)
            layer = layer_at(profile[s]);
        before = std::exchange(here, static_cast<std::int32_t>(mesh.vertices.size()));
        for (const Offset& border : layer)
            mesh.vertices.insert(mesh.vertices.end(), border.points.begin(), border.points.end());
        if (s == 0)
            add_cap(here, true);
        std::int32_t done = 0;
        for (std::size_t k = 0; s > 0 && k < layer.size(); ++k) {
            const auto n = static_cast<std::int32_t>(layer[k].points.size());
            // The outer outline runs counter-clockwise in its plane, holes run either way.
            const bool is_turned = k > 0 && detail::doubled_area(detail::ring_of(outlines[k], to_plane, 0)) > 0;
            detail::add_strip(mesh, before + done, here + done, n, is_turned);
            done += n;
        }
    }
    add_cap(here, false);
    detail::weld(mesh);
    if (!mesh.vertices.empty() && detail::volume(mesh) < 0)
        detail::turn_inside_out(mesh);
    return mesh;
}

/// How `tube` works.
struct TubeOptions {
    bool closed = false; ///< the last point of the path joins the first
    bool caps = true;    ///< close the two ends of an open tube
};

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
inline Mesh tube(AnyPoints path, AnyPoints section, const TubeOptions& options = {})
{
    detail::require_points("tube", "path", path, options.closed ? 3 : 2);
    detail::require_points("tube", "section", section, 3);
    const std::size_t n = section.size();
    detail::count_for("tube", "path times section", path.size() * n, 9);
    Mesh mesh;
    mesh.vertices.resize(path.size() * n);
    const std::vector<Transform> places = frames(path.view(), options.closed);
    for (std::size_t i = 0; i < places.size(); ++i)
        places[i].apply(section.view(), std::span(mesh.vertices).subspan(i * n, n));

    const auto width = static_cast<std::int32_t>(n), rings = static_cast<std::int32_t>(path.size());
    const detail::Ring ring = detail::ring_of(section, {}, 0);
    const bool turned = detail::doubled_area(ring) >= 0; // z points back, so the strips are seen from behind
    const auto join = [&](std::int32_t here, std::int32_t there) {
        detail::add_strip(mesh, here * width, there * width, width, turned);
    };
    for (std::int32_t i = 0; i + 1 < rings; ++i)
        join(i, i + 1);
    if (options.closed)
        join(rings - 1, 0);
    if (options.caps && !options.closed) {
        const std::int32_t last = (rings - 1) * width;
        for (const Triangle& t : detail::triangulate({ring})) {
            mesh.triangles.push_back(t);
            mesh.triangles.push_back({last + t[0], last + t[2], last + t[1]});
        }
    }
    return mesh;
}

} // namespace korvale
