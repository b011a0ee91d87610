#include "preserve/compute.h"

#include <cmath>

#include "data/operations.h"
#include "platform/module_start.h"
#include "preserve/evaluation.h"
#include "preserve/internal/mesh.h"

// Steepest descent. A step is as long as the energy, along the force; while the energy has not fallen, half of what is
// left of it is taken back.
namespace korvale {
namespace {

/// The halving that is smaller than this is the last one tried.
constexpr double kSmallestShare = 1e-06;

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
    return {s.cur_points->dvals, f, f == nullptr ? 0 : elements(s.force->count, 3)};
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

void advance(const Motion& m, double step)
{
    for (int64_t q = 0; q < m.n; ++q)
        m.x[q] += step * m.f[q];
}

void retreat(const Motion& m, double step, double share)
{
    for (int64_t q = 0; q < m.n; ++q)
        m.x[q] -= step * m.f[q] * share;
}

/// One step from evaluated positions; leaves the new ones evaluated.
void take_step(PreserveStatus& s)
{
    PreserveFindForce(&s);
    const Motion m = motion_of(s);
    hold_tagged(s, m);
    const double before = s.energy;
    const double step = before / magnitude(m); // Deliberate: infinite without force
    advance(m, step);
    PreserveFindEnergy(&s);
    for (double share = 0.5; s.energy >= before; share *= 0.5) { // a NaN is accepted
        retreat(m, step, share);
        PreserveFindEnergy(&s);
        if (share < kSmallestShare)
            break; // accepted whatever its energy
    }
    PreserveFindEnergy(&s);
}

} // namespace
} // namespace korvale

int PreserveCompute(PreserveStatus* status, DATAstruct* points, int iterations)
{
    if (!korvale::look_at(status, points))
        return -1;
    PreserveFindEnergy(status);
    if (status->energy == 0.0)
        return 1;
    for (int i = 0; i < iterations; ++i)
        korvale::take_step(*status);
    return 1;
}

int PreserveGetForce(PreserveStatus* status, DATAstruct* points, DATAstruct* force_out)
{
    if (!korvale::look_at(status, points))
        return -1;
    PreserveFindEnergy(status);
    PreserveFindForce(status);
    DATACopy(status->force, force_out);
    return 1;
}
