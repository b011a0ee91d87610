#include "../example.h"

EXAMPLE("make_identity")
{
    Xfm m;
    make_identity(m);
    PrintMatrix(stdout, m);
    // > 1.000000  0.000000  0.000000  0.000000
    // > 0.000000  1.000000  0.000000  0.000000
    // > 0.000000  0.000000  1.000000  0.000000
    // > 0.000000  0.000000  0.000000  1.000000
}

EXAMPLE("TransformVector")
{
    double scale[] = {1, 2, 1}, direction[] = {3, 3, 3}, scaled[3];
    Xfm m;
    ScaleMatrix(scale, m);
    m[0][3] = 100; // a translation, which directions do not feel
    TransformVector(m, direction, scaled);
    std::printf("%g %g %g\n", scaled[0], scaled[1], scaled[2]);
    // > 3 6 3
}

EXAMPLE("TransformPoint")
{
    double along[] = {100, 0, 0}, point[] = {3, 4, 5};
    Xfm m;
    TranslateMatrix(along, m);
    TransformPoint(m, point, point); // in place
    std::printf("%g %g %g\n", point[0], point[1], point[2]);
    // > 103 4 5
}

EXAMPLE("xfm_pnt")
{
    double lift[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 2, 0, 0, 0, 1}; // z + 2
    double point[] = {3, 4, 5}, lifted[3];
    xfm_pnt(lift, point, lifted);
    std::printf("%g %g %g\n", lifted[0], lifted[1], lifted[2]);
    // > 3 4 7
}

EXAMPLE("MatrixMultiply")
{
    double twice[] = {2, 2, 2}, right[] = {1, 0, 0}, point[] = {1, 1, 1}, moved[3];
    Xfm scale, move, both;
    ScaleMatrix(twice, scale);
    TranslateMatrix(right, move);
    MatrixMultiply(move, scale, both); // scales first
    TransformPoint(both, point, moved);
    std::printf("%g %g %g\n", moved[0], moved[1], moved[2]);
    // > 3 2 2
}

EXAMPLE("MatrixTranspose")
{
    double radians[] = {0.3, 0.2, 0.1}, point[] = {1, 2, 3};
    Xfm turn, back;
    rotation_matrix(radians, turn);
    MatrixTranspose(turn, back); // of a rotation, its inverse
    TransformVector(turn, point, point);
    TransformVector(back, point, point);
    std::printf("%.6f %.6f %.6f\n", point[0], point[1], point[2]);
    // > 1.000000 2.000000 3.000000
}

EXAMPLE("ScaleMatrix")
{
    double to_metres[] = {0.0254, 0.0254, 0.0254}, inches[] = {100, 200, 0};
    Xfm m;
    ScaleMatrix(to_metres, m);
    TransformPoint(m, inches, inches);
    std::printf("%g %g %g\n", inches[0], inches[1], inches[2]);
    // > 2.54 5.08 0
}

EXAMPLE("TranslateMatrix")
{
    double to_middle[] = {-5, -5, 0}, corner[] = {10, 10, 0};
    Xfm m;
    TranslateMatrix(to_middle, m);
    TransformPoint(m, corner, corner);
    std::printf("%g %g %g\n", corner[0], corner[1], corner[2]);
    // > 5 5 0
}

EXAMPLE("xfm2array")
{
    double along[] = {7, 8, 9}, flat[16];
    Xfm m;
    TranslateMatrix(along, m);
    xfm2array(m, flat); // row by row
    std::printf("%g %g %g\n", flat[3], flat[7], flat[11]);
    // > 7 8 9
}

EXAMPLE("array2xfm")
{
    double flat[16] = {1, 0, 0, 7, 0, 1, 0, 8, 0, 0, 1, 9, 0, 0, 0, 1};
    Xfm m;
    array2xfm(flat, m);
    std::printf("%g %g %g\n", m[0][3], m[1][3], m[2][3]);
    // > 7 8 9
}

EXAMPLE("PrintMatrix")
{
    double along[] = {7, 8.5, 9};
    Xfm m;
    TranslateMatrix(along, m);
    PrintMatrix(stdout, m);
    // > 1.000000  0.000000  0.000000  7.000000
    // > 0.000000  1.000000  0.000000  8.500000
    // > 0.000000  0.000000  1.000000  9.000000
    // > 0.000000  0.000000  0.000000  1.000000
}
