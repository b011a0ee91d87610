#include "math/orientation.h"

#include "math/internal/orientation.h"
#include "math/internal/vector.h"

namespace korvale::math {
namespace {

/// An x direction whose cosine with z is beyond this, either way, is made perpendicular.
constexpr double kSlantedCosine = 1e-06;

/// The rows (axis, -axis . origin) and (0, 0, 0, 1).
void write_frame(const double* origin, const double* x, const double* y, const double* z, double (*out)[4])
{
    const double* const axes[3] = {x, y, z};
    for (int i = 0; i < 3; ++i) {
        copy3(axes[i], out[i]);
        out[i][3] = -dot(axes[i], origin);
    }
    out[3][0] = out[3][1] = out[3][2] = 0.0;
    out[3][3] = 1.0;
}

} // namespace

int orient(const double* origin, const double* xdir, const double* zdir, double (*fwd)[4], double (*rev)[4])
{
    double x[3], y[3], z[3];
    copy3(zdir, z);
    copy3(xdir, x);
    if (!make_unit(z) || !make_unit(x))
        return -1;
    const double d = dot(x, z);
    if (d > kSlantedCosine || d < -kSlantedCosine)
        for (int k = 0; k < 3; ++k)
            x[k] = x[k] - d * z[k];
    cross(z, x, y);
    write_frame(origin, x, y, z, fwd);
    if (rev == nullptr)
        return 0;

    const double t[3] = {fwd[0][3], fwd[1][3], fwd[2][3]};
    for (int i = 0; i < 3; ++i) {
        const double column[3] = {x[i], y[i], z[i]};
        copy3(column, rev[i]);
        rev[i][3] = -dot(column, t);
    }
    rev[3][0] = rev[3][1] = rev[3][2] = 0.0;
    rev[3][3] = 1.0;
    return 1;
}

} // namespace korvale::math

using namespace korvale::math;

int orientation_xfm(double* origin, double* zdir, double* ref, double* out16)
{
    double x[3], y[3], z[3];
    copy3(zdir, z);
    if (!make_unit(z))
        return -1;
    cross(ref, z, x);
    if (!make_unit(x))
        return -1;
    cross(z, x, y);
    Xfm frame;
    write_frame(origin, x, y, z, frame);
    xfm2array(frame, out16);
    return 1;
}

int orientation_xfm_and_reverse(double* origin, double* xdir, double* zdir, Xfm fwd, Xfm rev)
{
    return orient(origin, xdir, zdir, fwd, rev);
}
