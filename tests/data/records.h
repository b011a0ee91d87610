#pragma once

#include <cstdlib>
#include <string>

#include <gtest/gtest.h>

#include "tests/support/arrays.h"

// Records of the second generation in the tests of their own functions.
namespace korvale::test {

/// That a record is as `DATAInitialize` makes it.
inline void expect_empty(const DATAstruct& d)
{
    EXPECT_EQ(d.dim, -1);
    EXPECT_EQ(d.count, -1);
    EXPECT_EQ(d.alloc_dim, -1);
    EXPECT_EQ(d.alloc_count, -1);
    EXPECT_EQ(d.type, DATA_TYPE_DOUBLE);
    EXPECT_EQ(d.alloc_type, DATA_TYPE_DOUBLE);
    EXPECT_EQ(d.dvals, nullptr);
    EXPECT_EQ(d.ivals, nullptr);
    EXPECT_EQ(d.bvals, nullptr);
    EXPECT_EQ(d.pvals, nullptr);
    EXPECT_EQ(d.next, nullptr);
}

inline void expect_capacity(const DATAstruct& d, int32_t type, int32_t count, int32_t dim)
{
    EXPECT_EQ(d.alloc_type, type);
    EXPECT_EQ(d.alloc_count, count);
    EXPECT_EQ(d.alloc_dim, dim);
}

/// Which buffers exist, as "d", "i", "b" and "p".
inline std::string buffers(const DATAstruct& d)
{
    return std::string(d.dvals != nullptr ? "d" : "") + (d.ivals != nullptr ? "i" : "") +
           (d.bvals != nullptr ? "b" : "") + (d.pvals != nullptr ? "p" : "");
}

inline void shape(DATAstruct* d, int32_t type, int32_t count, int32_t dim)
{
    d->type = type;
    d->count = count;
    d->dim = dim;
}

inline int allocate_as(DATAstruct* d, int32_t type, int32_t count, int32_t dim)
{
    shape(d, type, count, dim);
    return DATAAllocate(d);
}

inline int reallocate_as(DATAstruct* d, int32_t type, int32_t count, int32_t dim)
{
    shape(d, type, count, dim);
    return DATAReAllocate(d);
}

/// A list of `n` records from the heap, each with a point.
inline DATAstruct* new_list(int n)
{
    DATAstruct* first = nullptr;
    for (int i = n; i-- > 0;) {
        DATAstruct* const d = new_doubles(3, {static_cast<double>(i), 0, 0});
        d->next = first;
        first = d;
    }
    return first;
}

/// Releases a record from the heap and all below it.
inline void release(DATAstruct* d)
{
    DATADispose(d);
    std::free(d);
}

} // namespace korvale::test
