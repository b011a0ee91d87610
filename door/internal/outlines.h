#pragma once

#include "door/internal/views.h"

namespace korvale::door {

/// Outlines to read, called "outline 0" and so on.
class OutlinesIn {
public:
    /// Refuses outlines of fewer than `least` points, and numbers that are not finite.
    OutlinesIn(const korvale_points* outlines, int64_t count, int64_t least)
    {
        if (count < 0)
            throw Refusal("count", "be 0 or more", Text() << "it is " << count);
        if (count > 0)
            require(outlines, "outlines");
        outlines_.reserve(static_cast<size_t>(count));
        int64_t points = 0;
        for (int64_t k = 0; k < count; ++k) {
            const Text name = Text() << "outline " << k;
            outlines_.emplace_back(&outlines[k], name);
            require_points(outlines_.back(), name, least);
            points += outlines_.back().size();
        }
        constexpr int64_t kMost = std::numeric_limits<int32_t>::max() / 3; // whose coordinates an int32_t counts
        if (points > kMost)
            throw Refusal("outlines", Text() << "have at most " << kMost << " points together",
                          Text() << "they have " << points);
    }

    size_t size() const { return outlines_.size(); }
    std::span<const Point> operator[](size_t k) const { return outlines_[k].points(); }

private:
    Vector<PointsIn> outlines_;
};

} // namespace korvale::door
