#pragma once

#include "platform/internal/namespaces.h"

namespace korvale::platform {

/// Whether pointers are narrower than the 64 bits for which the layouts of records are pinned. A record is then what
/// its compiler makes of it.
inline constexpr bool kNarrowPointers = sizeof(void*) < 8;

} // namespace korvale::platform
