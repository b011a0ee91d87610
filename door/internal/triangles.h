#pragma once

#include "door/internal/views.h"

namespace korvale::door {

/// Triangles to read, nine doubles each: where the host has them so, they are read in place.
class TrianglesIn {
public:
    /// Refuses corners that are no points or do not come in threes, and coordinates of triangles that are not finite.
    TrianglesIn(const korvale_triangles* triangles, std::string_view argument);

    const double* data() const { return gathered_.empty() ? points_.data() : gathered_.data(); }
    int64_t size() const { return count_; }

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
    Vector<double> gathered_;
};

/// The points at some corners, x y z after one another.
Vector<double> gather(const PointsIn& points, std::span<const int32_t> corners);

/// Refuses more triangles than the library's arrays can hold.
void require_triangles(int64_t count, std::string_view argument);

} // namespace korvale::door
