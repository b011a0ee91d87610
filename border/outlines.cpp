// Borders of single outlines and of lists of outlines. The sweep works in the plane of each outline; what is added here
// is the lift along the normal of the first one. Invariant: while a list is worked on, the record points at one of its
// children, and a hole sees the distance negated.
#include "border/outlines.h"

#include "border/border.h"
#include "data/internal/buffers.h"
#include "data/internal/record.h"
#include "data/internal/trees.h"
#include "math/internal/matrix.h"
#include "path/flatten.h"

namespace korvale::border {
namespace {

/// Raises the points of a border by `height` along the normal of the plane that `xfm` flattens.
void lift(DATAstruct& border, const double (*xfm)[4], const double (*reverse)[4], double height)
{
    for (int64_t i = 0; i < border.count; ++i) {
        double* const point = border.dvals + 3 * i;
        carry_point(xfm, point, point);
        point[2] += height;
        carry_point(reverse, point, point);
    }
}

int border_outline(BORDERStatus& status)
{
    Xfm xfm, reverse;
    DATA_to_xy_xfms(status.path, xfm, reverse, 1);
    if (BORDER_BORDER(&status) < 0)
        return -1;
    lift(*status.output, xfm, reverse, status.height);
    return 1;
}

/// Gives `output` a slot for every child of `path`.
bool shape_list(DATAstruct& output, const DATAstruct& path)
{
    return allocate_as(output, DATA_TYPE_DATA, path.count, path.dim);
}

int border_list(BORDERStatus& status)
{
    DATAstruct *const paths = status.path, *const outputs = status.output;
    if (!is_filled(*paths) || outputs == nullptr || !shape_list(*outputs, *paths))
        return -1;
    Xfm xfm, reverse;
    DATA_to_xy_xfms(child(*paths, 0), xfm, reverse, 1);
    for (int32_t k = 0; k < paths->count; ++k) {
        status.path = child(*paths, k);
        status.output = child(*outputs, k);
        if (BORDER_BORDER(&status) < 0)
            return -1; // Deliberate: the record is left at the failing child
        lift(*status.output, xfm, reverse, status.height);
        outputs->pvals[k] = status.output;
        if (k == 0)
            status.distance = -status.distance; // the holes shrink where the outer outline grows
    }
    status.distance = -status.distance;
    status.path = paths;
    status.output = outputs;
    return 1;
}

} // namespace
} // namespace korvale::border

using namespace korvale::border;

int BORDER(BORDERStatus* status)
{
    if (status == nullptr || status->path == nullptr)
        return -1;
    switch (status->path->type) {
    case DATA_TYPE_DOUBLE:
        return border_outline(*status);
    case DATA_TYPE_DATA:
        return border_list(*status);
    default:
        return -1;
    }
}
