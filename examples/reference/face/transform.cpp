#include "../example.h"

using korvale::Point, korvale::Transform;

EXAMPLE("korvale::Transform korvale::Transform::scaling korvale::Transform::translation korvale::Transform::point")
{
    const Transform place = Transform::translation({10, 0, 0}) * Transform::scaling({2, 2, 2}); // scales first
    const Point p = place.point({1, 2, 3});
    std::printf("%g %g %g\n", p[0], p[1], p[2]);
    // > 12 4 6
}

EXAMPLE("korvale::Transform::rotation korvale::Transform::vector")
{
    const Transform turn = Transform::rotation({0, 0, std::acos(-1.0) / 2}); // a quarter turn about z
    const Point north = turn.vector({1, 0, 0});
    std::printf("%.6f %.6f %.6f\n", north[0], north[1], north[2]);
    // > 0.000000 1.000000 0.000000
}

EXAMPLE("korvale::Transform::rotation_in_degrees")
{
    const Point north = Transform::rotation_in_degrees({0, 0, 90}).vector({1, 0, 0});
    std::printf("%.7f %.7f %g\n", north[0], north[1], north[2]); // 90 degrees by the factor 0.0174533
    // > -0.0000007 1.0000000 0
}

EXAMPLE("korvale::Transform::from korvale::Transform::inverse_of korvale::Srt")
{
    const korvale::Srt parts = {.scale = {2, 2, 2}, .translation = {10, 0, 0}};
    const Point p = Transform::from(parts).point({1, 2, 3}), back = Transform::inverse_of(parts).point(p);
    std::printf("%g %g %g, and back %g %g %g\n", p[0], p[1], p[2], back[0], back[1], back[2]);
    // > 12 4 6, and back 1 2 3
}

EXAMPLE("korvale::Transform::into_frame korvale::Transform::try_into_frame")
{
    const Transform seen = Transform::into_frame({10, 0, 0}, {0, 0, 1}, {0, 1, 0}); // x runs along y x z
    const Point p = seen.point({11, 5, 2});
    std::printf("%g %g %g\n", p[0], p[1], p[2]);
    if (auto none = Transform::try_into_frame({0, 0, 0}, {0, 0, 1}, {0, 0, 2}); !none)
        std::printf("%s lies along the reference\n", none.error().argument().data());
    // > 1 5 2
    // > z lies along the reference
}

EXAMPLE("korvale::Transform::rows")
{
    const Transform lift = Transform::translation({0, 0, 2});
    std::printf("%g of %zu\n", lift.rows()[11], lift.rows().size());
    // > 2 of 16
}

EXAMPLE("korvale::Transform::apply")
{
    std::vector<std::array<float, 2>> pixels = {{0, 0}, {1, 2}};
    const Transform right = Transform::translation({10, 0, 0});
    right.apply(pixels); // where they are
    std::printf("%g %g, %g %g\n", pixels[0][0], pixels[0][1], pixels[1][0], pixels[1][1]);
    // > 10 0, 11 2
}

EXAMPLE("korvale::Transform::inverse korvale::Transform::try_inverse")
{
    const Transform place = Transform::translation({10, 0, 0}) * Transform::scaling({2, 4, 8});
    const Point p = place.inverse() * Point{12, 8, 24};
    std::printf("%g %g %g\n", p[0], p[1], p[2]);
    if (auto none = Transform::scaling({1, 0, 1}).try_inverse(); !none)
        std::printf("%s\n", none.error().what());
    // > 1 2 3
    // > Transform::inverse: transform must be one that another undoes, but its determinant is 0
}

EXAMPLE("korvale::Transform::transposed")
{
    const Transform t = Transform::translation({7, 8, 9}).transposed();
    std::printf("%g %g %g\n", t(3, 0), t(3, 1), t(3, 2));
    // > 7 8 9
}

EXAMPLE("korvale::Transform::take_apart korvale::at_pole")
{
    const korvale::Srt parts = Transform::from({{1, 2, 3}, {0.25, 0, 0.5}, {7, 8, 9}}).take_apart();
    std::printf("%.3f %.3f, %s\n", parts.rotation[0], parts.rotation[2], korvale::at_pole(parts) ? "pole" : "no pole");
    // > 0.250 0.500, no pole
}
