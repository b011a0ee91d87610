#pragma once

#include "tests/border/records.h"
#include "tests/support/random.h"

// Outlines for random tests beside those of support/outlines.h, in the plane z = 0. Most of them run counter-clockwise.
namespace korvale::test {

/// The outline with every point moved along its radius by up to `noise`, for a radius of 10.
Coordinates rough(Coordinates points, double noise, Random& random);

/// `coast` of support/outlines.h.
Coordinates coast(int levels, double roughness, Random& random);

/// Points on an integer grid in random order, with many equal coordinates, repeated points and straight runs.
Coordinates grid_walk(int n, int size, Random& random);

/// Points anywhere: mostly crosses itself.
Coordinates scramble(int n, Random& random);

/// One of all of these, of at most `most` points or a little more, moved, scaled and made awkward at times.
Coordinates any_outline(int most, Random& random);

} // namespace korvale::test
