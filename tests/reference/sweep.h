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
    double* flat;      ///< [n 3] moving positions; z is carried along, never read
    double* direction; ///< [n 3] unit direction of edge i
    double* velocity;  ///< [n 3] motion of vertex i per unit of distance
    double* line;      ///< [n 3] a, b, c of edge i
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

/// Makes every vertex live, then moves the edges of the outline `flat` to the right by `remaining`.
void run_sweep(Sweep& s);

/// Gives every dead vertex the position of the vertex it merged into.
void join_dead_vertices(Sweep& s);

/// Moves the positions of the live vertices to the front, in order, and returns their number. The entries behind them
/// stay as they are.
int32_t pack_live_positions(Sweep& s);

} // namespace korvale::reference
