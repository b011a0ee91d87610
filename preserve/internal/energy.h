#pragma once

#include <limits>

#include "preserve/internal/mesh.h"

// The energies of the terms. Their sums are formed in order, measure by measure; only the measures themselves are
// computed side by side where the processor has the lanes.
namespace korvale::inside {

/// When a sum of energies need not be finished: as soon as it cannot end below `bound`. Sums of values that are not
/// negative never fall, rounded or not, so what has been added is enough to know.
struct Refusal {
    double bound = std::numeric_limits<double>::quiet_NaN(); // a NaN refuses nothing
    double volume = 0.0, area = 0.0;                         // energies that are still to be added, in this order

    bool is_due(double energy) const { return energy + volume + area >= bound; }
};

/// What the length term reads, and where it leaves the lengths.
struct LengthTerm {
    const double* p;
    Edges edges;
    Tags tags;
    double weight;
    const double* reference; // [edges]
    double* measure;         // [edges]
};

/// What the angle term reads, and where it leaves the cosines.
struct AngleTerm {
    const double* p;
    Faces faces;
    Tags tags;
    double weight;
    const double* reference; // [corners]
    double* measure;         // [corners]
};

/// A term of `s` at `cur_points`. False where its arrays are missing or too short for the mesh.
bool find_term(const PreserveStatus& s, LengthTerm& term);
bool find_term(const PreserveStatus& s, AngleTerm& term);

/// The energy of one measure.
inline double penalty(double weight, double measure, double reference)
{
    const double deviation = measure - reference;
    return weight * (deviation * deviation);
}

/// Measures the term and returns `energy` with that of every measure added, or some sum that is due for refusal.
double add_energies(const LengthTerm& term, double energy, const Refusal& refusal);
double add_energies(const AngleTerm& term, double energy, const Refusal& refusal);

/// Measures the volume and area terms that are switched on in `terms` in one walk. False where there are faces, but no
/// positions.
bool measure_volume_and_area(PreserveStatus& s, int terms);

/// The energy of the volume and area terms with the measures they have now.
double volume_energy(const PreserveStatus& s);
double area_energy(const PreserveStatus& s);

/// The same for edges first .. and face f, whose first corner is `first`, alone.
double add_edge_energies(const LengthTerm& term, int32_t first, double energy, const Refusal& refusal);
double add_face_energies(const AngleTerm& term, int32_t f, int32_t first, double energy);

} // namespace korvale::inside
