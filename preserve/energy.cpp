#include "preserve/internal/energy.h"

#include "preserve/evaluation.h"
#include "preserve/internal/energy_wide.h"
#include "preserve/internal/measures.h"

namespace korvale::inside {

bool find_term(const PreserveStatus& s, LengthTerm& term)
{
    term.edges = edges_of(s);
    term.reference = measures_in(s.olen, term.edges.count);
    term.measure = measures_in(s.nlen, term.edges.count);
    if (term.reference == nullptr || term.measure == nullptr || !covers_mesh(s.cur_points, s))
        return false;
    term.p = s.cur_points->dvals;
    term.tags = tags_of(s);
    term.weight = s.weights[0];
    return true;
}

bool find_term(const PreserveStatus& s, AngleTerm& term)
{
    term.faces = faces_of(s);
    term.reference = measures_in(s.ofang, term.faces.corner_count);
    term.measure = measures_in(s.nfang, term.faces.corner_count);
    if (term.reference == nullptr || term.measure == nullptr || !covers_mesh(s.cur_points, s))
        return false;
    term.p = s.cur_points->dvals;
    term.tags = tags_of(s);
    term.weight = s.weights[1];
    return true;
}

double add_edge_energies(const LengthTerm& term, int32_t first, double energy, const Refusal& refusal)
{
    for (int32_t e = first; e < term.edges.count; ++e) {
        const int32_t a = term.edges.ends[2 * int64_t{e}], b = term.edges.ends[2 * int64_t{e} + 1];
        const double length = edge_length(term.p, a, b);
        term.measure[e] = length;
        if (!term.tags.contain(a) || !term.tags.contain(b))
            energy += penalty(term.weight, length, term.reference[e]);
        if (refusal.is_due(energy))
            break;
    }
    return energy;
}

double add_face_energies(const AngleTerm& term, int32_t f, int32_t first, double energy)
{
    const auto add_corner = [&](int32_t point, int32_t previous, int32_t next, int32_t corner) {
        double cosine;
        const bool has_angle = corner_cosine(term.p, point, previous, next, cosine);
        term.measure[corner] = cosine;
        if (has_angle && (!term.tags.contain(point) || !term.tags.contain(next) || !term.tags.contain(previous)))
            energy += penalty(term.weight, cosine, term.reference[corner]);
    };
    for_each_corner_of(term.faces.corners + first, term.faces.sizes[f], first, add_corner);
    return energy;
}

double add_energies(const LengthTerm& term, double energy, const Refusal& refusal)
{
#ifdef KORVALE_HAS_WIDE_LANES
    if (has_avx2())
        return add_energies_wide(term, energy, refusal);
#endif
    return add_edge_energies(term, 0, energy, refusal);
}

double add_energies(const AngleTerm& term, double energy, const Refusal& refusal)
{
#ifdef KORVALE_HAS_WIDE_LANES
    if (has_avx2())
        return add_energies_wide(term, energy, refusal);
#endif
    int32_t first = 0;
    for (int32_t f = 0; f < term.faces.count && !refusal.is_due(energy); ++f) {
        energy = add_face_energies(term, f, first, energy);
        first = next_start(first, term.faces.sizes[f]);
    }
    return energy;
}

bool measure_volume_and_area(PreserveStatus& s, int terms)
{
    const Faces faces = faces_of(s);
    double volume = 0.0, area = 0.0;
    if (faces.count > 0) {
        if (!covers_mesh(s.cur_points, s))
            return false;
        measure_faces(s.cur_points->dvals, faces, volume, area);
    }
    if ((terms & PRESERVE_VOLUME) != 0)
        s.nvolume = volume;
    if ((terms & PRESERVE_AREA) != 0)
        s.narea = area;
    return true;
}

double volume_energy(const PreserveStatus& s)
{
    return penalty(s.weights[2], s.nvolume, s.ovolume);
}

double area_energy(const PreserveStatus& s)
{
    return penalty(s.weights[3], s.narea, s.oarea);
}

} // namespace korvale::inside

using namespace korvale::inside;

int PreserveFindEnergy(PreserveStatus* status)
{
    if (status == nullptr)
        return -1;
    status->energy = 0.0;
    if ((status->flags & PRESERVE_LENGTH) != 0)
        PreserveFindNlen(status);
    if ((status->flags & PRESERVE_FACE_ANGLE) != 0)
        PreserveFindNfang(status);
    if ((status->flags & (PRESERVE_VOLUME | PRESERVE_AREA)) == 0 || !measure_volume_and_area(*status, status->flags))
        return 1;
    if ((status->flags & PRESERVE_VOLUME) != 0)
        status->energy += volume_energy(*status);
    if ((status->flags & PRESERVE_AREA) != 0)
        status->energy += area_energy(*status);
    return 1;
}

int PreserveFindNlen(PreserveStatus* status)
{
    if (status == nullptr)
        return -1;
    LengthTerm term;
    if (find_term(*status, term))
        status->energy = add_energies(term, status->energy, Refusal{});
    return 1;
}

int PreserveFindNfang(PreserveStatus* status)
{
    if (status == nullptr)
        return -1;
    AngleTerm term;
    if (find_term(*status, term))
        status->energy = add_energies(term, status->energy, Refusal{});
    return 1;
}

int PreserveFindNvolume(PreserveStatus* status)
{
    if (status == nullptr)
        return -1;
    if (measure_volume_and_area(*status, PRESERVE_VOLUME))
        status->energy += volume_energy(*status);
    return 1;
}

int PreserveFindNarea(PreserveStatus* status)
{
    if (status == nullptr)
        return -1;
    if (measure_volume_and_area(*status, PRESERVE_AREA))
        status->energy += area_energy(*status);
    return 1;
}
