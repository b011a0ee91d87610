#pragma once

#include "platform/internal/namespaces.h"
#include "platform/layer.h"

#pragma weak korvale_draw_many // a layer may lack it

namespace korvale::platform {

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

/// Writes the next n draws. One call of the thin layer where it is loaded, one call for each number under other layers.
inline void draw_numbers(int* numbers, int n)
{
    if (korvale_draw_many != nullptr && korvale_draw_many(Mwrand, Mwsrand, numbers, n) != 0)
        return;
    for (int i = 0; i < n; ++i)
        numbers[i] = Mwrand();
}

} // namespace korvale::platform
