#include "door/internal/triangles.h"

namespace korvale::door {

TrianglesIn::TrianglesIn(const korvale_triangles* triangles, std::string_view argument)
    : points_((require(triangles, argument), &triangles->points), argument)
{
    if (triangles->corners.data != nullptr || triangles->corners.count != 0) {
        corners_.emplace(&triangles->corners, argument);
        require_corners(*corners_, argument, points_.size());
    }
    const int64_t corners = corners_ ? corners_->size() : points_.size();
    if (corners % 3 != 0)
        throw Refusal(argument, "have corners in threes", Text() << "there are " << corners);
    count_ = corners / 3;
    require_triangles(count_, argument);
    if (corners_)
        gathered_ = gather(points_, corners_->indices());
    require_finite({reinterpret_cast<const Point*>(data()), static_cast<size_t>(corners)}, argument);
}

Vector<double> gather(const PointsIn& points, std::span<const int32_t> corners)
{
    Vector<double> gathered(3 * corners.size());
    double* to = gathered.data();
    for (const int32_t c : corners) {
        std::memcpy(to, points[c].data(), sizeof(Point));
        to += 3;
    }
    return gathered;
}

void require_triangles(int64_t count, std::string_view argument)
{
    constexpr int64_t kMost = std::numeric_limits<int32_t>::max() / 9;
    if (count > kMost)
        throw Refusal(argument, Text() << "have at most " << kMost << " elements", Text() << "it has " << count);
}

} // namespace korvale::door
