#include "door/internal/triangles.h"

namespace korvale::door {

TrianglesIn::TrianglesIn(const korvale_triangles* triangles, std::string_view argument, Numbers numbers)
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
    if (corners_) {
        gathered_.make_room(3 * static_cast<size_t>(corners));
        gather(points_, corners_->indices(), gathered_.data());
    }
    if (numbers == Numbers::finite)
        require_finite(points_of_corners(), argument);
}

void gather(const PointsIn& points, std::span<const int32_t> corners, double* to)
{
    for (const int32_t c : corners) {
        std::memcpy(to, points[c].data(), sizeof(Point));
        to += 3;
    }
}

void require_triangles(int64_t count, std::string_view argument)
{
    constexpr int64_t kMost = std::numeric_limits<int32_t>::max() / 9; // whose coordinates an int32_t counts
    if (count > kMost)
        throw Refusal(argument, Text() << "have at most " << kMost << " elements", Text() << "it has " << count);
}

} // namespace korvale::door
