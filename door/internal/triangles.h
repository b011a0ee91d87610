#pragma once

#include "door/internal/views.h"

namespace korvale::door {

/// Triangles to read, nine doubles each: where the host has them so, they are read in place.
class TrianglesIn {
public:
    enum class Numbers { finite, any };

    /// Refuses corners that are no points or do not come in threes, and coordinates of triangles that are not finite
    /// where they have to be.
    TrianglesIn(const korvale_triangles* triangles, std::string_view argument, Numbers numbers = Numbers::finite);

    const double* data() const { return corners_ ? gathered_.data() : points_.data(); }
    int64_t size() const { return count_; }

    /// Three a triangle.
    std::span<const Point> points_of_corners() const
    {
        return {reinterpret_cast<const Point*>(data()), 3 * static_cast<size_t>(count_)};
    }

    /// Whether the numbers are read where the host has them.
    bool is_in_place(const korvale_triangles& given) const { return data() == given.points.data; }

    /// How many points the host has, and the number of the one at corner `i` of all.
    ///@{
    int64_t points() const { return points_.size(); }
    int64_t corner(int64_t i) const { return corners_ ? (*corners_)[i] : i; }
    ///@}

    /// The corners as the host numbers them; none where the points stand one after the other.
    std::span<const int32_t> corners() const { return corners_ ? corners_->indices() : std::span<const int32_t>(); }

private:
    PointsIn points_;
    std::optional<IndicesIn> corners_;
    int64_t count_;
    Block<double> gathered_;
};

/// Writes the points at some corners, x y z after one another.
void gather(const PointsIn& points, std::span<const int32_t> corners, double* to);

/// Refuses more triangles than the library's arrays can hold.
void require_triangles(int64_t count, std::string_view argument);

} // namespace korvale::door
