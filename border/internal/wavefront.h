#pragma once

#include <cstdint>

#include "border/internal/sweep.h"
#include "platform/internal/scratch.h"

namespace korvale::inside {

/// A component of a unit direction larger than this is used to divide by.
constexpr double kDominantComponent = 0.5;

/// One value per live vertex, in index order. Place -1 repeats the last one and place `live` the first, so that a step
/// reads its neighbours without going round.
struct Columns {
    double *x, *y;     ///< position
    double *dx, *dy;   ///< unit direction of the edge that starts here
    double *vx, *vy;   ///< motion per unit of distance
    double *a, *b, *c; ///< line of the edge; without split events null
    double* length;    ///< of the edge
    double* rate;      ///< change of the length per unit of distance
};

/// The live vertices of a sweep, packed into columns.
///
/// A vertex that dies hands its values back to the arrays of the sweep at once and is marked in `gone`; `pack` closes
/// the gaps afterwards. Only positions and ids are packed then: the other columns are renewed by the next round
/// anyway. They are noted in `unpacked` and follow in `settle`, before a step that may leave some of them as they
/// are. In the same way they are fetched from the arrays of the sweep only where a step leaves some of them as they
/// were before it.
struct Wavefront {
    enum Unpacked : unsigned { edges = 1, lines = 2, velocities = 4, rates = 8 };

    explicit Wavefront(Sweep& sweep);

    bool exists() const { return memory.exists(); }

    Sweep& s;
    int32_t live; ///< vertices in the columns
    Columns col;
    int32_t* id;    ///< [live] index in the sweep
    int32_t* place; ///< [n] by index in the sweep: place in the columns, -1 once packed away
    uint8_t* gone;  ///< [live] 1 for a dead vertex not yet packed away
    int32_t* gaps;  ///< places that the last packing closed, ascending
    int32_t gap_count;
    unsigned unpacked; ///< columns that still have these gaps or, before there were any, nothing

private:
    Scratch<double> memory;
};

/// What stops the motion next: at `time`, an edge shrinks to nothing, or `vertex` (when not -1) meets `edge`. Both are
/// places in the columns.
struct Event {
    double time;
    int32_t vertex;
    int32_t edge;
};

enum class Corners { aimed, hairpin_removed, outline_gone };

/// The live vertex after place i; vertices marked gone are passed over.
int32_t next_live(const Wavefront& w, int32_t i);
int32_t previous_live(const Wavefront& w, int32_t i);

/// The vertex at place i dies and merges into the one at `heir`.
void bury(Wavefront& w, int32_t i, int32_t heir);

/// Closes the gaps that the dead have left. There are some.
void pack(Wavefront& w);

/// Brings the columns in `unpacked` up to date: closes the gaps of the last packing or, before any, fetches them.
void settle(Wavefront& w);

/// Closes `count` gaps in a column of `n` values.
void close_gaps(void* column, size_t bytes, const int32_t* gaps, int32_t count, int32_t n);

/// Hands all values of the live vertices back to the arrays of the sweep.
void hand_back(Wavefront& w);

/// Sets direction and length of every edge and merges away the short ones. False when a single vertex is left. Whether
/// some were packed away is told by `has_died`.
bool measure_edges(Wavefront& w, bool& has_died);

/// Sets the line that every edge lies on, with the unit normal to the left.
void fit_edge_lines(Wavefront& w);

/// Sets the velocity of every vertex such that both its edges move at unit speed, up to the first hairpin.
Corners aim_vertices(Wavefront& w);

void set_length_rates(Wavefront& w);

/// When the first edge shrinks to nothing; beyond the remaining distance when none does.
Event first_edge_event(const Wavefront& w);

void move_all(Wavefront& w, double time);

/// Moves the vertices and buries those whose edge has shrunk to nothing. Whether there are some.
bool collapse_edges(Wavefront& w, double time);

} // namespace korvale::inside
