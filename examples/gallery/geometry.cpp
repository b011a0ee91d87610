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

std::vector<Vec3> lifted(const Outline& outline, double z)
{
    std::vector<Vec3> points;
    for (Point p : outline)
        points.push_back({p.x, p.y, z});
    return points;
}

std::vector<std::vector<Vec3>> lifted(const Shape& shape)
{
    std::vector<std::vector<Vec3>> outlines;
    for (const Outline& outline : shape)
        outlines.push_back(lifted(outline));
    return outlines;
}

} // namespace gallery
