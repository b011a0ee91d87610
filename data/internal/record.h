#pragma once

#include "data/data.h"
#include "data/datastruct.h"

// The life cycle of a record under one name for both generations, for work that is written once over either.
namespace korvale::inside {

inline int allocate(Data& d)
{
    return DataAllocate(&d);
}

inline int allocate(DATAstruct& d)
{
    return DATAAllocate(&d);
}

inline void dispose(Data& d)
{
    DataDispose(&d);
}

inline void dispose(DATAstruct& d)
{
    DATADispose(&d);
}

} // namespace korvale::inside
