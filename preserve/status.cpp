// The record: what it is told of a mesh and of the terms to keep, and what it releases. A mesh is examined here, once
// for all functions below: every index and size leads into its array, or the mesh is refused.
#include "preserve/status.h"

#include <cstddef>
#include <cstdlib>

#include "data/internal/buffers.h"
#include "platform/internal/pointers.h"
#include "preserve/internal/connectivity.h"
#include "preserve/internal/terms.h"

static_assert(korvale::platform::kNarrowPointers ||
              (sizeof(PreserveStatus) == 216 && offsetof(PreserveStatus, flags) == 0 &&
               offsetof(PreserveStatus, points) == 8 && offsetof(PreserveStatus, edges) == 16 &&
               offsetof(PreserveStatus, face_sizes) == 24 && offsetof(PreserveStatus, face_points) == 32 &&
               offsetof(PreserveStatus, tags) == 40 && offsetof(PreserveStatus, masses) == 48 &&
               offsetof(PreserveStatus, face_starts) == 56 && offsetof(PreserveStatus, point_edge_count) == 64 &&
               offsetof(PreserveStatus, point_edge_start) == 72 && offsetof(PreserveStatus, point_edges) == 80 &&
               offsetof(PreserveStatus, point_faces) == 88 && offsetof(PreserveStatus, weights) == 96 &&
               offsetof(PreserveStatus, olen) == 128 && offsetof(PreserveStatus, ofang) == 136 &&
               offsetof(PreserveStatus, ovolume) == 144 && offsetof(PreserveStatus, oarea) == 152 &&
               offsetof(PreserveStatus, cur_points) == 160 && offsetof(PreserveStatus, nlen) == 168 &&
               offsetof(PreserveStatus, nfang) == 176 && offsetof(PreserveStatus, nvolume) == 184 &&
               offsetof(PreserveStatus, narea) == 192 && offsetof(PreserveStatus, force) == 200 &&
               offsetof(PreserveStatus, energy) == 208));

namespace korvale::preserve {
namespace {

/// An optional int array: null when it has no elements or no buffer.
DATAstruct* unless_empty(DATAstruct* d)
{
    return d == nullptr || d->count < 1 || d->ivals == nullptr ? nullptr : d;
}

void reset(PreserveStatus& s)
{
    s.flags = 0;
    s.tags = nullptr;
    s.masses = nullptr;
    s.face_starts = nullptr;
    s.point_edge_count = nullptr;
    s.point_edge_start = nullptr;
    s.point_edges = nullptr;
    s.point_faces = nullptr;
    for (double& weight : s.weights)
        weight = 1.0;
}

} // namespace
} // namespace korvale::preserve

using namespace korvale::preserve;

int PreserveInitialize(PreserveStatus* status, DATAstruct* points, DATAstruct* edges, DATAstruct* face_sizes,
                       DATAstruct* face_points)
{
    if (status == nullptr || !DATACheckIfPoints(points))
        return -1;
    edges = unless_empty(edges);
    face_sizes = unless_empty(face_sizes);
    face_points = unless_empty(face_points);
    if (face_sizes == nullptr)
        face_points = nullptr;
    if (!is_sound_mesh(*points, edges, face_sizes, face_points))
        return -1;
    const Faces faces = faces_in(face_sizes, face_points);
    // These stay, so they come before `find_edges`, whose hash table leaves its pages to what is allocated next.
    DATAstruct* force = new_list(DATA_TYPE_DOUBLE, points->count, 3);
    DATAstruct* face_starts = faces.count > 0 ? new_starts(faces) : nullptr;
    if (edges == nullptr && faces.count > 0 && !find_edges(faces, edges)) {
        release(force);
        release(face_starts);
        return -1;
    }

    PreserveStatus& s = *status;
    reset(s);
    s.points = points;
    s.edges = edges;
    s.face_sizes = face_sizes;
    s.face_points = face_points;
    s.face_starts = face_starts;
    s.force = force;
    if (edges != nullptr)
        group_by_point(s);
    return 1;
}

int PreserveSetTag(PreserveStatus* status, DATAstruct* tags)
{
    if (status == nullptr || tags == nullptr || tags->dim != 1 || tags->type != DATA_TYPE_BYTE ||
        status->points == nullptr || tags->count != status->points->count)
        return -1;
    status->tags = tags;
    return 1;
}

int PreserveSetMass(PreserveStatus* status, DATAstruct* masses)
{
    if (status == nullptr || masses == nullptr || masses->dim != 1 || masses->type != DATA_TYPE_DOUBLE ||
        status->points == nullptr || masses->count != status->points->count)
        return -1;
    if (masses->count > 0 && !is_filled(*masses))
        return -1;
    for (int32_t i = 0; i < masses->count; ++i)
        if (masses->dvals[i] <= 0.0) // a NaN passes
            return -1;
    status->masses = masses;
    return 1;
}

int PreservePreserve(PreserveStatus* status, int which, double weight)
{
    if (status == nullptr)
        return -1;
    if (weight <= 0.0) // a NaN passes
        return 1;
    status->flags |= which; // Deliberate: before `which` is examined
    for (const Term* term : kTerms)
        if (which == term->bit) {
            status->weights[term->slot] = weight; // also of a term that cannot be measured
            return take_reference(status, *term);
        }
    return which == 0 ? 1 : -1;
}

int PreserveReInitialize(PreserveStatus* status, DATAstruct* points)
{
    if (status == nullptr || !DATACheckIfPoints(points) || status->points == nullptr ||
        points->count != status->points->count)
        return -1;
    status->points = points; // Deliberate: the references stay those recorded before
    return 1;
}

void PreserveDispose(PreserveStatus* status)
{
    if (status == nullptr)
        return;
    DATAstruct* const owned[] = {status->face_starts,
                                 status->point_edge_count,
                                 status->point_edge_start,
                                 status->point_edges,
                                 status->point_faces,
                                 status->olen,
                                 status->ofang,
                                 status->nlen,
                                 status->nfang,
                                 status->force};
    for (DATAstruct* d : owned)
        DATADispose(d);
    for (DATAstruct* d : owned)
        std::free(d);
}
