#pragma once

#include "platform/layer.h"

namespace korvale::inside {

/// One draw of the platform's generator as a value in [0, 1]; both ends occur.
inline double unit_draw()
{
    return Mwrand() / 32767.0;
}

} // namespace korvale::inside
