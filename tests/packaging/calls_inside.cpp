// Prints results of the library bit for bit. With the argument "host" they come from calls that a host makes to norm,
// angle, power and normalize, which a preloaded library may intercept; without, from functions of the library that work
// with lengths, angles, powers and directions.
#include <cstdio>
#include <cstring>
#include <initializer_list>

#include "korvale.h"

namespace {

void print(const char* what, const double* values, int n)
{
    std::printf("%s", what);
    for (int i = 0; i < n; ++i)
        std::printf(" %a", values[i]);
    std::printf("\n");
}

double outline[] = {0.5, 0.25, 1, 4, 0.5, 1.5, 5, 4.25, 2, 3, 2.5, 1.75, 0.75, 4, 2.5};
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
    find_line(outline, outline + 6, line);
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
    path.dvals = outline;
    DATAstruct PATH;
    DATAInitialize(&PATH);
    PATH.count = kPoints;
    PATH.dim = 3;
    PATH.dvals = outline;

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
    border.path->dvals = outline;
    border.distance = -0.125;
    if (Border(&border) == 1)
        print("Border", border.output->dvals, 3 * border.output->count);

    BORDERStatus banded;
    BORDERInitialize(&banded);
    banded.path->count = kPoints;
    banded.path->dim = 3;
    banded.path->dvals = outline;
    banded.distance = 0.25;
    if (BORDER(&banded) == 1)
        print("BORDER", banded.output->dvals, 3 * banded.output->count);
}

void print_equations()
{
    char variables[] = "x, y";
    char equation[] = "y = SIN(x) ^ 3 - x / 7";
    EquationSystem equations;
    EqSystemInitialize(&equations);
    EqParseVariables(&equations, variables, 0);
    EqParseEquation(&equations, equation);
    char x[] = "x";
    EqSetVariableByName(&equations, x, 0.75);
    EqEvaluate(&equations, 0);
    char y[] = "y";
    const double value = EqReadVariableByName(&equations, y);
    print("EqEvaluate", &value, 1);
    EqSystemDispose(&equations);
}

void print_mesh()
{
    double reference[] = {0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0, 1};
    double deformed[] = {0, 0.125, 0, 1.5, 0, 0, 0, 1, 0.25, 0, 0, 0.75};
    int32_t sizes[] = {3, 3, 3, 3};
    int32_t corners[] = {0, 2, 1, 0, 1, 3, 0, 3, 2, 1, 2, 3};
    DATAstruct points, now, face_sizes, face_points;
    for (DATAstruct* array : {&points, &now, &face_sizes, &face_points})
        DATAInitialize(array);
    points.count = now.count = 4;
    points.dim = now.dim = 3;
    points.dvals = reference;
    now.dvals = deformed;
    face_sizes.type = face_points.type = DATA_TYPE_INT;
    face_sizes.dim = face_points.dim = 1;
    face_sizes.count = 4;
    face_sizes.ivals = sizes;
    face_points.count = 12;
    face_points.ivals = corners;

    PreserveStatus status = {};
    PreserveInitialize(&status, &points, nullptr, &face_sizes, &face_points);
    for (const int term : {PRESERVE_LENGTH, PRESERVE_FACE_ANGLE, PRESERVE_VOLUME, PRESERVE_AREA})
        PreservePreserve(&status, term, 1.0);
    PreserveCompute(&status, &now, 3);
    print("PreserveCompute", now.dvals, 12);
    print("  energy", &status.energy, 1);
    PreserveDispose(&status);
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
    print_equations();
    print_mesh();
    print_rays();
    return 0;
}
