#include "geometry.h"

#include <algorithm>

namespace gallery {

double signed_area(const Outline& outline)
{
    double twice = 0;
    for (size_t i = 0; i < outline.size(); i++) {
        const Point p = outline[i], q = outline[(i + 1) % outline.size()];
        twice += p.x * q.y - q.x * p.y;
    }
    return twice / 2;
}

void Box2::include(Point p)
{
    low = {std::min(low.x, p.x), std::min(low.y, p.y)};
    high = {std::max(high.x, p.x), std::max(high.y, p.y)};
}

void Box2::include(const Outline& outline)
{
    for (Point p : outline)
        include(p);
}

View::View(const Box2& content, Point corner, Point size)
    : world_middle_(content.middle()), picture_middle_(corner + 0.5 * size),
      scale_(std::min(size.x / content.size().x, size.y / content.size().y))
{
}

Point View::operator()(Point p) const
{
    const Point d = p - world_middle_;
    return {picture_middle_.x + scale_ * d.x, picture_middle_.y - scale_ * d.y};
}

Outline View::operator()(const Outline& outline) const
{
    Outline out;
    for (Point p : outline)
        out.push_back((*this)(p));
    return out;
}

Shape View::operator()(const Shape& shape) const
{
    Shape out;
    for (const Outline& outline : shape)
        out.push_back((*this)(outline));
    return out;
}

namespace {

struct Corner {
    Point p;
    int number; // of the point among all points of the shape
};
using Ring = std::vector<Corner>;

bool in_triangle(Point p, Point a, Point b, Point c)
{
    return side(a, b, p) >= 0 && side(b, c, p) >= 0 && side(c, a, p) >= 0;
}

bool same_place(Point a, Point b)
{
    return a.x == b.x && a.y == b.y;
}

// The corner of `ring` that sees the rightmost point of a hole (David Eberly, Triangulation by Ear Clipping, 2002):
// shoot a ray to the right, take the nearest edge's end further right, unless a reflex corner stands between.
size_t bridge_corner(const Ring& ring, Point from)
{
    double nearest = 1e300;
    size_t seen = 0;
    for (size_t i = 0; i < ring.size(); i++) {
        const Point a = ring[i].p, b = ring[(i + 1) % ring.size()].p;
        if (!(a.y <= from.y && b.y >= from.y) || a.y == b.y)
            continue;
        const double x = a.x + (from.y - a.y) / (b.y - a.y) * (b.x - a.x);
        if (x >= from.x && x < nearest) {
            nearest = x;
            seen = a.x > b.x ? i : (i + 1) % ring.size();
        }
    }
    const Point hit{nearest, from.y}, end = ring[seen].p;
    double best_slope = 1e300;
    size_t best = seen;
    for (size_t i = 0; i < ring.size(); i++) {
        const Point p = ring[i].p;
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

void join_hole(Ring& ring, Ring hole)
{
    const auto rightmost =
        std::max_element(hole.begin(), hole.end(), [](const Corner& a, const Corner& b) { return a.p.x < b.p.x; });
    std::rotate(hole.begin(), rightmost, hole.end());
    const size_t at = bridge_corner(ring, hole[0].p);
    hole.push_back(hole[0]);
    hole.push_back(ring[at]);
    ring.insert(ring.begin() + long(at) + 1, hole.begin(), hole.end());
}

double rightmost_x(const Ring& ring)
{
    double x = -1e300;
    for (const Corner& c : ring)
        x = std::max(x, c.p.x);
    return x;
}

bool is_ear(const Ring& ring, size_t i)
{
    const size_t n = ring.size();
    const Point a = ring[(i + n - 1) % n].p, b = ring[i].p, c = ring[(i + 1) % n].p;
    if (side(a, b, c) <= 0)
        return false;
    for (const Corner& other : ring) {
        const Point p = other.p;
        if (!same_place(p, a) && !same_place(p, b) && !same_place(p, c) && in_triangle(p, a, b, c))
            return false;
    }
    return true;
}

// The corner to clip next: an ear; else one without area; else, in an outline that crosses itself, any.
size_t corner_to_clip(const Ring& ring, size_t start)
{
    const size_t n = ring.size();
    for (size_t k = 0; k < n; k++)
        if (is_ear(ring, (start + k) % n))
            return (start + k) % n;
    for (size_t i = 0; i < n; i++)
        if (side(ring[(i + n - 1) % n].p, ring[i].p, ring[(i + 1) % n].p) == 0)
            return i;
    return 0;
}

} // namespace

std::vector<std::array<int, 3>> triangulate(const Shape& shape)
{
    std::vector<Ring> rings;
    int number = 0;
    for (const Outline& outline : shape) {
        rings.emplace_back();
        for (Point p : outline)
            rings.back().push_back({p, number++});
    }
    if (rings.empty())
        return {};
    Ring ring = rings[0];
    std::sort(rings.begin() + 1, rings.end(),
              [](const Ring& a, const Ring& b) { return rightmost_x(a) > rightmost_x(b); });
    for (size_t i = 1; i < rings.size(); i++)
        join_hole(ring, rings[i]);

    std::vector<std::array<int, 3>> triangles;
    size_t start = 0;
    while (ring.size() >= 3) {
        const size_t n = ring.size(), i = corner_to_clip(ring, start);
        triangles.push_back({ring[(i + n - 1) % n].number, ring[i].number, ring[(i + 1) % n].number});
        ring.erase(ring.begin() + long(i));
        start = (i + 1) % ring.size(); // skipping a corner keeps the triangles from becoming a fan
    }
    return triangles;
}

} // namespace gallery
