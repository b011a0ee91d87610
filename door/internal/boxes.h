#pragma once

#include <algorithm>
#include <limits>

#include "door/internal/heap.h"
#include "door/internal/side.h"

namespace korvale::door {

/// Bounds in a plane.
struct Box {
    double low_x, low_y, high_x, high_y;

    friend bool operator==(const Box&, const Box&) = default;

    bool meets(const Box& b) const
    {
        return int{low_x <= b.high_x} & int{b.low_x <= high_x} & int{low_y <= b.high_y} & int{b.low_y <= high_y};
    }
    bool holds(const Place& p) const
    {
        return int{low_x <= p.x} & int{p.x <= high_x} & int{low_y <= p.y} & int{p.y <= high_y};
    }
    void cover(const Box& b)
    {
        low_x = std::min(low_x, b.low_x);
        low_y = std::min(low_y, b.low_y);
        high_x = std::max(high_x, b.high_x);
        high_y = std::max(high_y, b.high_y);
    }
    void cover(const Place& p) { cover(Box{p.x, p.y, p.x, p.y}); }
};

/// The bounds of nothing.
constexpr Box kNowhere = {std::numeric_limits<double>::max(), std::numeric_limits<double>::max(),
                          std::numeric_limits<double>::lowest(), std::numeric_limits<double>::lowest()};

/// The numbers of places in their order along a curve that fills the plane, so that neighbours among them are near each
/// other (Guy Macdonald Morton, A Computer Oriented Geodetic Data Base, 1966).
Vector<size_t> order_along_curve(const Vector<Place>& places);

/// Boxes over boxes: node i lies above nodes 2 i and 2 i + 1, the root is node 1, and the leaves are the second half.
/// Makes all nodes above the leaves.
void raise(Vector<Box>& nodes);

/// Room for the nodes that wait on a way down such a tree: one on each level, of which there are fewer, as there are
/// fewer than 2^31 leaves.
constexpr size_t kMostOnTheWay = 64;

} // namespace korvale::door
