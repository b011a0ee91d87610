#pragma once

#include <optional>

#include "door/internal/runs.h"

// Rings that are sorted into shapes: what is known of each one by itself.
namespace korvale::door {

/// What the places of a ring tell.
struct Contour {
    Box box = kNowhere;
    double size = 0.0; ///< twice the area
    int32_t lowest = 0;
    int32_t before = 0, after = 0; ///< the nearest places before and after the lowest that are not there too
    int turn = 0;                  ///< 1 counter-clockwise, -1 clockwise, 0 without area
};

Contour measure(std::span<const Place> ring);

/// Rings and their contours. Those that take part have an area and repeat no other ring: their edges are in a tree.
class Contours {
public:
    /// Rings that are within `tolerance` of each other everywhere repeat each other.
    Contours(const Rings& rings, double tolerance, const Telling& telling);

    int32_t count() const { return static_cast<int32_t>(rings_.size()); }
    const Contour& operator[](int32_t ring) const { return contours_[static_cast<size_t>(ring)]; }
    std::span<const Place> places(int32_t ring) const { return rings_[static_cast<size_t>(ring)]; }
    const Place& place(int32_t ring, int32_t i) const { return places(ring)[static_cast<size_t>(i)]; }
    int32_t size(int32_t ring) const { return static_cast<int32_t>(places(ring).size()); }

    /// The first ring that goes round the same area, -1 of that one and where no other does.
    int32_t repeated(int32_t ring) const { return repeats_[static_cast<size_t>(ring)]; }
    bool takes_part(int32_t ring) const { return (*this)[ring].turn != 0 && repeated(ring) < 0; }

    const RunTree& tree() const { return tree_; }

    /// Whether a ring that takes part goes round a place an odd number of times.
    bool is_inside(int32_t ring, const Place& p) const;

    /// A place well inside a ring, found once.
    const Place& place_inside(int32_t ring);

    /// Calls `see` for the edges of a run of a ring, from edge `first` on, that are below p.
    template <class See>
    void for_each_below(int32_t ring, int32_t first, const Place& p, See see) const
    {
        for (int32_t i = first; i < std::min(first + RunTree::kRun, size(ring)); ++i) {
            const auto [from, to] = tree_.edge(ring, i);
            if ((from.x <= p.x) != (to.x <= p.x) && side(from, to, p) == (from.x < to.x ? 1 : -1))
                see();
        }
    }

private:
    const Rings& rings_;
    Vector<Contour> contours_;
    Vector<int32_t> repeats_;
    RunTree tree_;
    Vector<std::optional<Place>> insides_;
};

} // namespace korvale::door
