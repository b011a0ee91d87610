#pragma once

#include "platform/layer.h"

namespace korvale::inside {

/// The greatest number that `Mwrand` returns; the least is 0.
inline constexpr int kGreatestDraw = 32767;

/// A number drawn with `Mwrand` as a value in [0, 1]; both ends occur.
inline double unit_of(int draw)
{
    return draw / static_cast<double>(kGreatestDraw);
}

inline double unit_draw()
{
    return unit_of(Mwrand());
}

} // namespace korvale::inside
