#include "preserve/compute.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "data/operations.h"
#include "preserve/evaluation.h"
#include "preserve/internal/energy.h"
#include "preserve/internal/mesh.h"

// Steepest descent. A step is as long as the energy, along the force; while the energy has not fallen, half of what is
// left of it is taken back. Most of the time goes into trials that are too long, so their energies are only summed
// until they are known to be too high. The positions that are kept have always been evaluated in full.
namespace korvale::inside {
namespace {

/// The halving that is smaller than this is the last one tried.
constexpr double kSmallestShare = 1e-06;

/// Coordinates below this leave room for the products of three of them and the square of the sum of those.
constexpr double kFarthest = 1e+40;

/// Makes `points` the positions to evaluate. False for an array that does not match the mesh.
bool look_at(PreserveStatus* status, DATAstruct* points)
{
    if (status == nullptr || !DATACheckIfPoints(points) || status->points == nullptr ||
        points->count != status->points->count || !covers_mesh(points, *status))
        return false;
    status->cur_points = points;
    return true;
}

/// The values that a step moves: the coordinates x [n] along the force f [n].
struct Motion {
    double* x;
    double* f;
    int64_t n;
};

Motion motion_of(const PreserveStatus& s)
{
    double* const f = forces_of(s);
    return {s.cur_points->dvals, f, f == nullptr ? 0 : components(s.force->count, 3)};
}

void hold_tagged(const PreserveStatus& s, const Motion& m)
{
    const Tags tags = tags_of(s);
    for (int64_t q = 0; q < m.n; q += 3)
        if (tags.contain(static_cast<int32_t>(q / 3)))
            m.f[q] = m.f[q + 1] = m.f[q + 2] = 0.0;
}

double magnitude(const Motion& m)
{
    double sum = 0.0;
    for (int64_t q = 0; q < m.n; ++q)
        sum += m.f[q] * m.f[q];
    return std::sqrt(sum);
}

/// Takes a whole step. Returns whether start and step are so short that no trial on the way can come to a number that
/// is not finite.
bool advance(const Motion& m, double step)
{
    bool is_short = true;
    for (int64_t q = 0; q < m.n; ++q) {
        const double stride = step * m.f[q];
        m.x[q] += stride;
        is_short &= std::fabs(m.x[q]) < kFarthest && std::fabs(stride) < kFarthest;
    }
    return is_short;
}

void retreat(const Motion& m, double step, double share)
{
    for (int64_t q = 0; q < m.n; ++q)
        m.x[q] -= step * m.f[q] * share;
}

bool are_finite(const double* values, int64_t n)
{
    return std::all_of(values, values + n, [](double v) { return std::isfinite(v); });
}

/// Whether the references of all edges and corners are numbers. Of a list longer than its faces the end was never
/// measured.
bool has_finite_references(const PreserveStatus& s)
{
    const Edges edges = edges_of(s);
    const Faces faces = faces_of(s);
    const double* const lengths = measures_in(s.olen, edges.count);
    const double* const cosines = measures_in(s.ofang, faces.corner_count);
    bool are_sound = lengths == nullptr || are_finite(lengths, edges.count);
    if (cosines != nullptr)
        for_each_face(faces, [&](const int32_t*, int32_t n, int32_t first, int32_t) {
            are_sound = are_sound && are_finite(cosines + first, n);
        });
    return are_sound;
}

/// Whether every energy at finite positions that are not too far out is a number, and none is negative: weights are
/// positive, references finite.
bool has_sound_terms(const PreserveStatus& s)
{
    for (int slot = 0; slot < 4; ++slot)
        if ((s.flags & 1 << slot) != 0 && !(s.weights[slot] > 0.0 && std::isfinite(s.weights[slot])))
            return false;
    return std::isfinite(s.ovolume) && std::isfinite(s.oarea) && has_finite_references(s);
}

/// Evaluates one trial of a step, but only until its energy is known to reach `bound`, which is then what stands in
/// `energy`; the measures are not all renewed in this case. Volume and area come first, being the quickest to tell.
void try_energy(PreserveStatus& s, double bound)
{
    Refusal refusal = {bound, 0.0, 0.0};
    double energy = 0.0;
    if ((s.flags & (PRESERVE_VOLUME | PRESERVE_AREA)) != 0 && measure_volume_and_area(s, s.flags)) {
        refusal.volume = (s.flags & PRESERVE_VOLUME) != 0 ? volume_energy(s) : 0.0;
        refusal.area = (s.flags & PRESERVE_AREA) != 0 ? area_energy(s) : 0.0;
    }
    LengthTerm lengths;
    if (!refusal.is_due(energy) && (s.flags & PRESERVE_LENGTH) != 0 && find_term(s, lengths))
        energy = add_energies(lengths, energy, refusal);
    AngleTerm angles;
    if (!refusal.is_due(energy) && (s.flags & PRESERVE_FACE_ANGLE) != 0 && find_term(s, angles))
        energy = add_energies(angles, energy, refusal);
    s.energy = energy + refusal.volume + refusal.area;
}

/// One step from evaluated positions; leaves the new ones evaluated in full.
void take_step(PreserveStatus& s, bool terms_are_sound)
{
    PreserveFindForce(&s);
    const Motion m = motion_of(s);
    hold_tagged(s, m);
    const double before = s.energy;
    const double step = before / magnitude(m); // Deliberate: infinite without force
    const bool can_refuse = advance(m, step) && terms_are_sound;
    const double bound = can_refuse ? before : std::numeric_limits<double>::quiet_NaN();
    try_energy(s, bound);
    for (double share = 0.5; s.energy >= before; share *= 0.5) { // a NaN is accepted
        retreat(m, step, share);
        if (share < kSmallestShare) { // accepted whatever its energy
            PreserveFindEnergy(&s);
            break;
        }
        try_energy(s, bound);
    }
}

} // namespace
} // namespace korvale::inside

using namespace korvale::inside;

int PreserveCompute(PreserveStatus* status, DATAstruct* points, int iterations)
{
    if (!look_at(status, points))
        return -1;
    PreserveFindEnergy(status);
    if (status->energy == 0.0)
        return 1;
    const bool terms_are_sound = has_sound_terms(*status);
    for (int i = 0; i < iterations; ++i)
        take_step(*status, terms_are_sound);
    return 1;
}

int PreserveGetForce(PreserveStatus* status, DATAstruct* points, DATAstruct* force_out)
{
    if (!look_at(status, points))
        return -1;
    PreserveFindEnergy(status);
    PreserveFindForce(status);
    DATACopy(status->force, force_out);
    return 1;
}
