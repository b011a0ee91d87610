#pragma once

#include "platform/internal/namespaces.h"

namespace korvale::math {

inline bool boxes_meet(const double* box1, const double* box2)
{
    for (int k = 0; k < 3; ++k)
        if (box2[k] > box1[k + 3] || box1[k] > box2[k + 3])
            return false;
    return true;
}

} // namespace korvale::math
