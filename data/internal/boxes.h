#pragma once

#include "data/internal/elements.h"
#include "data/internal/shape.h"

namespace korvale::inside {

/// What `DataBBox` and `DATABBox` do; the two generations do not differ.
template <class Array>
int box_around(const Array* src, Array* box)
{
    if (src == nullptr || box == nullptr || src->count < 1 || src->dim < 1)
        return -1;
    const int64_t corners = elements(2, src->dim);
    if (elements(box->count, box->dim) != corners || box->type != src->type || src->type != DATA_TYPE_DOUBLE)
        return -1;
    if (!is_filled(*src) || !holds(*box, DATA_TYPE_DOUBLE, corners))
        return -1;
    find_bounds(src->dvals, src->count, src->dim, box->dvals, box->dvals + src->dim);
    return 1;
}

} // namespace korvale::inside
