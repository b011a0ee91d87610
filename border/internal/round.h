#pragma once

#include <cstdint>

namespace korvale::border {

/// What stops the motion next: at `time`, an edge shrinks to nothing, or `vertex` (when not -1) meets `edge`. Both are
/// places in the columns.
struct Event {
    double time;
    int32_t vertex;
    int32_t edge;
};

/// What one round knows. The sweep makes a new one for each round and keeps that of the round before for it.
struct Round {
    /// Signed distance still to travel when the round begins, not 0. Set by the sweep, read by what looks ahead.
    double remaining = 0.0;
    /// Vertices before this place keep the velocities of the round before. Set by `measure_live`, read by
    /// `aim_vertices`.
    int32_t first_unaimed = 0;
    /// The greatest speed at which an end of an edge leaves its line. Set by `aim_vertices`, read by the search for
    /// meetings; and by the next `aim_vertices`, for the vertices that keep their velocities.
    double drift = 0.0;
    /// Whether corners that may be hairpins were found. Set by `aim_vertices`; the next one guesses from it that there
    /// are some again.
    bool has_sharp_corners = false;
    /// Place of the hairpin that was buried, -1 for none. Set by `aim_vertices`, read by the next `measure_live`.
    int32_t hairpin = -1;
};

} // namespace korvale::border
