#pragma once

#include <numbers>
#include <optional>

#include "offset.hpp"

namespace korvale {

/// How `band` works.
struct BandOptions {
    double height = 0.0;     ///< lift of the border along `up`
    bool both_sides = false; ///< from the border on one side to that on the other, instead of to the line itself

    /// The side from which right is right. Without it the line has to be planar, and is seen from the side that is up
    /// in z (in y or x where its plane is upright). With it the line may rise and fall: it is offset as seen along
    /// `up`, and each point of the border is as high as its point of the line.
    std::optional<Point> up = {};
};

/// Two edges of a band that meet.
struct Crossing {
    std::size_t first;  ///< an edge; edge i runs from point i of the outline to the next one
    std::size_t second; ///< the other one
};

/// A closed outline along a line.
struct Band {
    Points outline;              ///< the border in the order of the line, then the other side backwards
    Array<std::uint8_t> removed; ///< [points of the line] 1 where a bend is too tight and its point gave way
    bool collapsed = false;      ///< every point gave way: no part of the line has a border at this distance
    std::optional<Crossing>
        crossing; ///< where the outline meets itself, if it does: it then encloses some places twice

    /// The border alone, one point for each point of the line.
    std::span<const Point> border() const { return {outline.data(), outline.size() / 2}; }
};

namespace detail {

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
    /// `BORDER` on one outline, with the status' height. The outline is read in place.
    void run(PointView outline, double distance)
    {
        look_at(outline, distance);
        finish(BORDER(&status_));
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

private:
    static constexpr std::size_t kArrays = 10;

    void look_at(PointView outline, double distance)
    {
        DATADispose(status_.path); // a line that has gained wings is the record's own
        *status_.path = record_over(outline);
        status_.distance = distance;
    }

    void finish(int result)
    {
        DATAInitialize(status_.path); // the points were the caller's
        if (result != 1)
            throw std::bad_alloc();
    }

    DATAstruct arrays_[kArrays];
    BORDERStatus status_ = {};
};

/// A line within the plane in which its band lies.
struct LinePlane {
    Point normal;
    bool is_flat;     ///< the line lies in the plane, up to rounding
    bool is_straight; ///< so seen from the normal
    double extent;    ///< how far the line gets from its first point
};

inline Point unit_of(const Point& v)
{
    Point u = v;
    normalize(u.data());
    return u;
}

/// Turned so that its last component that is not small is positive.
inline Point upwards(const Point& n)
{
    for (const std::size_t k : {2u, 1u, 0u})
        if (std::fabs(n[k]) > 1e-09)
            return n[k] < 0 ? Point{-n[0], -n[1], -n[2]} : n;
    return n;
}

/// Finds the plane: perpendicular to `up`, or through the line's points furthest from its first point and from the line
/// between these two.
inline LinePlane plane_of(PointView line, const std::optional<Point>& up)
{
    constexpr double kFlat = 1e-09;   // of the extent: rounding
    constexpr double kPlanar = 1e-06; // of the extent: measured coordinates
    LinePlane plane = {};
    Point along = {};
    const auto from_first = [&](std::size_t i) { return minus(line[i], line[0]); };
    for (std::size_t i = 1; i < line.size(); ++i)
        if (const Point d = from_first(i); length(d) > plane.extent) {
            plane.extent = length(d);
            along = d;
        }
    if (plane.extent < 1e-06)
        throw Error("band", "line", "be longer than 1e-06", "its points lie within " + text_of(plane.extent));
    along = unit_of(along);
    Point normal = {};
    for (std::size_t i = 1; i < line.size(); ++i)
        if (const Point n = cross(along, from_first(i)); length(n) > length(normal))
            normal = n;
    const bool is_straight = length(normal) <= kFlat * plane.extent;

    if (up) {
        if (length(*up) < 1e-06)
            throw Error("band", "options.up", "be longer than 1e-06", "it is " + text_of_point(*up));
        plane.normal = unit_of(*up);
    } else if (is_straight) {
        const Point z = {0.0, 0.0, 1.0};
        const Point across = cross(along, z);
        if (length(across) < 1e-06)
            throw Error("band", "options.up", "be given for a line straight up", "it is missing");
        plane.normal = unit_of(cross(across, along));
    } else {
        plane.normal = upwards(unit_of(normal));
    }

    double off = 0.0, aside = 0.0;
    std::size_t furthest = 0;
    const Point flat_along = plus(along, -dot(along, plane.normal), plane.normal);
    if (length(flat_along) < 1e-06)
        throw Error("band", "line", "not run along options.up", "it does");
    const Point right = cross(unit_of(flat_along), plane.normal);
    for (std::size_t i = 0; i < line.size(); ++i) {
        if (const double d = std::fabs(dot(from_first(i), plane.normal)); d > off) {
            off = d;
            furthest = i;
        }
        aside = std::max(aside, std::fabs(dot(from_first(i), right)));
    }
    if (!up && off > kPlanar * plane.extent)
        throw Error("band", "line", "be planar, or options.up be given",
                    "its point " + text_of(furthest) + " lies " + text_of(off) + " off the plane");
    plane.is_flat = off <= kFlat * plane.extent;
    plane.is_straight = aside <= kFlat * plane.extent;
    return plane;
}

/// The border of an open line: the sweep's outline is the line closed in one of two ways.
///
/// The first is the documented one: a wing at each end, as long as the end's own segment, and a straight edge between
/// the wings. It fails where a wing shrinks to nothing, as it does when the closing edge folds back sharply or the line
/// is straight. The second then goes straight on from both ends to a far circle in the plane of the band, and along the
/// longer way around that circle, so that no edge of the detour is short and no corner sharp. It also decides the
/// plane, being first in the outline.
class LineBorder {
public:
    LineBorder(PointView line, const LinePlane& plane) : line_(line), plane_(plane) {}

    /// Makes `border` [n] and `removed` [n], for a positive distance to the right.
    void run(double distance, double height)
    {
        sign_ =
            doubled_area() < 0 ? -1.0 : 1.0; // positive is outwards, to the right of one that runs counter-clockwise
        if (plane_.is_flat && !plane_.is_straight && try_wings(distance, height))
            return;
        go_around(distance, height);
    }

    std::vector<Point> border;
    std::vector<std::uint8_t> removed;

private:
    double doubled_area() const
    {
        double sum = 0.0;
        for (std::size_t i = 1; i + 1 < line_.size(); ++i)
            sum += dot(cross(minus(line_[i], line_[0]), minus(line_[i + 1], line_[0])), plane_.normal);
        return sum;
    }

    /// Sweeps, the other way round too where the outline turns out to have been flattened from the other side, until
    /// the border lies to the right and, if `square`, begins and ends square to the line. Returns whether it does.
    template <class Sweeper>
    bool sweep_to_the_right(double distance, double height, std::size_t first, bool square, Sweeper sweeper)
    {
        for (int attempt = 0; attempt < 2; ++attempt) {
            sweep_.status().height = height == 0.0 ? 0.0 : sign_ * height; // no -0.0, as a plain call has none
            sweep_.status().keep_collapsed = 1;
            sweep_.status().split_events = 0; // a long line may come near itself
            sweeper(sign_ * distance);
            collect(first);
            if (is_to_the_right(distance) &&
                (!square || (is_beside(0, distance) && is_beside(line_.size() - 1, distance))))
                return true;
            sign_ = -sign_;
        }
        return false;
    }

    bool try_wings(double distance, double height)
    {
        return sweep_to_the_right(distance, height, 1, true, [&](double d) { sweep_.run_with_wings(line_, d); });
    }

    void go_around(double distance, double height)
    {
        const std::vector<Point> detour = detour_for(distance);
        std::vector<Point> outline(detour.begin(), detour.end() - 1);
        for (std::size_t i = 0; i < line_.size(); ++i)
            outline.push_back(line_[i]);
        outline.push_back(detour.back());
        const auto sweeper = [&](double d) { sweep_.run(outline, d); };
        if (!sweep_to_the_right(distance, height, detour.size() - 1, true, sweeper)) // a bend has eaten an end
            sweep_to_the_right(distance, height, detour.size() - 1, false, sweeper);
    }

    /// From the far end of the way on beyond the line's last point along the circle to the way in to its first point;
    /// the point where the way on meets the circle comes last.
    std::vector<Point> detour_for(double distance) const
    {
        constexpr double kFar = 16.0, kStep = std::numbers::pi / 4.0;
        const double radius = kFar * (plane_.extent + std::fabs(distance));
        const Point x = unit_of(flat(any_direction())), y = cross(plane_.normal, x);
        const Point last = line_[line_.size() - 1];
        const Point out = on_circle(last, direction_from_end(line_.size() - 1), radius);
        const Point in = on_circle(line_[0], direction_from_end(0), radius);
        const auto angle_of = [&](const Point& p) {
            const Point d = minus(p, line_[0]);
            return std::atan2(dot(d, y), dot(d, x));
        };
        const double start = angle_of(out);
        double turn = std::remainder(angle_of(in) - start, 2.0 * std::numbers::pi);
        turn += turn > 0 ? -2.0 * std::numbers::pi : 2.0 * std::numbers::pi; // the longer way
        const int steps = static_cast<int>(std::ceil(std::fabs(turn) / kStep));
        std::vector<Point> detour;
        for (int k = 1; k < steps; ++k) {
            const double a = start + turn * k / steps;
            detour.push_back(plus(plus(line_[0], radius * std::cos(a), x), radius * std::sin(a), y));
        }
        detour.push_back(in);
        detour.push_back(out);
        return detour;
    }

    Point flat(const Point& v) const { return plus(v, -dot(v, plane_.normal), plane_.normal); }

    Point any_direction() const
    {
        for (std::size_t i = 1; i < line_.size(); ++i)
            if (const Point d = flat(minus(line_[i], line_[0])); length(d) > 1e-06)
                return d;
        return {1.0, 0.0, 0.0};
    }

    /// The direction in which the line leaves one of its ends.
    Point direction_from_end(std::size_t end) const
    {
        const std::size_t n = line_.size();
        for (std::size_t k = 1; k < n; ++k) {
            const Point d = flat(minus(line_[end], line_[end == 0 ? k : n - 1 - k]));
            if (length(d) > 1.2e-06)
                return unit_of(d);
        }
        return unit_of(any_direction());
    }

    /// Where the way from `p` along `d` meets the circle about the line's first point, at that point's height.
    Point on_circle(const Point& p, const Point& d, double radius) const
    {
        const Point r = flat(minus(p, line_[0]));
        const double b = dot(r, d), c = dot(r, r) - radius * radius;
        return plus(plus(line_[0], 1.0, r), -b + std::sqrt(b * b - c), d);
    }

    /// Takes the points of the line's own vertices, which start at `first`.
    void collect(std::size_t first)
    {
        const DATAstruct& output = *sweep_.status().output;
        border.resize(line_.size());
        removed.resize(line_.size());
        for (std::size_t i = 0; i < line_.size(); ++i) {
            const double* const p = output.dvals + 3 * (first + i);
            border[i] = {p[0], p[1], p[2]};
            removed[i] = sweep_.is_removed(first + i) ? 1 : 0;
        }
    }

    /// Whether the border starts or ends square to an end of the line, at the distance.
    bool is_beside(std::size_t end, double distance) const
    {
        const double slack = 1e-09 * (plane_.extent + std::fabs(distance));
        const Point step = flat(minus(border[end], line_[end]));
        return std::fabs(dot(step, direction_from_end(end))) <= slack &&
               std::fabs(length(step) - std::fabs(distance)) <= slack;
    }

    bool is_to_the_right(double distance) const
    {
        const Point ahead = direction_from_end(0); // away from the line
        const Point left = cross(ahead, plane_.normal);
        return dot(minus(border[0], line_[0]), left) * distance <= 0;
    }

    PointView line_;
    const LinePlane& plane_;
    double sign_ = 1.0; // of the sweep's distance for one to the right
    Sweep sweep_;
};

/// Finds two edges of a closed outline that meet although they are not neighbours. Edges are looked at by their least
/// coordinate along the plane's first axis, each against those that it overlaps there.
class CrossingFinder {
public:
    CrossingFinder(std::span<const Point> outline, const Point& normal)
    {
        const Point x =
            unit_of(std::fabs(normal[0]) < 0.9 ? cross(normal, {1.0, 0.0, 0.0}) : cross(normal, {0.0, 1.0, 0.0}));
        const Point y = cross(normal, x);
        for (std::size_t i = 0; i < outline.size();
             ++i) { // points at one place, as a bend too tight leaves them, are one
            const Place p = {dot(outline[i], x), dot(outline[i], y), i};
            if (places_.empty() || !is_same(places_.back(), p))
                places_.push_back(p);
        }
        while (places_.size() > 1 && is_same(places_.back(), places_.front()))
            places_.pop_back();
    }

    std::optional<Crossing> find() const
    {
        const std::size_t n = places_.size();
        if (n < 4)
            return {};
        std::vector<std::size_t> order(n);
        for (std::size_t i = 0; i < n; ++i)
            order[i] = i;
        std::ranges::sort(order, {}, [&](std::size_t i) { return least(i); });
        std::vector<std::size_t> active;
        for (const std::size_t i : order) {
            std::erase_if(active, [&](std::size_t k) { return greatest(k) < least(i); });
            for (const std::size_t k : active)
                if (k != (i + 1) % n && i != (k + 1) % n && do_meet(i, k))
                    return Crossing{std::min(places_[i].number, places_[k].number),
                                    std::max(places_[i].number, places_[k].number)};
            active.push_back(i);
        }
        return {};
    }

private:
    struct Place {
        double x, y;
        std::size_t number; // of the point
    };

    static bool is_same(const Place& a, const Place& b)
    {
        return std::fabs(a.x - b.x) < 1.2e-06 && std::fabs(a.y - b.y) < 1.2e-06;
    }
    const Place& end(std::size_t i) const { return places_[(i + 1) % places_.size()]; }
    double least(std::size_t i) const { return std::min(places_[i].x, end(i).x); }
    double greatest(std::size_t i) const { return std::max(places_[i].x, end(i).x); }

    static int turn(const Place& a, const Place& b, const Place& c)
    {
        const double area = (b.x - a.x) * (c.y - a.y) - (b.y - a.y) * (c.x - a.x);
        return area > 0 ? 1 : area < 0 ? -1 : 0;
    }
    static bool is_between(const Place& a, const Place& b, const Place& p)
    {
        return std::min(a.x, b.x) <= p.x && p.x <= std::max(a.x, b.x) && std::min(a.y, b.y) <= p.y &&
               p.y <= std::max(a.y, b.y);
    }

    bool do_meet(std::size_t i, std::size_t k) const
    {
        const Place &a = places_[i], &b = end(i), &c = places_[k], &d = end(k);
        const int tc = turn(a, b, c), td = turn(a, b, d), ta = turn(c, d, a), tb = turn(c, d, b);
        if (tc * td < 0 && ta * tb < 0)
            return true;
        return (tc == 0 && is_between(a, b, c)) || (td == 0 && is_between(a, b, d)) ||
               (ta == 0 && is_between(c, d, a)) || (tb == 0 && is_between(c, d, b));
    }

    std::vector<Place> places_;
};

} // namespace detail

/// The band between an open line and its border at a signed distance: to the right of the line where it is positive.
///
/// The outline has two points for each point of the line. Where a bend is tighter than the distance, points of the
/// border give way and share a place; `removed` names them, `collapsed` tells that all did. Parts of the line that are
/// near each other do not see each other: `crossing` tells where the outline meets itself.
///
/// Straight lines, and ends that point any way, are no harm; a line that rises and falls needs `options.up`.
///
/// ```
/// korvale::Band road = korvale::band(middle, 3.5, {.both_sides = true, .up = korvale::Point{0, 0, 1}});
/// if (road.crossing)
///     warn_about_edge(road.crossing->first);
/// ```
///
/// Throws `Error` for fewer than two points, a line shorter than 1e-06, a distance of 0, and numbers that are not
/// finite.
inline Band band(PointView line, double distance, const BandOptions& options = {})
{
    detail::require_points("band", "line", line, 2);
    detail::require_finite("band", "distance", distance);
    detail::require_finite("band", "options.height", options.height);
    if (options.up)
        detail::require_finite("band", "options.up", PointView(std::span(&*options.up, 1)));
    if (distance == 0.0)
        throw Error("band", "distance", "be other than 0", "it is 0");

    const detail::LinePlane plane = detail::plane_of(line, options.up);
    const std::size_t n = line.size();
    Band result;
    result.outline = Points(2 * n);
    detail::LineBorder border(line, plane);
    border.run(distance, options.height);
    std::ranges::copy(border.border, result.outline.begin());
    result.removed = Array<std::uint8_t>(n);
    std::ranges::copy(border.removed, result.removed.begin());
    if (options.both_sides) {
        border.run(-distance, options.height);
        for (std::size_t i = 0; i < n; ++i)
            result.removed[i] |= border.removed[i];
    }
    for (std::size_t i = 0; i < n; ++i)
        result.outline[2 * n - 1 - i] = options.both_sides ? border.border[i] : line[i];
    result.collapsed = std::ranges::all_of(result.removed, [](std::uint8_t r) { return r != 0; });
    result.crossing = detail::CrossingFinder(result.outline, plane.normal).find();
    return result;
}

} // namespace korvale
