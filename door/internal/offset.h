#pragma once

#include "door/internal/joins.h"
#include "door/internal/planes.h"

// Closed outlines moved sideways in their own planes, without random numbers and in any size.
namespace korvale::door {

/// An outline, a path or a border of somebody else.
using Outline = std::span<const Point>;

/// How an outline is moved.
struct Motion {
    double distance; ///< outwards where it is positive
    double height = 0.0;
    bool keep_vertices = true;
    bool split = true;
    Telling telling = {};
    bool keep_whole = false; ///< end before a part is lost: where the outline splits, or a limb or all of it vanishes
    Joins joins = {};        ///< of borders and rings of their own
};

/// What is asked for, once it has been found sound.
Motion motion_of(double distance, const korvale_offset_options& options);

/// Distances, once they have been found sound.
NumbersIn distances_in(const korvale_numbers* distances);

/// Where a border is written: room for a point, a flag and a number per vertex of the outline.
struct BorderOut {
    Point* points;
    uint8_t* removed;     ///< or null
    int32_t* merged_into; ///< or null
    size_t size;          ///< written: points of the border
    bool collapsed;       ///< written: nothing is left
    double left = 0.0;    ///< written: the part of the distance that has not been gone, of a motion that keeps whole
};

/// A border in memory of its own, which is used again for the next one.
struct Border {
    Block<Point> points;        ///< [size]
    Block<uint8_t> removed;     ///< [vertices]
    Block<int32_t> merged_into; ///< [vertices]
    Block<int32_t> sources;     ///< [size] the vertex that each point belongs to, of a motion with joins; else none
    size_t size = 0;
    size_t vertices = 0;
    bool collapsed = false;
    double left = 0.0;

    Outline outline() const { return {points.data(), size}; }
};

/// Rings one behind the other: those that an outline becomes on its way, each behind the one that it was cut from.
struct RingList {
    Vector<Point> points; ///< of rings that have not come to nothing
    Vector<int64_t> starts;
    Vector<int32_t> sources; ///< the vertex of the outline that each point belongs to
    Vector<int32_t> parents;
    Vector<double> births, ends;
    Vector<uint8_t> collapsed;
};

/// The same for a host, each array in a block of its own.
korvale_rings* new_rings(const RingList& list);

/// What becomes of the vertices of an outline, as in a border: room for one each.
struct Trace {
    uint8_t* removed;
    int32_t* merged_into;
};

/// The arrays that a sweep works in.
struct SweepArrays {
    Block<double> numbers;
    Block<uint8_t> dead;
    Block<int32_t> merge;
};

/// Moves outlines in arrays that are kept from sweep to sweep.
class Mover {
public:
    /// Moves an outline of 3 or more finite points. Where the heap is exhausted nothing is written. The output may be
    /// the outline itself. `lifted_in` are the planes along whose normal the border is lifted: without it its own.
    void move_into(Outline outline, const Motion& motion, BorderOut& output, const Planes* lifted_in = nullptr);

    /// Moves an outline into memory of the border. With joins it has no points of vertices that have been removed.
    void move(Outline outline, const Motion& motion, Border& border, const Planes* lifted_in = nullptr);

    /// Moves an outline and every piece that splits drop, and adds all of them to rings, without the vertices that have
    /// been removed. With a trace the pieces are dropped, and it tells of the vertices of the ring that is left.
    void move_rings(Outline outline, const Motion& motion, RingList& rings, const Planes* lifted_in = nullptr,
                    const Trace* trace = nullptr);

    /// Moves the rings of an outline by each of some distances, of which `motion` has none: every bit as if that were
    /// the only one. Where distances differ in nothing else the outline is swept once, and they are passed on the way.
    void move_rings_by_each(Outline outline, const Motion& motion, std::span<const double> distances,
                            std::span<RingList> rings);

    /// Moves an outer outline and its holes, which shrink where it grows; all are lifted along its normal.
    void move_with_holes(std::span<const Outline> outlines, const Motion& motion, std::span<Border> borders);

private:
    void move_with_joins(Outline outline, const Motion& motion, Border& border, const Planes* lifted_in);

    SweepArrays arrays_;
};

} // namespace korvale::door
