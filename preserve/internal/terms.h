#pragma once

#include <iterator>
#include <limits>

#include "preserve/internal/mesh.h"
#include "preserve/status.h"

// What the solver keeps of a mesh: the work of a term is one file and one row.
namespace korvale::preserve {

/// What the terms of one evaluation share: which are measured, and the bound of a trial step. The trial is given up
/// (early exit) as soon as its energy cannot end below `bound`: what is added later is never negative, and adding such
/// values never lowers a sum, rounded or not. `volume` and `area` are the two energies that are added last; where there
/// is a bound they are measured first.
struct Ceiling {
    int32_t terms;                                           // the bits of those measured
    double bound = std::numeric_limits<double>::quiet_NaN(); // a NaN is never reached
    double volume = 0.0, area = 0.0;
    bool is_known = false; // volume and area are measured, as far as they are among the terms

    bool has_bound() const { return bound == bound; }
    bool is_reached(double energy) const { return energy + volume + area >= bound; }
};

/// A term: all that the record, the energy and the force know of it.
struct Term {
    int32_t bit; // in `flags`
    int slot;    // in `weights`

    /// Takes the reference measure of the mesh. False where that cannot be done.
    bool (*measure_reference)(PreserveStatus& s, const Mesh& mesh);

    /// Whether the references are numbers.
    bool (*has_finite_references)(const PreserveStatus& s, const Mesh& mesh);

    /// Measures the term and returns `energy` with that of every measure added in order, or some sum that has reached
    /// the ceiling.
    double (*add_energy)(PreserveStatus& s, const Mesh& mesh, double energy, Ceiling& ceiling);

    /// Adds the forces of the term to those of the mesh, which has positions and forces.
    void (*add_force)(const PreserveStatus& s, const Mesh& mesh);

    double weight(const PreserveStatus& s) const { return s.weights[slot]; }
};

/// Each in the file of its own: lengths.cpp, angles.cpp, and two in volume_area.cpp.
extern const Term kLengths, kAngles, kVolume, kArea;

/// In the order in which energies and forces are summed. Volume and area stay last: `Ceiling` counts on it.
inline constexpr const Term* kTerms[] = {&kLengths, &kAngles, &kVolume, &kArea};
static_assert(std::size(kTerms) == std::size(PreserveStatus{}.weights), "every term has a weight in the record");

// One term alone, as hosts may ask for it. Each function returns 1, or -1 for a null status.

/// Measures the reference points. Returns -1 as well, and switches the term off, where that cannot be done.
int take_reference(PreserveStatus* status, const Term& term);

/// Adds the energy at `cur_points` to that of the status.
int find_energy_of(PreserveStatus* status, const Term& term);

/// Adds the forces at `cur_points`.
int find_force_of(PreserveStatus* status, const Term& term);

/// The energy of one measure, or of each lane.
template <class V>
inline V penalty(double weight, const V& deviation)
{
    return weight * (deviation * deviation);
}

/// The sum with n energies added one after the other.
template <int n>
[[gnu::always_inline]] inline double with_all(double sum, const double* energies)
{
    if constexpr (n == 0)
        return sum;
    else
        return with_all<n - 1>(sum + energies[0], energies + 1);
}

/// Gives a measure array room for `count` values; it is made when missing and left alone when large enough.
bool make_room(DATAstruct*& d, int32_t count);

} // namespace korvale::preserve
