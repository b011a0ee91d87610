#pragma once

#include <vector>

#include "tests/support/draws.h"
#include "tests/support/meshes.h"

namespace korvale::test {

/// A closed triangle mesh of random kind, size, shape and numbering.
Mesh random_closed_mesh(Draws& random);

/// Faces of 0 to 7 corners anywhere among `points` points, repeated corners and faces included; nothing is closed.
Mesh random_soup(Draws& random, int points, int faces);

/// The same with negative sizes in between, which lead back so that faces share corners of the list, and sometimes with
/// corners behind the last face.
Mesh random_overlapping_soup(Draws& random, int points, int faces);

/// Every coordinate moved by up to `amount`.
std::vector<double> shaken(Draws& random, std::vector<double> points, double amount);

} // namespace korvale::test
