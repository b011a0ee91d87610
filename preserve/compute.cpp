// Steepest descent with backtracking. A step is as long as the energy, along the force; while the energy has not
// fallen, half of what is left of it is taken back. Most trials are too long, so their energies are summed only until
// they are known to be too high. The positions that are kept have always been evaluated in full. The same with nothing
// left out: tests/reference/preserve.cpp.
#include "preserve/compute.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "data/operations.h"
#include "platform/internal/lanes.h"
#include "preserve/evaluation.h"
#include "preserve/internal/mesh.h"
#include "preserve/internal/terms.h"

namespace korvale::preserve {
namespace {

/// The halving that is smaller than this is the last one tried.
constexpr double kSmallestShare = 1e-06;

/// Below this coordinate nothing overflows: a product of three is below 1e120, a sum of 2^31 of them below 1e130, its
/// square below 1e260, and the largest double is 1.8e308. Chosen with room to spare.
constexpr double kSafeCoordinate = 1e+40;

/// Makes `points` the positions to evaluate. False for an array that does not match the mesh.
bool look_at(PreserveStatus* status, DATAstruct* points)
{
    if (status == nullptr || !DATACheckIfPoints(points) || status->points == nullptr ||
        points->count != status->points->count || !covers_mesh(points, *status))
        return false;
    status->cur_points = points;
    return true;
}

/// What a step moves: the coordinates x [n] along the force f [n].
struct Step {
    double* x;
    double* f;
    int64_t n;
};

Step step_of(const PreserveStatus& s)
{
    double* const f = forces_of(s);
    return {s.cur_points->dvals, f, f == nullptr ? 0 : components(s.force->count, 3)};
}

void hold_tagged(const PreserveStatus& s, const Step& step)
{
    const Tags tags = tags_of(s);
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

bool are_finite(const double* values, int64_t n)
{
    return std::all_of(values, values + n, [](double v) { return std::isfinite(v); });
}

/// Whether the references of all edges and corners are numbers. Of a list longer than its faces the end was never
/// measured.
bool has_finite_references(const PreserveStatus& s)
{
    const EdgeList edges = edges_of(s);
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

/// One step from evaluated positions; leaves the new ones evaluated in full.
void take_step(PreserveStatus& s, bool terms_are_sound)
{
    PreserveFindForce(&s);
    const Step step = step_of(s);
    hold_tagged(s, step);
    const double before = s.energy;
    const double length = before / length_of_force(step); // Deliberate: infinite without force
    const bool can_refuse = advance(step, length) && terms_are_sound;
    const double bound = can_refuse ? before : std::numeric_limits<double>::quiet_NaN();
    s.energy = evaluate(s, bound);
    for (double share = 0.5; s.energy >= before; share *= 0.5) { // a NaN is accepted
        retreat(step, length, share);
        if (share < kSmallestShare) { // accepted whatever its energy
            s.energy = evaluate(s);
            break;
        }
        s.energy = evaluate(s, bound);
    }
}

} // namespace
} // namespace korvale::preserve

using namespace korvale::preserve;

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
