// A ray meets a triangle of a grid when the exact test in the frame of the ray says so and a cell that lists the
// triangle is met. Both can be asked of one triangle alone: the cells that list it are those its box touches,
// consecutive along each axis, and as neighbours share their planes, one of their faces is met where one of the planes
// between them is met within the outline of all. So no lists are kept, and a tree of boxes, four to a node, finds the
// few triangles to ask for.
//
// The boxes are wide enough that no meeting is missed. Of the rounding of the exact test: a triangle that shows its
// edge can be met beside itself, but, as the box of its three corners in the frame must hold the ray, by less than
// 2.5e-07 of its longest side L, whatever its size; kTrianglePad is four times that. Along the ray such a meeting may
// be off by 2 L, and by no more than 4e-08 L^3, as the determinant is at least 1e-06. Of the boxes and slabs in floats:
// kFloatPad of the mesh; of a far origin: kFarPad of its coordinates. Boxes and the ray are taken relative to the
// centre of the mesh, the ray from the point of it nearest to that. What is too large for floats is walked through
// triangle by triangle.
//
// Sums of areas choose the planes that divide boxes (Wald, On fast Construction of SAH-based Bounding Volume
// Hierarchies, 2007).
#include "door/internal/tree.h"

#include <algorithm>
#include <cmath>

#include "door/internal/failure.h"
#include "door/internal/views.h"
#include "math/internal/box.h"
#include "math/internal/matrix.h"
#include "math/internal/vector.h"
#include "ray/internal/cells.h"
#include "ray/internal/meet.h"
#include "ray/query.h"

namespace korvale::door {

using inside::CellRange;
using inside::GridAxis;

namespace {

constexpr double kTrianglePad = 1e-06;
constexpr double kFloatPad = 4e-06;
constexpr double kFarPad = 1e-13;

/// No larger numbers go into the tree.
constexpr double kLargest = 1e15;

/// Triangles of a leaf, at most.
constexpr int32_t kLeaf = 4;
constexpr int32_t kBins = 16;

/// Below this depth ranges are halved by number, which bounds the depth of all: see kMostWaiting.
constexpr int32_t kDeepest = 64;

/// Children that wait while others are walked: three for each node on the way.
constexpr int32_t kMostWaiting = 3 * (kDeepest + 32);

/// Between two reports of progress so many triangles are sorted.
constexpr int64_t kReport = 200000;

typedef float Floats __attribute__((vector_size(16)));
typedef int32_t FloatsMask __attribute__((vector_size(16)));

Floats load(const float* p)
{
    Floats v;
    std::memcpy(&v, p, sizeof v);
    return v;
}

Floats all(float value)
{
    return Floats{value, value, value, value};
}

/// Bit by bit, for compilers that do not choose between lanes.
Floats greater(Floats a, Floats b)
{
    const FloatsMask m = a > b;
    return reinterpret_cast<Floats>((reinterpret_cast<FloatsMask>(a) & m) | (reinterpret_cast<FloatsMask>(b) & ~m));
}

Floats less(Floats a, Floats b)
{
    const FloatsMask m = a < b;
    return reinterpret_cast<Floats>((reinterpret_cast<FloatsMask>(a) & m) | (reinterpret_cast<FloatsMask>(b) & ~m));
}

float down(double value)
{
    const auto f = static_cast<float>(value);
    return f > value ? std::nextafterf(f, -std::numeric_limits<float>::infinity()) : f;
}

float up(double value)
{
    return -down(-value);
}

float surface(const float* low, const float* high)
{
    const float x = high[0] - low[0], y = high[1] - low[1], z = high[2] - low[2];
    return x * y + y * z + z * x;
}

struct Box {
    float low[3] = {std::numeric_limits<float>::infinity(), std::numeric_limits<float>::infinity(),
                    std::numeric_limits<float>::infinity()};
    float high[3] = {-std::numeric_limits<float>::infinity(), -std::numeric_limits<float>::infinity(),
                     -std::numeric_limits<float>::infinity()};

    void include(const float* l, const float* h)
    {
        for (int k = 0; k < 3; ++k) {
            low[k] = std::min(low[k], l[k]);
            high[k] = std::max(high[k], h[k]);
        }
    }
};

/// Notes a triangle that is met. Returns whether the order of meetings matters.
bool note(Meeting& meeting, int32_t t, double distance)
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

/// Longer along the ray than across it: how far off a triangle of extent L may be met.
double slack_of(double extent)
{
    return std::min(2 * extent, 4e-08 * extent * extent * extent);
}

} // namespace

// Rays.

Ray::Ray(const double* from, const double* along)
{
    inside::copy3(from, origin);
    inside::copy3(along, unit);
    can_meet = inside::make_unit(unit);
    is_finite = false;
    if (!can_meet)
        return;
    ray_compute_xfm(origin, unit, frame);
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
        inside::carry_point(frame, triangle + v, seen + v);
    return inside::meets_triangle(start, seen, &distance);
}

void Ray::weigh(const double* triangle, double* weights) const
{
    double p[9];
    for (int v = 0; v < 9; v += 3)
        inside::carry_point(frame, triangle + v, p + v);
    const double system[2][3] = {{p[0] - p[6], p[3] - p[6], 0.0 - p[6]}, {p[1] - p[7], p[4] - p[7], 0.0 - p[7]}};
    weights[0] = weights[1] = 0.0;
    inside::solve_two_by_two(system, &weights[0], &weights[1]);
    weights[2] = 1.0 - weights[0] - weights[1];
}

void Growth::tell(double done) const
{
    if (progress != nullptr && progress(done, user) == 0)
        throw Stop();
}

// Cells.

void Tree::place_cells(const int32_t (&n)[3])
{
    planes_.resize(static_cast<size_t>(int64_t{n[0]} + n[1] + n[2] + 3));
    double* plane = planes_.data();
    grid_.in_order = true;
    for (int k = 0; k < 3; ++k) {
        if (!inside::place_planes(low_[k], high_[k], n[k], plane))
            grid_.in_order = false;
        grid_.axes[k] = {plane, n[k], n[k] / (plane[n[k]] - plane[0])};
        plane += n[k] + 1;
    }
}

bool Tree::meets_cell(const Ray& ray, int32_t t) const
{
    if (!grid_.in_order)
        return first_cell(ray, t) >= 0;
    double box[inside::kBoxValues];
    inside::find_triangle_box(triangle(t), box);
    const double* ends[3][2];
    for (int k = 0; k < 3; ++k) {
        const GridAxis& axis = grid_.axes[k];
        const CellRange cells = inside::cells_touching(axis, box[k], box[k + 3]);
        if (cells.first > cells.last)
            return false;
        ends[k][0] = axis.planes + cells.first;
        ends[k][1] = axis.planes + cells.last + 1;
    }
    for (int k = 0; k < 3; ++k) {
        const int a = k == 0 ? 1 : 0, b = k == 2 ? 1 : 2;
        for (const double* plane = ends[k][0]; plane <= ends[k][1]; ++plane) {
            double at_a, at_b;
            if (inside::meets_plane(ray.origin, ray.unit, *plane, k, a, b, &at_a, &at_b) &&
                inside::lies_between(at_a, *ends[a][0], *ends[a][1]) &&
                inside::lies_between(at_b, *ends[b][0], *ends[b][1]))
                return true;
        }
    }
    return false;
}

template <class Visit>
void Tree::for_each_cell(int32_t t, Visit visit) const
{
    double box[inside::kBoxValues];
    inside::find_triangle_box(triangle(t), box);
    grid_.for_each_cell([&](int32_t cell, const double* cell_box) {
        if (inside::boxes_meet(cell_box, box))
            visit(cell, cell_box);
    });
}

int32_t Tree::first_cell(const Ray& ray, int32_t t) const
{
    int32_t first = -1;
    for_each_cell(t, [&](int32_t cell, const double* box) {
        if (first < 0 && inside::meets_box(ray.origin, ray.unit, box))
            first = cell;
    });
    return first;
}

// Growing.

Tree::Tree(const double* triangles, int32_t count, const int32_t (&n)[3], const Growth& growth)
    : triangles_(triangles), count_(count), low_(), high_(), centre_(), half_(0), slack_(0), is_ordinary_(true), grid_()
{
    if (count == 0)
        return;
    for (int k = 0; k < 3; ++k)
        low_[k] = high_[k] = triangles[k];
    for (int64_t i = 3; i < 9 * int64_t{count}; i += 3)
        for (int k = 0; k < 3; ++k) {
            low_[k] = triangles[i + k] < low_[k] ? triangles[i + k] : low_[k];
            high_[k] = triangles[i + k] > high_[k] ? triangles[i + k] : high_[k];
        }
    place_cells(n);
    for (int k = 0; k < 3; ++k) {
        is_ordinary_ = is_ordinary_ && std::fabs(low_[k]) < kLargest && std::fabs(high_[k]) < kLargest;
        centre_[k] = 0.5 * low_[k] + 0.5 * high_[k];
        half_ = std::max(half_, 0.5 * high_[k] - 0.5 * low_[k]);
    }
    if (!is_ordinary_)
        return;
    Vector<Entry> entries(static_cast<size_t>(count));
    enter(entries);
    grow(entries, growth);
    numbers_.resize(entries.size());
    for (size_t i = 0; i < entries.size(); ++i)
        numbers_[i] = entries[i].triangle;
}

void Tree::enter(Vector<Entry>& entries)
{
    double largest = 0;
    for (int32_t t = 0; t < count_; ++t) {
        const double* const p = triangle(t);
        double low[3], high[3], extent = 0;
        for (int k = 0; k < 3; ++k) {
            low[k] = std::min(p[k], std::min(p[k + 3], p[k + 6])) - centre_[k];
            high[k] = std::max(p[k], std::max(p[k + 3], p[k + 6])) - centre_[k];
            extent += high[k] - low[k];
        }
        largest = std::max(largest, extent);
        Entry& e = entries[static_cast<size_t>(t)];
        for (int k = 0; k < 3; ++k) {
            e.low[k] = down(low[k] - kTrianglePad * extent);
            e.high[k] = up(high[k] + kTrianglePad * extent);
        }
        e.triangle = t;
    }
    slack_ = slack_of(largest);
}

/// Divides a range: it keeps the first part, and the second is returned.
Tree::Range Tree::split(Vector<Entry>& entries, Range& whole) const
{
    Entry* const first = entries.data() + whole.first;
    Entry* const last = entries.data() + whole.last;
    Entry* middle = first + whole.size() / 2;
    Box centres;
    for (const Entry* e = first; e != last; ++e)
        for (int k = 0; k < 3; ++k) {
            const float twice = e->low[k] + e->high[k];
            centres.low[k] = std::min(centres.low[k], twice);
            centres.high[k] = std::max(centres.high[k], twice);
        }
    int axis = 0;
    for (int k = 1; k < 3; ++k)
        if (centres.high[k] - centres.low[k] > centres.high[axis] - centres.low[axis])
            axis = k;
    const float least = centres.low[axis];
    const float scale = static_cast<float>(kBins) / (centres.high[axis] - least);
    if (whole.depth < kDeepest && scale < std::numeric_limits<float>::max()) {
        const auto bin_of = [&](const Entry& e) {
            return std::min(kBins - 1, static_cast<int32_t>((e.low[axis] + e.high[axis] - least) * scale));
        };
        Box boxes[kBins];
        int32_t counts[kBins] = {};
        for (const Entry* e = first; e != last; ++e) {
            const int32_t b = bin_of(*e);
            boxes[b].include(e->low, e->high);
            ++counts[b];
        }
        float above[kBins] = {}; // cost of bins b and later
        Box box;
        int32_t count = 0;
        for (int32_t b = kBins - 1; b > 0; --b) {
            box.include(boxes[b].low, boxes[b].high);
            count += counts[b];
            above[b] = count == 0 ? 0 : static_cast<float>(count) * surface(box.low, box.high);
        }
        box = Box();
        count = 0;
        float best = std::numeric_limits<float>::infinity();
        int32_t cut = 0;
        for (int32_t b = 1; b < kBins; ++b) {
            box.include(boxes[b - 1].low, boxes[b - 1].high);
            count += counts[b - 1];
            if (count == 0 || count == whole.size())
                continue;
            const float cost = static_cast<float>(count) * surface(box.low, box.high) + above[b];
            if (cost < best) {
                best = cost;
                cut = b;
            }
        }
        if (cut > 0)
            middle = std::partition(first, last, [&](const Entry& e) { return bin_of(e) < cut; });
    }
    const Range second = {static_cast<int32_t>(middle - entries.data()), whole.last, whole.depth + 1};
    whole = {whole.first, second.first, second.depth};
    return second;
}

void Tree::grow(Vector<Entry>& entries, const Growth& growth)
{
    struct Waiting {
        Range range;
        int32_t node, child; ///< where it hangs
    };
    nodes_.reserve(static_cast<size_t>(count_) / 3 + 1);
    Vector<Waiting> waiting;
    waiting.push_back({{0, count_, 0}, -1, 0});
    int64_t sorted = 0, done = 0;
    growth.tell(0);
    while (!waiting.empty()) {
        const Waiting at = waiting.back();
        waiting.pop_back();
        Range parts[kWidth] = {at.range};
        int32_t n = 1;
        while (n < kWidth) { // the largest part is divided first
            Range* const largest =
                std::max_element(parts, parts + n, [](const Range& a, const Range& b) { return a.size() < b.size(); });
            if (largest->size() <= kLeaf && (n > 1 || at.node >= 0))
                break;
            if (largest->size() < 2)
                break;
            sorted += largest->size();
            parts[n++] = split(entries, *largest);
        }
        const auto number = static_cast<int32_t>(nodes_.size());
        if (at.node >= 0)
            nodes_[static_cast<size_t>(at.node)].children[at.child] = number;
        Node node;
        for (int32_t c = 0; c < kWidth; ++c) {
            Box box;
            node.children[c] = -1;
            if (c < n) {
                for (int32_t i = parts[c].first; i < parts[c].last; ++i)
                    box.include(entries[static_cast<size_t>(i)].low, entries[static_cast<size_t>(i)].high);
                if (parts[c].size() <= kLeaf) {
                    node.children[c] = -1 - (8 * parts[c].first + parts[c].size() - 1);
                    done += parts[c].size();
                } else {
                    waiting.push_back({parts[c], number, c});
                }
            }
            for (int k = 0; k < 3; ++k) {
                node.low[k][c] = box.low[k];
                node.high[k][c] = box.high[k];
            }
        }
        nodes_.push_back(node);
        if (sorted >= kReport) {
            sorted = 0;
            growth.tell(static_cast<double>(done) / count_);
        }
    }
    growth.tell(1);
}

// Walking.

/// A ray against boxes: what it is to be compared with where it comes to one and where it leaves it.
struct Tree::Slabs {
    bool is_down[3];
    Floats entry[3], exit[3], inverse[3];
    double start; ///< distance of the origin from the point that boxes are seen from, backwards
    double pad;

    Slabs(const Ray& ray, const Tree& tree)
    {
        double towards[3], largest = 0;
        for (int k = 0; k < 3; ++k) {
            towards[k] = tree.centre_[k] - ray.origin[k];
            largest = std::max(largest, std::fabs(ray.origin[k]) + std::fabs(tree.centre_[k]));
        }
        const double* const d = ray.frame[2];
        start = inside::dot(towards, d);
        pad = kFloatPad * tree.half_ + kFarPad * (largest + tree.half_);
        for (int k = 0; k < 3; ++k) {
            const double seen_from = start * d[k] - towards[k];
            const bool is_flat = std::fabs(d[k]) < 1e-18;
            is_down[k] = std::signbit(d[k]);
            const double outwards = is_down[k] ? -pad : pad;
            entry[k] = all(static_cast<float>(seen_from + outwards));
            exit[k] = all(static_cast<float>(seen_from - outwards));
            inverse[k] = all(static_cast<float>(1 / (is_flat ? std::copysign(1e-18, d[k]) : d[k])));
        }
    }

    /// Where the ray begins, seen from where boxes are seen from: not too late.
    float before(double slack) const { return static_cast<float>(-start - 1e-06 * std::fabs(start) - slack - 2 * pad); }

    /// A distance from the origin, seen from where boxes are seen from: not too short.
    float from_here(double distance, double slack) const
    {
        const double there = distance - start;
        return static_cast<float>(there + 1e-06 * std::fabs(there) + slack + 2 * pad);
    }
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

    struct Waiting {
        int32_t child;
        float entry;
    };
    const Slabs slabs(ray, *this);
    const Floats earliest = all(slabs.before(slack_));
    Waiting waiting[kMostWaiting + 1];
    waiting[0] = {0, earliest[0]};
    int32_t n = 1;
    float latest = slabs.from_here(reach, slack_);
    while (n > 0) {
        const Waiting at = waiting[--n];
        if (at.entry > latest)
            continue;
        if (at.child < 0) {
            const int32_t code = -1 - at.child;
            const int32_t* const first = numbers_.data() + code / 8;
            for (int32_t i = 0; i <= code % 8; ++i) {
                double distance;
                if (ray.meets(triangle(first[i]), distance) && meets_cell(ray, first[i]) &&
                    !visit(first[i], distance, reach))
                    return;
            }
            latest = slabs.from_here(reach, slack_);
            continue;
        }
        const Node& node = nodes_[static_cast<size_t>(at.child)];
        Floats entry = earliest, exit = all(latest);
        for (int k = 0; k < 3; ++k) {
            const Floats nearer = load(slabs.is_down[k] ? node.high[k] : node.low[k]);
            const Floats farther = load(slabs.is_down[k] ? node.low[k] : node.high[k]);
            entry = greater((nearer - slabs.entry[k]) * slabs.inverse[k], entry);
            exit = less((farther - slabs.exit[k]) * slabs.inverse[k], exit);
        }
        const FloatsMask met = entry <= exit;
        const int32_t others = n;
        for (int c = 0; c < kWidth; ++c) {
            if (met[c] == 0)
                continue;
            int32_t i = n++;
            for (; kNearestFirst && i > others && waiting[i - 1].entry < entry[c]; --i)
                waiting[i] = waiting[i - 1];
            waiting[i] = {node.children[c], entry[c]};
        }
    }
}

Meeting Tree::meet(const Ray& ray) const
{
    Meeting meeting;
    bool is_odd = false;
    walk<false>(ray, meeting.distance, [&](int32_t t, double distance, double&) {
        ++meeting.count;
        is_odd = note(meeting, t, distance) || is_odd;
        return true;
    });
    return is_odd ? settle(ray) : meeting;
}

Meeting Tree::meet_nearest(const Ray& ray) const
{
    Meeting meeting;
    bool is_odd = false;
    walk<true>(ray, meeting.distance, [&](int32_t t, double distance, double& reach) {
        meeting.count = 1;
        is_odd = note(meeting, t, distance) || is_odd;
        reach = meeting.distance;
        return true;
    });
    return is_odd ? settle(ray) : meeting;
}

bool Tree::meets_any(const Ray& ray, double reach) const
{
    bool is_met = false;
    walk<false>(ray, reach, [&](int32_t, double distance, double&) {
        is_met = distance <= reach;
        return !is_met;
    });
    return is_met;
}

void Tree::for_each(const Ray& ray, void (*visit)(void* user, int32_t triangle, double distance), void* user) const
{
    walk<false>(ray, std::numeric_limits<double>::infinity(), [&](int32_t t, double distance, double&) {
        visit(user, t, distance);
        return true;
    });
}

/// In the order of cells and of numbers in them: a distance that is no number stays when it comes first, and of equal
/// ones, such as zeros of both signs, the first stays.
Meeting Tree::settle(const Ray& ray) const
{
    using Place = std::pair<int32_t, int32_t>;
    Meeting meeting;
    double of_first = 0, reach = std::numeric_limits<double>::infinity();
    Place first, nearest;
    walk_plainly(ray, reach, [&](int32_t t, double distance, double&) {
        const Place place = {first_cell(ray, t), t};
        if (meeting.count++ == 0 || place < first) {
            first = place;
            of_first = distance;
        }
        if (distance < meeting.distance) {
            meeting.distance = distance;
            meeting.triangle = t;
            nearest = place;
        } else if (distance == meeting.distance && place < nearest) { // numbers ascend: the least stays
            meeting.distance = distance;
            nearest = place;
        }
        return true;
    });
    if (is_nan(of_first))
        meeting.distance = of_first;
    return meeting;
}

} // namespace korvale::door
