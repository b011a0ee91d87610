#include "../example.h"

EXAMPLE("rotation_matrix")
{
    double quarter[] = {0, 0, std::acos(-1.0) / 2}, east[] = {1, 0, 0}, turned[3];
    Xfm turn;
    rotation_matrix(quarter, turn);
    TransformVector(turn, east, turned);
    std::printf("%.6f %g %g\n", turned[0], turned[1], turned[2]);
    // > 0.000000 1 0
}

EXAMPLE("RotationMatrix")
{
    double degrees[] = {0, 0, 90}, east[] = {1, 0, 0}, turned[3];
    Xfm turn;
    RotationMatrix(degrees, turn);
    TransformVector(turn, east, turned);
    std::printf("%.7f %.7f %g\n", turned[0], turned[1], turned[2]); // degrees are converted with 0.0174533
    // > -0.0000007 1.0000000 0
}

EXAMPLE("RotateMatrix")
{
    double degrees[] = {90, 0, 0}, north[] = {0, 1, 0}, turned[3];
    Xfm turn;
    RotateMatrix(degrees, turn); // about x: y turns to z
    TransformVector(turn, north, turned);
    std::printf("%g %.6f %.6f\n", turned[0], std::fabs(turned[1]), turned[2]);
    // > 0 0.000001 1.000000
}

EXAMPLE("SRT2Transform")
{
    double twice[] = {2, 2, 2}, none[] = {0, 0, 0}, along[] = {10, 0, 0}, point[] = {1, 2, 3}, placed[3];
    Xfm place;
    SRT2Transform(twice, none, along, place);
    TransformPoint(place, point, placed);
    std::printf("%g %g %g\n", placed[0], placed[1], placed[2]);
    // > 12 4 6
}

EXAMPLE("SRT2InvTransform")
{
    double twice[] = {2, 2, 2}, none[] = {0, 0, 0}, along[] = {10, 0, 0}, placed[] = {12, 4, 6}, point[3];
    Xfm back;
    SRT2InvTransform(twice, none, along, back);
    TransformPoint(back, placed, point);
    std::printf("%g %g %g\n", point[0], point[1], point[2]);
    // > 1 2 3
}

EXAMPLE("Transform2SRT")
{
    double scale[] = {1, 2, 3}, rot[] = {0.25, 0, 0.5}, trans[] = {7, 8, 9};
    Xfm m;
    SRT2Transform(scale, rot, trans, m);
    Transform2SRT(m, scale, rot, trans);
    std::printf("scale %.3f %.3f %.3f\n", scale[0], scale[1], scale[2]);
    std::printf("turn %.3f %.3f %.3f, move %g %g %g\n", rot[0], rot[1] + 0.0, rot[2], trans[0], trans[1], trans[2]);
    // > scale 1.000 2.000 3.000
    // > turn 0.250 0.000 0.500, move 7 8 9
}
