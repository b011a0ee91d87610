// Bands along lines. Knots in the line become points (knots.cpp). The border on one side is swept as a closed outline
// of which the line is a part, and looked at point by point afterwards: what has come too near to the line, or too far
// from it, is placed anew (yield.cpp). All is computed at an ordinary size, to which a power of two brings the line.
#include <algorithm>
#include <cmath>
#include <numbers>

#include "border/internal/sweep.h"
#include "door/internal/band_crossing.h"
#include "door/internal/caps.h"
#include "door/internal/knots.h"
#include "door/internal/offset.h"
#include "door/internal/vectors.h"
#include "door/internal/yield.h"

namespace korvale::door {
namespace {

/// Turned so that its last component that is not small is positive.
Point upwards(const Point& n)
{
    for (const int k : {2, 1, 0})
        if (std::fabs(n[k]) > 1e-09)
            return n[k] < 0 ? Point{-n.x, -n.y, -n.z} : n;
    return n;
}

/// What of `v` is seen along a normal.
Point seen_along(const Point& v, const Point& normal)
{
    return plus(v, -dot(v, normal), normal);
}

/// Finds the plane: perpendicular to `up`, or through the line's points furthest from its first point and from the line
/// between these two.
LinePlane find_plane(Outline line, const Point* up, double scale)
{
    constexpr double kFlat = 1e-09;   // of the extent: rounding
    constexpr double kPlanar = 1e-06; // of the extent: measured coordinates
    constexpr double kSeen = 1e-12;   // of the whole reach: what rounding leaves of a line along `up`
    LinePlane plane = {};
    Point along = {};
    double whole = 0.0;
    const Point unit = up == nullptr ? Point{} : unit_of(*up);
    const auto from_first = [&](size_t i) { return minus(line[i], line[0]); };
    for (size_t i = 1; i < line.size(); ++i) {
        const Point d = up == nullptr ? from_first(i) : seen_along(from_first(i), unit);
        whole = std::max(whole, length(from_first(i)));
        if (length(d) > plane.extent) {
            plane.extent = length(d);
            along = d;
        }
    }
    if (plane.extent <= kSeen * whole)
        throw Refusal("line", "not run along options.up", "it does");
    along = unit_of(along);
    Point normal = {};
    for (size_t i = 1; i < line.size(); ++i)
        if (const Point n = cross(along, from_first(i)); length(n) > length(normal))
            normal = n;
    const bool is_straight = length(normal) <= kFlat * plane.extent;

    if (up != nullptr) {
        plane.normal = unit;
    } else if (is_straight) {
        const Point z = {0.0, 0.0, 1.0};
        const Point across = cross(along, z);
        if (length(across) < 1e-06)
            throw Refusal("options.up", "be given for a line straight up", "it is missing");
        plane.normal = unit_of(cross(across, along));
    } else {
        plane.normal = upwards(unit_of(normal));
    }
    const Point& n = plane.normal;
    plane.x = unit_of(std::fabs(n.x) < 0.9 ? cross(n, {1.0, 0.0, 0.0}) : cross(n, {0.0, 1.0, 0.0}));
    plane.y = cross(n, plane.x);

    double off = 0.0, aside = 0.0;
    size_t furthest = 0;
    const Point right = cross(unit_of(seen_along(along, n)), n);
    for (size_t i = 0; i < line.size(); ++i) {
        if (const double d = std::fabs(dot(from_first(i), n)); d > off) {
            off = d;
            furthest = i;
        }
        aside = std::max(aside, std::fabs(dot(from_first(i), right)));
    }
    if (up == nullptr && off > kPlanar * plane.extent)
        throw Refusal("line", "be planar, or options.up be given",
                      Text() << "its point " << furthest << " lies " << off / scale << " off the plane");
    plane.is_flat = off <= kFlat * plane.extent;
    plane.is_straight = aside <= kFlat * plane.extent;
    return plane;
}

/// The swept border of a line.
///
/// Of an open line the outline is the line closed in one of two ways. The first is the documented one: a wing at each
/// end, as long as the end's own segment, and a straight edge between the wings. It fails where a wing shrinks to
/// nothing, as it does when the closing edge folds back sharply or the line is straight. The second then goes straight
/// on from both ends to a far circle in the plane of the band, and along the longer way around that circle, so that no
/// edge of the detour is short and no corner sharp. It also decides the plane, being first in the outline.
class LineBorder {
public:
    LineBorder(Outline line, const LinePlane& plane)
        : border(line.size()), removed(line.size()), heir(line.size()), line_(line), plane_(plane)
    {
    }

    /// Makes the border of an open line, for a positive distance to the right.
    void sweep_open(double distance, double height)
    {
        const Telling whole = telling;
        telling = whole.part(0.0, 0.5);
        if (plane_.is_flat && !plane_.is_straight && try_wings(distance, height))
            return;
        telling = whole.part(0.5, 0.5);
        go_around(distance, height);
    }

    /// The same of a closed one.
    void sweep_closed(double distance, double height)
    {
        if (plane_.is_flat) {
            sweep(line_, distance, height, 0);
            is_nothing = swept_.collapsed;
            return;
        }
        sweep_level({line_.begin(), line_.end()}, distance, height, 0);
        is_nothing = swept_.collapsed;
    }

    /// How many points the swept outline has.
    size_t size_of_outline() const { return swept_.vertices; }

    /// Makes no border: each point stays where it is.
    void stay()
    {
        for (size_t i = 0; i < line_.size(); ++i) {
            border[i] = line_[i];
            removed[i] = 0;
            heir[i] = static_cast<int32_t>(i);
        }
    }

    Vector<Point> border;
    Vector<uint8_t> removed;
    Vector<int32_t> heir;    ///< what each point has merged into in the end, by its number in the outline
    bool is_nothing = false; ///< nothing is left of the border of a closed line, or it is inside out
    Telling telling = {};

private:
    /// Sweeps an outline of which the line's points are those from `first` on, without splits: a long line may come
    /// near itself. The sweep moves edges to the right as seen from the side on which the outline runs
    /// counter-clockwise, which may be the other one.
    void sweep(Outline outline, double distance, double height, size_t first)
    {
        const Planes planes = flatten(outline);
        const Point normal = {planes.to_plane[2][0], planes.to_plane[2][1], planes.to_plane[2][2]};
        const double sign = dot(normal, plane_.normal) < 0 ? -1.0 : 1.0;
        mover_.move(outline, {sign * distance, height == 0.0 ? 0.0 : sign * height, true, false, telling}, swept_);
        collect(first);
    }

    /// Sweeps an outline that rises as it is seen along the normal, and adds the heights of the line's points.
    void sweep_level(Vector<Point> outline, double distance, double height, size_t first)
    {
        for (Point& p : outline)
            p = plus(p, -height_of(p), plane_.normal);
        sweep(outline, distance, height, first);
        for (size_t i = 0; i < line_.size(); ++i)
            border[i] = plus(border[i], height_of(line_[i]), plane_.normal);
    }

    double height_of(const Point& p) const { return dot(minus(p, line_[0]), plane_.normal); }

    /// As far beyond `end` as `neighbour` is before it.
    static Point wing(const Point& end, const Point& neighbour)
    {
        return {2.0 * end.x - neighbour.x, 2.0 * end.y - neighbour.y, 2.0 * end.z - neighbour.z};
    }

    bool try_wings(double distance, double height)
    {
        const size_t n = line_.size();
        Vector<Point> outline;
        outline.reserve(n + 2);
        outline.push_back(wing(line_[0], line_[1]));
        outline.insert(outline.end(), line_.begin(), line_.end());
        outline.push_back(wing(line_[n - 1], line_[n - 2]));
        sweep(outline, distance, height, 1);
        return is_beside(0, distance) && is_beside(n - 1, distance);
    }

    void go_around(double distance, double height)
    {
        const Vector<Point> detour = detour_for(distance);
        Vector<Point> outline(detour.begin(), detour.end() - 1);
        outline.insert(outline.end(), line_.begin(), line_.end());
        outline.push_back(detour.back());
        if (plane_.is_flat)
            sweep(outline, distance, height, detour.size() - 1);
        else
            sweep_level(std::move(outline), distance, height, detour.size() - 1);
    }

    /// From the far end of the way on beyond the line's last point along the circle to the way in to its first point;
    /// the point where the way on meets the circle comes last.
    Vector<Point> detour_for(double distance) const
    {
        // Chosen: so far away that nothing of the way round comes near the border, and eight steps to a turn.
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
        Vector<Point> detour;
        for (int k = 1; k < steps; ++k) {
            const double a = start + turn * k / steps;
            detour.push_back(plus(plus(line_[0], radius * std::cos(a), x), radius * std::sin(a), y));
        }
        detour.push_back(in);
        detour.push_back(out);
        return detour;
    }

    Point flat(const Point& v) const { return seen_along(v, plane_.normal); }

    Point any_direction() const
    {
        for (size_t i = 1; i < line_.size(); ++i)
            if (const Point d = flat(minus(line_[i], line_[0])); length(d) > 1e-06)
                return d;
        return {1.0, 0.0, 0.0};
    }

    /// The direction in which the line leaves one of its ends.
    Point direction_from_end(size_t end) const
    {
        const size_t n = line_.size();
        for (size_t k = 1; k < n; ++k) {
            const Point d = flat(minus(line_[end], line_[end == 0 ? k : n - 1 - k]));
            if (length(d) > border::kHair)
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

    /// Takes what became of the line's own vertices, which start at `first`.
    void collect(size_t first)
    {
        for (size_t i = 0; i < line_.size(); ++i) {
            border[i] = swept_.points.data()[first + i];
            removed[i] = swept_.removed.data()[first + i];
            int32_t last = static_cast<int32_t>(first + i);
            while (swept_.removed.data()[last] != 0)
                last = swept_.merged_into.data()[last];
            heir[i] = last;
        }
    }

    /// Whether the border starts or ends square to an end of the line, at the distance and on its side.
    bool is_beside(size_t end, double distance) const
    {
        const double slack = 1e-09 * (plane_.extent + std::fabs(distance));
        const Point step = flat(minus(border[end], line_[end])), away = direction_from_end(end);
        const double right = (end == 0 ? 1.0 : -1.0) * dot(step, cross(plane_.normal, away));
        return std::fabs(dot(step, away)) <= slack && std::fabs(length(step) - std::fabs(distance)) <= slack &&
               right * distance >= 0;
    }

    Outline line_;
    const LinePlane& plane_;
    Mover mover_;
    Border swept_;
};

/// A line laid into its plane, from its first point.
class FlatLine {
public:
    FlatLine(Outline line, const LinePlane& plane, bool closed)
        : places_(places_of(line, plane)), edges_(edges_between(places_, closed)), extent_(plane.extent),
          rounding_(kUnits * (plane.extent + length(line[0]))), closed_(closed)
    {
    }

    const Vector<Place>& places() const { return places_; }

    /// What a border at a distance from the line gives way to.
    Beside beside(double distance, double miter_limit, const Telling& telling = {}) const
    {
        // Chosen: a millionth of the distance is nothing to see, and 1e-12 of the extent is rounding.
        constexpr double kRelative = 1e-06, kRounding = 1e-12;
        const double slack = kRelative * std::fabs(distance) + kRounding * extent_;
        return {places_, edges_, closed_, distance, miter_limit, slack, rounding_, telling};
    }

private:
    static Vector<Place> places_of(Outline line, const LinePlane& plane)
    {
        Vector<Place> places;
        places.reserve(line.size());
        for (const Point& p : line)
            places.push_back(plane.place_of(minus(p, line[0])));
        return places;
    }

    static EdgeTree edges_between(const Vector<Place>& places, bool closed)
    {
        Vector<Edge> edges;
        edges.reserve(places.size());
        for (size_t i = 0; i + 1 < places.size(); ++i)
            edges.push_back({places[i], places[i + 1]});
        if (closed)
            edges.push_back({places.back(), places.front()});
        return EdgeTree(std::move(edges));
    }

    Vector<Place> places_;
    EdgeTree edges_;
    static constexpr double kUnits = 1e-14; ///< what some steps make of the rounding of a coordinate, as a part of it

    double extent_;
    double rounding_; ///< of coordinates
    bool closed_;
};

/// What points of a border stand for.
struct Followed {
    Outline line;
    std::span<const Place> places; ///< of the line, from its first point
    const LinePlane& plane;
    bool closed;
    double height; ///< of the border above the line
};

/// Writes the points of a border that have been moved to their places. Those that follow each other at one place get
/// the bits of one of them, but for the heights of a line that rises: of one that has not been moved, where there is
/// one.
void follow_places(const Followed& f, std::span<const Place> places, std::span<const uint8_t> moved,
                   std::span<Point> border)
{
    const size_t n = places.size();
    const LinePlane& plane = f.plane;
    size_t start = 0;
    while (f.closed && start + 1 < n && places[start] == places[(start + n - 1) % n])
        ++start;
    for (size_t k = 0, count = 0; k < n; k += count) {
        const size_t first = (start + k) % n;
        size_t model = n;
        for (count = 0; k + count < n && places[(first + count) % n] == places[first]; ++count)
            if (model == n && moved[(first + count) % n] == 0)
                model = (first + count) % n;
        if (model == n) {
            model = first;
            const Place step = places[model] - f.places[model];
            border[model] = plus(plus(plus(f.line[model], step.x, plane.x), step.y, plane.y), f.height, plane.normal);
        }
        for (size_t i = first; i < first + count; ++i)
            if (moved[i % n] != 0 && i % n != model)
                border[i % n] = plane.above(border[model], plus(f.line[i % n], f.height, plane.normal));
    }
}

/// The borders of a line on either side.
class Banding {
public:
    /// `most_work` is that of a sweep of all points at once.
    Banding(Outline line, const FlatLine& flat, const LinePlane& plane, bool closed, double miter_limit,
            double most_work)
        : border_(line, plane), narrowed_(line.size()), line_(line), flat_(flat), plane_(plane), closed_(closed),
          miter_limit_(miter_limit), most_work_(most_work)
    {
    }

    /// Makes the border on one side.
    void run(double distance, double height, const Telling& telling)
    {
        const size_t n = line_.size();
        const Beside beside = flat_.beside(distance, miter_limit_, telling.part(0.5, 0.5));
        border_.telling = telling.part(0.0, 0.5);
        if (takes_long(beside))
            sweep_in_pieces(distance, height);
        else if (closed_)
            border_.sweep_closed(distance, height);
        else
            border_.sweep_open(distance, height);
        Vector<Place> places(n);
        Vector<uint8_t> moved(n);
        for (size_t i = 0; i < n; ++i)
            places[i] = plane_.place_of(minus(border_.border[i], line_[0]));
        const Settling settling = {places, border_.removed, narrowed_, moved, border_.heir};
        settle(beside, settling, border_.is_nothing);
        vanish(beside, settling);
        follow_places({line_, flat_.places(), plane_, closed_, height}, places, moved, border_.border);
    }

    Outline border() const { return border_.border; }
    const Vector<uint8_t>& removed() const { return border_.removed; }
    const Vector<uint8_t>& narrowed() const { return narrowed_; }
    bool is_collapsed() const
    {
        return std::find(border_.removed.begin(), border_.removed.end(), 0) == border_.removed.end();
    }

private:
    /// A sweep looks at every point for each that gives way.
    bool takes_long(const Beside& beside) const
    {
        const auto n = static_cast<double>(line_.size());
        return n * n > most_work_ && n * static_cast<double>(count_crowded(beside, border_.telling)) > most_work_;
    }

    /// Sweeps piece by piece, each with so much of the line on either side that its own ends do not matter. Pieces meet
    /// where no place is shared, if there is such a point near by.
    void sweep_in_pieces(double distance, double height)
    {
        const size_t n = line_.size();
        const Telling whole = border_.telling;
        uint32_t numbers = 0; // of the points of all outlines so far
        size_t written = 0;
        for (size_t first = 0; first < n; first += kPiece) {
            const size_t end = std::min(first + kPiece, n);
            const size_t before = margin(first, n - 1, distance), after = margin(end - 1, 1, distance);
            Vector<Point> line;
            bool is_one_place = true;
            for (size_t i = first + n - before; i < end + n + after; ++i) {
                line.push_back(line_[i % n]);
                const Place d = flat_.places()[i % n] - flat_.places()[first];
                is_one_place &= dot(d, d) <= border::kHair * border::kHair;
            }
            LineBorder piece(line, plane_);
            const auto share = static_cast<double>(end - first) / static_cast<double>(n);
            piece.telling = whole.part(static_cast<double>(first) / static_cast<double>(n), share);
            if (is_one_place)
                piece.stay();
            else
                piece.sweep_open(distance, height);

            const auto is_apart = [&](size_t i) {
                return piece.heir[i + before - first] != piece.heir[i + before - first - 1] &&
                       border_.heir[i] != border_.heir[i - 1];
            };
            size_t seam = first;
            for (size_t away = 0; first > 0 && away < before / 2 && first + away < written; ++away)
                if (is_apart(first - away) || is_apart(first + away)) {
                    seam = is_apart(first - away) ? first - away : first + away;
                    break;
                }
            written = std::min(end + after / 2, n);
            for (size_t i = seam; i < written; ++i) {
                border_.border[i] = piece.border[i + before - first];
                border_.removed[i] = piece.removed[i + before - first];
                border_.heir[i] = static_cast<int32_t>(numbers + static_cast<uint32_t>(piece.heir[i + before - first]));
            }
            numbers += static_cast<uint32_t>(std::max(line.size(), piece.size_of_outline()));
        }
    }

    /// How many points from one on the line goes by `step` before it has run for some distances, or ends.
    size_t margin(size_t from, size_t step, double distance) const
    {
        constexpr double kDistances = 8.0; // Chosen: points that give way look for what is a few distances away
        const size_t n = line_.size();
        double way = kDistances * std::fabs(distance);
        size_t count = 0;
        for (size_t i = from; way > 0 && count < kPiece && count + kPiece < n; ++count) {
            const size_t next = (i + step) % n;
            if (!closed_ && (step == 1 ? next < i : next > i))
                break;
            way -= length(minus(line_[next], line_[i]));
            i = next;
        }
        return count;
    }

    /// Points of a piece, whose work grows with their square. Chosen.
    static constexpr size_t kPiece = 1024;

    LineBorder border_;
    Vector<uint8_t> narrowed_;
    Outline line_;
    const FlatLine& flat_;
    const LinePlane& plane_;
    bool closed_;
    double miter_limit_;
    double most_work_;
};

/// A line whose knots are their means.
struct Untied {
    Vector<Bundle> bundles; ///< one for each point of it
    Vector<Point> line;     ///< of fewer points; of none where there are no knots, or little else

    Untied(Outline from, const FlatLine& flat, bool closed, double reach)
        : bundles(bundle_knots(flat.places(), closed, reach))
    {
        const size_t n = from.size();
        if (bundles.size() < (closed ? 3 : 2) ||
            std::none_of(bundles.begin(), bundles.end(), [](const Bundle& b) { return b.is_knot; }))
            return;
        for (const Bundle& bundle : bundles) {
            Point mean = bundle.is_knot ? Point{0, 0, 0} : from[bundle.first];
            for (size_t i = bundle.first; bundle.is_knot && i < bundle.first + bundle.count; ++i)
                if (i == bundle.first || flat.places()[i % n] != flat.places()[(i + n - 1) % n])
                    mean = plus(mean, 1.0 / static_cast<double>(bundle.steps), from[i % n]);
            line.push_back(mean);
        }
    }
};

/// Where a side of a band ends: by a step, seen along the normal, from the end of a line whose knots are their means.
struct SideEnd {
    Point end;
    Place step;
};

/// The borders of a line on either side, which pass by its knots as if they were points.
class Sides {
public:
    Sides(Outline line, const LinePlane& plane, bool closed, double miter_limit, double distance)
        : line_(line), plane_(plane), miter_limit_(miter_limit), flat_(line, plane, closed),
          untied_(line, flat_, closed, distance), banding_(swept(), flat_swept(closed), plane, closed, miter_limit,
                                                           untied_.line.empty() ? kMostWork : kMostUntiedWork),
          border_(line.size()), removed_(line.size()), narrowed_(line.size())
    {
    }

    /// Makes the border on one side.
    void run(double distance, double height, const Telling& telling)
    {
        banding_.run(distance, height, telling);
        if (untied_.line.empty()) {
            std::copy(banding_.border().begin(), banding_.border().end(), border_.begin());
            std::copy(banding_.removed().begin(), banding_.removed().end(), removed_.begin());
            std::copy(banding_.narrowed().begin(), banding_.narrowed().end(), narrowed_.begin());
            return;
        }
        tie_again(distance, height);
    }

    Outline border() const { return border_; }
    const Vector<uint8_t>& removed() const { return removed_; }
    const Vector<uint8_t>& narrowed() const { return narrowed_; }
    bool is_collapsed() const { return banding_.is_collapsed(); }

    /// The end of the latest side at the beginning or the end of the line, unless it has given way there.
    std::optional<SideEnd> end(bool last, double distance) const
    {
        constexpr double kRounding = 1e-06; // of the distance, as what counts as the same beside a line
        const size_t k = last ? swept().size() - 1 : 0;
        if (banding_.removed()[k] != 0 || narrowed_[last ? line_.size() - 1 : 0] != 0)
            return {};
        const Place step = plane_.place_of(minus(banding_.border()[k], swept()[k]));
        if (std::fabs(std::sqrt(dot(step, step)) - std::fabs(distance)) > kRounding * std::fabs(distance))
            return {};
        return SideEnd{swept()[k], step};
    }

private:
    /// Work of a sweep of all points at once: their number times that of points that give way. A line without knots
    /// keeps the bits of such a sweep where it takes no more than seconds. With knots 2,000 points that all give way
    /// are swept at once. Chosen.
    static constexpr double kMostWork = 1e9, kMostUntiedWork = 4e6;

    Outline swept() const { return untied_.line.empty() ? line_ : Outline(untied_.line); }
    const FlatLine& flat_swept(bool closed)
    {
        return untied_.line.empty() ? flat_ : flat_untied_.emplace_back(untied_.line, plane_, closed);
    }

    /// Gives all points of a knot the place of its mean.
    void tie_again(double distance, double height)
    {
        const size_t n = line_.size();
        Vector<Place> places(n);
        Vector<uint8_t> moved(n);
        for (size_t k = 0; k < untied_.bundles.size(); ++k) {
            const Bundle& bundle = untied_.bundles[k];
            for (size_t i = bundle.first; i < bundle.first + bundle.count; ++i) {
                border_[i % n] = banding_.border()[k];
                places[i % n] = plane_.place_of(minus(banding_.border()[k], line_[0]));
                removed_[i % n] = bundle.is_knot || i > bundle.first || banding_.removed()[k] != 0;
                narrowed_[i % n] = banding_.narrowed()[k];
                moved[i % n] = bundle.is_knot || i > bundle.first;
            }
        }
        const Beside beside = flat_.beside(distance, miter_limit_);
        hold(beside, {places, removed_, narrowed_, moved, {}});
        follow_places({line_, flat_.places(), plane_, beside.closed, height}, places, moved, border_);
    }

    Outline line_;
    const LinePlane& plane_;
    double miter_limit_;
    FlatLine flat_;
    Untied untied_;
    Vector<FlatLine> flat_untied_; // one where there are knots
    Banding banding_;
    Vector<Point> border_;
    Vector<uint8_t> removed_;
    Vector<uint8_t> narrowed_;
};

/// All points of a line at one place: nothing has a side.
void stay_put(Outline line, Band& band)
{
    std::copy(line.begin(), line.end(), band.outline.begin());
    std::reverse_copy(line.begin(), line.end(), band.outline.begin() + static_cast<std::ptrdiff_t>(line.size()));
    std::fill(band.removed.begin(), band.removed.end(), uint8_t{1});
}

/// The scale of a line by what is seen of it along `up`: heights may be in other units, such as metres beside degrees.
double scale_along(Outline line, const Point* up, double distance)
{
    if (up == nullptr)
        return scale_for(line, distance);
    const Point unit = unit_of(*up);
    Vector<Point> seen(line.begin(), line.end());
    for (Point& p : seen)
        p = seen_along(minus(p, line[0]), unit);
    return scale_for(seen, std::max(distance, extent_of(line).half));
}

/// The cap at the beginning or the end of a line, to whose right or left one of its sides is.
Vector<Point> cap_at(bool last, const SideEnd& side, bool is_right, const Caps& caps, const LinePlane& plane,
                     double height)
{
    const Place ahead = is_right ? Place{-side.step.y, side.step.x} : Place{side.step.y, -side.step.x};
    Vector<Point> points;
    for (const Place& corner : cap_from(caps, side.step, (last ? 1.0 : -1.0) * ahead))
        points.push_back(plus(plus(plus(side.end, corner.x, plane.x), corner.y, plane.y), height, plane.normal));
    if (!last)
        std::reverse(points.begin(), points.end());
    return points;
}

void make_band(Outline line, double distance, const korvale_band_options& how, Band& band)
{
    const size_t n = line.size();
    const Point given = {how.up[0], how.up[1], how.up[2]};
    const Point* const up = how.has_up != 0 ? &given : nullptr;
    const double scale = scale_along(line, up, std::max(std::fabs(distance), std::fabs(how.height)));
    Vector<Point> room;
    const Outline work = scaled(line, scale, room);
    if (std::all_of(work.begin(), work.end(), [&](const Point& p) { return p == work[0]; })) {
        stay_put(line, band);
        return;
    }
    const LinePlane plane = find_plane(work, up, scale);
    Sides sides(work, plane, how.closed != 0, how.miter_limit, scale * std::fabs(distance));
    const auto take = [&](bool backwards) {
        for (size_t i = 0; i < n; ++i) {
            band.outline[backwards ? 2 * n - 1 - i : i] = sides.border()[i];
            band.removed[i] |= sides.removed()[i];
            band.narrowed[i] |= sides.narrowed()[i];
        }
        band.collapsed &= sides.is_collapsed();
    };
    const Caps caps = caps_of(how, std::fabs(distance));
    std::optional<SideEnd> ends[2];
    const Telling telling = {how.progress, how.user, 0.0, how.both_sides != 0 ? 0.5 : 1.0};
    sides.run(scale * distance, scale * how.height, telling);
    take(false);
    for (const bool last : {false, true})
        ends[last] = sides.end(last, scale * distance);
    if (how.both_sides != 0) {
        sides.run(-scale * distance, scale * how.height, telling.part(1.0, 1.0));
        take(true);
        for (const bool last : {false, true})
            if (!sides.end(last, scale * distance))
                ends[last].reset();
    } else {
        std::reverse_copy(work.begin(), work.end(), band.outline.begin() + static_cast<std::ptrdiff_t>(n));
    }
    look_for_crossing(plane, how, band);
    for (const bool last : {false, true})
        if (caps.are_some && ends[last])
            band.caps[last] = cap_at(last, *ends[last], distance > 0, caps, plane, scale * how.height);
    if (!band.caps[0].empty() || !band.caps[1].empty())
        look_for_crossing_of_caps(plane, band);
    for (Vector<Point>* const points : {&band.outline, &band.caps[0], &band.caps[1]})
        scaled(*points, 1.0 / scale, points->data());
    if (how.both_sides == 0)
        std::reverse_copy(line.begin(), line.end(), band.outline.begin() + static_cast<std::ptrdiff_t>(n));
}

/// A closed line needs three points at different places.
void require_ring(Outline line)
{
    size_t different = 1, second = 0;
    for (size_t i = 1; i < line.size() && different < 3; ++i)
        if (line[i] != line[0] && (different == 1 || line[i] != line[second])) {
            ++different;
            second = i;
        }
    if (different < 3)
        throw Refusal("line", "have at least 3 different points where it is closed", Text() << "it has " << different);
}

void require_band(double distance, const korvale_band_options& how)
{
    require_finite(distance, "distance");
    require_finite(how.height, "options.height");
    if (!is_finite(how.miter_limit) || how.miter_limit < 1)
        throw Refusal("options.miter_limit", "be 1 or more", Text() << "it is " << how.miter_limit);
    if (how.has_up != 0) {
        require_finite(how.up, "options.up");
        const Point up = {how.up[0], how.up[1], how.up[2]};
        if (length(up) < 1e-06)
            throw Refusal("options.up", "be longer than 1e-06", Text() << "it is " << text_of_point(how.up));
    }
    if (distance == 0.0)
        throw Refusal("distance", "be other than 0", "it is 0");
    if (how.cap < KORVALE_CAP_FLAT || how.cap > KORVALE_CAP_ROUND)
        throw Refusal("options.cap", "be 0 (flat), 1 (square) or 2 (round)", Text() << "it is " << how.cap);
    if (!is_finite(how.tolerance) || how.tolerance < 0.0)
        throw Refusal("options.tolerance", "be 0 or more", Text() << "it is " << how.tolerance);
    if (how.cap != KORVALE_CAP_FLAT && how.outlines == nullptr)
        throw Refusal("options.outlines", "be given where there are caps", "it is null");
}

/// The outlines of a band with their caps, and the points of its line that their points belong to.
RingList rings_of(const Band& band, bool closed)
{
    const auto n = static_cast<int32_t>(band.removed.size());
    RingList rings;
    rings.points = band.whole();
    const auto add = [&](size_t count, int32_t from, int32_t step) {
        for (size_t i = 0; i < count; ++i)
            rings.sources.push_back(from + step * static_cast<int32_t>(i));
    };
    add(band.removed.size(), 0, 1);
    add(band.caps[1].size(), n - 1, 0);
    add(band.removed.size(), n - 1, -1);
    add(band.caps[0].size(), 0, 0);
    rings.starts = {0};
    if (closed)
        rings.starts.push_back(n);
    rings.starts.push_back(static_cast<int64_t>(rings.points.size()));
    const size_t count = rings.starts.size() - 1;
    rings.parents.assign(count, -1);
    rings.births.assign(count, 0.0);
    rings.ends.assign(count, 0.0);
    rings.collapsed.assign(count, band.collapsed ? 1 : 0);
    return rings;
}

} // namespace
} // namespace korvale::door

using namespace korvale::door;

void korvale_band_defaults(korvale_band_options* options, size_t size)
{
    give_defaults(
        options, size,
        korvale_band_options{
            sizeof *options, 0, 0, 0, 0.0, {0.0, 0.0, 0.0}, 4.0, nullptr, nullptr, KORVALE_CAP_FLAT, 0, 0.0, nullptr});
}

korvale_status korvale_band(const korvale_points* line, double distance, const korvale_band_options* options,
                            korvale_band_result* band, korvale_error* error)
{
    return answer(error, "korvale_band", [&] {
        const PointsIn in(line, "line");
        require_points(in, "line", 1);
        const korvale_band_options how = options_of(options, korvale_band_defaults);
        require_band(distance, how);
        if (how.closed != 0)
            require_ring(in.points());
        require(band, "band");
        require(band->outline, "band.outline");
        const size_t n = in.points().size();
        Band made;
        made.outline.resize(2 * n);
        made.removed.resize(n);
        made.narrowed.resize(n);
        make_band(in.points(), distance, how, made);
        if (how.outlines != nullptr)
            *how.outlines = new_rings(rings_of(made, how.closed != 0));

        std::memcpy(band->outline, made.outline.data(), 2 * n * sizeof(Point));
        if (band->removed != nullptr)
            std::memcpy(band->removed, made.removed.data(), n);
        if (band->narrowed != nullptr)
            std::memcpy(band->narrowed, made.narrowed.data(), n);
        band->collapsed = made.collapsed;
        band->crosses = made.crosses;
        band->crossing[0] = made.crossing[0];
        band->crossing[1] = made.crossing[1];
    });
}
