#include "math/rotation.h"

#include <cmath>

#include "math/internal/matrix.h"
#include "math/internal/rotation.h"

namespace korvale::math {
namespace {

/// Scales strictly between minus this and this are inverted to kLargestInverse.
constexpr double kSmallestScale = 1e-06;
constexpr double kLargestInverse = 1000000.0;

/// Below this cosine of ry (gimbal lock) the turns about x and z cannot be told apart.
constexpr double kPoleCosine = 1e-06;
/// Deliberate: a short quarter turn.
constexpr double kPoleAngle = 1.5707963;

} // namespace

void rotation_from_radians(const double* radians, double (*out)[4])
{
    const double c0 = std::cos(radians[0]), s0 = std::sin(radians[0]);
    const double c1 = std::cos(radians[1]), s1 = std::sin(radians[1]);
    const double c2 = std::cos(radians[2]), s2 = std::sin(radians[2]);
    const double rx[4][4] = {{1, 0, 0, 0}, {0, c0, -s0, 0}, {0, s0, c0, 0}, {0, 0, 0, 1}};
    const double ry[4][4] = {{c1, 0, s1, 0}, {0, 1, 0, 0}, {-s1, 0, c1, 0}, {0, 0, 0, 1}};
    const double rz[4][4] = {{c2, -s2, 0, 0}, {s2, c2, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 1}};
    multiply(ry, rx, out);
    multiply(rz, out, out);
}

void rotation_from_degrees(const double* degrees, double (*out)[4])
{
    constexpr double kRadiansPerDegree = 0.0174533; // Deliberate: short
    const double radians[3] = {degrees[0] * kRadiansPerDegree, degrees[1] * kRadiansPerDegree,
                               degrees[2] * kRadiansPerDegree};
    rotation_from_radians(radians, out);
}

} // namespace korvale::math

using namespace korvale::math;

void rotation_matrix(double* radians, Xfm out)
{
    rotation_from_radians(radians, out);
}

void RotationMatrix(double* degrees, Xfm out)
{
    rotation_from_degrees(degrees, out);
}

void RotateMatrix(double* degrees, Xfm out)
{
    rotation_from_degrees(degrees, out);
}

void SRT2Transform(double* scale, double* rot, double* trans, Xfm out)
{
    Xfm s, r, t;
    ScaleMatrix(scale, s);
    rotation_matrix(rot, r);
    TranslateMatrix(trans, t);
    multiply(r, s, out);
    multiply(t, out, out);
}

void SRT2InvTransform(double* scale, double* rot, double* trans, Xfm out)
{
    double inverse_scale[3], back[3];
    for (int k = 0; k < 3; ++k) {
        const bool flat = -kSmallestScale < scale[k] && scale[k] < kSmallestScale;
        inverse_scale[k] = flat ? kLargestInverse : 1 / scale[k];
        back[k] = -trans[k];
    }
    Xfm s, r, r_back, t;
    ScaleMatrix(inverse_scale, s);
    rotation_matrix(rot, r);
    transpose(r, r_back);
    TranslateMatrix(back, t);
    multiply(r_back, t, out);
    multiply(s, out, out);
}

void Transform2SRT(Xfm m, double* scale, double* rot, double* trans)
{
    double r[3][3];
    for (int k = 0; k < 3; ++k)
        trans[k] = m[k][3];
    for (int j = 0; j < 3; ++j) {
        scale[j] = std::sqrt(m[0][j] * m[0][j] + m[1][j] * m[1][j] + m[2][j] * m[2][j]);
        for (int i = 0; i < 3; ++i)
            r[i][j] = m[i][j] / scale[j];
    }
    const double c = std::sqrt(r[2][1] * r[2][1] + r[2][2] * r[2][2]);
    if (c < kPoleCosine) {
        rot[0] = 0.0;
        rot[1] = r[2][0] > 0 ? -kPoleAngle : kPoleAngle;
        rot[2] = std::asin(-r[0][1]);
    } else {
        rot[0] = std::atan2(r[2][1], r[2][2]);
        rot[1] = std::asin(-r[2][0]);
        rot[2] = std::atan2(r[1][0], r[0][0]);
    }
}
