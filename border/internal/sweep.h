#pragma once

#include <cstdint>

#include "border/internal/column.h"

namespace korvale::border {

/// A piece that a split drops: the vertex that ran into an edge, and those that merge into it.
struct DroppedPiece {
    double remaining;       ///< distance still to travel
    int32_t vertex;         ///< that ran into an edge
    double x, y;            ///< where it did
    int32_t count;          ///< of the others, at least one
    const int32_t* dropped; ///< [count] their indices, ascending; `flat` has their positions
};

/// The vertices of a closed outline in the plane z = 0, a row for each, in arrays of the caller's. Edge i runs from
/// vertex i to the next live one, cyclically. A row is written when its vertex dies, those of the others at the end.
/// Invariant: a dead vertex never moves or revives, and merge[i] names the vertex it gave way to, which was live then
/// and may have died since.
struct Rows {
    int32_t n;                ///< vertices, live and dead
    Column<double> flat;      ///< [n][3] positions; z is neither read nor written
    Column<double> direction; ///< [n][3] unit direction of edge i
    Column<double> velocity;  ///< [n][3] motion of vertex i per unit of distance
    Column<double> line;      ///< [n][3] a, b, c of edge i: written only with `split_events`
    Column<double> length;    ///< [n] length of edge i
    Column<double> rate;      ///< [n] change of that length per unit of distance
    Column<uint8_t> dead;     ///< [n] 1 once removed
    Column<int32_t> merge;    ///< [n] vertex it merged into
};

/// What is asked of a sweep: the same from its beginning to its end.
struct Request {
    bool split_events = false; ///< also stop where a vertex runs into a far edge

    /// End before a part is lost: where the outline would split, or a limb or all of it vanishes. Specks may be lost.
    bool keep_whole = false;

    /// Complete what rounding would lose. Set by callers that sweep again after `has_missed` or `has_lost`:
    ///
    /// - A vertex that is past an edge, or beside its end, by no more than kHair meets that edge at once. Several
    ///   meetings at one distance leave such vertices.
    /// - Of two pieces the real one is kept where the other is a speck, or an edge there and back.
    bool catch_up = false;

    /// Told of every piece that is dropped; what it throws goes on to whoever runs the sweep. May be null.
    void (*drop)(const DroppedPiece& piece, void* receiver) = nullptr;

    /// Told of each stop, the least first: until it returns `flat`, `dead`, `merge` and `has_lost` are what a sweep of
    /// that distance alone would leave, and the pieces dropped so far those that it would drop. What it throws goes on
    /// to whoever runs the sweep.
    void (*pass)(int32_t stop, void* receiver) = nullptr;

    void* receiver = nullptr; ///< handed to `drop` and `pass`

    /// Asked now and then whether to go on, with the distance that remains; false ends the sweep where it is. May be
    /// null.
    bool (*ask)(double remaining, void* user) = nullptr;
    void* user = nullptr; ///< handed to `ask`
};

/// How far a sweep still has to go: set by the caller, then less with every round.
struct Progress {
    double remaining; ///< signed distance still to travel; 0 ends the sweep

    /// [stop_count] What is left of shorter distances on the way, of the sign of `remaining`, the least first; 0 at the
    /// end, unless the sweep has ended before. Only without `keep_whole` and `catch_up`.
    Column<double> stops = nullptr;
    int32_t stop_count = 0;
    int32_t passed = 0; ///< stops that `pass` has been told of
};

/// What a sweep has come upon. It clears nothing, so what is run again keeps what was found before.
struct Findings {
    bool has_missed = false; ///< a vertex to catch up with, with `catch_up` or without: set by the search for meetings
    bool has_lost = false;   ///< two such pieces whose boxes would have kept the wrong one: set where one is dropped
    bool is_stopped = false; ///< `ask` has ended the sweep
};

/// One sweep. Its parts live equally long, but change in different ways, so that what needs one takes that one only.
struct Sweep {
    Rows rows;
    Progress progress;
    Request request = {};
    Findings found = {};
};

/// A length of nothing: neighbours that are closer to each other merge. `door/` takes such points for one, too.
constexpr double kHair = 1.2e-06;

/// A corner whose half turn has a smaller cosine is a hairpin: it would move infinitely fast.
constexpr double kHairpinCosine = 1e-06;

/// Vertices looked at between two questions whether to go on, one by one or in pairs of leaves: a millisecond or a few.
constexpr int64_t kVerticesPerQuestion = 100000;

/// Asks whether to go on.
inline bool goes_on(const Request& request, double remaining, Findings& found)
{
    if (request.ask != nullptr && !request.ask(remaining, request.user))
        found.is_stopped = true;
    return !found.is_stopped;
}

/// Rounds after which a sweep of n vertices ends wherever it is: a guard for input on which it would never end. None is
/// known.
constexpr int64_t most_rounds(int32_t n)
{
    return 4 * int64_t{n} + 64;
}

/// Makes every vertex live, then moves the edges of the outline `flat` to the right by `remaining`. False when the heap
/// is exhausted; nothing has moved then.
///
/// With `keep_whole` the vertices that are left when it ends early are where the outline has come to: of one that
/// vanishes those of its ridge, or one for a point.
bool run_sweep(Sweep& s);

/// Gives every dead vertex the position of the vertex it merged into. False when the heap is exhausted.
bool join_dead_vertices(Rows& rows);

/// Moves the positions of the live vertices to the front, in order, and returns their number. The entries behind them
/// stay as they are.
int32_t pack_live_positions(Rows& rows);

} // namespace korvale::border
