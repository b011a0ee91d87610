// Caps of bands. A quarter turn from the direction to the border to that beyond the line is halved again and again.
// Edges square to the directions, at the distance, are outside the arc around the end, and the corners in which they
// meet are the cap. All is done in the frame of the end, so caps of all ends have the same shape to the bit. A square
// cap is one whose quarters are not halved.
#include "door/internal/caps.h"

#include "door/internal/joins.h"

namespace korvale::door {

Caps caps_of(const korvale_band_options& options, double distance)
{
    constexpr double kQuarter = 0.70710678118654752; // the cosine of half of it
    constexpr double kLeast = 1e-06;                 // of the distance: a limit of 1 would want the arc itself
    double least = 1.0 / options.miter_limit;
    if (options.cap == KORVALE_CAP_ROUND)
        least = std::max(least, least_cosine(options.tolerance, distance));
    least = std::min(least, least_cosine(kLeast, 1.0));
    return {options.cap != KORVALE_CAP_FLAT && options.closed == 0, options.both_sides != 0,
            halvings_to(kQuarter, least)};
}

Vector<Place> cap_from(const Caps& caps, const Place& step, const Place& beyond)
{
    const Vector<Place> directions = halved({1.0, 0.0}, {0.0, 1.0}, 1.0, caps.halvings);
    Vector<Place> corners;
    for (size_t i = 0; i + 1 < directions.size(); ++i) {
        const Place &a = directions[i], &b = directions[i + 1];
        corners.push_back((1.0 / (1.0 + dot(a, b))) * (a + b));
    }
    if (caps.both_sides)
        for (size_t i = corners.size(); i-- > 0;)
            corners.push_back({-corners[i].x, corners[i].y});
    else
        corners.push_back({0.0, 1.0});
    for (Place& corner : corners)
        corner = corner.x * step + corner.y * beyond;
    return corners;
}

} // namespace korvale::door
