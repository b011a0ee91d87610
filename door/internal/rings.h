#pragma once

#include "door/internal/motion.h"

// Rings: an outline and the pieces that splits cut from it, swept one by one.
namespace korvale::door {

/// Where the vertices of a ring are in the plane before it is swept, in the order of the outline, and the vertex of the
/// outline that each belongs to.
struct RingStart {
    Vector<Point> places;
    Vector<int32_t> sources;
};

/// The area that a ring goes round before it is swept: of the outline itself no more than its sign.
double area_before(const RingStart& ring, bool is_outline);

/// Whether a piece is more than an edge there and back.
bool is_ring(const border::DroppedPiece& piece);

/// A piece that a split has dropped of a ring whose vertices belong to these of the outline.
RingStart start_of(const border::DroppedPiece& piece, const border::Rows& rows, const Vector<int32_t>& sources);

/// What has become of a ring.
struct Swept {
    Vector<Point> points;    ///< none where it has come to nothing
    Vector<int32_t> sources; ///< the vertex of the outline that each belongs to
    double end;
    bool collapsed;
};

/// An outline with its joins, laid flat to be moved with all pieces.
struct Laid {
    Laid(Outline outline, const Motion& how, const Planes* lifted_in = nullptr);

    /// What a sweep has made of a ring whose vertices belong to these. Joins that are left are settled in its rows.
    Swept finish(border::Rows& rows, double remaining, const Vector<int32_t>& sources);

    Motion motion;
    RingStart start;
    Flattening flat;
    Planes lifting;
    JoinedOutline joined;
    double scale; ///< from the outline's own size to that of the sweep
};

/// What a sweep that goes on has made of a ring for a shorter distance.
struct Outcome {
    bool is_sure;    ///< a sweep of this distance alone makes the same of it
    Swept swept;     ///< only where that is so
    size_t children; ///< those of the ring that have been cut off by then
};

/// A ring that distances share: swept once for all of them.
struct SharedRing {
    RingStart start;
    size_t first;                  ///< the least distance at which it is there
    Vector<double> remaining;      ///< [distances from the first on] in the size of the sweep
    Vector<size_t> children = {};  ///< the numbers of those cut from it, in their order
    Vector<Outcome> outcomes = {}; ///< [distances from the first on]
};

/// A ring before it is swept.
struct NewRing {
    int32_t parent;
    double birth;               ///< in the outline's own size
    double remaining;           ///< in that of the sweep
    RingStart start;            ///< or nothing, where it is shared
    int32_t shared_number = -1; ///< among rings that distances share, or -1
};

/// Rings of one distance, each swept alone but for those that distances share.
struct RingQueue {
    Laid& laid;
    const Telling& telling;
    RingList& rings;
    std::span<SharedRing> shared_rings = {};
    size_t distance = 0; ///< the number of this one among those that share rings
    Vector<NewRing> all = {};
    size_t waiting = 0; ///< vertices of rings that are not swept yet
    double done = 0.0;

    /// Adds a shared ring and its children. False where it has to be swept alone.
    bool add_shared(NewRing& ring, int32_t number);
};

/// Sweeps the rings of a queue, in the order in which they are cut off.
void sweep_rings(SweepArrays& arrays, RingQueue& queue, const Trace* trace = nullptr);

} // namespace korvale::door
