#pragma once

#include "tests/data/records.h"

// Deep arrays of arrays.
namespace korvale::test {

/// Levels that no stack of calls would take.
constexpr int kDeep = 400000;

/// `leaf` below `depth` arrays of two slots each, always in slot `at`; the other slot is null.
inline DATAstruct* new_chain(DATAstruct* leaf, int depth, int at)
{
    DATAstruct* chain = leaf;
    for (int i = 0; i < depth; ++i)
        chain = at == 0 ? new_parent({chain, nullptr}) : new_parent({nullptr, chain});
    return chain;
}

/// A tree of `depth` arrays with two slots, in which slot 0 leads down and slot 1 holds a point.
inline DATAstruct* new_comb(int depth)
{
    DATAstruct* comb = new_doubles(3, {1, 2, 3});
    for (int i = 0; i < depth; ++i)
        comb = new_parent({comb, new_doubles(3, {1, 2, 3})});
    return comb;
}

} // namespace korvale::test
