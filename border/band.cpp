// Edits that turn the sweep of a closed outline into a band along an open polyline. All of them work in place; an array
// that cannot grow stays as it is, count and points.
#include "border/band.h"

#include <algorithm>

#include "data/internal/buffers.h"
#include "math/internal/vector.h"
#include "platform/internal/wrapping.h"

namespace korvale::border {
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
    return d.dim == 3 && holds(d, DATA_TYPE_DOUBLE, components(d.count, 3));
}

/// Gives `d` the count and, where there are elements, the buffer for them. False, with the count as it was, when there
/// is no memory for them.
bool resize(DATAstruct& d, int32_t count)
{
    const int32_t before = d.count;
    d.count = count;
    const int result = DATAReAllocate(&d);
    const bool has_elements = count > 0 && d.dim > 0 && is_known_kind(d);
    if (!has_elements || (result > 0 && buffer_of(d, d.type) != nullptr))
        return true;
    d.count = before;
    return false;
}

} // namespace
} // namespace korvale::border

using namespace korvale::border;

void BORDERAddWings(BORDERStatus* status)
{
    if (status == nullptr || status->path == nullptr || status->path->type != DATA_TYPE_DOUBLE)
        return;
    DATAstruct& path = *status->path;
    if (path.count < 2 || !has_points(path) || !may_grow(path) || !resize(path, path.count + 2))
        return;
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
    const int64_t end = components(path.count, 3) - 3;
    const int64_t in_path = readable_doubles(path, end), in_output = readable_doubles(output, end);
    for (int64_t e = 3; e < end; ++e) {
        if (e < in_path)
            path.dvals[e - 3] = path.dvals[e];
        if (e < in_output)
            output.dvals[e - 3] = output.dvals[e];
    }
    path.count = wrapping_difference(path.count, 2);
    output.count = wrapping_difference(output.count, 2);
}

void BORDERMakePipe(BORDERStatus* status)
{
    if (status == nullptr || status->path == nullptr || status->output == nullptr)
        return;
    DATAstruct &path = *status->path, &output = *status->output;
    const int64_t points = int64_t{output.count} + path.count;
    const bool path_has_points = has_points(path);
    if (points > kMostElements || !may_grow(output) || !resize(output, static_cast<int32_t>(points)))
        return;
    if (!path_has_points || output.type != DATA_TYPE_DOUBLE || !has_points(output))
        return;
    const int64_t copied = std::min<int64_t>(path.count, points); // fewer where the output had less than no points
    for (int64_t i = 0; i < copied; ++i)
        copy3(path.dvals + 3 * i, output.dvals + 3 * (points - 1 - i));
}
