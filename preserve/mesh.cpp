// The only place that asks a status what its arrays hold. A term whose arrays are missing or too short is left out, as
// documented, so nothing here is an error.
#include "preserve/internal/mesh.h"

namespace korvale::preserve {
namespace {

/// The values of an array of doubles, or null where they are fewer than `wanted`.
double* doubles_of(const DATAstruct* d, int64_t wanted)
{
    return d != nullptr && holds(*d, DATA_TYPE_DOUBLE, wanted) ? d->dvals : nullptr;
}

/// The points that the connectivity refers to.
int32_t point_count(const PreserveStatus& s)
{
    if (s.force != nullptr)
        return s.force->count;
    return s.points == nullptr ? 0 : s.points->count;
}

/// Whether `points` has coordinates for `count` points.
bool covers(const DATAstruct* points, int32_t count)
{
    return points != nullptr && (count < 1 || holds(*points, DATA_TYPE_DOUBLE, components(count, 3)));
}

Tags tags_in(const DATAstruct* tags)
{
    if (tags == nullptr || !holds(*tags, DATA_TYPE_BYTE, tags->count))
        return {nullptr, 0};
    return {tags->bvals, tags->count};
}

} // namespace

Mesh mesh_of(const PreserveStatus& s, const DATAstruct* points)
{
    const EdgeList edges = edges_in(s.edges);
    const Faces faces = faces_in(s.face_sizes, s.face_points);
    const int64_t force_values = s.force == nullptr ? 0 : components(s.force->count, 3);
    Mesh mesh;
    mesh.point_count = point_count(s);
    mesh.has_positions = s.points != nullptr && covers(points, mesh.point_count);
    mesh.has_edges = s.edges != nullptr;
    mesh.has_faces = s.face_sizes != nullptr && s.face_points != nullptr;
    mesh.p = mesh.has_positions ? points->dvals : nullptr;
    mesh.edges = edges;
    mesh.faces = faces;
    mesh.tags = tags_in(s.tags);
    mesh.lengths = {doubles_of(s.olen, edges.count), doubles_of(s.nlen, edges.count)};
    mesh.cosines = {doubles_of(s.ofang, faces.corner_count), doubles_of(s.nfang, faces.corner_count)};
    mesh.force = doubles_of(s.force, force_values);
    mesh.force_values = mesh.force == nullptr ? 0 : force_values;
    return mesh;
}

} // namespace korvale::preserve
