#include "border/band.h"

#include <algorithm>

#include "data/internal/shape.h"
#include "math/internal/vec.h"

namespace korvale::inside {
namespace {

/// Doubles that exist in `d`, at most `wanted`.
int64_t readable_doubles(const DATAstruct& d, int64_t wanted)
{
    return std::min(wanted, d.dvals == nullptr ? 0 : room(d));
}

/// out = 2 end - neighbour: as far beyond `end` as `neighbour` is before it.
void extend(const double* end, const double* neighbour, double* out)
{
    for (int k = 0; k < 3; ++k)
        out[k] = 2.0 * end[k] - neighbour[k];
}

bool has_points(const DATAstruct& d)
{
    return d.dim == 3 && holds(d, DATA_TYPE_DOUBLE, elements(d.count, 3));
}

} // namespace
} // namespace korvale::inside

using namespace korvale::inside;

void BORDERAddWings(BORDERStatus* status)
{
    if (status == nullptr || status->path == nullptr || status->path->type != DATA_TYPE_DOUBLE)
        return;
    DATAstruct& path = *status->path;
    if (path.count < 2 || !has_points(path) || elements(path.count + 2LL, 3) > kMostElements)
        return;
    path.count += 2;
    DATAReAllocate(&path);
    if (!has_points(path)) { // the heap is exhausted
        path.count -= 2;
        return;
    }
    const int64_t n = path.count;
    double* const p = path.dvals;
    for (int64_t e = 3 * n - 4; e >= 3; --e)
        p[e] = p[e - 3];
    extend(p + 3, p + 6, p);
    extend(p + 3 * (n - 2), p + 3 * (n - 3), p + 3 * (n - 1));
}

void BORDERRemoveWings(BORDERStatus* status)
{
    if (status == nullptr || status->path == nullptr || status->output == nullptr ||
        status->path->type != DATA_TYPE_DOUBLE)
        return;
    DATAstruct &path = *status->path, &output = *status->output;
    const int64_t end = elements(path.count, 3) - 3;
    const int64_t in_path = readable_doubles(path, end), in_output = readable_doubles(output, end);
    for (int64_t e = 3; e < end; ++e) {
        if (e < in_path)
            path.dvals[e - 3] = path.dvals[e];
        if (e < in_output)
            output.dvals[e - 3] = output.dvals[e];
    }
    path.count -= 2;
    output.count -= 2;
}

void BORDERMakePipe(BORDERStatus* status)
{
    if (status == nullptr || status->path == nullptr || status->output == nullptr)
        return;
    DATAstruct &path = *status->path, &output = *status->output;
    const int64_t points = static_cast<int64_t>(output.count) + path.count;
    if (points > kMostElements)
        return;
    const bool path_has_points = has_points(path), output_had_points = has_points(output);
    const int32_t border_points = output.count;
    output.count = static_cast<int32_t>(points);
    DATAReAllocate(&output);
    if (output_had_points && !has_points(output)) { // the heap is exhausted
        output.count = border_points;
        return;
    }
    if (!path_has_points || output.type != DATA_TYPE_DOUBLE || !has_points(output))
        return;
    const int64_t copied = std::min<int64_t>(path.count, points); // fewer where the output had less than no points
    for (int64_t i = 0; i < copied; ++i)
        copy3(path.dvals + 3 * i, output.dvals + 3 * (points - 1 - i));
}
