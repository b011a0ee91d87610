#pragma once

#include <algorithm>

#include "door/internal/failure.h"
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

/// Edges that are not as they should be: how many, and where the first is.
struct FaultyEdges {
    int64_t count = 0;
    int32_t low = 0, high = 0; ///< the places of the first

    void add(const FaceEdge& edge)
    {
        if (count++ == 0) {
            low = edge.low;
            high = edge.high;
        }
    }

    /// Tells where the first is, "between points 0 and 1", by the numbers that people know its ends by.
    Text place(std::string_view ends, int64_t from, int64_t to) const
    {
        Text text;
        text << (count > 1 ? ", one of them" : "") << " between " << ends << " " << from << " and " << to;
        return text;
    }
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
    void for_each(Visit visit, const Telling& telling = {})
    {
        constexpr int32_t kEdgesPerQuestion = 1 << 14;
        Asking asking(telling, kEdgesPerQuestion);
        const Vector<size_t> first = sort_into_buckets(asking);
        for (size_t b = 0; b + 1 < first.size(); ++b) {
            uint64_t *const begin = ends_.data() + first[b], *const end = ends_.data() + first[b + 1];
            if (end - begin <= kEdgesPerQuestion)
                std::sort(begin, end);
            else // around a hub of the mesh
                std::sort(begin, end, [&](uint64_t x, uint64_t y) {
                    asking.step(0.0);
                    return x < y;
                });
            for (const uint64_t* at = begin; at < end; asking.step(0.0)) {
                const uint64_t edge = *at >> 1;
                FaceEdge e = {static_cast<int32_t>(edge >> 31), static_cast<int32_t>(edge & INT32_MAX), 0, 0};
                for (; at < end && *at >> 1 == edge; ++at)
                    ++((*at & 1) != 0 ? e.down : e.up);
                visit(e);
            }
        }
    }

private:
    /// Sorts the ends by their lower places, a few neighbours in one bucket, and returns where each bucket begins and
    /// where the last one ends. What is in one is still in no order.
    Vector<size_t> sort_into_buckets(Asking& asking)
    {
        constexpr size_t kEach = 16; // ends of a bucket, about. Chosen.
        uint64_t last = 0;
        for (const uint64_t end : ends_)
            last = std::max(last, end >> 32);
        int shift = 32;
        for (; last >> (shift - 32) > ends_.size() / kEach; ++shift)
            ;
        Vector<size_t> first(static_cast<size_t>(last >> (shift - 32)) + 2);
        for (const uint64_t end : ends_) {
            ++first[(end >> shift) + 1];
            asking.step(0.0);
        }
        for (size_t b = 1; b < first.size(); ++b)
            first[b] += first[b - 1];
        Vector<size_t> next(first.begin(), first.end());
        Vector<uint64_t> sorted(ends_.size());
        for (const uint64_t end : ends_) {
            sorted[next[end >> shift]++] = end;
            asking.step(0.0);
        }
        ends_ = std::move(sorted);
        return first;
    }

    Vector<uint64_t> ends_; ///< the lower place, the higher one, and 1 where the face runs down
};

} // namespace korvale::door
