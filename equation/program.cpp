#include "equation/internal/program.h"

#include <algorithm>

namespace korvale::equation {

Program checked_program(const DATAstruct* kinds, const DATAstruct* operands, const DATAstruct* constants)
{
    const int64_t shortest =
        std::min({room(kinds, DATA_TYPE_INT), room(operands, DATA_TYPE_INT), room(constants, DATA_TYPE_DOUBLE)});
    if (shortest < 1)
        return {};
    const auto held = static_cast<int32_t>(shortest);
    return {kinds->ivals, operands->ivals, constants->dvals, held, std::min(held, kinds->count)};
}

} // namespace korvale::equation
