#include "preserve/internal/measures.h"

#include "math/internal/vec.h"
#include "preserve/internal/energy_wide.h"

namespace korvale::inside {
namespace {

/// Six times the volume of the fan from the origin to a face.
double fan_volume(const double* p, const int32_t* corners, int32_t n)
{
    double sum[3] = {0.0, 0.0, 0.0}, product[3];
    for (int32_t k = 1; k + 1 < n; ++k) {
        cross(p + 3 * int64_t{corners[k]}, p + 3 * int64_t{corners[k + 1]}, product);
        add(sum, product, sum);
    }
    return dot(p + 3 * int64_t{corners[0]}, sum);
}

/// Gives a measure array room for `count` values; it is made when missing and left alone when large enough.
bool make_room(DATAstruct*& d, int32_t count)
{
    if (d != nullptr && d->count >= count && (count == 0 || holds(*d, DATA_TYPE_DOUBLE, count)))
        return true;
    if (d == nullptr)
        d = DATANew();
    if (d == nullptr)
        return false;
    d->dim = 1;
    d->count = count;
    d->type = DATA_TYPE_DOUBLE;
    return count == 0 || DATAAllocate(d) == 1;
}

int switch_off(PreserveStatus& s, int32_t term)
{
    s.flags &= ~term;
    return -1;
}

/// Whether the terms that live on faces can be measured at the reference points.
bool has_faces_to_measure(const PreserveStatus& s)
{
    return s.face_sizes != nullptr && s.face_points != nullptr && covers_mesh(s.points, s);
}

} // namespace

double edge_length(const double* p, int32_t a, int32_t b)
{
    double along[3];
    subtract(p + 3 * int64_t{a}, p + 3 * int64_t{b}, along);
    return length(along);
}

bool corner_cosine(const double* p, int32_t point, int32_t previous, int32_t next, double& cosine)
{
    double u[3], w[3];
    subtract(p + 3 * int64_t{next}, p + 3 * int64_t{point}, u);
    subtract(p + 3 * int64_t{previous}, p + 3 * int64_t{point}, w);
    const double lengths = length(u) * length(w);
    if (lengths == 0.0) {
        cosine = 0.0;
        return false;
    }
    cosine = dot(u, w) / lengths;
    return true;
}

void area_vector(const double* p, const int32_t* corners, int32_t n, double* out)
{
    double product[3];
    out[0] = out[1] = out[2] = 0.0;
    for (int32_t k = 0; k < n; ++k) {
        cross(p + 3 * int64_t{corners[k]}, p + 3 * int64_t{corners[k + 1 == n ? 0 : k + 1]}, product);
        add(out, product, out);
    }
}

void add_face_measures(const double* p, const int32_t* corners, int32_t n, double& volume, double& area)
{
    double normal[3];
    if (n >= 3)
        volume += fan_volume(p, corners, n);
    area_vector(p, corners, n, normal);
    area += length(normal);
}

void measure_faces(const double* p, const Faces& faces, double& volume, double& area)
{
#ifdef KORVALE_HAS_WIDE_LANES
    if (has_avx2())
        return measure_faces_wide(p, faces, volume, area);
#endif
    volume = area = 0.0;
    for_each_face(faces, [&](const int32_t* corners, int32_t n, int32_t, int32_t) {
        add_face_measures(p, corners, n, volume, area);
    });
}

} // namespace korvale::inside

using namespace korvale::inside;

int PreserveInitOlen(PreserveStatus* status)
{
    if (status == nullptr)
        return -1;
    if (status->edges == nullptr || !covers_mesh(status->points, *status))
        return switch_off(*status, PRESERVE_LENGTH);
    const Edges edges = edges_of(*status);
    if (!make_room(status->olen, edges.count) || !make_room(status->nlen, edges.count))
        return switch_off(*status, PRESERVE_LENGTH);
    const double* const p = status->points->dvals;
    for (int32_t e = 0; e < edges.count; ++e)
        status->olen->dvals[e] = edge_length(p, edges.ends[2 * e], edges.ends[2 * e + 1]);
    return 1;
}

int PreserveInitOfang(PreserveStatus* status)
{
    if (status == nullptr)
        return -1;
    if (!has_faces_to_measure(*status))
        return switch_off(*status, PRESERVE_FACE_ANGLE);
    const Faces faces = faces_of(*status);
    if (!make_room(status->ofang, faces.corner_count) || !make_room(status->nfang, faces.corner_count))
        return switch_off(*status, PRESERVE_FACE_ANGLE);
    const double* const p = status->points->dvals;
    double* const cosines = status->ofang->dvals;
    for_each_corner(faces, [=](int32_t point, int32_t previous, int32_t next, int32_t corner) {
        corner_cosine(p, point, previous, next, cosines[corner]);
    });
    return 1;
}

int PreserveInitOvolume(PreserveStatus* status)
{
    if (status == nullptr)
        return -1;
    if (!has_faces_to_measure(*status))
        return switch_off(*status, PRESERVE_VOLUME);
    double area;
    measure_faces(status->points->dvals, faces_of(*status), status->ovolume, area);
    return 1;
}

int PreserveInitOarea(PreserveStatus* status)
{
    if (status == nullptr)
        return -1;
    if (!has_faces_to_measure(*status))
        return switch_off(*status, PRESERVE_AREA);
    double volume;
    measure_faces(status->points->dvals, faces_of(*status), volume, status->oarea);
    return 1;
}
