#pragma once

#include <cstdint>
#include <cstdlib>

#include "data/data.h"
#include "data/datastruct.h"
#include "data/internal/buffers.h"
#include "data/internal/kernels.h"

// What both generations do alike, under one name: the life cycle of a record, for work that is written once over
// either, and reversal.
namespace korvale::data {

inline void initialize(Data& d)
{
    DataInitialize(&d);
}

inline void initialize(DATAstruct& d)
{
    DATAInitialize(&d);
}

inline int allocate(Data& d)
{
    return DataAllocate(&d);
}

inline int allocate(DATAstruct& d)
{
    const bool is_there = d.count >= 1 && d.dim >= 1 && serves(d, d.type, components(d.count, d.dim));
    return is_there ? 1 : DATAAllocate(&d); // inlined: the commonest answer of DATAAllocate
}

inline void dispose(Data& d)
{
    DataDispose(&d);
}

inline void dispose(DATAstruct& d)
{
    DATADispose(&d);
}

/// Sets kind and shape; the buffer stays as it is.
template <class Array>
void shape_as(Array& d, int32_t type, int32_t count, int32_t dim)
{
    d.type = type;
    d.count = count;
    d.dim = dim;
}

/// `shape_as`, and makes room for it as the generation does. False when it cannot be allocated.
template <class Array>
bool allocate_as(Array& d, int32_t type, int32_t count, int32_t dim)
{
    shape_as(d, type, count, dim);
    return allocate(d) > 0;
}

/// A new record from the heap with room for [count][dim] of a kind; null, with nothing kept, when the heap is exhausted
/// or the shape is none.
inline DATAstruct* new_array(int32_t type, int32_t count, int32_t dim)
{
    DATAstruct* const d = DATANew();
    if (d == nullptr || allocate_as(*d, type, count, dim))
        return d;
    std::free(d);
    return nullptr;
}

/// The elements from last to first; an array that does not hold what it counts stays as it is.
template <class Array>
[[gnu::always_inline]] inline void reverse(Array& d)
{
    if (d.count < 2)
        return;
    if (doubles_in(d) > 0) // the commonest kind, in fewer tests
        reverse_elements(d.dvals, d.count, static_cast<size_t>(d.dim) * sizeof(double));
    else if (is_filled(d))
        reverse_elements(buffer_of(d, d.type), d.count, static_cast<size_t>(d.dim) * component_bytes(d, d.type));
}

} // namespace korvale::data
