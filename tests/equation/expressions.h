#pragma once

#include <string>

#include "tests/support/random.h"

namespace korvale::test {

/// A random well-formed expression over the variables x, y, z, numbers, the built-in functions and the two-argument
/// functions MEAN and LESS. `depth` bounds the nesting of parentheses.
std::string random_expression(Random& random, int depth);

/// Deletes, doubles, replaces or inserts a few characters, or cuts the text off.
std::string mutated(Random& random, std::string text);

} // namespace korvale::test
