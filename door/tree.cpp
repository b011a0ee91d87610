// A ray meets a triangle of a grid when the exact test in the frame of the ray says so and a cell that lists the
// triangle is met. Both can be asked of one triangle alone: the cells that list it are those its box touches,
// consecutive along each axis, and as neighbours share their planes, one of their faces is met where one of the planes
// between them is met within the outline of all. So no lists are kept, and a tree of boxes, four to a node, finds the
// few triangles to ask for.
//
// No meeting is missed, as each error has a pad of its own:
//
// - The exact test can meet a triangle seen edge-on beside that triangle. The box of the three corners in the frame
//   must hold the ray, so the miss is below 2.5e-07 of the longest side L. kTrianglePad (`tree_growth.cpp`) is four
//   times that.
// - Along the ray such a meeting is off by at most 2 L. It is also off by at most 4e-08 L^3, as the determinant is at
//   least 1e-06. `slack_of` (`tree_growth.cpp`) is the lesser.
// - Boxes and slabs are floats: kFloatPad of the largest half extent.
// - A far origin rounds more: kFarPad of its coordinates.
//
// Boxes are stored relative to the centre of the mesh, and the ray starts from its point nearest to that. A mesh or a
// ray beyond kLargest is tested triangle by triangle.
//
// The thresholds of the exact test are absolute. Small models, and those of small triangles, are asked as larger ones:
// all lengths are multiplied by a power of two, which loses no bit, those of triangles by the frame of the ray.
#include "door/internal/tree.h"

#include <algorithm>
#include <bit>
#include <cmath>

#include "door/internal/views.h"
#include "math/internal/box.h"
#include "math/internal/matrix.h"
#include "math/internal/vector.h"
#include "platform/internal/floats.h"
#include "platform/internal/lanes.h"
#include "ray/internal/cells.h"
#include "ray/internal/meet.h"
#include "ray/query.h"

namespace korvale::door {

using platform::Floats;
using platform::Pair;
using ray::CellRange;
using ray::GridAxis;

namespace {

/// A share of the largest half extent by which slabs are wider. Where a ray enters a slab, the plane and the way
/// between them, each at most 3 half extents, and the inverse are rounded to floats by 6e-08: together below 7e-07.
/// Chosen: six times that.
constexpr double kFloatPad = 4e-06;

/// A share of the coordinates of a far origin, for some thirty roundings of 1.1e-16: 4e-15. Chosen: far above that.
constexpr double kFarPad = 1e-13;

/// No smaller component of a direction is divided by. A ray is moved by 1e-18 of its way, far less than a double
/// rounds.
constexpr double kLeastSlope = 1e-18;

/// No larger numbers go into the tree: a way of that length divided by kLeastSlope, 1e33, is a float.
constexpr double kLargest = 1e15;

/// A share of a distance that is above its rounding to a float, 6e-08. Chosen.
constexpr double kDistancePad = 1e-06;

/// Children that wait while others are walked: three for each node on the way.
constexpr int32_t kMostWaiting = 3 * Tree::kMostDepth;

/// Notes a triangle that is met. Returns whether the order of meetings matters.
bool note(RayHits& meeting, int32_t t, double distance)
{
    if (distance < meeting.distance) {
        meeting.distance = distance;
        meeting.triangle = t;
        return false;
    }
    if (distance == meeting.distance) {
        if (t < meeting.triangle)
            meeting.triangle = t;
        return std::signbit(distance) != std::signbit(meeting.distance);
    }
    return is_nan(distance);
}

/// The exponent of the least power of two that a small model is made to reach. Chosen: of a reach of 1 a million
/// triangles are too small to be met within a degree or two of their plane; of 1,024 rays would look far along them.
constexpr int kSmallestReach = 6;

/// The exponent of what twice the area of the smallest triangle is brought to: it is met then from all but the most
/// grazing directions, 1 in 16,000 of them, as those of a million over a ball of size 2^kSmallestReach are. Chosen.
constexpr int kDoubleArea = -6;

/// No coordinate is brought beyond 2^kFarthest for that, unless a small model has to reach 2^kSmallestReach. The
/// rounding of a determinant, about 2^(2 kFarthest - 52), stays well below the 1e-06 from which a triangle counts as
/// seen. That of the last plane of 256 cells, 2^(kFarthest - 52) each, stays below what boxes of triangles are widened
/// by.
constexpr int kFarthest = 12;

/// The greatest power of two that brings things to a size, whose inverse is an ordinary number as well.
constexpr int kMostExponent = 1000;

/// Triangles that are measured between two reports of progress: some milliseconds. Chosen.
constexpr int32_t kReport = 100000;

/// The square of twice the smallest area of triangles, other than 0, with lengths multiplied by `scale`.
double least_square(const double* triangles, int32_t count, double scale, const Telling& telling)
{
    double least = std::numeric_limits<double>::infinity();
    for (int32_t t = 0; t < count; ++t) {
        if (t % kReport == 0)
            telling.tell(0);
        const double* const p = triangles + 9 * int64_t{t};
        const double a[3] = {scale * (p[3] - p[0]), scale * (p[4] - p[1]), scale * (p[5] - p[2])};
        const double b[3] = {scale * (p[6] - p[0]), scale * (p[7] - p[1]), scale * (p[8] - p[2])};
        double normal[3];
        math::cross(a, b, normal);
        const double square = math::dot(normal, normal);
        if (square > 0 && square < least)
            least = square;
    }
    return least;
}

double scale_of(const double* triangles, int32_t count, const double* box, const Telling& telling)
{
    const double reach = std::max({box[3] - box[0], box[4] - box[1], box[5] - box[2]});
    if (!(reach > 0) || !door::is_finite(reach))
        return 1;
    const int as_small = kSmallestReach - std::ilogb(reach); // what a small model is multiplied by wherever it stands
    const int of_reach = reach < 1 ? std::min(as_small, kMostExponent) : 0;
    double farthest = 0;
    for (int k = 0; k < 6; ++k)
        farthest = std::max(farthest, std::fabs(box[k]));
    const int most = std::min(std::max(kFarthest - 1 - std::ilogb(farthest), as_small), kMostExponent);
    if (most <= of_reach)
        return std::ldexp(1, of_reach);
    const double square = least_square(triangles, count, std::ldexp(1, of_reach), telling);
    const int missing = 2 * kDoubleArea - (door::is_finite(square) ? std::ilogb(square) : 0);
    const int of_triangles = of_reach + (missing > 0 ? (missing + 3) / 4 : 0); // `square` grows with scale^4
    return std::ldexp(1, std::min(of_triangles, most));
}

} // namespace

// Rays.

void bring_to_length(double* direction)
{
    constexpr double kLong = 0x1p+500; // whose square is an ordinary number
    const double reach = std::max({std::fabs(direction[0]), std::fabs(direction[1]), std::fabs(direction[2])});
    if (!(reach > 0) || !door::is_finite(reach) || (reach >= 1 && reach < kLong))
        return;
    const int exponent = std::ilogb(reach);
    for (int k = 0; k < 3; ++k)
        direction[k] = std::ldexp(direction[k], -exponent);
}

Ray::Ray(const double* from, const double* along, double scale)
{
    math::copy3(along, unit);
    bring_to_length(unit);
    can_meet = math::make_unit(unit);
    for (int k = 0; k < 3; ++k) {
        origin[k] = scale * from[k];
        can_meet = can_meet && (door::is_finite(origin[k]) || !door::is_finite(from[k]));
    }
    is_finite = false;
    if (!can_meet)
        return;
    ray_compute_xfm(origin, unit, frame);
    math::copy3(frame[2], ahead);
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 3; ++j)
            frame[i][j] *= scale; // of triangles
    is_finite = true;
    for (int i = 0; i < 3; ++i)
        for (const double number : frame[i])
            is_finite = is_finite && door::is_finite(number);
}

bool Ray::meets(const double* triangle, double& distance) const
{
    const double start[3] = {0, 0, 0};
    double seen[9];
    for (int v = 0; v < 9; v += 3)
        math::carry_point(frame, triangle + v, seen + v);
    return ray::meets_triangle(start, seen, &distance);
}

void Ray::weigh(const double* triangle, double* weights) const
{
    double p[9];
    for (int v = 0; v < 9; v += 3)
        math::carry_point(frame, triangle + v, p + v);
    const double system[2][3] = {{p[0] - p[6], p[3] - p[6], 0.0 - p[6]}, {p[1] - p[7], p[4] - p[7], 0.0 - p[7]}};
    weights[0] = weights[1] = 0.0;
    math::solve_two_by_two(system, &weights[0], &weights[1]);
    weights[2] = 1.0 - weights[0] - weights[1];
}

// Growing.

Tree::Tree(const double* triangles, int32_t count, const double* box, const int32_t (&n)[3], const Telling& telling)
    : triangles_(triangles), count_(count), scale_(scale_of(triangles, count, box, telling)), centre_(), half_(0),
      is_ordinary_(true), grid_()
{
    if (count == 0)
        return;
    double scaled[6];
    std::transform(box, box + 6, scaled, [this](double bound) { return scale_ * bound; });
    planes_.resize(static_cast<size_t>(ray::count_planes(n)));
    grid_ = ray::grid_in(scaled, n, planes_.data());
    for (int k = 0; k < 3; ++k) {
        const double low = scaled[k], high = scaled[k + 3];
        is_ordinary_ = is_ordinary_ && std::fabs(low) < kLargest && std::fabs(high) < kLargest;
        centre_[k] = 0.5 * low + 0.5 * high;
        half_ = std::max(half_, 0.5 * high - 0.5 * low);
    }
    if (is_ordinary_)
        grow(telling);
}

// Cells.

void Tree::find_box(int32_t t, double* box) const
{
    double scaled[9];
    for (int i = 0; i < 9; ++i)
        scaled[i] = scale_ * triangle(t)[i];
    ray::find_triangle_box(scaled, box);
}

bool Tree::meets_cell(const Ray& ray, int32_t t) const
{
    if (!grid_.in_order)
        return first_cell(ray, t) >= 0;
    double box[ray::kBoxValues];
    find_box(t, box);
    const double* ends[3][2];
    for (int k = 0; k < 3; ++k) {
        const GridAxis& axis = grid_.axes[k];
        const CellRange cells = ray::cells_touching(axis, box[k], box[k + 3]);
        if (cells.first > cells.last)
            return false;
        ends[k][0] = axis.planes + cells.first;
        ends[k][1] = axis.planes + cells.last + 1;
    }
    for (int k = 0; k < 3; ++k) {
        const int a = ray::kAcross[k][0], b = ray::kAcross[k][1];
        for (const double* plane = ends[k][0]; plane <= ends[k][1]; ++plane) {
            ray::Meeting at;
            if (ray::meets_plane(ray.origin, ray.unit, {k, *plane}, at) &&
                ray::lies_between(at.a, *ends[a][0], *ends[a][1]) && ray::lies_between(at.b, *ends[b][0], *ends[b][1]))
                return true;
        }
    }
    return false;
}

template <class Visit>
void Tree::for_each_cell(int32_t t, Visit visit) const
{
    double box[ray::kBoxValues];
    find_box(t, box);
    grid_.for_each_cell([&](int32_t cell, const double* cell_box) {
        if (ray::boxes_meet(cell_box, box))
            visit(cell, cell_box);
    });
}

int32_t Tree::first_cell(const Ray& ray, int32_t t) const
{
    int32_t first = -1;
    for_each_cell(t, [&](int32_t cell, const double* box) {
        if (first < 0 && ray::meets_box(ray.origin, ray.unit, box))
            first = cell;
    });
    return first;
}

// Walking.

/// The slab test of a ray against boxes (Timothy Kay and James Kajiya, Ray Tracing Complex Scenes, 1986), prepared once
/// per ray. The ray enters a slab at (plane - entry) * inverse and leaves it at (plane - exit) * inverse. `entry` and
/// `exit` are moved outwards by `pad`, so rounding misses no box.
struct Tree::Slabs {
    bool is_down[3];
    Floats entry[3], exit[3], inverse[3];
    double start; ///< distance along the ray from its origin to its point nearest to the centre
    double pad;

    Slabs(const Ray& ray, const Tree& tree)
    {
        double towards[3], largest = 0;
        for (int k = 0; k < 3; ++k) {
            towards[k] = tree.centre_[k] - ray.origin[k];
            largest = std::max(largest, std::fabs(ray.origin[k]) + std::fabs(tree.centre_[k]));
        }
        const double* const d = ray.ahead;
        start = math::dot(towards, d);
        pad = kFloatPad * tree.half_ + kFarPad * (largest + tree.half_);
        for (int k = 0; k < 3; ++k) {
            const double seen_from = start * d[k] - towards[k];
            const bool is_flat = std::fabs(d[k]) < kLeastSlope;
            is_down[k] = std::signbit(d[k]);
            const double outwards = is_down[k] ? -pad : pad;
            entry[k] = platform::all_floats(static_cast<float>(seen_from + outwards));
            exit[k] = platform::all_floats(static_cast<float>(seen_from - outwards));
            inverse[k] =
                platform::all_floats(static_cast<float>(1 / (is_flat ? std::copysign(kLeastSlope, d[k]) : d[k])));
        }
    }

    /// Where the ray begins, as a distance along it from the point nearest the tree's centre, rounded down: by twice
    /// what slabs are widened by.
    float before() const { return static_cast<float>(-start - kDistancePad * std::fabs(start) - 2 * pad); }

    /// A distance from the ray's origin in the same way, rounded up.
    float from_here(double distance) const
    {
        const double there = distance - start;
        return static_cast<float>(there + kDistancePad * std::fabs(there) + 2 * pad);
    }
};

/// The exact test with the operations of `Ray::meets` in their order. Most triangles lie beside the ray, so x and y are
/// taken first, two at a time; corners that are finite need no fourth coordinate.
struct Tree::Sight {
    Pair x, y, z, translation; ///< the first two rows of the frame, column by column
    const double (&frame)[4][4];

    explicit Sight(const Ray& ray)
        : x{ray.frame[0][0], ray.frame[1][0]}, y{ray.frame[0][1], ray.frame[1][1]}, z{ray.frame[0][2], ray.frame[1][2]},
          translation{ray.frame[0][3], ray.frame[1][3]}, frame(ray.frame)
    {
    }

    Pair across(const double* p) const { return x * p[0] + y * p[1] + z * p[2] + translation; }
    double along(const double* p) const
    {
        return frame[2][0] * p[0] + frame[2][1] * p[1] + frame[2][2] * p[2] + frame[2][3];
    }

    bool meets(const double* t, double& distance) const
    {
        const Pair a = across(t), b = across(t + 3), c = across(t + 6), zero = {0, 0};
        const auto beside = ((a < zero) & (b < zero) & (c < zero)) | ((a > zero) & (b > zero) & (c > zero));
        if ((beside[0] | beside[1]) != 0)
            return false;
        const double seen[9] = {a[0], a[1], along(t), b[0], b[1], along(t + 3), c[0], c[1], along(t + 6)};
        return ray::meets_triangle(kStart, seen, &distance);
    }

    static constexpr double kStart[3] = {0, 0, 0};
};

template <class Visit>
void Tree::walk_plainly(const Ray& ray, double& reach, Visit visit) const
{
    for (int32_t t = 0; t < count_; ++t) {
        double distance;
        if (ray.meets(triangle(t), distance) && meets_cell(ray, t) && !visit(t, distance, reach))
            return;
    }
}

/// A child and where the ray enters it.
struct Tree::Entered {
    int32_t child;
    float entry;
};

/// The children of a node that a ray meets.
struct Tree::MetChildren {
    const Node& node;
    Floats first; ///< of each child: the earliest place of a triangle in it
    unsigned met; ///< a bit for each child

    MetChildren(const Node& of, const Slabs& slabs, Floats earliest, float latest) : node(of)
    {
        Floats entry = platform::all_floats(-std::numeric_limits<float>::infinity()), exit = -entry;
        for (int k = 0; k < 3; ++k) {
            const Floats nearer = platform::load_floats(slabs.is_down[k] ? node.high[k] : node.low[k]);
            const Floats farther = platform::load_floats(slabs.is_down[k] ? node.low[k] : node.high[k]);
            entry = platform::greater((nearer - slabs.entry[k]) * slabs.inverse[k], entry);
            exit = platform::lesser((farther - slabs.exit[k]) * slabs.inverse[k], exit);
        }
        const Floats slack = platform::load_floats(node.slack), last = exit + slack;
        first = entry - slack;
        met = platform::lane_bits((entry <= exit) & (first <= platform::all_floats(latest)) & (last >= earliest));
    }

    bool is_single() const { return std::has_single_bit(met); }

    /// The first one by number.
    Entered front() const { return at(std::countr_zero(met)); }

    /// Pushes all on a stack of n, of which the new size is returned. Where kNearestFirst they are pushed farthest
    /// first, by an insertion sort of at most four, so the nearest is popped first.
    template <bool kNearestFirst>
    int32_t push(Entered* stack, int32_t n) const
    {
        const int32_t others = n;
        for (unsigned left = met; left != 0; left &= left - 1) {
            const int c = std::countr_zero(left);
            int32_t i = n++;
            for (; kNearestFirst && i > others && stack[i - 1].entry < first[c]; --i)
                stack[i] = stack[i - 1];
            stack[i] = at(c);
        }
        return n;
    }

private:
    Entered at(int c) const { return {node.children[c], first[c]}; }
};

/// Tests the triangles of a leaf. False where `visit` ends the walk.
template <class Visit>
bool Tree::test_leaf(Leaf leaf, const Ray& ray, const Sight& seen, double& reach, Visit& visit) const
{
    const int32_t* const first = numbers_.data() + leaf.first;
    for (int32_t i = 0; i < leaf.count; ++i) {
        double distance;
        if (seen.meets(triangle(first[i]), distance) && !(distance > reach) && meets_cell(ray, first[i]) &&
            !visit(first[i], distance, reach))
            return false;
    }
    return true;
}

/// A single child that is met is walked at once, without the stack. `latest` falls as hits come, so children that were
/// pushed before a hit and are entered behind it are dropped when they are popped.
template <bool kNearestFirst, class Visit>
void Tree::walk(const Ray& ray, double reach, Visit visit) const
{
    if (!ray.can_meet || count_ == 0)
        return;
    bool is_ordinary = is_ordinary_ && ray.is_finite;
    for (const double c : ray.origin)
        is_ordinary = is_ordinary && std::fabs(c) < kLargest;
    if (!is_ordinary) {
        walk_plainly(ray, reach, visit);
        return;
    }

    const Slabs slabs(ray, *this);
    const Sight seen(ray);
    const Floats earliest = platform::all_floats(slabs.before());
    Entered waiting[kMostWaiting + 1];
    Entered at = {0, earliest[0]};
    int32_t n = 0; // a local variable of its own stays in a register
    float latest = slabs.from_here(reach);
    for (;;) {
        if (is_leaf(at.child)) {
            if (!test_leaf(unpacked(at.child), ray, seen, reach, visit))
                return;
            latest = slabs.from_here(reach);
        } else {
            const MetChildren met(nodes_[static_cast<size_t>(at.child)], slabs, earliest, latest);
            if (met.is_single()) {
                at = met.front();
                continue;
            }
            n = met.push<kNearestFirst>(waiting, n);
        }
        do {
            if (n == 0)
                return;
            at = waiting[--n];
        } while (at.entry > latest);
    }
}

RayHits Tree::unscaled(RayHits meeting) const
{
    meeting.distance /= scale_;
    return meeting;
}

RayHits Tree::meet(const Ray& ray) const
{
    RayHits meeting;
    bool is_odd = false;
    walk<false>(ray, meeting.distance, [&](int32_t t, double distance, double&) {
        ++meeting.count;
        is_odd = note(meeting, t, distance) || is_odd;
        return true;
    });
    return unscaled(is_odd ? settle(ray) : meeting);
}

RayHits Tree::meet_nearest(const Ray& ray) const
{
    RayHits meeting;
    bool is_odd = false;
    walk<true>(ray, meeting.distance, [&](int32_t t, double distance, double& reach) {
        meeting.count = 1;
        is_odd = note(meeting, t, distance) || is_odd;
        reach = meeting.distance;
        return true;
    });
    return unscaled(is_odd ? settle(ray) : meeting);
}

bool Tree::meets_any(const Ray& ray, double reach) const
{
    bool is_met = false;
    const double scaled = scale_ * reach;
    walk<false>(ray, scaled, [&](int32_t, double distance, double&) {
        is_met = distance <= scaled;
        return !is_met;
    });
    return is_met;
}

void Tree::for_each(const Ray& ray, void (*visit)(void* user, int32_t triangle, double distance), void* user) const
{
    walk<false>(ray, std::numeric_limits<double>::infinity(), [&](int32_t t, double distance, double&) {
        visit(user, t, distance / scale_);
        return true;
    });
}

/// In the order of cells and of numbers in them: a distance that is no number stays when it comes first, and of equal
/// ones, such as zeros of both signs, the first stays.
RayHits Tree::settle(const Ray& ray) const
{
    using Rank = std::pair<int32_t, int32_t>; // a cell, and a triangle in it
    RayHits meeting;
    double of_first = 0, reach = std::numeric_limits<double>::infinity();
    Rank first, nearest;
    walk_plainly(ray, reach, [&](int32_t t, double distance, double&) {
        const Rank rank = {first_cell(ray, t), t};
        if (meeting.count++ == 0 || rank < first) {
            first = rank;
            of_first = distance;
        }
        if (distance < meeting.distance) {
            meeting.distance = distance;
            meeting.triangle = t;
            nearest = rank;
        } else if (distance == meeting.distance && rank < nearest) { // numbers ascend: the least stays
            meeting.distance = distance;
            nearest = rank;
        }
        return true;
    });
    if (is_nan(of_first))
        meeting.distance = of_first;
    return meeting;
}

} // namespace korvale::door
