// The transforms that lay an outline into the plane z = 0 and lift it back.
//
// Both generations find an origin, an x direction and a normal among the points and leave the rest to `orient`. They
// differ in how: `Data` takes the first three points or the extremes of the bounds and lets the normal fall where it
// may; `DATAstruct` takes the first proper corner and turns the normal so that the outline runs counter-clockwise.
// Both matrices are the identity before anything is looked at, so every early return leaves identities.
#include "path/flatten.h"

#include <algorithm>
#include <cmath>

#include "data/internal/buffers.h"
#include "math/internal/matrix.h"
#include "math/internal/orientation.h"
#include "math/internal/rotation.h"
#include "math/internal/vector.h"
#include "path/internal/flatten.h"
#include "platform/internal/random.h"

namespace korvale::path {
namespace {

/// Two directions whose cross product is not longer than this lie on one line.
constexpr double kCollinear = 1e-06;

/// The first three points of a `Data` path give the plane only with a segment longer than this ...
constexpr double kLongSegment = 0.1;
/// ... and a sine between the two segments above this.
constexpr double kWideSine = 0.1;

/// A vertex nearer to the test line than this lies on it.
constexpr double kOnLine = 1e-06;
/// The most that a draw adds to a component of the test line's direction.
constexpr double kJitter = 4.9999999999999996e-06;
/// The attempt that ends the search for a test line through no vertex.
constexpr int kLastAttempt = 101;

/// Deliberate: short.
constexpr double kDegreesPerRadian = 57.2957795;

/// The points of an outline, borrowed.
struct Outline {
    const double* points; ///< [count][3]
    int count;            ///< 1 or more

    int before(int i) const { return i == 0 ? count - 1 : i - 1; }
    int after(int i) const { return i == count - 1 ? 0 : i + 1; }
    const double* point(int64_t i) const { return points + 3 * i; }
    const double* next(int i) const { return point(after(i)); }
    const double* previous(int i) const { return point(before(i)); }
};

/// A pair of transforms in the making.
struct Transforms {
    double (*forward)[4];
    double (*reverse)[4]; ///< or null
};

void set_identities(const Transforms& to)
{
    set_identity(to.forward);
    if (to.reverse != nullptr)
        set_identity(to.reverse);
}

/// Moves the plane through `p` parallel to z = 0 there and back.
void drop_to_zero(const double* p, const Transforms& to)
{
    to.forward[2][3] = -p[2];
    if (to.reverse != nullptr)
        to.reverse[2][3] = p[2];
}

/// Sets both matrices to a turn about y by plus and minus `radians`, converted to degrees, and writes `p` as the
/// forward turn carries it.
void turn_about_y(double radians, const double* p, const Transforms& to, double* turned)
{
    double degrees[3] = {0.0, radians * kDegreesPerRadian, 0.0};
    rotation_from_degrees(degrees, to.forward);
    carry_point(to.forward, p, turned);
    if (to.reverse != nullptr) {
        degrees[1] = -degrees[1];
        rotation_from_degrees(degrees, to.reverse);
    }
}

// ---- Data: first points and extremes

void flatten_two_points(const Outline& outline, const Transforms& to)
{
    const double* const p0 = outline.point(0);
    double d[3], turned[3];
    subtract(outline.point(1), p0, d);
    if (!make_unit(d)) {
        drop_to_zero(p0, to);
        return;
    }
    turn_about_y(std::atan2(d[2], d[1]), p0, to, turned); // Deliberate: y, not x
    to.forward[2][3] = -turned[2];
    if (to.reverse != nullptr)
        to.reverse[2][3] = p0[2]; // Deliberate: as it stood, so this is not the inverse
}

/// False, with nothing written, when the first three points are too close together or too straight.
bool flatten_by_first_three(const Outline& outline, const Transforms& to)
{
    double a[3], b[3], normal[3];
    subtract(outline.point(2), outline.point(1), a);
    subtract(outline.point(1), outline.point(0), b);
    if (!(length(a) > kLongSegment) && !(length(b) > kLongSegment))
        return false;
    make_unit(a);
    make_unit(b);
    cross(a, b, normal);
    if (!(length(normal) > kWideSine))
        return false;
    make_unit(normal);
    orient(outline.point(0), b, normal, to.forward, to.reverse);
    return true;
}

/// The points with the least and the greatest coordinate on one axis, the first of equal ones.
struct Extremes {
    int least;
    int greatest;
    double extent;
};

Extremes find_extremes(const Outline& outline, int axis)
{
    Extremes e = {0, 0, 0.0};
    double least = outline.points[axis], greatest = least;
    for (int i = 1; i < outline.count; ++i) {
        const double value = outline.point(i)[axis];
        if (value < least) {
            least = value;
            e.least = i;
        }
        if (value > greatest) {
            greatest = value;
            e.greatest = i;
        }
    }
    e.extent = greatest - least;
    return e;
}

/// False, with nothing written, when the points lie on one line.
///
/// Deliberate: the edge is handed on as it is, so one shorter than 1e-06 counts as found and leaves identities.
bool flatten_by_extremes(const Outline& outline, const Transforms& to)
{
    Extremes widest = find_extremes(outline, 0);
    for (int axis = 1; axis < 3; ++axis) {
        const Extremes e = find_extremes(outline, axis);
        if (e.extent > widest.extent)
            widest = e;
    }

    const double* const low = outline.point(widest.least);
    const double* const high = outline.point(widest.greatest);
    double across[3];
    subtract(high, low, across);

    // The edges that leave the greatest, leave the least and enter the least point, each with its other end as origin.
    const double* const ends[3][3] = {{outline.next(widest.greatest), high, outline.next(widest.greatest)},
                                      {outline.next(widest.least), low, outline.next(widest.least)},
                                      {low, outline.previous(widest.least), outline.previous(widest.least)}};
    for (const auto& [to_point, from_point, origin] : ends) {
        double edge[3], normal[3];
        subtract(to_point, from_point, edge);
        cross(across, edge, normal);
        if (length(normal) < kCollinear)
            continue;
        make_unit(normal);
        orient(origin, edge, normal, to.forward, to.reverse);
        return true;
    }
    return false;
}

// ---- DATAstruct: open polylines

void flatten_line(const double* p0, const double* direction, const Transforms& to)
{
    double turned[3];
    turn_about_y(std::atan2(direction[2], direction[0]), p0, to, turned);
    for (int r = 0; r < 3; ++r) {
        to.forward[r][3] = -turned[r];
        if (to.reverse != nullptr)
            to.reverse[r][3] = p0[r];
    }
}

/// Whether the points span a plane.
bool flatten_open(const Outline& outline, const Transforms& to)
{
    const double* const p0 = outline.point(0);
    double d[3], e[3], normal[3];
    int i = 1;
    for (; i < outline.count; ++i) {
        subtract(outline.point(i), p0, d);
        if (length(d) > kShortestVector)
            break;
    }
    if (i >= outline.count) {
        drop_to_zero(p0, to);
        return false;
    }
    make_unit(d);

    for (int k = i + 1; k < outline.count; ++k) {
        subtract(outline.point(k), p0, e);
        if (!make_unit(e))
            continue;
        cross(d, e, normal);
        if (length(normal) > kCollinear) {
            make_unit(normal);
            orient(p0, d, normal, to.forward, to.reverse);
            return true;
        }
    }
    flatten_line(p0, d, to);
    return false;
}

// ---- DATAstruct: closed outlines

/// The first proper corner of an outline, with unit directions.
struct Corner {
    int vertex;
    double incoming[3];
    double outgoing[3];
    double normal[3]; ///< incoming x outgoing
};

bool find_corner(const Outline& outline, Corner& corner)
{
    for (int i = 0; i < outline.count; ++i) {
        subtract(outline.point(i), outline.previous(i), corner.incoming);
        subtract(outline.next(i), outline.point(i), corner.outgoing);
        if (!make_unit(corner.incoming) || !make_unit(corner.outgoing))
            continue;
        cross(corner.incoming, corner.outgoing, corner.normal);
        if (!(length(corner.normal) > kCollinear))
            continue;
        make_unit(corner.normal);
        corner.vertex = i;
        return true;
    }
    return false;
}

/// A ray from the corner `origin`: the points x with side . x + side_offset = 0 and ahead . x + ahead_offset > 0.
struct Ray {
    const double* origin;
    double ahead[3];
    double ahead_offset;
    double side[3];
    double side_offset;
};

void pass_through_origin(Ray& ray)
{
    ray.ahead_offset = -dot(ray.ahead, ray.origin);
    ray.side_offset = -dot(ray.side, ray.origin);
}

/// The ray along the bisector on the outer side of a convex corner.
Ray bisect(const Outline& outline, const Corner& corner)
{
    Ray ray;
    ray.origin = outline.point(corner.vertex);
    for (int k = 0; k < 3; ++k) {
        ray.ahead[k] = corner.incoming[k] - corner.outgoing[k];
        ray.side[k] = corner.incoming[k] + corner.outgoing[k];
    }
    make_unit(ray.ahead);
    make_unit(ray.side);
    pass_through_origin(ray);
    return ray;
}

/// Turns the ray a little, by three random numbers. Deliberate: `side` is not normalised again.
void jitter(Ray& ray, const double* normal)
{
    for (double& component : ray.ahead)
        component += unit_draw() * kJitter;
    make_unit(ray.ahead);
    cross(normal, ray.ahead, ray.side);
    pass_through_origin(ray);
}

enum class Crossings { even, odd, vertex_on_line };

/// Counts the edges apart from the corner's own that cross the ray, up to the first vertex within `on_line` of its
/// line.
Crossings count_crossings(const Outline& outline, int corner, const Ray& ray, double on_line)
{
    const int previous = outline.before(corner);
    bool odd = false;
    for (int k = 0; k < outline.count; ++k) {
        if (k == corner || k == previous)
            continue;
        const double* const from = outline.point(k);
        const double* const to = outline.next(k);
        const double d1 = dot(ray.side, from) + ray.side_offset;
        const double d2 = dot(ray.side, to) + ray.side_offset;
        if (std::fabs(d1) < on_line || std::fabs(d2) < on_line)
            return Crossings::vertex_on_line;
        if ((d1 < 0) == (d2 < 0))
            continue;
        const double t = d1 / (d1 - d2);
        double q[3];
        for (int c = 0; c < 3; ++c)
            q[c] = t * to[c] + (1 - t) * from[c];
        if (dot(ray.ahead, q) + ray.ahead_offset > 0)
            odd = !odd;
    }
    return odd ? Crossings::odd : Crossings::even;
}

/// Whether the corner is reflex: the bisector, outward at a convex corner, points into the outline.
///
/// Deliberate: when the attempts are used up the answer is yes, whatever the last pass counted.
bool is_reflex(const Outline& outline, const Corner& corner)
{
    Ray ray = bisect(outline, corner);
    for (int attempt = 1;; ++attempt) {
        const Crossings crossings = count_crossings(outline, corner.vertex, ray, kOnLine);
        if (crossings == Crossings::vertex_on_line)
            jitter(ray, corner.normal);
        if (attempt == kLastAttempt)
            return true;
        if (crossings != Crossings::vertex_on_line)
            return crossings == Crossings::odd;
    }
}

/// False, with nothing written, when the outline has no proper corner.
bool flatten_closed(const Outline& outline, const Transforms& to)
{
    Corner corner;
    if (!find_corner(outline, corner))
        return false;
    if (is_reflex(outline, corner))
        for (double& component : corner.normal)
            component = -component;
    orient(outline.point(corner.vertex), corner.outgoing, corner.normal, to.forward, to.reverse);
    return true;
}

// ---- Closed outlines without random numbers

/// Bounds the rounding of a point's distance from a line or a plane, as a share of the greatest coordinate. With the
/// unit roundoff u = 2^-53, a dot product of three terms with a unit vector rounds by less than 3 sqrt(3) u = 5.2 u.
/// The distance from a line takes two, 10.4 u. That from a plane takes one of differences twice as large, and rounds
/// these, 13.9 u. This is 16 u.
constexpr double kRounding = 0x1p-49;
/// A corner whose normal rounding may have tilted by more than this, in radians, is looked at again. Chosen.
constexpr double kTilt = 1e-06;
/// The mean plane replaces a corner's only where it is nearer to the points by this factor. Chosen: it leaves corners
/// alone that rounding has not tilted.
constexpr double kNearer = 16.0;
/// An area that is a smaller share than this of the sum of its parts counts as rounding. Chosen.
constexpr double kLeastArea = 1e-12;

/// Whether the corner is reflex, by the documented ray where that runs through no vertex, else by the outline's area.
/// Where that is nothing, as of an eight, the ray decides after all, and vertices on its line lie to the left of it.
bool is_reflex_for_sure(const Outline& outline, const Corner& corner, double rounding)
{
    const Ray ray = bisect(outline, corner);
    Crossings crossings = count_crossings(outline, corner.vertex, ray, std::max(kOnLine, rounding));
    double normal[3];
    if (crossings == Crossings::vertex_on_line && find_doubled_area(outline.points, outline.count, normal))
        return dot(normal, corner.normal) < 0;
    if (crossings == Crossings::vertex_on_line)
        crossings = count_crossings(outline, corner.vertex, ray, 0.0);
    return crossings == Crossings::odd;
}

/// How far the points get from the plane through `origin`.
double greatest_height(const Outline& outline, const double* origin, const double* normal)
{
    double greatest = 0.0;
    for (int i = 0; i < outline.count; ++i) {
        double d[3];
        subtract(outline.point(i), origin, d);
        greatest = std::max(greatest, std::fabs(dot(d, normal)));
    }
    return greatest;
}

/// Whether it is by rounding that the plane of a corner misses the outline: its edges are short or nearly straight, and
/// the mean plane, whose unit normal is written then, does better.
bool is_tilted_by_rounding(const Outline& outline, const Corner& corner, double rounding, double* normal)
{
    const double* const at = outline.point(corner.vertex);
    double in[3], out[3], product[3];
    subtract(at, outline.previous(corner.vertex), in);
    subtract(outline.next(corner.vertex), at, out);
    cross(in, out, product);
    if (rounding * std::max(length(in), length(out)) <= kTilt * length(product))
        return false;
    if (!find_doubled_area(outline.points, outline.count, normal))
        return false;
    const double size = length(normal);
    for (int k = 0; k < 3; ++k)
        normal[k] /= size;
    return greatest_height(outline, at, corner.normal) > kNearer * (greatest_height(outline, at, normal) + rounding);
}

bool flatten_closed_for_sure(const Outline& outline, double rounding, const Transforms& to)
{
    Corner corner;
    if (!find_corner(outline, corner))
        return false;
    double normal[3];
    if (!is_tilted_by_rounding(outline, corner, rounding, normal)) {
        const double sign = is_reflex_for_sure(outline, corner, rounding) ? -1.0 : 1.0;
        for (int k = 0; k < 3; ++k)
            normal[k] = sign * corner.normal[k];
    }
    orient(outline.point(corner.vertex), corner.outgoing, normal, to.forward, to.reverse);
    return true;
}

/// Lays an outline without a proper corner, such as one whose points are all there twice, into the plane of the first
/// points that span one, the way round that its area says.
void flatten_without_corner(const Outline& outline, const Transforms& to)
{
    double normal[3];
    if (!flatten_open(outline, to) || !find_doubled_area(outline.points, outline.count, normal) ||
        dot(normal, to.forward[2]) >= 0)
        return;
    double ahead[3], up[3];
    for (int k = 0; k < 3; ++k) {
        ahead[k] = to.forward[0][k];
        up[k] = -to.forward[2][k];
    }
    orient(outline.point(0), ahead, up, to.forward, to.reverse);
}

} // namespace

bool find_doubled_area(const double* points, int count, double* area)
{
    double parts = 0.0;
    area[0] = area[1] = area[2] = 0.0;
    for (int i = 1; i < count - 1; ++i) {
        double a[3], b[3], part[3];
        subtract(points + 3 * int64_t{i}, points, a);
        subtract(points + 3 * (int64_t{i} + 1), points, b);
        cross(a, b, part);
        add(area, part, area);
        parts += std::fabs(part[0]) + std::fabs(part[1]) + std::fabs(part[2]);
    }
    return length(area) > kLeastArea * parts;
}

void flatten_for_sure(const double* points, int count, double greatest, double (*xfm)[4], double (*reverse)[4],
                      bool closed)
{
    const Transforms to = {xfm, reverse};
    set_identities(to);
    const Outline outline = {points, count};
    if (!closed)
        flatten_open(outline, to);
    else if (!flatten_closed_for_sure(outline, kRounding * greatest, to))
        flatten_without_corner(outline, to);
}

int flatten(const Data* path, double (*xfm)[4], double (*reverse)[4], bool closed)
{
    if (xfm == nullptr)
        return -1;
    const Transforms to = {xfm, reverse};
    set_identities(to);
    if (!is_outline(path))
        return 1;
    if (components(path->count, path->dim) > kMostElements)
        return -1;
    if (!is_filled(*path))
        return 1;

    const Outline outline = {path->dvals, path->count};
    if (outline.count == 1) {
        drop_to_zero(outline.point(0), to);
        return 1;
    }
    if (outline.count == 2) {
        flatten_two_points(outline, to);
        return 1;
    }
    if (!closed && flatten_by_first_three(outline, to))
        return 1;
    return flatten_by_extremes(outline, to) ? 1 : -1;
}

void flatten(const DATAstruct* path, double (*xfm)[4], double (*reverse)[4], bool closed)
{
    if (xfm == nullptr)
        return;
    const Transforms to = {xfm, reverse};
    set_identities(to);
    if (!is_outline(path) || !is_filled(*path))
        return;

    const Outline outline = {path->dvals, path->count};
    if (!closed || !flatten_closed(outline, to))
        flatten_open(outline, to);
}

} // namespace korvale::path

using namespace korvale::path;

// data_to_xy_xfms reports a path without a plane and never turns the normal; DATA_to_xy_xfms has no result and makes a
// closed outline counter-clockwise. The methods share only their start, the single point and the frame.

int data_to_xy_xfms(Data* path, Xfm xfm, Xfm reverse, int closed)
{
    return flatten(path, xfm, reverse, closed != 0);
}

void DATA_to_xy_xfms(DATAstruct* path, Xfm xfm, Xfm reverse, int closed)
{
    flatten(path, xfm, reverse, closed != 0);
}
