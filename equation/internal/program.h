#pragma once

#include <cstdint>

#include "data/internal/lists.h"
#include "equation/system.h"

namespace korvale::equation {

constexpr int32_t kMostItems = 100;
constexpr int32_t kMostWaiting = 51; ///< operators with parentheses, and functions, that wait during a parse
constexpr int32_t kChildren = 3;     ///< arrays of an equation, its columns in `equations`

/// The items of one equation.
struct Program {
    int32_t* kinds = nullptr;
    int32_t* operands = nullptr;
    double* constants = nullptr;
    int32_t room = 0;  ///< positions that exist in all three arrays; 0 where one is missing
    int32_t count = 0; ///< items, at most `room`

    bool has_target() const { return room > 0 && kinds[0] == EQ_ITEM_TARGET; }
};

/// Whether the array has the room for items that the library gives it.
inline bool has_usual_room(const DATAstruct* d)
{
    return d != nullptr && d->alloc_count == kMostItems && d->alloc_dim == 1;
}

/// `program_in` of any three arrays.
Program checked_program(const DATAstruct* kinds, const DATAstruct* operands, const DATAstruct* constants);

/// The items in the three arrays of a row. Inlined for arrays as the library makes them.
inline Program program_in(void* const* row)
{
    const auto* const kinds = static_cast<const DATAstruct*>(row[0]);
    const auto* const operands = static_cast<const DATAstruct*>(row[1]);
    const auto* const constants = static_cast<const DATAstruct*>(row[2]);
    if (!has_usual_room(kinds) || !has_usual_room(operands) || !has_usual_room(constants) || kinds->ivals == nullptr ||
        operands->ivals == nullptr || constants->dvals == nullptr || kinds->count > kMostItems)
        return checked_program(kinds, operands, constants);
    return {kinds->ivals, operands->ivals, constants->dvals, kMostItems, kinds->count};
}

} // namespace korvale::equation
