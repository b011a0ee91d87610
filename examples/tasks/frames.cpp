// An outline in a tilted plane laid flat and back, and frames for a section along a path and around a planar loop.

#include <cmath>
#include <cstdio>
#include <vector>

#include <korvale.hpp>

using korvale::Point;

namespace {

// To thousandths, without a minus before a zero.
double rounded(double v)
{
    return std::round(1000 * v) / 1000 + 0.0;
}

} // namespace

int main()
{
    const korvale::Transform tilt =
        korvale::Transform::rotation({0.6, 0.3, 0}) * korvale::Transform::translation({0, 0, 5});
    std::vector<Point> outline = {{0, 0, 0}, {4, 0, 0}, {4, 3, 0}, {2, 1, 0}, {0, 3, 0}};
    tilt.apply(outline);
    const Point start = outline[0];
    const korvale::Flattening way = korvale::flatten(outline);
    way.to_plane.apply(outline);
    std::printf("flat:");
    for (const Point& p : outline)
        std::printf(" (%g, %g, %g)", rounded(p[0]), rounded(p[1]), rounded(p[2]));
    way.from_plane.apply(outline);
    std::printf("\nback at (%g, %g, %g) from (%g, %g, %g)\n", rounded(outline[0][0]), rounded(outline[0][1]),
                rounded(outline[0][2]), rounded(start[0]), rounded(start[1]), rounded(start[2]));

    std::vector<Point> helix;
    for (int i = 0; i < 5; ++i)
        helix.push_back({3 * std::cos(0.5 * i), 3 * std::sin(0.5 * i), 0.4 * i});
    for (const korvale::Transform& frame : korvale::frames(helix)) {
        const Point along = frame.vector({0, 0, -1}), beside = frame.point({1, 0, 0}); // z points back
        std::printf("along %6.3f %6.3f %6.3f  beside %6.3f %6.3f %6.3f\n", along[0], along[1], along[2], beside[0],
                    beside[1], beside[2]);
    }

    std::vector<Point> ring;
    for (int i = 0; i < 7; ++i)
        ring.push_back({std::cos(i * 0.8975979), std::sin(i * 0.8975979), 0});
    tilt.apply(ring);
    int finite = 0;
    for (const korvale::Transform& frame : korvale::frames(ring, true))
        finite += std::isfinite(frame(0, 0));
    std::printf("%d of 7 frames of a planar loop are numbers\n", finite);
}
