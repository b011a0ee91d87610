#include "../example.h"

EXAMPLE("dot_product")
{
    double force[] = {3, 4, 0}, along[] = {0, 1, 0};
    std::printf("%g of the force acts along y\n", dot_product(force, along));
    // > 4 of the force acts along y
}

EXAMPLE("cross_product")
{
    double a[] = {2, 0, 0}, b[] = {0, 3, 0}, normal[3];
    cross_product(a, b, normal);
    std::printf("%g %g %g, and the triangle has the area %g\n", normal[0], normal[1], normal[2], norm(normal) / 2);
    // > 0 0 6, and the triangle has the area 3
}

EXAMPLE("norm")
{
    double step[] = {2, 3, 6};
    std::printf("%g\n", norm(step));
    // > 7
}

EXAMPLE("normalize")
{
    double direction[] = {0, 3, 4}, none[] = {0, 0, 0};
    std::printf("%d: ", normalize(direction));
    std::printf("%g %g %g\n", direction[0], direction[1], direction[2]);
    std::printf("%d: too short to have a direction\n", normalize(none));
    // > 1: 0 0.6 0.8
    // > -1: too short to have a direction
}

EXAMPLE("angle")
{
    double east[] = {1, 0, 0}, northeast[] = {5, 5, 0}, none[] = {0, 0, 0};
    std::printf("%.6f\n", angle(east, northeast)); // a quarter of pi
    std::printf("%d\n", std::isnan(angle(east, none)));
    // > 0.785398
    // > 1
}
