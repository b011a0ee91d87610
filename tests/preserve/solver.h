#pragma once

#include <vector>

#include "preserve/angles.h"
#include "preserve/compute.h"
#include "preserve/evaluation.h"
#include "preserve/lengths.h"
#include "preserve/status.h"
#include "preserve/volume_area.h"
#include "tests/support/arrays.h"
#include "tests/support/meshes.h"

namespace korvale::test {

/// A status with its mesh, initialised from zero; releases all, edges the library built included.
class Solver {
public:
    /// From faces alone, or with the edges given (pairs).
    explicit Solver(const Mesh& mesh, const std::vector<int>& edges = {});
    ~Solver();
    Solver(const Solver&) = delete;
    Solver& operator=(const Solver&) = delete;

    PreserveStatus* get() { return &status_; }
    operator PreserveStatus*() { return &status_; }
    PreserveStatus* operator->() { return &status_; }

    /// What `PreserveInitialize` returned.
    int result() const { return result_; }

    /// The array that is evaluated and moved, at first the reference points, and where it is now.
    DATAstruct* moved() { return moved_; }
    std::vector<double> positions() const { return values_of(*moved_); }
    void place(const std::vector<double>& positions);

    /// Tags the points given.
    void tag(const std::vector<int>& points);

    /// Evaluates energy and forces where the moved points are.
    double energy();
    double energy_at(const std::vector<double>& positions);
    std::vector<double> force();

private:
    OwnedDATA points_, edges_, face_sizes_, face_points_, moved_, tags_;
    PreserveStatus status_ = {};
    int result_;
};

/// Switches on every term in `terms` with the weight, and returns whether all could be.
bool switch_on(Solver& solver, int terms, double weight = 1.0);

constexpr int kAllTerms = PRESERVE_LENGTH | PRESERVE_FACE_ANGLE | PRESERVE_VOLUME | PRESERVE_AREA;

} // namespace korvale::test
