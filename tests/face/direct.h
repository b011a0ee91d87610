#pragma once

#include <korvale.hpp>

#include <functional>

#include "tests/support/arrays.h"
#include "tests/support/bits.h"
#include "tests/support/random.h"

// Calls of the fixed interface, written out plainly, for comparison with the face.
namespace korvale::test {

using Outline = std::vector<Point>;

std::vector<double> coordinates(AnyPoints points);

/// The border by `BORDER`, and the record's `dead` and `merge`.
struct DirectBorder {
    std::vector<double> border;
    std::vector<int> dead, merge;
};
DirectBorder border_by_record(const Outline& outline, double distance, double height, int keep, int split);

/// All borders by `BORDER` on a list.
std::vector<std::vector<double>> borders_by_record(const std::vector<Outline>& outlines, double distance, double height,
                                                   int keep, int split);

/// The four calls that make a band.
std::vector<double> band_by_record(const Outline& line, double distance);

/// A star-shaped outline of n points about a centre, in the plane z = 0.
Outline random_outline(Random& random, int n, double x, double y, double size);

/// A turn and a move.
Transform random_placement(Random& random);

/// The message of the `Error` that `call` throws, or "" when it throws none.
std::string refusal_of(const std::function<void()>& call);

/// A cube of side 2 about the origin, its triangles facing outwards.
Mesh cube();

/// Whether every edge of every triangle is run through as often in the other direction.
bool is_closed(const Mesh& mesh);

} // namespace korvale::test
