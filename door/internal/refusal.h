#pragma once

#include "door/internal/failure.h"
#include "equation/system.h"

namespace korvale::door {

/// Throws where a text is not wholly an equation as it reads: where the parser would refuse it, but for its limits, and
/// where it would pass over anything. Returns the number of items.
int32_t require_whole_equation(const EquationSystem& record, std::string_view text);

/// Throws for a text that `require_whole_equation` takes and the parser does not.
[[noreturn]] void refuse_beyond_limits(std::string_view text, int32_t items);

} // namespace korvale::door
