// The live vertices of a sweep as columns without gaps. Steps run over whole columns in lanes; so a death must not
// leave a hole, and must not cost a walk over every column either. Invariants:
//
// - `id` ascends.
// - `at` and `id` have no gaps but those of vertices marked in `gone`.
// - The columns of groups in `spread` have the gaps that the last `pack` closed in `at` and `id`.
#include "border/internal/wavefront.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "platform/internal/lanes3.h"

namespace korvale::border {
namespace {

constexpr int32_t kColumns = 15, kLists = 4; ///< that a wavefront needs of doubles and of int32_t
constexpr unsigned kAllGroups = Wavefront::lines | Wavefront::velocities | Wavefront::rates | Wavefront::edges;

/// Doubles to which columns are aligned: 32 bytes, so that four lanes at a place that is a multiple of four never
/// straddle a cache line. Place -1 of a column is padding at the end of the column before it.
constexpr int64_t kAlignment = 4;

int64_t aligned(int64_t doubles)
{
    return (doubles + kAlignment - 1) / kAlignment * kAlignment;
}

/// Doubles from one column to the next.
int64_t column_length(int64_t n)
{
    return aligned(n + 2);
}

/// Fetches the velocities of before the sweep, for a step that leaves some as they are.
void fetch_velocities(Wavefront& w)
{
    for (int32_t i = 0; i < w.live; ++i) {
        const double* const from = w.rows.velocity + 3 * int64_t{w.id[i]};
        w.velocity.x[i] = from[0];
        w.velocity.y[i] = from[1];
    }
}

void store_row(Wavefront& w, int32_t i)
{
    Rows& rows = w.rows;
    const int64_t vertex = w.id[i], k = 3 * vertex;
    rows.flat[k] = w.at.x[i];
    rows.flat[k + 1] = w.at.y[i];
    rows.direction[k + 2] = rows.velocity[k + 2] = 0.0;
    if ((w.written & Wavefront::edges) != 0) {
        rows.direction[k] = w.edge.dx[i];
        rows.direction[k + 1] = w.edge.dy[i];
        rows.length[vertex] = w.edge.length[i];
    }
    if ((w.written & Wavefront::velocities) != 0) {
        rows.velocity[k] = w.velocity.x[i];
        rows.velocity[k + 1] = w.velocity.y[i];
    }
    if ((w.written & Wavefront::rates) != 0)
        rows.rate[vertex] = w.rate[i];
    if (w.wants_lines && (w.written & Wavefront::lines) != 0) {
        const double dx = w.line_edge.dx[i], dy = w.line_edge.dy[i];
        rows.line[k] = -dy;
        rows.line[k + 1] = dx;
        rows.line[k + 2] = dy * w.line_at.x[i] - dx * w.line_at.y[i];
    }
}

/// Hands back the rows of a sweep in which nobody died: row i is place i of every column, so whole columns go in lanes.
void store_all_rows(Wavefront& w)
{
    const ConstPoints at = w.at, velocity = w.velocity, line_at = w.line_at;
    const ConstEdges edge = w.edge, line_edge = w.line_edge;
    const double* const rate = w.rate;
    Rows& rows = w.rows;
    const bool wants_lines = w.wants_lines;
    double *const flat = rows.flat, *const directions = rows.direction, *const velocities = rows.velocity;
    double *const lines = rows.line, *const lengths = rows.length, *const rates = rows.rate;
    for_lanes(0, int64_t{rows.n}, [=]<class V>(int64_t i) {
        const V zero = all<V>(0.0), z = load_points<V>(flat + 3 * i).z;
        store_points<V>(flat + 3 * i, {load<V>(at.x + i), load<V>(at.y + i), z});
        store_points<V>(directions + 3 * i, {load<V>(edge.dx + i), load<V>(edge.dy + i), zero});
        store_points<V>(velocities + 3 * i, {load<V>(velocity.x + i), load<V>(velocity.y + i), zero});
        store(lengths + i, load<V>(edge.length + i));
        store(rates + i, load<V>(rate + i));
        if (wants_lines) {
            const V dx = load<V>(line_edge.dx + i), dy = load<V>(line_edge.dy + i);
            const V c = dy * load<V>(line_at.x + i) - dx * load<V>(line_at.y + i);
            store_points<V>(lines + 3 * i, {-dy, dx, c});
        }
    });
}

void close_column(const Wavefront& w, double* column)
{
    remove_values(column, sizeof *column, w.gaps, w.gap_count, w.live + w.gap_count);
}

} // namespace

int64_t Wavefront::doubles_for(int32_t n)
{
    return aligned(kAlignment + kColumns * column_length(n) + (kLists * 4 * int64_t{n} + n + 7) / 8);
}

Wavefront::Wavefront(Rows& of_sweep, bool lines_too, double* memory)
    : rows(of_sweep), wants_lines(lines_too), live(of_sweep.n)
{
    double* column = memory + kAlignment;
    for (Column<double>* const c :
         {&at.x, &at.y, &ahead.x, &ahead.y, &edge.dx, &edge.dy, &edge.length, &edge_before.dx, &edge_before.dy,
          &edge_before.length, &velocity.x, &velocity.y, &velocity_before.x, &velocity_before.y, &rate}) {
        *c = column;
        column += column_length(live);
    }
    line_at = at;
    line_edge = edge;
    id = reinterpret_cast<int32_t*>(column);
    list = id + live;
    buried = list + live;
    gaps = buried + live;
    gone = reinterpret_cast<uint8_t*>(gaps + live);
    std::memset(gone, 0, static_cast<size_t>(live));
    for (int32_t i = 0; i < live; ++i)
        id[i] = i;
    const double* const flat = rows.flat;
    double *const x = at.x, *const y = at.y;
    for_lanes(0, int64_t{live}, [flat, x, y]<class V>(int64_t i) {
        const Lanes3<V> points = load_points<V>(flat + 3 * i);
        store(x + i, points.x);
        store(y + i, points.y);
    });
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

void wrap_ends(double* column, int32_t live)
{
    column[-1] = column[live - 1];
    column[live] = column[0];
}

void wrap_ends(Points& points, int32_t live)
{
    wrap_ends(points.x, live);
    wrap_ends(points.y, live);
}

void bury(Wavefront& w, int32_t i, int32_t heir)
{
    store_row(w, i);
    w.rows.dead[w.id[i]] = 1;
    w.rows.merge[w.id[i]] = w.id[heir];
    w.gone[i] = 1;
    w.buried[w.buried_count++] = i;
}

void unearth(Wavefront& w)
{
    const int32_t i = w.buried[--w.buried_count], vertex = w.id[i];
    w.rows.dead[vertex] = 0;
    w.rows.merge[vertex] = vertex;
    w.gone[i] = 0;
}

void remove_values(void* column, size_t bytes, const int32_t* places, int32_t count, int32_t n)
{
    auto* const values = static_cast<unsigned char*>(column);
    auto end = static_cast<size_t>(places[0]);
    for (int32_t g = 0; g < count; ++g) {
        const auto begin = static_cast<size_t>(places[g]) + 1;
        const auto behind = static_cast<size_t>(g + 1 < count ? places[g + 1] : n);
        std::memmove(values + end * bytes, values + begin * bytes, (behind - begin) * bytes);
        end += behind - begin;
    }
}

void close_gaps(const Wavefront& w, Points& points)
{
    close_column(w, points.x);
    close_column(w, points.y);
}

void close_gaps(const Wavefront& w, EdgeColumns& edges)
{
    close_column(w, edges.dx);
    close_column(w, edges.dy);
    close_column(w, edges.length);
}

void pack(Wavefront& w)
{
    std::swap(w.buried, w.gaps);
    w.gap_count = std::exchange(w.buried_count, 0);
    int32_t* const gaps = w.gaps;
    std::sort(gaps, gaps + w.gap_count);
    for (int32_t g = 0; g < w.gap_count; ++g)
        w.gone[w.gaps[g]] = 0;
    w.live -= w.gap_count;
    close_gaps(w, w.at);
    remove_values(w.id, sizeof *w.id, w.gaps, w.gap_count, w.live + w.gap_count);
    w.spread = Wavefront::lines | Wavefront::velocities | Wavefront::rates;
}

void refresh(Wavefront& w)
{
    if ((w.spread & Wavefront::lines) != 0) {
        close_gaps(w, w.edge_before);
        if (w.line_at.x != w.at.x)
            close_gaps(w, w.line_at);
    }
    if ((w.spread & Wavefront::velocities) != 0)
        close_gaps(w, w.velocity);
    if ((w.spread & Wavefront::rates) != 0)
        close_column(w, w.rate);
    w.spread = 0;
    if ((w.written & Wavefront::velocities) == 0) {
        fetch_velocities(w);
        w.written |= Wavefront::velocities;
    }
}

void hand_back(Wavefront& w)
{
    if (w.live == w.rows.n && w.buried_count == 0 && w.written == kAllGroups) {
        store_all_rows(w);
        return;
    }
    for (int32_t i = 0; i < w.live; ++i)
        if (!w.gone[i])
            store_row(w, i);
}

} // namespace korvale::border
