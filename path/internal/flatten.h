#pragma once

#include "data/data.h"
#include "data/datastruct.h"

namespace korvale::path {

/// Whether the record is of points, by its kind and dim.
template <class Array>
bool is_outline(const Array* path)
{
    return path != nullptr && path->type == DATA_TYPE_DOUBLE && path->dim == 3;
}

/// What `data_to_xy_xfms` and `DATA_to_xy_xfms` do, on paths that are only read.
int flatten(const Data* path, double (*xfm)[4], double (*reverse)[4], bool closed);
void flatten(const DATAstruct* path, double (*xfm)[4], double (*reverse)[4], bool closed);

/// `DATA_to_xy_xfms` without random numbers, for 1 or more finite points. Where that function draws none, and rounding
/// does not blur the corner it looks at, the transforms are the same to the bit. Elsewhere a closed outline runs
/// counter-clockwise as its area says. `greatest` is that of the coordinates, without their signs.
void flatten_for_sure(const double* points, int count, double greatest, double (*xfm)[4], double (*reverse)[4],
                      bool closed);

/// Twice the area that an outline goes round, along the normal from which it runs counter-clockwise. False where its
/// parts cancel but for rounding.
bool find_doubled_area(const double* points, int count, double* area);

} // namespace korvale::path
