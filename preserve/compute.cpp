// Steepest descent with backtracking. A step is as long as the energy, along the force; while the energy has not
// fallen, half of what is left of it is taken back. Most trials are too long, so their energies are summed only until
// they are known to be too high. The positions that are kept have always been evaluated in full. The same with nothing
// left out: tests/reference/preserve.cpp.
#include "preserve/compute.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>

#include "data/operations.h"
#include "platform/internal/lanes.h"
#include "preserve/internal/evaluation.h"
#include "preserve/internal/terms.h"

namespace korvale::preserve {
namespace {

/// The halving that is smaller than this is the last one tried.
constexpr double kSmallestShare = 1e-06;

/// Below this coordinate nothing overflows: a product of three is below 1e120, a sum of 2^31 of them below 1e130, its
/// square below 1e260, and the largest double is 1.8e308. Chosen with room to spare.
constexpr double kSafeCoordinate = 1e+40;

/// Makes `points` the positions to evaluate, and `mesh` the mesh there. False for an array that does not match it.
bool look_at(PreserveStatus* status, DATAstruct* points, Mesh& mesh)
{
    if (status == nullptr || !DATACheckIfPoints(points) || status->points == nullptr ||
        points->count != status->points->count)
        return false;
    mesh = mesh_of(*status, points);
    if (mesh.has_positions)
        status->cur_points = points;
    return mesh.has_positions;
}

/// What a step moves: the coordinates x [n] along the force f [n].
struct Step {
    double* x;
    double* f;
    int64_t n;
};

void hold_tagged(const Tags& tags, const Step& step)
{
    const int64_t n = std::min<int64_t>(step.n, components(tags.count, 3));
    for (int64_t q = 0; q < n; q += 3)
        if (tags.bytes[q / 3] != 0)
            step.f[q] = step.f[q + 1] = step.f[q + 2] = 0.0;
}

/// The length of the force on all points together, its squares added in order.
double length_of_force(const Step& step)
{
    double sum = 0.0;
    for (int64_t q = 0; q < step.n; ++q)
        sum += step.f[q] * step.f[q];
    return std::sqrt(sum);
}

/// Moves all points by the whole step. Returns whether start and step are so short that no trial on the way can
/// overflow.
bool advance(const Step& step, double length)
{
    double *const x = step.x, *const f = step.f;
    bool is_short = true;
    for_lanes<int64_t>(0, step.n, [=, &is_short]<class V>(int64_t q) {
        const V stride = all<V>(length) * load<V>(f + q), to = load<V>(x + q) + stride, limit = all<V>(kSafeCoordinate);
        store(x + q, to);
        if (any_false(absolute(to) < limit) || any_false(absolute(stride) < limit))
            is_short = false;
    });
    return is_short;
}

void retreat(const Step& step, double length, double share)
{
    double *const x = step.x, *const f = step.f;
    for_lanes<int64_t>(0, step.n, [=]<class V>(int64_t q) {
        store(x + q, load<V>(x + q) - all<V>(length) * load<V>(f + q) * all<V>(share));
    });
}

/// Whether every energy at finite positions that are not too far out is a number, and none is negative: weights are
/// positive, references finite.
bool has_sound_terms(const PreserveStatus& s, const Mesh& mesh)
{
    return std::all_of(std::begin(kTerms), std::end(kTerms), [&](const Term* term) {
        const double weight = term->weight(s);
        return (s.flags & term->bit) == 0 ||
               (weight > 0.0 && std::isfinite(weight) && term->has_finite_references(s, mesh));
    });
}

/// One step from evaluated positions; leaves the new ones evaluated in full.
void take_step(PreserveStatus& s, const Mesh& mesh, const Step& step, bool terms_are_sound)
{
    find_force(s, mesh);
    hold_tagged(mesh.tags, step);
    const double before = s.energy;
    const double length = before / length_of_force(step); // Deliberate: infinite without force
    const bool can_refuse = advance(step, length) && terms_are_sound;
    const double bound = can_refuse ? before : std::numeric_limits<double>::quiet_NaN();
    s.energy = evaluate(s, mesh, bound);
    for (double share = 0.5; s.energy >= before; share *= 0.5) { // a NaN is accepted
        retreat(step, length, share);
        if (share < kSmallestShare) { // accepted whatever its energy
            s.energy = evaluate(s, mesh);
            break;
        }
        s.energy = evaluate(s, mesh, bound);
    }
}

} // namespace
} // namespace korvale::preserve

using namespace korvale::preserve;

int PreserveCompute(PreserveStatus* status, DATAstruct* points, int iterations)
{
    Mesh mesh;
    if (!look_at(status, points, mesh))
        return -1;
    PreserveStatus& s = *status;
    s.energy = evaluate(s, mesh);
    if (s.energy == 0.0)
        return 1;
    const Step step = {points->dvals, mesh.force, mesh.force_values};
    const bool terms_are_sound = has_sound_terms(s, mesh);
    for (int i = 0; i < iterations; ++i)
        take_step(s, mesh, step, terms_are_sound);
    return 1;
}

int PreserveGetForce(PreserveStatus* status, DATAstruct* points, DATAstruct* force_out)
{
    Mesh mesh;
    if (!look_at(status, points, mesh))
        return -1;
    status->energy = evaluate(*status, mesh);
    find_force(*status, mesh);
    DATACopy(status->force, force_out);
    return 1;
}
