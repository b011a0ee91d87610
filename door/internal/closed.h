#pragma once

#include <algorithm>

#include "door/internal/heap.h"

// Whether faces enclose something: each edge between two places has to be run through as often one way as the other.
namespace korvale::door {

/// An edge between two places.
struct FaceEdge {
    int32_t low, high; ///< the numbers of the places
    int64_t up, down;  ///< how often faces run through it from low to high, and back

    bool is_open() const { return (up + down) % 2 != 0; }
    bool is_turned() const { return !is_open() && up != down; }
};

/// The edges of faces whose corners are places.
class FaceEdges {
public:
    /// Of up to so many corners.
    explicit FaceEdges(size_t corners) { ends_.reserve(corners); }

    /// Adds an edge that a face runs through; one from a place to itself is none.
    void add(int32_t from, int32_t to)
    {
        if (from != to)
            ends_.push_back(static_cast<uint64_t>(std::min(from, to)) << 32 |
                            static_cast<uint64_t>(std::max(from, to)) << 1 | (to < from ? 1 : 0));
    }

    /// Adds those of a face whose corner k is at place(k).
    template <class Place>
    void add_face(int64_t corners, Place place)
    {
        for (int64_t k = 0; k < corners; ++k)
            add(place(k), place(k + 1 < corners ? k + 1 : 0));
    }

    /// Calls `visit` with each edge once, by its lower place first.
    template <class Visit>
    void for_each(Visit visit)
    {
        std::sort(ends_.begin(), ends_.end());
        for (size_t i = 0; i < ends_.size();) {
            const uint64_t edge = ends_[i] >> 1;
            FaceEdge e = {static_cast<int32_t>(edge >> 31), static_cast<int32_t>(edge & INT32_MAX), 0, 0};
            for (; i < ends_.size() && ends_[i] >> 1 == edge; ++i)
                ++((ends_[i] & 1) != 0 ? e.down : e.up);
            visit(e);
        }
    }

private:
    Vector<uint64_t> ends_; ///< the lower place, the higher one, and 1 where the face runs down
};

} // namespace korvale::door
