// The documented steps of the border sweep, one function each, over whole arrays of live and dead vertices.
#include "tests/reference/sweep.h"

#include <cmath>

namespace korvale::reference {
namespace {

/// An edge shorter than this is merged away when it is measured.
constexpr double kShortestEdge = 1.2e-06;
/// Directions that differ by less than this are taken for the same.
constexpr double kLeastTurn = 1e-06;
/// A corner whose half turn has a smaller cosine is a hairpin: it would move infinitely fast.
constexpr double kHairpinCosine = 1e-06;
/// A component of a unit direction larger than this is used to divide by.
constexpr double kDominantComponent = 0.5;
/// A vertex and an edge that approach each other more slowly than this never meet.
constexpr double kSlowestApproach = 1e-06;
/// An edge that an event leaves no longer than this has collapsed.
constexpr double kCollapsedLength = 1e-06;
/// Distance beyond the remaining one at which "no event" is placed.
constexpr double kBeyond = 1.0;

struct Box {
    double low[2];
    double high[2];
};

int32_t next_live(const Sweep& s, int32_t i)
{
    do
        i = i + 1 == s.n ? 0 : i + 1;
    while (s.dead[i]);
    return i;
}

int32_t previous_live(const Sweep& s, int32_t i)
{
    do
        i = (i == 0 ? s.n : i) - 1;
    while (s.dead[i]);
    return i;
}

void bury(Sweep& s, int32_t i, int32_t heir)
{
    s.dead[i] = 1;
    s.merge[i] = heir;
}

void start_live(Sweep& s)
{
    for (int32_t i = 0; i < s.n; ++i) {
        s.dead[i] = 0;
        s.velocity[3 * i + 2] = 0.0;
        s.direction[3 * i + 2] = 0.0;
        s.merge[i] = i;
    }
}

/// Sets the direction in which the corner between unit edge directions e and f moves.
void find_bisector(const double* e, const double* f, double* bisector)
{
    const double difference[2] = {e[0] - f[0], e[1] - f[1]};
    const double size = std::sqrt(difference[0] * difference[0] + difference[1] * difference[1]);
    if (size >= kLeastTurn) {
        bisector[0] = difference[0] / size;
        bisector[1] = difference[1] / size;
        if (e[0] * f[1] - e[1] * f[0] < 0.0) {
            bisector[0] = -bisector[0];
            bisector[1] = -bisector[1];
        }
    } else {
        bisector[0] = f[1];
        bisector[1] = -f[0];
    }
}

/// The component to divide by where a unit direction is the divisor.
int dominant_component(const double* direction)
{
    return std::fabs(direction[0]) > kDominantComponent ? 0 : 1;
}

/// Whether the moving vertex m meets the moving edge e before `event`, which then becomes that meeting. g ends the
/// edge.
bool meets_edge(const Sweep& s, int32_t m, int32_t e, int32_t g, Event& event)
{
    const double *const line = s.line + 3 * e, *const p = s.flat + 3 * m, *const v = s.velocity + 3 * m;
    const double approach = line[0] * v[0] + line[1] * v[1] + 1.0;
    if (std::fabs(approach) < kSlowestApproach)
        return false;
    const double time = -(line[0] * p[0] + line[1] * p[1] + line[2]) / approach;
    if (!(s.remaining > 0.0 ? time >= 0.0 && time < event.time : time > event.time && time <= 0.0))
        return false;
    const int k = dominant_component(s.direction + 3 * e);
    const double along = s.direction[3 * e + k];
    const double q = p[k] + time * v[k];
    if ((q - (s.flat[3 * e + k] + time * s.velocity[3 * e + k])) / along < 0.0)
        return false;
    if ((q - (s.flat[3 * g + k] + time * s.velocity[3 * g + k])) / along > 0.0)
        return false;
    event = {time, m, e};
    return true;
}

void move_vertex(Sweep& s, int32_t i, double time)
{
    s.flat[3 * i] += time * s.velocity[3 * i];
    s.flat[3 * i + 1] += time * s.velocity[3 * i + 1];
}

void widen(Box& box, const double* point)
{
    for (int k = 0; k < 2; ++k) {
        if (point[k] < box.low[k])
            box.low[k] = point[k];
        if (point[k] > box.high[k])
            box.high[k] = point[k];
    }
}

double area(const Box& box)
{
    return (box.high[0] - box.low[0]) * (box.high[1] - box.low[1]);
}

Box box_at(const double* point)
{
    return {{point[0], point[1]}, {point[0], point[1]}};
}

/// The box around the live vertices from `first` forwards up to and including `last`.
Box box_forwards(const Sweep& s, int32_t first, int32_t last)
{
    Box box = box_at(s.flat + 3 * first);
    while (first != last) {
        first = next_live(s, first);
        widen(box, s.flat + 3 * first);
    }
    return box;
}

/// The box around the live vertices from `first` backwards down to, but not including, `end`.
Box box_backwards(const Sweep& s, int32_t first, int32_t end)
{
    Box box = box_at(s.flat + 3 * first);
    while ((first = previous_live(s, first)) != end)
        widen(box, s.flat + 3 * first);
    return box;
}

} // namespace

bool measure_edges(Sweep& s)
{
    for (int32_t i = 0; i < s.n;) {
        if (s.dead[i]) {
            ++i;
            continue;
        }
        const int32_t j = next_live(s, i);
        if (j == i)
            return false;
        double* const direction = s.direction + 3 * i;
        direction[0] = s.flat[3 * j] - s.flat[3 * i];
        direction[1] = s.flat[3 * j + 1] - s.flat[3 * i + 1];
        s.length[i] = std::sqrt(direction[0] * direction[0] + direction[1] * direction[1]);
        if (s.length[i] < kShortestEdge) {
            bury(s, i, j);
            const int32_t k = previous_live(s, i);
            if (j == k)
                return false;
            i = k > i ? j : k; // the previous edge has changed
            continue;
        }
        direction[0] /= s.length[i];
        direction[1] /= s.length[i];
        ++i;
    }
    return true;
}

void fit_edge_lines(Sweep& s)
{
    for (int32_t i = 0; i < s.n; ++i) {
        if (s.dead[i])
            continue;
        const double dx = s.direction[3 * i], dy = s.direction[3 * i + 1];
        s.line[3 * i] = -dy;
        s.line[3 * i + 1] = dx;
        s.line[3 * i + 2] = dy * s.flat[3 * i] - dx * s.flat[3 * i + 1];
    }
}

Corners aim_vertices(Sweep& s)
{
    for (int32_t i = 0; i < s.n; ++i) {
        if (s.dead[i])
            continue;
        const int32_t k = previous_live(s, i);
        const double *const e = s.direction + 3 * k, *const f = s.direction + 3 * i;
        double* const velocity = s.velocity + 3 * i;
        find_bisector(e, f, velocity);
        const double c = 1.0 + (e[0] * f[0] + e[1] * f[1]);
        const double cos_half_turn = c < 0.0 ? 0.0 : std::sqrt(0.5 * c);
        if (cos_half_turn < kHairpinCosine) {
            const int32_t j = next_live(s, i);
            bury(s, i, s.length[k] > s.length[i] ? j : k);
            return j != k ? Corners::hairpin_removed : Corners::outline_gone;
        }
        const double speed = 1.0 / cos_half_turn;
        velocity[0] *= speed;
        velocity[1] *= speed;
    }
    return Corners::aimed;
}

void set_length_rates(Sweep& s)
{
    for (int32_t i = 0; i < s.n; ++i) {
        if (s.dead[i])
            continue;
        const int32_t j = next_live(s, i);
        const double* const direction = s.direction + 3 * i;
        const int k = dominant_component(direction);
        s.rate[i] = (s.velocity[3 * j + k] - s.velocity[3 * i + k]) / direction[k];
    }
}

Event first_edge_event(const Sweep& s)
{
    const bool outwards = s.remaining > 0.0;
    double time = outwards ? s.remaining + kBeyond : s.remaining - kBeyond;
    for (int32_t i = 0; i < s.n; ++i) {
        if (s.dead[i] || !(outwards ? s.rate[i] < 0.0 : s.rate[i] > 0.0))
            continue;
        const double t = -s.length[i] / s.rate[i];
        if (outwards ? t < time : t > time)
            time = t;
    }
    return {time, -1, -1};
}

Event earlier_split_event(const Sweep& s, Event event)
{
    for (int32_t m = 0; m < s.n; ++m) {
        if (s.dead[m])
            continue;
        for (int32_t e = 0; e < s.n; ++e) {
            if (s.dead[e] || e == m)
                continue;
            const int32_t g = next_live(s, e);
            if (g != m)
                meets_edge(s, m, e, g, event);
        }
    }
    return event;
}

void move_all(Sweep& s, double time)
{
    for (int32_t i = 0; i < s.n; ++i)
        if (!s.dead[i])
            move_vertex(s, i, time);
}

void collapse_edges(Sweep& s, double time)
{
    for (int32_t i = 0; i < s.n; ++i) {
        if (s.dead[i])
            continue;
        move_vertex(s, i, time);
        if (time * s.rate[i] + s.length[i] <= kCollapsedLength) {
            const int32_t j = next_live(s, i);
            bury(s, i, j);
            if (j == previous_live(s, i))
                return; // Deliberate: the vertices after i stay where they are
        }
    }
}

bool drop_smaller_piece(Sweep& s, int32_t vertex, int32_t edge)
{
    const int32_t after = next_live(s, vertex);
    bool drops_after = true;
    if (after != edge) {
        const Box ahead = box_forwards(s, after, edge);
        const Box behind = box_backwards(s, previous_live(s, vertex), edge);
        drops_after = !(area(ahead) > area(behind));
    }
    if (drops_after) {
        for (int32_t w = after; w != edge; w = next_live(s, w))
            bury(s, w, vertex);
        bury(s, edge, vertex);
        return next_live(s, edge) != vertex;
    }
    for (int32_t w = previous_live(s, vertex); w != edge; w = previous_live(s, w))
        bury(s, w, vertex);
    return true;
}

void run_sweep(Sweep& s)
{
    start_live(s);
    const int64_t most_rounds = 4 * static_cast<int64_t>(s.n) + 64;
    for (s.rounds = 0; s.rounds < most_rounds && s.remaining != 0.0;) {
        ++s.rounds;
        if (!measure_edges(s))
            return; // a single vertex is left
        if (s.split_events)
            fit_edge_lines(s);
        switch (aim_vertices(s)) {
        case Corners::outline_gone:
            return;
        case Corners::hairpin_removed:
            continue; // measure again, from the same distance
        case Corners::aimed:
            break;
        }
        set_length_rates(s);
        Event event = first_edge_event(s);
        if (s.split_events)
            event = earlier_split_event(s, event);
        if (std::fabs(event.time) > std::fabs(s.remaining)) {
            move_all(s, s.remaining); // nothing more happens on the way
            return;
        }
        if (event.vertex < 0) {
            collapse_edges(s, event.time);
        } else {
            move_all(s, event.time);
            if (!drop_smaller_piece(s, event.vertex, event.edge))
                return; // a single vertex is left
        }
        s.remaining -= event.time;
    }
}

void join_dead_vertices(Sweep& s)
{
    for (int32_t i = 0; i < s.n; ++i) {
        if (!s.dead[i])
            continue;
        int32_t heir = s.merge[i];
        for (int32_t from = i; s.dead[heir] && s.merge[heir] != from;) {
            from = heir;
            heir = s.merge[heir];
        }
        for (int k = 0; k < 3; ++k)
            s.flat[3 * i + k] = s.flat[3 * heir + k];
    }
}

int32_t pack_live_positions(Sweep& s)
{
    int32_t live = 0;
    for (int32_t i = 0; i < s.n; ++i) {
        if (s.dead[i])
            continue;
        for (int k = 0; k < 3; ++k)
            s.flat[3 * live + k] = s.flat[3 * i + k];
        ++live;
    }
    return live;
}

} // namespace korvale::reference
