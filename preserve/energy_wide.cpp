#include "preserve/internal/energy_wide.h"

#include "preserve/internal/measures.h"

#ifdef KORVALE_HAS_WIDE_LANES

namespace korvale::inside {
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

/// Adds the energies of four edges to `energy` in order, those with a free end if any point is tagged.
KORVALE_AVX2_INLINE double add_edges(const double* energies, const int32_t* ends, const Tags& tags, double energy)
{
    if (tags.count == 0)
        return energy + energies[0] + energies[1] + energies[2] + energies[3];
    for (int l = 0; l < 4; ++l)
        if (!tags.contain(ends[2 * l]) || !tags.contain(ends[2 * l + 1]))
            energy += energies[l];
    return energy;
}

/// Adds the energies of the corners of four triangles, those with a free point if any is tagged.
KORVALE_AVX2_INLINE double add_triangles(const double* energies, const int32_t* corners, const Tags& tags,
                                         double energy)
{
    for (int t = 0; t < 4; ++t, corners += 3, energies += 3)
        if (tags.count == 0 || !tags.contain(corners[0]) || !tags.contain(corners[1]) || !tags.contain(corners[2]))
            energy = energy + energies[0] + energies[1] + energies[2];
    return energy;
}

} // namespace

KORVALE_AVX2 double add_energies_wide(const LengthTerm& length_term, double energy, const Refusal& refusal_rule)
{
    const LengthTerm term = length_term; // copies that no store can change
    const Refusal refusal = refusal_rule;
    int32_t e = 0;
    for (; e <= term.edges.count - 4; e += 4) {
        const int32_t* const ends = term.edges.ends + 2 * int64_t{e};
        const Quad3 along = points_at(term.p, ends, 2) - points_at(term.p, ends + 1, 2);
        const Quad lengths = root(dot(along, along));
        put(term.measure + e, lengths);
        double energies[4];
        put(energies, penalties(term.weight, lengths, term.reference + e));
        energy = add_edges(energies, ends, term.tags, energy);
        if (refusal.is_due(energy))
            return energy;
    }
    return add_edge_energies(term, e, energy, refusal);
}

KORVALE_AVX2 double add_energies_wide(const AngleTerm& angle_term, double energy, const Refusal& refusal_rule)
{
    const AngleTerm term = angle_term; // copies that no store can change
    const Refusal refusal = refusal_rule;
    const Faces faces = term.faces;
    for (int32_t f = 0, first = 0; f < faces.count && !refusal.is_due(energy);) {
        Quad cosines[3], listed[3];
        if (!are_four_triangles(faces.sizes, faces.count, f) ||
            !corner_cosines(term.p, faces.corners + first, cosines)) {
            energy = add_face_energies(term, f, first, energy);
            first = next_start(first, faces.sizes[f++]);
            continue;
        }
        double energies[12];
        list_corners(cosines, listed);
        for (int i = 0; i < 3; ++i) {
            put(term.measure + first + 4 * i, listed[i]);
            put(energies + 4 * i, penalties(term.weight, listed[i], term.reference + first + 4 * i));
        }
        energy = add_triangles(energies, faces.corners + first, term.tags, energy);
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
            first = next_start(first, faces.sizes[f++]);
            continue;
        }
        const Quad3 p0 = points_at(p, corners, 3), p1 = points_at(p, corners + 1, 3), p2 = points_at(p, corners + 2, 3);
        const Quad3 far = cross(p1, p2), normal = cross(p0, p1) + far + cross(p2, p0);
        double volumes[4], areas[4];
        put(volumes, dot(p0, far));
        put(areas, root(dot(normal, normal)));
        volume_sum = volume_sum + volumes[0] + volumes[1] + volumes[2] + volumes[3];
        area_sum = area_sum + areas[0] + areas[1] + areas[2] + areas[3];
        f += 4;
        first += 12;
    }
    volume = volume_sum;
    area = area_sum;
}

} // namespace korvale::inside

#endif
