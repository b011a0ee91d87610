#pragma once

#include <cstring>

// Four floats at a time, for boxes of triangles.
namespace korvale::door {

typedef float Floats __attribute__((vector_size(16)));

inline Floats load(const float* p)
{
    Floats v;
    std::memcpy(&v, p, sizeof v);
    return v;
}

inline Floats all(float value)
{
    return Floats{value, value, value, value};
}

/// Lane by lane.
///@{
template <class Lanes>
Lanes greater(Lanes a, Lanes b)
{
    return a > b ? a : b;
}
template <class Lanes>
Lanes less(Lanes a, Lanes b)
{
    return a < b ? a : b;
}
///@}

} // namespace korvale::door
