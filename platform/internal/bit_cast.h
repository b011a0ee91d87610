#pragma once

#include "platform/internal/namespaces.h"

namespace korvale::platform {

/// std::bit_cast, by what it is made of: not every C++ library that korvale is built with has it.
template <class To, class From>
constexpr To bit_cast(const From& from)
{
    static_assert(sizeof(To) == sizeof(From));
    return __builtin_bit_cast(To, from);
}

} // namespace korvale::platform
