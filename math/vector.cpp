#include "math/vector.h"

#include "math/internal/vector.h"
#include "platform/internal/lanes.h"

namespace korvale::math {
namespace {

/// With four lanes the three quotients are one divide instruction instead of three.
template <class V>
KORVALE_OVER_LANES int normalize_by(double* v)
{
    const Lanes3<double> p = vector_of(v);
    const double n = root(dot(p, p));
    if (n < kShortestVector)
        return -1;
    if constexpr (width_of<V> == 4) {
        const V unit = V(p.x, p.y, p.z, n) / n;
        store_points(v, Lanes3<double>{unit[0], unit[1], unit[2]});
    } else {
        store_points(v, p / n);
    }
    return 1;
}

} // namespace
} // namespace korvale::math

using namespace korvale::math;

double dot_product(double* a, double* b)
{
    return dot(vector_of(a), vector_of(b));
}

void cross_product(double* a, double* b, double* out)
{
    cross(a, b, out);
}

double norm(double* v)
{
    const Lanes3<double> p = vector_of(v);
    return root(dot(p, p));
}

int normalize(double* v)
{
    return over_lanes([]<class V>(double* of) { return normalize_by<V>(of); }, v);
}

double angle(double* a, double* b)
{
    return std::acos(dot(a, b) / (length(a) * length(b)));
}
