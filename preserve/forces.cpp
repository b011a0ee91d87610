#include "preserve/internal/forces.h"

#include <algorithm>
#include <cmath>

#include "math/internal/vec.h"
#include "preserve/evaluation.h"
#include "preserve/internal/forces_wide.h"
#include "preserve/internal/measures.h"

namespace korvale::inside {
namespace {

/// A volume or an area this close to its reference is left alone.
constexpr double kSmallestDeviation = 1e-06;

/// f += scale * v
void add_scaled(double scale, const double* v, double* f)
{
    f[0] += scale * v[0];
    f[1] += scale * v[1];
    f[2] += scale * v[2];
}

/// f += ca * a + cb * b
void add_mixed(double ca, const double* a, double cb, const double* b, double* f)
{
    f[0] += ca * a[0] + cb * b[0];
    f[1] += ca * a[1] + cb * b[1];
    f[2] += ca * a[2] + cb * b[2];
}

/// Adds the forces of one corner on its point and its neighbours: -c times the derivatives of ab / D, the cosine.
void turn_corner(const double* p, int32_t point, int32_t previous, int32_t next, double c, double* force)
{
    double a[3], b[3];
    subtract(p + 3 * int64_t{previous}, p + 3 * int64_t{point}, a);
    subtract(p + 3 * int64_t{next}, p + 3 * int64_t{point}, b);
    const double aa = dot(a, a), bb = dot(b, b), ab = dot(a, b);
    const double lengths = std::sqrt(aa) * std::sqrt(bb);
    if (lengths == 0.0)
        return;
    add_mixed((ab - aa) * -c / (aa * lengths), a, (ab - bb) * -c / (bb * lengths), b, force + 3 * int64_t{point});
    add_mixed(-c / lengths, a, c * ab / (bb * lengths), b, force + 3 * int64_t{next});
    add_mixed(c * ab / (aa * lengths), a, -c / lengths, b, force + 3 * int64_t{previous});
}

// Every edge pulls both its points at once. Its turn comes in ascending order, which is the order of each point's run
// in `point_edges`, so that every point sums its edges as if it walked along that run.
void pull_edges(const LengthTerm& term, double* force)
{
#ifdef KORVALE_HAS_WIDE_LANES
    if (has_avx2())
        return pull_edges_wide(term, force);
#endif
    for (int32_t e = 0; e < term.edges.count; ++e)
        pull_edge(term, e, force);
}

void turn_faces(const AngleTerm& term, double* force)
{
#ifdef KORVALE_HAS_WIDE_LANES
    if (has_avx2())
        return turn_faces_wide(term, force);
#endif
    int32_t first = 0;
    for (int32_t f = 0; f < term.faces.count; ++f) {
        turn_face(term, f, first, force);
        first = next_start(first, term.faces.sizes[f]);
    }
}

void press_faces(const double* p, const Faces& faces, double pressure, double* force)
{
#ifdef KORVALE_HAS_WIDE_LANES
    if (has_avx2())
        return press_faces_wide(p, faces, pressure, force);
#endif
    for_each_face(faces, [=](const int32_t* corners, int32_t n, int32_t, int32_t) {
        press_face(p, corners, n, pressure, force);
    });
}

void tighten_faces(const double* p, const Faces& faces, double tension, double* force)
{
#ifdef KORVALE_HAS_WIDE_LANES
    if (has_avx2())
        return tighten_faces_wide(p, faces, tension, force);
#endif
    for_each_face(faces, [=](const int32_t* corners, int32_t n, int32_t, int32_t) {
        tighten_face(p, corners, n, tension, force);
    });
}

} // namespace

void pull_edge(const LengthTerm& term, int32_t e, double* force)
{
    const double length = term.measure[e], reference = term.reference[e];
    if (length == reference || length < kShortestEdge)
        return;
    const double stretch = (length - reference) * (2.0 * term.weight) / length;
    pull_ends(term.p, term.edges.ends + 2 * int64_t{e}, stretch, force);
}

void turn_face(const AngleTerm& term, int32_t f, int32_t first, double* force)
{
    const auto turn = [&](int32_t point, int32_t previous, int32_t next, int32_t corner) {
        const double cosine = term.measure[corner], reference = term.reference[corner];
        if (cosine != reference)
            turn_corner(term.p, point, previous, next, 2.0 * term.weight * (cosine - reference), force);
    };
    for_each_corner_of(term.faces.corners + first, term.faces.sizes[f], first, turn);
}

void press_face(const double* p, const int32_t* corners, int32_t n, double pressure, double* force)
{
    for_each_corner_of(corners, n, 0, [=](int32_t point, int32_t previous, int32_t next, int32_t) {
        double product[3]; // Deliberate: the rule for triangles, whatever the face
        cross(p + 3 * int64_t{previous}, p + 3 * int64_t{next}, product);
        add_scaled(pressure, product, force + 3 * int64_t{point});
    });
}

void tighten_face(const double* p, const int32_t* corners, int32_t n, double tension, double* force)
{
    double normal[3];
    area_vector(p, corners, n, normal);
    make_unit(normal); // Deliberate: too short a vector is used as it is
    for_each_corner_of(corners, n, 0, [&](int32_t point, int32_t previous, int32_t next, int32_t) {
        double across[3], pull[3];
        subtract(p + 3 * int64_t{previous}, p + 3 * int64_t{next}, across);
        cross(across, normal, pull);
        add_scaled(tension, pull, force + 3 * int64_t{point});
    });
}

} // namespace korvale::inside

using namespace korvale::inside;

int PreserveFindForce(PreserveStatus* status)
{
    if (status == nullptr)
        return -1;
    double* const force = forces_of(*status);
    if (force != nullptr)
        std::fill(force, force + components(status->force->count, 3), 0.0);
    if ((status->flags & PRESERVE_LENGTH) != 0)
        PreserveFindEdgeLengthForce(status);
    if ((status->flags & PRESERVE_FACE_ANGLE) != 0)
        PreserveFindFaceAngleForce(status);
    if ((status->flags & PRESERVE_VOLUME) != 0)
        PreserveFindVolumeForce(status);
    if ((status->flags & PRESERVE_AREA) != 0)
        PreserveFindSurfaceAreaForce(status);
    return 1;
}

int PreserveFindEdgeLengthForce(PreserveStatus* status)
{
    if (status == nullptr)
        return -1;
    LengthTerm term;
    double* const force = forces_of(*status);
    if (force != nullptr && find_term(*status, term))
        pull_edges(term, force);
    return 1;
}

int PreserveFindFaceAngleForce(PreserveStatus* status)
{
    if (status == nullptr)
        return -1;
    AngleTerm term;
    double* const force = forces_of(*status);
    if (force != nullptr && find_term(*status, term))
        turn_faces(term, force);
    return 1;
}

int PreserveFindVolumeForce(PreserveStatus* status)
{
    if (status == nullptr)
        return -1;
    const double deviation = status->nvolume - status->ovolume;
    double* const force = forces_of(*status);
    if (std::fabs(deviation) < kSmallestDeviation || force == nullptr || !covers_mesh(status->cur_points, *status))
        return 1;
    press_faces(status->cur_points->dvals, faces_of(*status), 2.0 * status->weights[2] * deviation, force);
    return 1;
}

int PreserveFindSurfaceAreaForce(PreserveStatus* status)
{
    if (status == nullptr)
        return -1;
    const double deviation = status->narea - status->oarea;
    double* const force = forces_of(*status);
    if (std::fabs(deviation) < kSmallestDeviation || force == nullptr || !covers_mesh(status->cur_points, *status))
        return 1;
    tighten_faces(status->cur_points->dvals, faces_of(*status), 2.0 * status->weights[3] * deviation, force);
    return 1;
}
