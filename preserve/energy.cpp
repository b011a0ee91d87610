#include "platform/module_start.h"
#include "preserve/evaluation.h"
#include "preserve/internal/measures.h"

namespace korvale {
namespace {

/// The energy of one measure.
double penalty(double weight, double measure, double reference)
{
    const double deviation = measure - reference;
    return weight * (deviation * deviation);
}

} // namespace
} // namespace korvale

int PreserveFindEnergy(PreserveStatus* status)
{
    if (status == nullptr)
        return -1;
    status->energy = 0.0;
    if ((status->flags & PRESERVE_LENGTH) != 0)
        PreserveFindNlen(status);
    if ((status->flags & PRESERVE_FACE_ANGLE) != 0)
        PreserveFindNfang(status);
    if ((status->flags & PRESERVE_VOLUME) != 0)
        PreserveFindNvolume(status);
    if ((status->flags & PRESERVE_AREA) != 0)
        PreserveFindNarea(status);
    return 1;
}

int PreserveFindNlen(PreserveStatus* status)
{
    if (status == nullptr)
        return -1;
    const korvale::Edges edges = korvale::edges_of(*status);
    const double* const reference = korvale::measures_in(status->olen, edges.count);
    double* const lengths = korvale::measures_in(status->nlen, edges.count);
    if (reference == nullptr || lengths == nullptr || !korvale::covers_mesh(status->cur_points, *status))
        return 1;
    const double* const p = status->cur_points->dvals;
    const korvale::Tags tags = korvale::tags_of(*status);
    for (int32_t e = 0; e < edges.count; ++e) {
        const int32_t a = edges.ends[2 * e], b = edges.ends[2 * e + 1];
        lengths[e] = korvale::edge_length(p, a, b);
        if (!tags.contain(a) || !tags.contain(b))
            status->energy += korvale::penalty(status->weights[0], lengths[e], reference[e]);
    }
    return 1;
}

int PreserveFindNfang(PreserveStatus* status)
{
    if (status == nullptr)
        return -1;
    const korvale::Faces faces = korvale::faces_of(*status);
    const double* const reference = korvale::measures_in(status->ofang, faces.corner_count);
    double* const cosines = korvale::measures_in(status->nfang, faces.corner_count);
    if (reference == nullptr || cosines == nullptr || !korvale::covers_mesh(status->cur_points, *status))
        return 1;
    const double* const p = status->cur_points->dvals;
    const korvale::Tags tags = korvale::tags_of(*status);
    korvale::for_each_corner(faces, [&](int32_t point, int32_t previous, int32_t next, int32_t corner) {
        if (!korvale::corner_cosine(p, point, previous, next, cosines[corner]))
            return;
        if (!tags.contain(point) || !tags.contain(next) || !tags.contain(previous))
            status->energy += korvale::penalty(status->weights[1], cosines[corner], reference[corner]);
    });
    return 1;
}

int PreserveFindNvolume(PreserveStatus* status)
{
    if (status == nullptr)
        return -1;
    const korvale::Faces faces = korvale::faces_of(*status);
    if (faces.count > 0 && !korvale::covers_mesh(status->cur_points, *status))
        return 1;
    status->nvolume = faces.count < 1 ? 0.0 : korvale::volume_measure(status->cur_points->dvals, faces);
    status->energy += korvale::penalty(status->weights[2], status->nvolume, status->ovolume);
    return 1;
}

int PreserveFindNarea(PreserveStatus* status)
{
    if (status == nullptr)
        return -1;
    const korvale::Faces faces = korvale::faces_of(*status);
    if (faces.count > 0 && !korvale::covers_mesh(status->cur_points, *status))
        return 1;
    status->narea = faces.count < 1 ? 0.0 : korvale::area_measure(status->cur_points->dvals, faces);
    status->energy += korvale::penalty(status->weights[3], status->narea, status->oarea);
    return 1;
}
