// Prints results of the library bit for bit. With the argument "host" they come from calls that a host makes to norm,
// angle, power and normalize, which a preloaded library may intercept; without, from functions of the library that work
// with lengths, angles, powers and directions.
#include <cstdio>
#include <cstring>

#include "korvale.h"

namespace {

void print(const char* what, const double* values, int n)
{
    std::printf("%s", what);
    for (int i = 0; i < n; ++i)
        std::printf(" %a", values[i]);
    std::printf("\n");
}

double points[] = {0.5, 0.25, 1, 4, 0.5, 1.5, 5, 4.25, 2, 3, 2.5, 1.75, 0.75, 4, 2.5};
constexpr int kPoints = 5;

void print_host_calls()
{
    double v[] = {1, 2, 3};
    double w[] = {3, -1, 2};
    const double values[] = {norm(v), angle(v, w), power(1.5, 7)};
    print("norm, angle, power", values, 3);
    normalize(v);
    print("normalize", v, 3);
}

void print_math()
{
    double origin[] = {1, 2, 3};
    double x[] = {2, -1, 0.5};
    double z[] = {0.25, 3, 1};
    double flat[16];
    Xfm forward, reverse;
    orientation_xfm(origin, z, x, flat);
    print("orientation_xfm", flat, 16);
    orientation_xfm_and_reverse(origin, x, z, forward, reverse);
    print("orientation_xfm_and_reverse", &forward[0][0], 16);
    print("  reverse", &reverse[0][0], 16);

    double scale[] = {2, 3, 0.5};
    double turn[] = {0.3, -0.8, 1.1};
    SRT2Transform(scale, turn, origin, forward);
    print("SRT2Transform", &forward[0][0], 16);
    Transform2SRT(forward, x, z, origin);
    print("Transform2SRT", x, 3);
    print("  rotation", z, 3);
    print("  translation", origin, 3);

    double line[3];
    find_line(points, points + 6, line);
    print("find_line", line, 3);
    double other[] = {3, -4, 2};
    double meeting[3];
    find_intersect(line, other, meeting);
    print("find_intersect", meeting, 3);
}

void print_paths()
{
    Data path;
    DataInitialize(&path);
    path.count = kPoints;
    path.dim = 3;
    path.dvals = points;
    DATAstruct PATH;
    DATAInitialize(&PATH);
    PATH.count = kPoints;
    PATH.dim = 3;
    PATH.dvals = points;

    Xfm forward, reverse;
    for (int closed = 0; closed < 2; ++closed) {
        data_to_xy_xfms(&path, forward, reverse, closed);
        print("data_to_xy_xfms", &forward[0][0], 16);
        print("  reverse", &reverse[0][0], 16);
        DATA_to_xy_xfms(&PATH, forward, reverse, closed);
        print("DATA_to_xy_xfms", &forward[0][0], 16);
        print("  reverse", &reverse[0][0], 16);
    }
}

void print_borders()
{
    BorderStatus border;
    BorderInitialize(&border);
    border.path->count = kPoints;
    border.path->dim = 3;
    border.path->dvals = points;
    border.distance = -0.125;
    if (Border(&border) == 1)
        print("Border", border.output->dvals, 3 * border.output->count);

    BORDERStatus BORDER_;
    BORDERInitialize(&BORDER_);
    BORDER_.path->count = kPoints;
    BORDER_.path->dim = 3;
    BORDER_.path->dvals = points;
    BORDER_.distance = 0.25;
    if (BORDER(&BORDER_) == 1)
        print("BORDER", BORDER_.output->dvals, 3 * BORDER_.output->count);
}

void print_rays()
{
    double triangles[] = {0, 0, 1, 4, 0, 2, 1, 5, 3, 0, 0, 4, 4, 1, 5, 1, 5, 6};
    Data array = {3 * 3, 2, DATA_TYPE_DOUBLE, triangles, nullptr, nullptr};
    RayStatus rays;
    ray_initialize(&rays);
    ray_set_triangles(&array, &rays);
    ray_classify(&rays);
    double start[] = {1, 1, -1};
    double direction[] = {0.125, 0.25, 1};
    double distance = -1;
    const int hits = ray_intersect(start, direction, &rays, &distance);
    std::printf("ray_intersect %d", hits);
    print("", &distance, 1);
    ray_declassify(&rays);
}

} // namespace

int main(int count, char** arguments)
{
    if (count > 1 && std::strcmp(arguments[1], "host") == 0) {
        print_host_calls();
        return 0;
    }
    print_math();
    print_paths();
    print_borders();
    print_rays();
    return 0;
}
