#pragma once

#include <gtest/gtest.h>

#include "data/data.h"
#include "data/datastruct.h"
#include "data/operations.h"
#include "tests/support/arrays.h"

// The functions of both array generations under one name, so that one test body serves both.
namespace korvale::test {

using Generations = testing::Types<Data, DATAstruct>;

inline void dispose(Data* d)
{
    DataDispose(d);
}
inline void dispose(DATAstruct* d)
{
    DATADispose(d);
}

inline void reverse(Data* d)
{
    DataReverse(d);
}
inline void reverse(DATAstruct* d)
{
    DATAReverse(d);
}

inline int bbox(Data* src, Data* box)
{
    return DataBBox(src, box);
}
inline int bbox(DATAstruct* src, DATAstruct* box)
{
    return DATABBox(src, box);
}

inline int cat(Data* first, Data* second, Data* output)
{
    return DataCat(first, second, output);
}
inline int cat(DATAstruct* first, DATAstruct* second, DATAstruct* output)
{
    return DATACat(first, second, output);
}

inline int copy(Data* source, Data* output)
{
    return DataCopy(source, output);
}
inline int copy(DATAstruct* source, DATAstruct* output)
{
    return DATACopy(source, output);
}

inline int mix(Data* a, Data* b, double wa, double wb, Data* output)
{
    return DataMix(a, b, wa, wb, output);
}
inline int mix(DATAstruct* a, DATAstruct* b, double wa, double wb, DATAstruct* output)
{
    return DATAMix(a, b, wa, wb, output);
}

inline int mix4(Data* a, Data* b, Data* c, Data* d, double wa, double wb, double wc, double wd, Data* output)
{
    return Data4Mix(a, b, c, d, wa, wb, wc, wd, output);
}
inline int mix4(DATAstruct* a, DATAstruct* b, DATAstruct* c, DATAstruct* d, double wa, double wb, double wc, double wd,
                DATAstruct* output)
{
    return DATA4Mix(a, b, c, d, wa, wb, wc, wd, output);
}

inline int bounds(Data* source, Data* output)
{
    return DataBounds(source, output);
}
inline int bounds(DATAstruct* source, DATAstruct* output)
{
    return DATABounds(source, output);
}

inline void transform(Xfm m, Data* source, Data* output)
{
    TransformData(m, source, output);
}
inline void transform(Xfm m, DATAstruct* source, DATAstruct* output)
{
    TransformDATA(m, source, output);
}

} // namespace korvale::test
