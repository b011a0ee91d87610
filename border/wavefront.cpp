// The steps of a sweep over packed columns. What a step computes for a vertex does not depend on the others' results,
// so whole columns are computed at a time; only where a vertex dies on the way, the step walks vertex by vertex,
// because then the order decides. A cheap test of the whole column, on the safe side, tells which way to go.
#include "border/internal/wavefront.h"

#include <cstring>

#include "border/internal/lanes.h"

namespace korvale::inside {
namespace {

/// An edge shorter than this is merged away when it is measured.
constexpr double kShortestEdge = 1.2e-06;
/// Above the square of that: an edge whose squared length is larger is certainly long enough.
constexpr double kShortSquare = 1.5e-12;
/// Directions that differ by less than this are taken for the same.
constexpr double kLeastTurn = 1e-06;
/// A corner whose half turn has a smaller cosine is a hairpin: it would move infinitely fast.
constexpr double kHairpinCosine = 1e-06;
/// Above twice the square of that: a corner with a larger 1 + cos(turn) is certainly no hairpin.
constexpr double kHairpinTurn = 3e-12;
/// An edge that an event leaves no longer than this has collapsed.
constexpr double kCollapsedLength = 1e-06;
/// Distance beyond the remaining one at which "no event" is placed.
constexpr double kBeyond = 1.0;

constexpr int32_t kColumns = 8, kLineColumns = 3;

void close_ring(double* column, int32_t live)
{
    column[-1] = column[live - 1];
    column[live] = column[0];
}

/// The columns beside positions; lines exist only to look for splits.
unsigned all_columns(const Sweep& s)
{
    const unsigned always = Wavefront::edges | Wavefront::velocities | Wavefront::rates;
    return s.split_events ? always | Wavefront::lines : always;
}

/// Room for the columns, three lists of int32 and one of bytes.
int64_t doubles_for(const Sweep& s)
{
    const int64_t n = s.n, columns = s.split_events ? kColumns + kLineColumns : kColumns;
    return columns * (n + 2) + (3 * 4 * n + n + 7) / 8;
}

/// Fetches what the arrays of the sweep hold from before it, into the columns that no step has written yet.
void fetch(Wavefront& w)
{
    const Sweep& s = w.s;
    const Columns& col = w.col;
    for (int64_t i = 0; i < s.n; ++i) {
        if ((w.unpacked & Wavefront::edges) != 0) {
            col.dx[i] = s.direction[3 * i];
            col.dy[i] = s.direction[3 * i + 1];
            col.length[i] = s.length[i];
        }
        if ((w.unpacked & Wavefront::lines) != 0) {
            col.a[i] = s.line[3 * i];
            col.b[i] = s.line[3 * i + 1];
            col.c[i] = s.line[3 * i + 2];
        }
        if ((w.unpacked & Wavefront::velocities) != 0) {
            col.vx[i] = s.velocity[3 * i];
            col.vy[i] = s.velocity[3 * i + 1];
        }
        if ((w.unpacked & Wavefront::rates) != 0)
            col.rate[i] = s.rate[i];
    }
}

void store_row(const Wavefront& w, int32_t i)
{
    const Sweep& s = w.s;
    const Columns& col = w.col;
    const int64_t vertex = w.id[i], k = 3 * vertex;
    s.flat[k] = col.x[i];
    s.flat[k + 1] = col.y[i];
    s.direction[k] = col.dx[i];
    s.direction[k + 1] = col.dy[i];
    s.velocity[k] = col.vx[i];
    s.velocity[k + 1] = col.vy[i];
    s.length[vertex] = col.length[i];
    s.rate[vertex] = col.rate[i];
    if (s.split_events) {
        s.line[k] = col.a[i];
        s.line[k + 1] = col.b[i];
        s.line[k + 2] = col.c[i];
    }
}

void measure_edge(const Columns& col, int32_t i, int32_t j)
{
    col.dx[i] = col.x[j] - col.x[i];
    col.dy[i] = col.y[j] - col.y[i];
    col.length[i] = std::sqrt(col.dx[i] * col.dx[i] + col.dy[i] * col.dy[i]);
}

bool may_have_short_edge(const Wavefront& w)
{
    const Columns col = w.col;
    bool found = false;
    for_lanes(0, w.live, [col, &found](int32_t i, auto lanes) {
        using V = decltype(lanes);
        const V dx = load<V>(col.x + i + 1) - load<V>(col.x + i), dy = load<V>(col.y + i + 1) - load<V>(col.y + i);
        found |= any(dx * dx + dy * dy < V() + kShortSquare);
    });
    return found;
}

/// Measures edge by edge. False when a single vertex is left.
bool measure_in_order(Wavefront& w)
{
    const Columns& col = w.col;
    for (int32_t i = 0; i < w.live;) {
        if (w.gone[i]) {
            ++i;
            continue;
        }
        const int32_t j = next_live(w, i);
        if (j == i)
            return false;
        measure_edge(col, i, j);
        if (col.length[i] < kShortestEdge) {
            bury(w, i, j);
            const int32_t k = previous_live(w, i);
            if (j == k)
                return false;
            i = k > i ? j : k; // the previous edge has changed
            continue;
        }
        col.dx[i] /= col.length[i];
        col.dy[i] /= col.length[i];
        ++i;
    }
    return true;
}

void measure_columns(Wavefront& w)
{
    const Columns col = w.col;
    for_lanes(0, w.live, [col](int32_t i, auto lanes) {
        using V = decltype(lanes);
        const V dx = load<V>(col.x + i + 1) - load<V>(col.x + i), dy = load<V>(col.y + i + 1) - load<V>(col.y + i);
        const V length = root(dx * dx + dy * dy);
        store(col.length + i, length);
        store(col.dx + i, dx / length);
        store(col.dy + i, dy / length);
    });
}

/// 1 + the cosine of the turn from unit edge direction e to f.
template <class V>
V turn(V ex, V ey, V fx, V fy)
{
    return 1.0 + (ex * fx + ey * fy);
}

/// The direction in which the corner between unit edge directions e and f moves.
template <class V>
void find_bisector(V ex, V ey, V fx, V fy, V& bx, V& by)
{
    const V dx = ex - fx, dy = ey - fy;
    const V size = root(dx * dx + dy * dy);
    const auto bends = size >= V() + kLeastTurn;
    const auto bends_back = ex * fy - ey * fx < V();
    const V ux = dx / size, uy = dy / size;
    bx = select(bends_back, -ux, ux);
    by = select(bends_back, -uy, uy);
    if (any_false(bends)) {
        bx = select(bends, bx, fy);
        by = select(bends, by, -fx);
    }
}

bool may_have_hairpin(const Wavefront& w)
{
    const Columns col = w.col;
    bool found = false;
    for_lanes(0, w.live, [col, &found](int32_t i, auto lanes) {
        using V = decltype(lanes);
        const V c = turn(load<V>(col.dx + i - 1), load<V>(col.dy + i - 1), load<V>(col.dx + i), load<V>(col.dy + i));
        found |= any(c < V() + kHairpinTurn);
    });
    return found;
}

void aim_columns(Wavefront& w)
{
    const Columns col = w.col;
    for_lanes(0, w.live, [col](int32_t i, auto lanes) {
        using V = decltype(lanes);
        const V ex = load<V>(col.dx + i - 1), ey = load<V>(col.dy + i - 1);
        const V fx = load<V>(col.dx + i), fy = load<V>(col.dy + i);
        V bx, by;
        find_bisector(ex, ey, fx, fy, bx, by);
        const V speed = 1.0 / root(0.5 * turn(ex, ey, fx, fy));
        store(col.vx + i, bx * speed);
        store(col.vy + i, by * speed);
    });
}

/// Aims vertex by vertex. Returns the first hairpin, -1 for none.
int32_t aim_in_order(Wavefront& w)
{
    const Columns& col = w.col;
    for (int32_t i = 0; i < w.live; ++i) {
        const double ex = col.dx[i - 1], ey = col.dy[i - 1], fx = col.dx[i], fy = col.dy[i];
        find_bisector(ex, ey, fx, fy, col.vx[i], col.vy[i]);
        const double c = turn(ex, ey, fx, fy);
        const double cos_half_turn = c < 0.0 ? 0.0 : std::sqrt(0.5 * c);
        if (cos_half_turn < kHairpinCosine)
            return i;
        const double speed = 1.0 / cos_half_turn;
        col.vx[i] *= speed;
        col.vy[i] *= speed;
    }
    return -1;
}

/// Lists the places of the edges that `time` brings to nothing. Returns their number.
int32_t list_collapsing(const Wavefront& w, double time, int32_t* list)
{
    const double *const length = w.col.length, *const rate = w.col.rate;
    int32_t count = 0;
    for_lanes(0, w.live, [length, rate, time, list, &count](int32_t i, auto lanes) {
        using V = decltype(lanes);
        if (!any(time * load<V>(rate + i) + load<V>(length + i) <= V() + kCollapsedLength))
            return;
        for (int32_t k = i; k < i + static_cast<int32_t>(sizeof(V) / sizeof(double)); ++k)
            if (time * rate[k] + length[k] <= kCollapsedLength)
                list[count++] = k;
    });
    return count;
}

void move_vertex(const Columns& col, int32_t i, double time)
{
    col.x[i] += time * col.vx[i];
    col.y[i] += time * col.vy[i];
}

} // namespace

Wavefront::Wavefront(Sweep& sweep)
    : s(sweep), live(sweep.n), col(), id(nullptr), place(nullptr), gone(nullptr), gaps(nullptr), gap_count(0),
      unpacked(all_columns(sweep)), memory(doubles_for(sweep))
{
    if (!exists())
        return;
    double* column = memory.get() + 1;
    for (double** const c :
         {&col.x, &col.y, &col.dx, &col.dy, &col.vx, &col.vy, &col.length, &col.rate, &col.a, &col.b, &col.c}) {
        if (c == &col.a && !s.split_events)
            break;
        *c = column;
        column += s.n + 2;
    }
    id = reinterpret_cast<int32_t*>(column - 1);
    place = id + s.n;
    gaps = place + s.n;
    gone = reinterpret_cast<uint8_t*>(gaps + s.n);
    std::memset(gone, 0, static_cast<size_t>(s.n));
    for (int32_t i = 0; i < s.n; ++i) {
        id[i] = place[i] = i;
        col.x[i] = s.flat[3 * static_cast<int64_t>(i)];
        col.y[i] = s.flat[3 * static_cast<int64_t>(i) + 1];
    }
}

int32_t next_live(const Wavefront& w, int32_t i)
{
    do
        i = i + 1 == w.live ? 0 : i + 1;
    while (w.gone[i]);
    return i;
}

int32_t previous_live(const Wavefront& w, int32_t i)
{
    do
        i = (i == 0 ? w.live : i) - 1;
    while (w.gone[i]);
    return i;
}

void bury(Wavefront& w, int32_t i, int32_t heir)
{
    store_row(w, i);
    w.s.dead[w.id[i]] = 1;
    w.s.merge[w.id[i]] = w.id[heir];
    w.gone[i] = 1;
}

void close_gaps(void* column, size_t bytes, const int32_t* gaps, int32_t count, int32_t n)
{
    auto* const values = static_cast<unsigned char*>(column);
    auto end = static_cast<size_t>(gaps[0]);
    for (int32_t g = 0; g < count; ++g) {
        const auto begin = static_cast<size_t>(gaps[g]) + 1;
        const auto behind = static_cast<size_t>(g + 1 < count ? gaps[g + 1] : n);
        std::memmove(values + end * bytes, values + begin * bytes, (behind - begin) * bytes);
        end += behind - begin;
    }
}

void pack(Wavefront& w)
{
    settle(w);
    const int32_t n = w.live;
    w.gap_count = 0;
    for (int32_t i = 0; i < n;) {
        const void* const mark = std::memchr(w.gone + i, 1, static_cast<size_t>(n - i));
        if (mark == nullptr)
            break;
        i = static_cast<int32_t>(static_cast<const uint8_t*>(mark) - w.gone);
        w.gone[i] = 0;
        w.place[w.id[i]] = -1;
        w.gaps[w.gap_count++] = i++;
    }
    w.live -= w.gap_count;
    close_gaps(w.col.x, sizeof(double), w.gaps, w.gap_count, n);
    close_gaps(w.col.y, sizeof(double), w.gaps, w.gap_count, n);
    close_gaps(w.id, sizeof(int32_t), w.gaps, w.gap_count, n);
    for (int32_t i = w.gaps[0]; i < w.live; ++i)
        w.place[w.id[i]] = i;
    w.unpacked = all_columns(w.s);
}

void settle(Wavefront& w)
{
    const auto close = [&w](unsigned group, double* column) {
        if ((w.unpacked & group) != 0)
            close_gaps(column, sizeof(double), w.gaps, w.gap_count, w.live + w.gap_count);
    };
    if (w.unpacked == 0)
        return;
    if (w.gap_count == 0) {
        fetch(w);
        w.unpacked = 0;
        return;
    }
    close(Wavefront::edges, w.col.dx);
    close(Wavefront::edges, w.col.dy);
    close(Wavefront::edges, w.col.length);
    close(Wavefront::lines, w.col.a);
    close(Wavefront::lines, w.col.b);
    close(Wavefront::lines, w.col.c);
    close(Wavefront::velocities, w.col.vx);
    close(Wavefront::velocities, w.col.vy);
    close(Wavefront::rates, w.col.rate);
    w.unpacked = 0;
}

void hand_back(Wavefront& w)
{
    settle(w);
    for (int32_t i = 0; i < w.live; ++i)
        if (!w.gone[i])
            store_row(w, i);
}

bool measure_edges(Wavefront& w, bool& has_died)
{
    has_died = false;
    if (w.live == 1)
        return false;
    close_ring(w.col.x, w.live);
    close_ring(w.col.y, w.live);
    if (may_have_short_edge(w)) {
        settle(w);
        if (!measure_in_order(w))
            return false;
        has_died = std::memchr(w.gone, 1, static_cast<size_t>(w.live)) != nullptr;
        if (has_died) {
            pack(w);
            settle(w);
            close_ring(w.col.x, w.live);
            close_ring(w.col.y, w.live);
        }
    } else {
        measure_columns(w);
        w.unpacked &= ~static_cast<unsigned>(Wavefront::edges);
    }
    close_ring(w.col.dx, w.live);
    close_ring(w.col.dy, w.live);
    return true;
}

void fit_edge_lines(Wavefront& w)
{
    const Columns col = w.col;
    for_lanes(0, w.live, [col](int32_t i, auto lanes) {
        using V = decltype(lanes);
        const V dx = load<V>(col.dx + i), dy = load<V>(col.dy + i);
        store(col.a + i, -dy);
        store(col.b + i, dx);
        store(col.c + i, dy * load<V>(col.x + i) - dx * load<V>(col.y + i));
    });
    w.unpacked &= ~static_cast<unsigned>(Wavefront::lines);
}

Corners aim_vertices(Wavefront& w)
{
    if (may_have_hairpin(w)) {
        settle(w);
        const int32_t i = aim_in_order(w);
        if (i >= 0) {
            const int32_t j = next_live(w, i), k = previous_live(w, i);
            bury(w, i, w.col.length[k] > w.col.length[i] ? j : k);
            return j != k ? Corners::hairpin_removed : Corners::outline_gone;
        }
    } else {
        aim_columns(w);
        w.unpacked &= ~static_cast<unsigned>(Wavefront::velocities);
    }
    close_ring(w.col.vx, w.live);
    close_ring(w.col.vy, w.live);
    return Corners::aimed;
}

void set_length_rates(Wavefront& w)
{
    const Columns col = w.col;
    for_lanes(0, w.live, [col](int32_t i, auto lanes) {
        using V = decltype(lanes);
        const V dx = load<V>(col.dx + i), dy = load<V>(col.dy + i);
        const V along_x = load<V>(col.vx + i + 1) - load<V>(col.vx + i);
        const V along_y = load<V>(col.vy + i + 1) - load<V>(col.vy + i);
        const auto by_x = magnitude(dx) > V() + kDominantComponent;
        store(col.rate + i, select(by_x, along_x, along_y) / select(by_x, dx, dy));
    });
    w.unpacked &= ~static_cast<unsigned>(Wavefront::rates);
}

Event first_edge_event(const Wavefront& w)
{
    // Counted along the motion, so that times are positive and an edge shrinks where its rate has the sign of
    // `shrinks`.
    const bool outwards = w.s.remaining > 0.0;
    const double sign = outwards ? -1.0 : 1.0;
    const double beyond = outwards ? w.s.remaining + kBeyond : -(w.s.remaining - kBeyond);
    const double *const length = w.col.length, *const rate = w.col.rate;
    Pair earliest = Pair() + beyond;
    double last = beyond;
    for_lanes(0, w.live, [&earliest, &last, length, rate, sign](int32_t i, auto lanes) {
        using V = decltype(lanes);
        const V shrinking = sign * load<V>(rate + i);
        const V time = load<V>(length + i) / shrinking;
        if constexpr (sizeof(V) == sizeof(Pair))
            earliest = select(shrinking > V(), lesser(time, earliest), earliest);
        else
            last = select(shrinking > V(), lesser(time, last), last);
    });
    const double time = lesser(lesser(earliest[0], earliest[1]), last);
    return {outwards ? time : -time, -1, -1};
}

void move_all(Wavefront& w, double time)
{
    const Columns col = w.col;
    for_lanes(0, w.live, [col, time](int32_t i, auto lanes) {
        using V = decltype(lanes);
        store(col.x + i, load<V>(col.x + i) + time * load<V>(col.vx + i));
        store(col.y + i, load<V>(col.y + i) + time * load<V>(col.vy + i));
    });
}

bool collapse_edges(Wavefront& w, double time)
{
    int32_t* const places = w.gaps; // free, as no column waits for its packing now
    const int32_t count = list_collapsing(w, time, places);
    const bool some_remain = w.live - count > 1;
    int32_t moved = 0;
    if (some_remain)
        move_all(w, time);
    for (int32_t k = 0; k < count; ++k) {
        const int32_t i = places[k];
        for (; !some_remain && moved <= i; ++moved)
            move_vertex(w.col, moved, time);
        const int32_t j = next_live(w, i);
        bury(w, i, j);
        if (j == previous_live(w, i))
            return true; // Deliberate: the vertices after i stay where they are
    }
    return count > 0;
}

} // namespace korvale::inside
