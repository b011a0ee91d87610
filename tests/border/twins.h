#pragma once

#include <cstdint>
#include <vector>

#include <gtest/gtest.h>

#include "border/internal/wavefront.h"
#include "tests/reference/sweep.h"
#include "tests/support/outlines.h"
#include "tests/support/random.h"

namespace korvale::test {

/// The rows of these arrays.
border::Rows rows_in(reference::SweepArrays& arrays);

/// A quick sweep in these arrays.
border::Sweep quick_sweep(reference::SweepArrays& arrays, double distance, bool split_events = true);

/// The same sweep twice: in arrays for the documented steps, as a wavefront for the quick ones. What is set here is set
/// in both, for the live vertices, and the wavefront keeps the promises that it gives to a step.
class Twins {
public:
    Twins(const Coordinates& path, double distance);

    /// Buries about one vertex in `rarity`, but leaves three, and packs them away.
    void bury_some(int rarity, Random& random);

    /// Edges in any direction, some straight on, some nearly back or all the way back, as if just measured.
    void set_any_edges(Random& random);
    void set_any_velocities(Random& random);
    void set_any_rates(Random& random);

    /// All of these, and the lines fitted.
    void set_anything(Random& random);

    /// Whether all arrays are equal once the wavefront has handed everything back.
    testing::AssertionResult are_equal();

    /// A place of the wavefront as an index in the arrays; -1 for -1.
    int32_t vertex_at(int32_t place) const { return place < 0 ? -1 : w.id[place]; }

private:
    reference::SweepArrays documented_, quick_;
    border::Rows rows_;
    std::vector<double> memory_;

public:
    reference::Sweep steps;
    border::Wavefront w;
};

} // namespace korvale::test
