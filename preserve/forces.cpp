#include <algorithm>
#include <cmath>

#include "math/internal/vec.h"
#include "platform/module_start.h"
#include "preserve/evaluation.h"
#include "preserve/internal/measures.h"

namespace korvale {
namespace {

/// An edge shorter than this has no direction to pull in.
constexpr double kShortestEdge = 1e-06;

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

/// Adds the force on point i from one of its edges, `stretch` being the deviation's factor.
void pull_along_edge(const double* p, int32_t i, int32_t j, double stretch, double* force)
{
    double along[3];
    subtract(p + 3 * int64_t{i}, p + 3 * int64_t{j}, along);
    double* const f = force + 3 * int64_t{i};
    f[0] -= stretch * along[0];
    f[1] -= stretch * along[1];
    f[2] -= stretch * along[2];
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

} // namespace
} // namespace korvale

int PreserveFindForce(PreserveStatus* status)
{
    if (status == nullptr)
        return -1;
    double* const force = korvale::forces_of(*status);
    if (force != nullptr)
        std::fill(force, force + korvale::elements(status->force->count, 3), 0.0);
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
    const korvale::Edges edges = korvale::edges_of(*status);
    const double* const reference = korvale::measures_in(status->olen, edges.count);
    const double* const lengths = korvale::measures_in(status->nlen, edges.count);
    double* const force = korvale::forces_of(*status);
    if (!korvale::covers_mesh(status->cur_points, *status) || reference == nullptr || lengths == nullptr ||
        force == nullptr || !korvale::has_edges_by_point(*status))
        return 1;
    const double* const p = status->cur_points->dvals;
    const int32_t* grouped = status->point_edges->ivals;
    for (int32_t i = 0; i < status->point_edge_count->count; ++i)
        for (int32_t k = 0; k < status->point_edge_count->ivals[i]; ++k) {
            const int32_t e = *grouped++;
            if (lengths[e] == reference[e] || lengths[e] < korvale::kShortestEdge)
                continue;
            const int32_t first = edges.ends[2 * e], j = first == i ? edges.ends[2 * e + 1] : first;
            const double stretch = (lengths[e] - reference[e]) * (2.0 * status->weights[0]) / lengths[e];
            korvale::pull_along_edge(p, i, j, stretch, force);
        }
    return 1;
}

int PreserveFindFaceAngleForce(PreserveStatus* status)
{
    if (status == nullptr)
        return -1;
    const korvale::Faces faces = korvale::faces_of(*status);
    const double* const reference = korvale::measures_in(status->ofang, faces.corner_count);
    const double* const cosines = korvale::measures_in(status->nfang, faces.corner_count);
    double* const force = korvale::forces_of(*status);
    if (!korvale::covers_mesh(status->cur_points, *status) || reference == nullptr || cosines == nullptr ||
        force == nullptr)
        return 1;
    const double* const p = status->cur_points->dvals;
    const double twice_weight = 2.0 * status->weights[1];
    korvale::for_each_corner(faces, [=](int32_t point, int32_t previous, int32_t next, int32_t corner) {
        if (cosines[corner] == reference[corner])
            return;
        const double c = twice_weight * (cosines[corner] - reference[corner]);
        korvale::turn_corner(p, point, previous, next, c, force);
    });
    return 1;
}

int PreserveFindVolumeForce(PreserveStatus* status)
{
    if (status == nullptr)
        return -1;
    const double deviation = status->nvolume - status->ovolume;
    double* const force = korvale::forces_of(*status);
    if (std::fabs(deviation) < korvale::kSmallestDeviation || !korvale::covers_mesh(status->cur_points, *status) ||
        force == nullptr)
        return 1;
    const double* const p = status->cur_points->dvals;
    const double pressure = 2.0 * status->weights[2] * deviation;
    korvale::for_each_corner(korvale::faces_of(*status), [=](int32_t point, int32_t previous, int32_t next, int32_t) {
        double product[3]; // Deliberate: the rule for triangles, whatever the face
        korvale::cross(p + 3 * int64_t{previous}, p + 3 * int64_t{next}, product);
        korvale::add_scaled(pressure, product, force + 3 * int64_t{point});
    });
    return 1;
}

int PreserveFindSurfaceAreaForce(PreserveStatus* status)
{
    if (status == nullptr)
        return -1;
    const double deviation = status->narea - status->oarea;
    double* const force = korvale::forces_of(*status);
    if (std::fabs(deviation) < korvale::kSmallestDeviation || !korvale::covers_mesh(status->cur_points, *status) ||
        force == nullptr)
        return 1;
    const double* const p = status->cur_points->dvals;
    const double tension = 2.0 * status->weights[3] * deviation;
    korvale::for_each_face(korvale::faces_of(*status), [=](const int32_t* corners, int32_t n, int32_t) {
        double normal[3], across[3], pull[3];
        korvale::area_vector(p, corners, n, normal);
        korvale::make_unit(normal); // Deliberate: too short a vector is used as it is
        for (int32_t k = 0; k < n; ++k) {
            const int32_t previous = corners[k == 0 ? n - 1 : k - 1], next = corners[k + 1 == n ? 0 : k + 1];
            korvale::subtract(p + 3 * int64_t{previous}, p + 3 * int64_t{next}, across);
            korvale::cross(across, normal, pull);
            korvale::add_scaled(tension, pull, force + 3 * int64_t{corners[k]});
        }
    });
    return 1;
}
