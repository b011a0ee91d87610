#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace korvale::reference {

/// One sweep of a closed outline in the plane z = 0. The caller owns the arrays, one entry per input vertex; they hold
/// the final state afterwards.
struct Sweep {
    int32_t n;         ///< vertices, live and dead
    double remaining;  ///< signed distance still to travel; 0 ends the sweep
    bool split_events; ///< also stop where a vertex runs into a far edge
    double* flat;      ///< [n][3] moving positions; z is carried along, never read
    double* direction; ///< [n][3] unit direction of edge i
    double* velocity;  ///< [n][3] motion of vertex i per unit of distance
    double* line;      ///< [n][3] a, b, c of edge i
    double* length;    ///< [n] length of edge i
    double* rate;      ///< [n] change of that length per unit of distance
    uint8_t* dead;     ///< [n] 1 once removed
    int32_t* merge;    ///< [n] vertex it merged into
    int64_t rounds;    ///< rounds made
};

/// The arrays of a sweep of `n` vertices, which start with numbers that show where nothing was written.
struct SweepArrays {
    static constexpr double kUntouched = 7.25;

    explicit SweepArrays(std::size_t n)
        : flat(3 * n, kUntouched), direction(flat), velocity(flat), line(flat), length(n, kUntouched), rate(length),
          dead(n, 99), merge(n, 99)
    {
    }

    /// A sweep in these arrays.
    Sweep sweep(double distance, bool split_events)
    {
        Sweep s{};
        s.n = static_cast<int32_t>(dead.size());
        s.remaining = distance;
        s.split_events = split_events;
        s.flat = flat.data();
        s.direction = direction.data();
        s.velocity = velocity.data();
        s.line = line.data();
        s.length = length.data();
        s.rate = rate.data();
        s.dead = dead.data();
        s.merge = merge.data();
        return s;
    }

    std::vector<double> flat, direction, velocity, line, length, rate;
    std::vector<uint8_t> dead;
    std::vector<int32_t> merge;
};

/// What stops the motion next: at `time`, an edge shrinks to nothing, or `vertex` (when not -1) meets `edge`.
struct Event {
    double time;
    int32_t vertex;
    int32_t edge;
};

enum class Corners { aimed, hairpin_removed, outline_gone };

// The steps of a round, in this order.

/// Sets direction and length of every edge and merges away the short ones. False when a single vertex is left.
bool measure_edges(Sweep& s);

/// Sets the line that every edge lies on, with the unit normal to the left.
void fit_edge_lines(Sweep& s);

/// Sets the velocity of every vertex such that both its edges move at unit speed, up to the first hairpin.
Corners aim_vertices(Sweep& s);

/// Sets the change of every edge's length per unit of distance.
void set_length_rates(Sweep& s);

/// When the first edge shrinks to nothing; beyond the remaining distance when none does.
Event first_edge_event(const Sweep& s);

/// The first meeting of a vertex with an edge that is not its own, where that comes before `event`. Among equal times
/// the first vertex wins, then the first edge.
Event earlier_split_event(const Sweep& s, Event event);

void move_all(Sweep& s, double time);

/// Moves the vertices and buries those whose edge has shrunk to nothing.
void collapse_edges(Sweep& s, double time);

/// Buries the smaller of the two pieces that `vertex` makes by running into `edge`. False when a single vertex is left.
bool drop_smaller_piece(Sweep& s, int32_t vertex, int32_t edge);

/// Makes every vertex live, then moves the edges of the outline `flat` to the right by `remaining`.
void run_sweep(Sweep& s);

/// Gives every dead vertex the position of the vertex it merged into.
void join_dead_vertices(Sweep& s);

/// Moves the positions of the live vertices to the front, in order, and returns their number. The entries behind them
/// stay as they are.
int32_t pack_live_positions(Sweep& s);

} // namespace korvale::reference
