// A host program in C++14 that calls every subsystem and prints what comes back bit for bit.
#include <cstdio>

#ifdef HOST_INCLUDES_BY_FOLDER
#include <korvale/korvale.h>
#else
#include <korvale.h>
#endif

static_assert(KORVALE_VERSION_MAJOR == 1, "a host can ask for the version while it is compiled");

#ifdef __has_include
#if __has_include("border/border.h")
#error "the library's folders are on the path of its hosts"
#endif
#endif

namespace {

void print(const char* what, const double* values, int n)
{
    std::printf("%s", what);
    for (int i = 0; i < n; ++i)
        std::printf(" %a", values[i]);
    std::printf("\n");
}

double outline[] = {0.5, 0.25, 1, 4, 0.5, 1.5, 5, 4.25, 2, 3, 2.5, 1.75, 0.75, 4, 2.5};

void print_math()
{
    double v[] = {0.1, 0.2, 0.3};
    double w[] = {3, -1, 2};
    const double dot = dot_product(v, w);
    print("dot_product", &dot, 1);
    normalize(w);
    print("normalize", w, 3);
}

void print_frames()
{
    Data path;
    DataInitialize(&path);
    path.count = 5;
    path.dim = 3;
    path.dvals = outline;
    Xfm frames[5];
    path2xfm(&path, 0, frames);
    print("path2xfm", &frames[2][0][0], 16);
}

int print_border()
{
    BORDERStatus border;
    BORDERInitialize(&border);
    border.path->count = 5;
    border.path->dim = 3;
    DATAAllocate(border.path);
    for (int i = 0; i < 15; ++i)
        border.path->dvals[i] = outline[i];
    border.distance = 0.25;
    if (BORDER_BORDER(&border) != 1)
        return 1;
    print("BORDER_BORDER", border.output->dvals, 3 * border.output->count);
    return 0;
}

int print_equation()
{
    EquationSystem equations;
    EqSystemInitialize(&equations);
    char names[] = "x y";
    char text[] = "y = (x - 0.7) / 3 ^ 2";
    if (EqParseVariables(&equations, names, 0) != 4 || EqParseEquation(&equations, text) < 0)
        return 1;
    EqSetVariable(&equations, 2, 0.1);
    const double value = EqEvaluate(&equations, 0);
    print("EqEvaluate", &value, 1);
    EqSystemDispose(&equations);
    return 0;
}

int print_ray()
{
    double corners[] = {0, 0, 1, 4, 0, 2, 1, 5, 3, 0, 0, 4, 4, 1, 5, 1, 5, 6};
    Data triangles;
    DataInitialize(&triangles);
    triangles.count = 2;
    triangles.dim = 9;
    triangles.dvals = corners;
    RayStatus rays;
    if (ray_initialize(&rays) != 1)
        return 1;
    ray_set_triangles(&triangles, &rays);
    ray_classify(&rays);
    double start[] = {1, 1, -1};
    double direction[] = {0.125, 0.25, 1};
    double distance = -1;
    if (ray_intersect(start, direction, &rays, &distance) != 2)
        return 1;
    print("ray_intersect", &distance, 1);
    ray_declassify(&rays);
    DataDispose(&rays.bbox);
    return 0;
}

} // namespace

int main()
{
    if (_Initializerkorvale::ref != 2) // both stages of loading, a static link's as well
        return 1;
    print_math();
    print_frames();
    return print_border() || print_equation() || print_ray();
}
