#include "tests/reference/frames.h"

#include <cmath>
#include <cstring>

namespace korvale::reference {
namespace {

struct Vec {
    double x, y, z;
};

Vec operator-(const Vec& a, const Vec& b)
{
    return {a.x - b.x, a.y - b.y, a.z - b.z};
}

Vec operator-(const Vec& a)
{
    return {-a.x, -a.y, -a.z};
}

Vec operator*(double s, const Vec& a)
{
    return {s * a.x, s * a.y, s * a.z};
}

double dot(const Vec& a, const Vec& b)
{
    return a.x * b.x + a.y * b.y + a.z * b.z;
}

Vec cross(const Vec& a, const Vec& b)
{
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

bool normalize(Vec& v)
{
    const double length = std::sqrt(v.x * v.x + v.y * v.y + v.z * v.z);
    if (length < 1e-6)
        return false;
    v = {v.x / length, v.y / length, v.z / length};
    return true;
}

void write(Xfm& frame, const Vec& x, const Vec& z, const Vec& p)
{
    const Vec y = cross(z, x);
    const double rows[4][4] = {{x.x, y.x, z.x, p.x}, {x.y, y.y, z.y, p.y}, {x.z, y.z, z.z, p.z}, {0, 0, 0, 1}};
    std::memcpy(frame, rows, sizeof rows);
}

Vec column(const Xfm& frame, int j)
{
    return {frame[0][j], frame[1][j], frame[2][j]};
}

void multiply(const Xfm& a, const Xfm& b, Xfm& out)
{
    Xfm product;
    for (int i = 0; i < 4; ++i)
        for (int j = 0; j < 4; ++j)
            product[i][j] = a[i][0] * b[0][j] + a[i][1] * b[1][j] + a[i][2] * b[2][j] + a[i][3] * b[3][j];
    std::memcpy(out, product, sizeof product);
}

} // namespace

void frames_along(const double* points, int n, bool closed, double full_turn, Xfm* frames)
{
    const auto p = [points](int i) -> Vec { return {points[3 * i], points[3 * i + 1], points[3 * i + 2]}; };
    if (n == 1) {
        const double identity[4][4] = {{1, 0, 0, 0}, {0, 1, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 1}};
        std::memcpy(frames[0], identity, sizeof identity);
        return;
    }

    // The first frame.
    Vec t = p(1) - p(0), e = {0, 0, 0};
    Vec z = -t;
    normalize(z);
    if (closed) {
        e = p(0) - p(n - 1);
        normalize(e);
        z = z - e;
    }
    Vec x = cross(t, e);
    bool found = normalize(z);
    for (int k = 1; k <= n - 2 && !found; ++k) {
        z = z - (p(k + 1) - p(k));
        found = normalize(z);
    }
    if (!found)
        z = {0, 0, 1};
    found = normalize(x);
    for (int k = 1; k <= n - 2 && !found; ++k) {
        e = t;
        t = p(k + 1) - p(k);
        x = cross(t, e);
        found = normalize(x);
    }
    if (!found) {
        x = {p(0).y - p(1).y, p(1).x - p(0).x, 0};
        if (!normalize(x))
            x = {1, 0, 0};
    }
    x = x - dot(x, z) * z;
    if (!normalize(x)) {
        x = {-z.y, z.x, 0};
        if (!normalize(x))
            x = {1, 0, 0};
    }
    write(frames[0], x, z, p(0));

    for (int i = 1; i < n; ++i) {
        if (i < n - 1) {
            t = p(i + 1) - p(i);
            e = p(i) - p(i - 1);
            normalize(t);
            normalize(e);
            z = -t - e;
        } else if (closed) {
            t = p(0) - p(n - 1);
            e = p(n - 1) - p(n - 2);
            normalize(t);
            normalize(e);
            z = -t - e;
        } else {
            z = p(n - 2) - p(n - 1);
        }
        if (!normalize(z))
            z = column(frames[i - 1], 2);
        x = x - dot(x, z) * z;
        if (!normalize(x)) {
            z = column(frames[i - 1], 2);
            x = column(frames[i - 1], 0);
        }
        write(frames[i], x, z, p(i));
    }
    if (!closed)
        return;

    // The turn left over.
    const Vec x0 = column(frames[0], 0), z0 = column(frames[0], 2);
    const double c = dot(x, x0);
    const double s = dot(cross(x, x0), z0);
    const double theta = s > -1e-6 ? std::acos(c) : full_turn - std::acos(c);
    const double phi = theta / n;
    const double cos_phi = std::cos(phi), sin_phi = std::sin(phi);
    double big_c = 1, big_s = 0;
    for (int i = 1; i < n; ++i) {
        const double old_c = big_c, old_s = big_s;
        big_c = cos_phi * old_c - sin_phi * old_s;
        big_s = old_s * cos_phi + old_c * sin_phi;
        const Xfm turn = {{big_c, -big_s, 0, 0}, {big_s, big_c, 0, 0}, {0, 0, 1, 0}, {0, 0, 0, 1}};
        multiply(frames[i], turn, frames[i]);
    }
}

} // namespace korvale::reference
