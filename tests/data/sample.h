#pragma once

#include "data/sampling.h"

// Sampling of either generation, by one name.
namespace korvale::test {

inline void sample(Data* triangles, unsigned seed, Data* points, Data* from, Data* to)
{
    DataTriSample(triangles, seed, points, from, to);
}

inline void sample(DATAstruct* triangles, unsigned seed, DATAstruct* points, DATAstruct* from, DATAstruct* to)
{
    DATATriSample(triangles, seed, points, from, to);
}

} // namespace korvale::test
