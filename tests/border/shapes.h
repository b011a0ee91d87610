#pragma once

#include "tests/border/records.h"
#include "tests/support/random.h"

// Outlines for random tests, in the plane z = 0. Most of them run counter-clockwise.
namespace korvale::test {

/// A circle of radius 10 whose radius wobbles: `waves` waves of `depth` each side of it, plus noise.
Coordinates wiggly(int n, int waves, double depth, double noise, Random& random);

/// A gear of `teeth` teeth, four points each, all alike.
Coordinates gear(int teeth, double root_radius, double tip_radius);

/// A comb: `teeth` narrow teeth on a bar, coordinates on a grid.
Coordinates comb(int teeth, double gap);

/// A coast: a polygon whose edges are broken `levels` times at a displaced midpoint.
Coordinates coast(int levels, double roughness, Random& random);

/// Points on an integer grid in random order, with many equal coordinates, repeated points and straight runs.
Coordinates grid_walk(int n, int size, Random& random);

/// Points anywhere: mostly crosses itself.
Coordinates scramble(int n, Random& random);

/// One of all of these, of at most `most` points or a little more, moved, scaled and made awkward at times.
Coordinates any_outline(int most, Random& random);

} // namespace korvale::test
