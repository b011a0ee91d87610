#pragma once

#include <algorithm>
#include <cstdint>

#include "equation/internal/registry.h"
#include "equation/system.h"

namespace korvale {

constexpr int32_t kMostItems = 100;
constexpr int32_t kChildren = 3; ///< arrays of an equation, its columns in `equations`

/// The items of one equation.
struct Program {
    int32_t* kinds = nullptr;
    int32_t* operands = nullptr;
    double* constants = nullptr;
    int32_t room = 0;  ///< positions that exist in all three arrays; 0 where one is missing
    int32_t count = 0; ///< items, at most `room`

    bool has_target() const { return room > 0 && kinds[0] == EQ_ITEM_TARGET; }
};

inline bool is_equation(const EquationSystem& es, int32_t equation)
{
    return equation >= 0 && es.equations != nullptr && equation < es.equations->count &&
           holds(*es.equations, DATA_TYPE_DATA, elements(equation + int64_t{1}, kChildren));
}

/// The items of an equation that exists.
inline Program program_of(const EquationSystem& es, int32_t equation)
{
    void* const* const row = es.equations->pvals + elements(equation, kChildren);
    const auto* const kinds = static_cast<const DATAstruct*>(row[0]);
    const auto* const operands = static_cast<const DATAstruct*>(row[1]);
    const auto* const constants = static_cast<const DATAstruct*>(row[2]);
    const int64_t shortest =
        std::min({room(kinds, DATA_TYPE_INT), room(operands, DATA_TYPE_INT), room(constants, DATA_TYPE_DOUBLE)});
    if (shortest < 1)
        return {};
    const auto held = static_cast<int32_t>(shortest);
    return {kinds->ivals, operands->ivals, constants->dvals, held, std::min(held, kinds->count)};
}

} // namespace korvale
