// The two doors to the sweep of one outline. Around it they do the same: flatten the outline, sweep it in work arrays,
// carry the border back; what differs between them stands above them.
#include "border/border.h"

#include <cmath>
#include <cstdlib>

#include "border/internal/sweep.h"
#include "data/internal/buffers.h"
#include "data/internal/record.h"
#include "data/operations.h"
#include "path/flatten.h"
#include "path/internal/flatten.h"

namespace korvale::border {
namespace {

/// The arrays a sweep works in, one entry per point of the outline.
template <class Array>
struct WorkArrays {
    Array* flat;
    Array* direction;
    Array* velocity;
    Array* line;
    Array* length;
    Array* rate;
    Array* dead;
    Array* merge;
};

template <class Array>
bool shape(Array* array, int32_t type, int32_t count, int32_t dim)
{
    return array != nullptr && allocate_as(*array, type, count, dim);
}

/// Makes room for n vertices. Every array is tried, also after one has failed.
template <class Array>
bool shape_all(const WorkArrays<Array>& work, int32_t n)
{
    const bool shaped[] = {
        shape(work.flat, DATA_TYPE_DOUBLE, n, 3),     shape(work.direction, DATA_TYPE_DOUBLE, n, 3),
        shape(work.velocity, DATA_TYPE_DOUBLE, n, 3), shape(work.line, DATA_TYPE_DOUBLE, n, 3),
        shape(work.length, DATA_TYPE_DOUBLE, n, 1),   shape(work.rate, DATA_TYPE_DOUBLE, n, 1),
        shape(work.dead, DATA_TYPE_BYTE, n, 1),       shape(work.merge, DATA_TYPE_INT, n, 1),
    };
    for (const bool done : shaped)
        if (!done)
            return false;
    return true;
}

/// Points that can be read: none where the buffer is missing or too small.
template <class Array>
int32_t readable_points(const Array& path)
{
    return holds(path, DATA_TYPE_DOUBLE, components(path.count, 3)) ? path.count : 0;
}

/// Sweeps the outline in `work.flat` and leaves the points of the border there. Returns their number, or -1 when the
/// heap is exhausted.
template <class Array>
int32_t sweep_flat(const WorkArrays<Array>& work, double distance, bool split_events, bool keep_collapsed)
{
    Sweep s = {{work.flat->count, work.flat->dvals, work.direction->dvals, work.velocity->dvals, work.line->dvals,
                work.length->dvals, work.rate->dvals, work.dead->bvals, work.merge->ivals},
               {distance},
               {split_events}};
    if (!run_sweep(s))
        return -1;
    if (!keep_collapsed)
        return pack_live_positions(s.rows);
    return join_dead_vertices(s.rows) ? s.rows.n : -1;
}

/// Puts a new output in the place of the previous one.
void replace_output(BorderStatus& status)
{
    if (status.output != nullptr && status.output != status.path) {
        DataDispose(status.output);
        std::free(status.output);
    }
    status.output = DataNew();
}

} // namespace
} // namespace korvale::border

using namespace korvale::border;

// Border replaces its output first, works in arrays of its own, needs the plane that data_to_xy_xfms finds and puts the
// border at `height`. BORDER_BORDER validates first, works in the arrays of the record and leaves z alone.

int Border(BorderStatus* status)
{
    if (status == nullptr)
        return -1;
    replace_output(*status);
    if (status->output == nullptr || !is_outline(status->path) || !std::isfinite(status->distance))
        return -1;

    // Deliberate: these records and their buffers are never released.
    const WorkArrays<Data> work = {DataNew(), DataNew(), DataNew(), DataNew(),
                                   DataNew(), DataNew(), DataNew(), DataNew()};
    if (!shape_all(work, readable_points(*status->path)))
        return -1;
    Xfm xfm, reverse;
    if (data_to_xy_xfms(status->path, xfm, reverse, 1) < 0)
        return -1;
    TransformData(xfm, status->path, work.flat);

    const int32_t points = sweep_flat(work, status->distance, status->split_events != 0, status->keep_collapsed != 0);
    if (points < 0)
        return -1;
    for (int32_t i = 0; i < points; ++i)
        work.flat->dvals[3 * int64_t{i} + 2] = status->height;
    work.flat->count = points;
    if (!shape(status->output, DATA_TYPE_DOUBLE, points, 3))
        return -1;
    TransformData(reverse, work.flat, status->output);
    return 1;
}

int BORDER_BORDER(BORDERStatus* status)
{
    if (status == nullptr || !is_outline(status->path) || !std::isfinite(status->distance))
        return -1;
    if (status->output == nullptr && (status->output = DATANew()) == nullptr)
        return -1;

    const WorkArrays<DATAstruct> work = {status->flat,   status->direction, status->velocity, status->line,
                                         status->length, status->rate,      status->dead,     status->merge};
    if (!shape_all(work, readable_points(*status->path)))
        return -1;
    Xfm xfm, reverse;
    DATA_to_xy_xfms(status->path, xfm, reverse, 1);
    TransformDATA(xfm, status->path, work.flat);

    const int32_t points = sweep_flat(work, status->distance, status->split_events != 0, status->keep_collapsed != 0);
    if (points < 0)
        return -1;
    work.flat->count = points;
    if (!shape(status->output, DATA_TYPE_DOUBLE, points, 3))
        return -1;
    TransformDATA(reverse, work.flat, status->output);
    return 1;
}
