#include "math/line.h"

#include <cmath>

namespace korvale::math {
namespace {

/// Points closer than this do not define a line.
constexpr double kShortestSpan = 1e-06;
/// Lines whose directions differ by a sine below this count as parallel.
constexpr double kParallelSine = 1e-06;

} // namespace
} // namespace korvale::math

using namespace korvale::math;

int find_line(double* p0, double* p1, double* line)
{
    const double a = p0[1] - p1[1];
    const double b = p1[0] - p0[0];
    line[0] = a;
    line[1] = b;
    const double span = std::sqrt(a * a + b * b);
    if (span < kShortestSpan) {
        line[0] = 1.0;
        line[1] = 0.0;
        line[2] = -p0[0];
        return -1;
    }
    line[0] = a / span;
    line[1] = b / span;
    line[2] = -line[0] * p0[0] - line[1] * p0[1];
    return 1;
}

void line_normalize(double* line)
{
    const double n = std::sqrt(line[0] * line[0] + line[1] * line[1]);
    for (int k = 0; k < 3; ++k)
        line[k] /= n;
}

double find_intersect(double* line1, double* line2, double* out)
{
    line_normalize(line1);
    line_normalize(line2);
    const double a1 = line1[0], b1 = line1[1], c1 = line1[2];
    const double a2 = line2[0], b2 = line2[1], c2 = line2[2];
    const double det = a1 * b2 - b1 * a2;
    if (std::fabs(det) < kParallelSine)
        return -1.0;
    out[0] = (b1 * c2 - b2 * c1) / det;
    out[1] = (a2 * c1 - a1 * c2) / det;
    out[2] = 0.0;
    return det;
}
