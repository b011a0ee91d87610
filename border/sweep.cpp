// The border sweep. Every edge of a closed outline travels to its right at unit speed, so a vertex moves along the
// bisector of its two edges and an edge's length changes at a constant rate. That goes on until something happens: an
// edge shrinks to nothing and its vertex dies, or (where wanted) a vertex runs into an edge that is not its own, which
// cuts the outline in two; the piece with the smaller box dies. Then all is measured again and the rest of the
// distance travelled. Every round leaves, buries a vertex or spends the time of its event.
#include "border/internal/sweep.h"

#include <cmath>
#include <cstring>

#include "border/internal/meeting.h"
#include "border/internal/wavefront.h"
#include "math/internal/vec.h"

namespace korvale::inside {
namespace {

struct Box {
    double low[2];
    double high[2];
};

void start_live(Sweep& s)
{
    for (int32_t i = 0; i < s.n; ++i) {
        s.dead[i] = 0;
        s.velocity[3 * static_cast<int64_t>(i) + 2] = 0.0;
        s.direction[3 * static_cast<int64_t>(i) + 2] = 0.0;
        s.merge[i] = i;
    }
}

void widen(Box& box, double x, double y)
{
    if (x < box.low[0])
        box.low[0] = x;
    if (x > box.high[0])
        box.high[0] = x;
    if (y < box.low[1])
        box.low[1] = y;
    if (y > box.high[1])
        box.high[1] = y;
}

double area(const Box& box)
{
    return (box.high[0] - box.low[0]) * (box.high[1] - box.low[1]);
}

Box box_at(double x, double y)
{
    return {{x, y}, {x, y}};
}

/// The box around the vertices from `first` forwards up to and including `last`.
Box box_forwards(const Wavefront& w, int32_t first, int32_t last)
{
    Box box = box_at(w.col.x[first], w.col.y[first]);
    while (first != last) {
        first = next_live(w, first);
        widen(box, w.col.x[first], w.col.y[first]);
    }
    return box;
}

/// The box around the vertices from `first` backwards down to, but not including, `end`.
Box box_backwards(const Wavefront& w, int32_t first, int32_t end)
{
    Box box = box_at(w.col.x[first], w.col.y[first]);
    while ((first = previous_live(w, first)) != end)
        widen(box, w.col.x[first], w.col.y[first]);
    return box;
}

/// Buries the smaller of the two pieces that `vertex` makes by running into `edge`. The end of the edge outlives it in
/// either case: it is not the vertex itself.
void drop_smaller_piece(Wavefront& w, int32_t vertex, int32_t edge)
{
    const int32_t after = next_live(w, vertex), before = previous_live(w, vertex);
    bool drops_after = true;
    if (after != edge) {
        const Box ahead = box_forwards(w, after, edge), behind = box_backwards(w, before, edge);
        drops_after = !(area(ahead) > area(behind));
    }
    if (drops_after) {
        for (int32_t i = after; i != edge; i = next_live(w, i))
            bury(w, i, vertex);
        bury(w, edge, vertex);
    } else {
        for (int32_t i = before; i != edge; i = previous_live(w, i))
            bury(w, i, vertex);
    }
}

void sweep_wavefront(Wavefront& w, MeetingSearch& search)
{
    Sweep& s = w.s;
    const int64_t most_rounds = 4 * static_cast<int64_t>(s.n) + 64;
    for (int64_t round = 0; round < most_rounds && s.remaining != 0.0; ++round) {
        bool has_died;
        if (!measure_edges(w, has_died))
            return; // a single vertex is left
        if (has_died)
            follow_packing(search, w);
        if (s.split_events)
            fit_edge_lines(w);
        switch (aim_vertices(w)) {
        case Corners::outline_gone:
            return;
        case Corners::hairpin_removed:
            pack(w);
            follow_packing(search, w);
            continue; // measure again, from the same distance
        case Corners::aimed:
            break;
        }
        set_length_rates(w);
        Event event = first_edge_event(w);
        if (s.split_events)
            event = earlier_split_event(search, w, event);
        if (std::fabs(event.time) > std::fabs(s.remaining)) {
            move_all(w, s.remaining); // nothing more happens on the way
            return;
        }
        if (event.vertex < 0) {
            has_died = collapse_edges(w, event.time);
        } else {
            move_all(w, event.time);
            drop_smaller_piece(w, event.vertex, event.edge);
            has_died = true;
        }
        s.remaining -= event.time;
        if (has_died) {
            pack(w);
            follow_packing(search, w);
        }
    }
}

/// The live vertex that `i` ends at. The links on the way are shortened, so that all chains together take little more
/// than linear time. A vertex merges into a live one, so the links never lead round in a circle.
int32_t find_heir(const Sweep& s, int32_t* heir, int32_t i)
{
    int32_t last = i;
    while (s.dead[last])
        last = heir[last];
    while (s.dead[i]) {
        const int32_t following = heir[i];
        heir[i] = last;
        i = following;
    }
    return last;
}

} // namespace

bool run_sweep(Sweep& s)
{
    start_live(s);
    if (s.remaining == 0.0)
        return true;
    Wavefront w(s);
    MeetingSearch search(s);
    if (!w.exists() || !search.exists())
        return false;
    sweep_wavefront(w, search);
    hand_back(w);
    return true;
}

bool join_dead_vertices(Sweep& s)
{
    if (std::memchr(s.dead, 1, static_cast<size_t>(s.n)) == nullptr)
        return true;
    Scratch<int32_t> heir(s.n);
    if (!heir.exists())
        return false;
    std::memcpy(heir.get(), s.merge, static_cast<size_t>(s.n) * sizeof *s.merge);
    for (int32_t i = 0; i < s.n; ++i)
        if (s.dead[i])
            copy3(s.flat + 3 * static_cast<int64_t>(find_heir(s, heir.get(), i)), s.flat + 3 * static_cast<int64_t>(i));
    return true;
}

int32_t pack_live_positions(Sweep& s)
{
    int32_t live = 0;
    for (int32_t i = 0; i < s.n; ++i)
        if (!s.dead[i])
            copy3(s.flat + 3 * static_cast<int64_t>(i), s.flat + 3 * static_cast<int64_t>(live++));
    return live;
}

} // namespace korvale::inside
