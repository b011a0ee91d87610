#pragma once

#include <functional>
#include <vector>

#include "border/status.h"
#include "data/datastruct.h"

// Outlines in the plane z = 0 for tests and benchmarks. All run counter-clockwise.
namespace korvale::test {

using Coordinates = std::vector<double>; // [n][3]

/// A circle of radius 10 whose radius wobbles: `waves` waves of `depth` each side of it, of unequal lengths.
Coordinates wiggly(int n, int waves, double depth);

/// A gear of `teeth` teeth, four points each, all alike.
Coordinates gear(int teeth, double root_radius, double tip_radius);

/// A comb: `teeth` narrow teeth on a bar, four points each and two, coordinates on a grid.
Coordinates comb(int teeth, double gap);

/// A coast: a polygon whose edges are broken `levels` times at a displaced midpoint; 4 * 2^levels points. `uniform`
/// gives random numbers from -1 to 1.
Coordinates coast(int levels, double roughness, const std::function<double()>& uniform);

/// Two corridors of one width, end to end, in ten points: parallel sides whose meetings all come at one distance.
Coordinates corridors();

/// The outline turned about the z axis, by an angle in radians.
Coordinates turned(Coordinates outline, double angle);

/// Releases the ten arrays of a record.
void release_arrays(BORDERStatus& status);

} // namespace korvale::test
