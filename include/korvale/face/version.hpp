#pragma once

#include <string_view>

#include "../korvale_c.h"

namespace korvale {

/// The version of the library that runs, such as "1.1.0", which may be later than that of the header.
inline std::string_view version() noexcept
{
    return korvale_version();
}

/// The same as a number that grows with the version: 10000 * major + 100 * minor + patch.
inline int version_number() noexcept
{
    return korvale_version_number();
}

} // namespace korvale
