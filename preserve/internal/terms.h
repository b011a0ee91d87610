#pragma once

#include <limits>

#include "preserve/status.h"

// What the solver keeps of a mesh, one row per term.
namespace korvale::preserve {

/// The bound of a trial step. The trial is given up (early exit) as soon as its energy cannot end below `bound`: what
/// is added later is never negative, and adding such values never lowers a sum, rounded or not. `volume` and `area` are
/// the two energies that are added last; where there is a bound they are measured first.
struct Ceiling {
    double bound = std::numeric_limits<double>::quiet_NaN(); // a NaN is never reached
    double volume = 0.0, area = 0.0;
    bool is_known = false; // volume and area are measured

    bool has_bound() const { return bound == bound; }
    bool is_reached(double energy) const { return energy + volume + area >= bound; }
};

struct Term {
    int32_t bit; // in `flags`
    int slot;    // in `weights`

    /// Takes the reference measure. Returns 1 or -1.
    int (*init)(PreserveStatus*);

    /// Measures the term and returns `energy` with that of every measure added in order, or some sum that has reached
    /// the ceiling.
    double (*add_energy)(PreserveStatus& s, double energy, Ceiling& ceiling);

    /// Adds the forces of the term. Returns 1.
    int (*add_force)(PreserveStatus*);
};

/// In the order in which energies and forces are summed.
extern const Term kTerms[4];

/// The energies of the terms, as `Term::add_energy`. Those of volume and area are what the ceiling says, once they are
/// known; where they are not, the walk over the angles takes them along.
double add_length_energies(PreserveStatus& s, double energy, Ceiling& ceiling);
double add_angle_energies(PreserveStatus& s, double energy, Ceiling& ceiling);
double add_volume_energy(PreserveStatus& s, double energy, Ceiling& ceiling);
double add_area_energy(PreserveStatus& s, double energy, Ceiling& ceiling);

/// Measures volume and area as far as they are switched on in `terms`, in one walk, and notes their energies in
/// `ceiling`. Nothing is noted where neither is, or there are faces but no positions.
void measure_volume_and_area(PreserveStatus& s, int32_t terms, Ceiling& ceiling);

/// The energy of `s` at `cur_points`, all measures renewed; or `bound` or more as soon as that is known, with some
/// measures left as they were.
double evaluate(PreserveStatus& s, double bound = std::numeric_limits<double>::quiet_NaN());

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

/// Clears the bit of a term that cannot be measured. Returns -1.
int switch_off(PreserveStatus& s, int32_t bit);

} // namespace korvale::preserve
