#include "preserve/internal/energy_wide.h"

#include "platform/module_start.h"
#include "preserve/internal/measures.h"

#ifdef KORVALE_HAS_WIDE_LANES

namespace korvale {
namespace {

KORVALE_AVX2_INLINE Quad penalties(double weight, Quad measure, const double* reference)
{
    const Quad deviation = measure - quad_at(reference);
    return all(weight) * (deviation * deviation);
}

/// The cosines of the corners of four triangles. False where a corner has a neighbour at its own place.
KORVALE_AVX2_INLINE bool corner_cosines(const double* p, const int32_t* corners, Quad (&cosines)[3])
{
    const Quad3 p0 = points_at(p, corners, 3), p1 = points_at(p, corners + 1, 3), p2 = points_at(p, corners + 2, 3);
    // Both directions by subtraction: the sign of a zero reaches the cosine.
    const Quad3 to1 = p1 - p0, to2 = p2 - p1, to0 = p0 - p2;
    const Quad3 from1 = p0 - p1, from2 = p1 - p2, from0 = p2 - p0;
    const Quad side01 = root(dot(to1, to1)), side12 = root(dot(to2, to2)), side20 = root(dot(to0, to0));
    const Quad arms0 = side01 * side20, arms1 = side12 * side01, arms2 = side20 * side12;
    if ((lanes_equal(arms0, all(0.0)) | lanes_equal(arms1, all(0.0)) | lanes_equal(arms2, all(0.0))) != 0)
        return false;
    cosines[0] = dot(to1, from0) / arms0;
    cosines[1] = dot(to2, from1) / arms1;
    cosines[2] = dot(to0, from2) / arms2;
    return true;
}

/// Adds the energies of the corners of four triangles that lie one after the other.
KORVALE_AVX2_INLINE double add_in_order(const double* energies, const int32_t* corners, const Tags& tags, double energy)
{
    for (int t = 0; t < 4; ++t) {
        const int32_t* const c = corners + 3 * t;
        if (tags.contain(c[0]) && tags.contain(c[1]) && tags.contain(c[2]))
            continue;
        energy += energies[3 * t];
        energy += energies[3 * t + 1];
        energy += energies[3 * t + 2];
    }
    return energy;
}

} // namespace

KORVALE_AVX2 double add_energies_wide(const LengthTerm& term, double energy, const Refusal& refusal)
{
    int32_t e = 0;
    for (; e <= term.edges.count - 4; e += 4) {
        const int32_t* const ends = term.edges.ends + 2 * int64_t{e};
        const Quad3 along = points_at(term.p, ends, 2) - points_at(term.p, ends + 1, 2);
        const Quad lengths = root(dot(along, along));
        put(term.measure + e, lengths);
        double energies[4];
        put(energies, penalties(term.weight, lengths, term.reference + e));
        for (int l = 0; l < 4; ++l)
            if (!term.tags.contain(ends[2 * l]) || !term.tags.contain(ends[2 * l + 1]))
                energy += energies[l];
        if (refusal.is_due(energy))
            return energy;
    }
    return add_edge_energies(term, e, energy, refusal);
}

KORVALE_AVX2 double add_energies_wide(const AngleTerm& term, double energy, const Refusal& refusal)
{
    const Faces& faces = term.faces;
    for (int32_t f = 0, first = 0; f < faces.count && !refusal.is_due(energy);) {
        Quad cosines[3], listed[3];
        if (!are_four_triangles(faces.sizes, faces.count, f) ||
            !corner_cosines(term.p, faces.corners + first, cosines)) {
            energy = add_face_energies(term, f, first, energy);
            first += faces.sizes[f++];
            continue;
        }
        double energies[12];
        list_corners(cosines, listed);
        for (int i = 0; i < 3; ++i) {
            put(term.measure + first + 4 * i, listed[i]);
            put(energies + 4 * i, penalties(term.weight, listed[i], term.reference + first + 4 * i));
        }
        energy = add_in_order(energies, faces.corners + first, term.tags, energy);
        f += 4;
        first += 12;
    }
    return energy;
}

KORVALE_AVX2 void measure_faces_wide(const double* p, const Faces& faces, double& volume, double& area)
{
    double volume_sum = 0.0, area_sum = 0.0;
    for (int32_t f = 0, first = 0; f < faces.count;) {
        const int32_t* const corners = faces.corners + first;
        if (!are_four_triangles(faces.sizes, faces.count, f)) {
            add_face_measures(p, corners, faces.sizes[f], volume_sum, area_sum);
            first += faces.sizes[f++];
            continue;
        }
        const Quad3 p0 = points_at(p, corners, 3), p1 = points_at(p, corners + 1, 3), p2 = points_at(p, corners + 2, 3);
        const Quad3 far = cross(p1, p2), normal = cross(p0, p1) + far + cross(p2, p0);
        double volumes[4], areas[4];
        put(volumes, dot(p0, far));
        put(areas, root(dot(normal, normal)));
        for (int t = 0; t < 4; ++t) {
            volume_sum += volumes[t];
            area_sum += areas[t];
        }
        f += 4;
        first += 12;
    }
    volume = volume_sum;
    area = area_sum;
}

} // namespace korvale

#endif
