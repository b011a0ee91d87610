#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>

#include "border/internal/column.h"
#include "border/internal/sweep.h"
#include "platform/internal/lanes.h"

namespace korvale::border {

/// A column has one value per live vertex, in index order. It is a ring in memory: place -1 repeats the last value and
/// place `live` the first, so that a step reads neighbours without a test for the ends.
struct Points {
    Column<double> x, y;
};

/// The edges that start at the vertices.
struct EdgeColumns {
    Column<double> dx, dy; ///< unit direction
    Column<double> length;
};

/// A component of a unit direction larger than this is the one divided by: the other is taken where it is not. The
/// divisor is at least 0.5 then, since the other component is at least sqrt(0.75).
constexpr double kDominantComponent = 0.5;

/// Points that a step only reads.
struct ConstPoints {
    ConstPoints(const Points& points) : x(points.x), y(points.y) {}

    const double *x, *y;
};

/// Edges that a step only reads.
struct ConstEdges {
    ConstEdges(const EdgeColumns& edges) : dx(edges.dx), dy(edges.dy), length(edges.length) {}

    const double *dx, *dy, *length;
};

/// The live vertices of a sweep, packed into columns.
///
/// Positions, edges and velocities are double-buffered. The vertices move from `at` to `ahead`, then the two change
/// places; a round measures `edge` while `edge_before` keeps what the round before has measured. Lines (a, b, c) are
/// computed only when they are handed back. `line_edge` and `line_at` are aliases: the set of edges and of positions
/// that were current when the lines were last fitted.
///
/// A vertex that dies hands its values back to its row at once and stays, marked in `gone`, until
/// `pack`. `pack` closes the gaps in what lives on from round to round, `at` and `id`. The other columns are written
/// anew in the next round and keep their gaps until then: they are *spread*.
///
/// - A step that writes a whole column takes its group out of `spread`.
/// - A step that may leave some entries as they were, or reads values of the round before, calls `refresh` first.
/// - `bury` wants nothing spread.
///
/// A group that no step has written yet is not in `written`, and is not handed back: the rows keep what stands there.
///
/// It lives as long as the sweep, and all of it goes from round to round. What belongs to one round is in `Round`, what
/// belongs to a watch in `Watch`.
struct Wavefront {
    enum Group : unsigned { lines = 1, velocities = 2, rates = 4, edges = 8 };

    /// Takes `memory`, of `doubles_for` the vertices. Lines are handed back where they are wanted.
    Wavefront(Rows& of_sweep, bool lines_too, double* memory);
    static int64_t doubles_for(int32_t n);

    Rows rows;               ///< of the sweep: written for the dead as they die, for all others by `hand_back`
    bool wants_lines;        ///< set when it is made
    int32_t live;            ///< vertices in the columns: fewer after each `pack`
    Column<int32_t> id;      ///< [live] index in the sweep
    Points at;               ///< where the vertices are: set by `move_vertices`, read by all steps
    Points ahead;            ///< the other set: written and swapped with `at` by `move_vertices`, then where they were
    EdgeColumns edge;        ///< set by `measure_live`, read by all steps after it
    EdgeColumns edge_before; ///< of the round before: swapped with `edge` by `measure_edges`
    Points line_at;          ///< alias, set by `fit_edge_lines`, read when a row is handed back
    EdgeColumns line_edge;   ///< alias, set by `fit_edge_lines`: the edges that the lines belong to
    Points velocity;         ///< motion per unit of distance: set by `aim_vertices`
    Points velocity_before;  ///< the other set: swapped with `velocity` by `aim_vertices`
    Column<double> rate;     ///< change of an edge's length per unit of distance: set by `first_edge_event`
    Column<int32_t> list;    ///< [live] scratch of a single step

    // The dead that are not packed away yet: added by `bury`, taken by `pack`.
    Column<uint8_t> gone;   ///< [live] 1 for each of them
    Column<int32_t> buried; ///< [buried_count] their places, in the order of their deaths
    int32_t buried_count = 0;

    // What the last `pack` has removed: for `close_gaps`, and for the watch, which follows.
    Column<int32_t> gaps; ///< [gap_count] places, ascending
    int32_t gap_count = 0;

    unsigned spread = 0;  ///< groups that still have these gaps: set by `pack`, taken out by `note_written`, `refresh`
    unsigned written = 0; ///< groups that a step has written: added by `note_written`, `refresh`
};

/// A step has written the columns of a group, from the first to the last value.
inline void note_written(Wavefront& w, Wavefront::Group group)
{
    w.written |= group;
    w.spread &= ~unsigned{group};
}

/// Appends place i + k to a list for every bit k that is set.
inline void add_places(int32_t i, int set, int32_t* list, int32_t& count)
{
    for (auto rest = static_cast<unsigned>(set); rest != 0; rest &= rest - 1)
        list[count++] = i + std::countr_zero(rest);
}

/// The bits of a condition that holds in every lane.
template <class V>
inline constexpr int kAllBits = 0b1111 >> (4 - width_of<V>);

/// The live vertex after place i, or before it; vertices marked gone are skipped.
int32_t next_live(const Wavefront& w, int32_t i);
int32_t previous_live(const Wavefront& w, int32_t i);

/// Whether edge e ends at vertex m or starts there.
inline bool is_own(const Wavefront& w, int32_t m, int32_t e)
{
    return (e == m) | ((e + 1 == w.live ? 0 : e + 1) == m);
}

/// Copies `count` values of a column to another.
inline void copy_values(const double* from, int32_t count, double* to)
{
    std::copy_n(from, count, to);
}

/// Repeats the first and the last value of a column beyond its ends.
void wrap_ends(double* column, int32_t live);
void wrap_ends(Points& points, int32_t live);

/// The vertex at place i dies and merges into the one at `heir`. Its row must be complete: nothing is spread.
void bury(Wavefront& w, int32_t i, int32_t heir);

/// Takes the last burial back; nobody has been packed since.
void unearth(Wavefront& w);

/// Closes the gaps that the dead have left in `at` and `id`. There are some, and nothing is spread.
void pack(Wavefront& w);

/// Closes the gaps of the last packing in the columns that still have them, and fetches velocities that no step has
/// written from the rows.
void refresh(Wavefront& w);

/// Removes the values at `count` places, ascending, from a column of `n` values of `bytes` bytes each.
void remove_values(void* column, size_t bytes, const int32_t* places, int32_t count, int32_t n);

/// Closes the gaps of the last packing in other columns.
void close_gaps(const Wavefront& w, Points& points);
void close_gaps(const Wavefront& w, EdgeColumns& edges);

/// Hands all values of the live vertices back to their rows. Nothing is spread.
void hand_back(Wavefront& w);

} // namespace korvale::border
