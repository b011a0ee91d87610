// What is derived from sizes and indices: whether they are sound, the edges of faces, and the edges and faces at each
// point. All of it takes linear time. Points are grouped by a counting sort: count the entries of each point, sum the
// counts into starts (a prefix sum), then put each entry at a cursor per point.
#include "preserve/internal/connectivity.h"

#include <algorithm>
#include <cstdlib>

#include "data/internal/buffers.h"
#include "data/internal/record.h"
#include "platform/internal/indices.h"
#include "platform/internal/large_pages.h"
#include "preserve/internal/edge_table.h"

namespace korvale::preserve {
namespace {

/// Whether `wanted` ints of `d` can be read. What a host has wrapped is believed to hold them: hosts need not set the
/// dims of these arrays.
bool has_ints(const DATAstruct& d, int64_t wanted)
{
    return wanted <= kMostElements && (is_wrapped(d) || wanted <= room(d));
}

/// The number of corners of all faces. The sign bit of `signs` is set where a size is negative.
int64_t count_corners(const Faces& faces, int32_t& signs)
{
    int64_t corners = 0;
    signs = 0;
    for (int32_t f = 0; f < faces.count; ++f) {
        corners += faces.sizes[f];
        signs |= faces.sizes[f];
    }
    return corners;
}

/// Whether every corner of every face is in the list and at one of the points. What no face uses is not looked at.
bool are_sound(const Faces& faces, int32_t points)
{
    int32_t signs;
    const int64_t corners = count_corners(faces, signs);
    if (signs >= 0)
        return corners <= faces.corner_count && are_indices(faces.corners, corners, points);
    int32_t first = 0;
    for (int32_t f = 0; f < faces.count; ++f) {
        const int32_t n = faces.sizes[f];
        if (n > 0 && (first < 0 || n > faces.corner_count - first || !are_indices(faces.corners + first, n, points)))
            return false;
        first = next_start(first, n);
    }
    return true;
}

/// Room for the edges that faces may have: one for each corner, but no more than the list is long.
int32_t room_for_edges(const Faces& faces)
{
    int32_t signs;
    const int64_t corners = count_corners(faces, signs);
    return signs < 0 ? faces.corner_count : static_cast<int32_t>(std::min<int64_t>(corners, faces.corner_count));
}

/// Lists the edges of all faces until, after a face, `room` of them are found. False where a face has more, or the heap
/// is exhausted.
bool list_edges(const Faces& faces, int32_t room, EdgeTable& table)
{
    int32_t first = 0;
    for (int32_t f = 0; f < faces.count && table.found() < room; ++f) {
        const int32_t n = faces.sizes[f];
        if (n > 0) {
            const int32_t* const corners = faces.corners + first;
            int32_t here = corners[0];
            for (int32_t k = 1; k < n; ++k) {
                const int32_t next = corners[k];
                if (!table.note(here, next))
                    return false;
                here = next;
            }
            if (!table.note(here, corners[0]))
                return false;
        }
        first = next_start(first, n);
    }
    return true;
}

/// How many edges each point has, an edge from a point to itself counted twice.
void count_edges(const EdgeList& edges, DATAstruct& counts)
{
    int32_t* const count = counts.ivals;
    std::fill(count, count + counts.count, 0);
    const int32_t* end = edges.ends;
    for (int32_t e = 0; e < edges.count; ++e, end += 2) {
        ++count[end[0]];
        ++count[end[1]];
    }
}

/// Prefix sum: turns the length of each point's run, in `cursor`, into the start of the run, in both arrays. Returns
/// the sum of the lengths.
int32_t start_runs(int32_t points, int32_t* start, int32_t* cursor)
{
    int32_t slots = 0;
    for (int32_t v = 0; v < points; ++v) {
        start[v] = slots;
        slots += cursor[v];
        cursor[v] = start[v];
    }
    return slots;
}

/// The faces at each point, in runs as long as those of its edges; -1 where there are fewer.
void group_faces(const Faces& faces, int32_t slots, int32_t* cursor, int32_t* grouped)
{
    std::fill(grouped, grouped + slots, -1);
    for_each_face(faces, [=](const int32_t* corners, int32_t n, int32_t, int32_t f) {
        for (int32_t k = 0; k < n; ++k) {
            int32_t& next = cursor[corners[k]];
            if (next < slots) // Deliberate: beyond the point's own run as well
                grouped[next++] = f;
        }
    });
}

/// The edges at each point.
void group_edges(const EdgeList& edges, int32_t* cursor, int32_t* grouped)
{
    const int32_t* end = edges.ends;
    for (int32_t e = 0; e < edges.count; ++e, end += 2) {
        grouped[cursor[end[0]]++] = e;
        grouped[cursor[end[1]]++] = e;
    }
}

} // namespace

void release(DATAstruct*& d)
{
    DATADispose(d);
    std::free(d);
    d = nullptr;
}

DATAstruct* new_list(int32_t type, int32_t count, int32_t dim)
{
    DATAstruct* const d = DATANew();
    if (d == nullptr)
        return nullptr;
    shape_as(*d, type, count, dim);
    if (count < 1)
        return d;
    void* const buffer = new_block(static_cast<size_t>(components(count, dim)) * component_bytes(*d, type));
    if (buffer == nullptr) {
        std::free(d);
        return nullptr;
    }
    set_buffer(*d, type, buffer);
    d->alloc_type = type;
    d->alloc_count = count;
    d->alloc_dim = dim;
    return d;
}

bool is_sound_mesh(const DATAstruct& points, const DATAstruct* edges, const DATAstruct* face_sizes,
                   const DATAstruct* face_points)
{
    if (components(points.count, 3) > kMostElements)
        return false;
    if (edges != nullptr) {
        const int64_t ends = components(edges->count, 2);
        if (!has_ints(*edges, ends) || !are_indices(edges->ivals, ends, points.count))
            return false;
    }
    if (face_sizes == nullptr || face_points == nullptr)
        return true;
    if (edges == nullptr && components(face_points->count, 2) > kMostElements)
        return false;
    const int32_t corners =
        has_ints(*face_points, face_points->count) ? face_points->count : static_cast<int32_t>(room(*face_points));
    return has_ints(*face_sizes, face_sizes->count) &&
           are_sound({face_sizes->ivals, face_points->ivals, face_sizes->count, corners}, points.count);
}

DATAstruct* new_starts(const Faces& faces)
{
    DATAstruct* const starts = new_list(DATA_TYPE_INT, faces.count, 1);
    if (starts == nullptr)
        return nullptr;
    int32_t start = 0;
    for (int32_t f = 0; f < faces.count; ++f) {
        starts->ivals[f] = start;
        start = next_start(start, faces.sizes[f]);
    }
    return starts;
}

bool find_edges(const Faces& faces, DATAstruct*& edges)
{
    const int32_t room = room_for_edges(faces);
    edges = new_list(DATA_TYPE_INT, std::max(room, 1), 2);
    if (edges == nullptr)
        return true;
    EdgeTable table(edges->ivals, room);
    const bool fits = table.exists() && list_edges(faces, faces.corner_count, table);
    if (!fits) {
        release(edges);
        return !table.exists();
    }
    edges->count = table.found();
    DATAReAllocate(edges);
    return true;
}

// One array serves twice: the counts, then the cursors; from these the counts are found again at the end.
void group_by_point(PreserveStatus& s)
{
    const EdgeList edges = edges_in(s.edges);
    const Faces faces = faces_in(s.face_sizes, s.face_points);
    const int32_t points = s.points->count;
    s.point_edge_count = new_list(DATA_TYPE_INT, points, 1);
    if (s.point_edge_count == nullptr)
        return;
    count_edges(edges, *s.point_edge_count);
    s.point_edge_start = new_list(DATA_TYPE_INT, points, 1);
    if (s.point_edge_start == nullptr)
        return;
    int32_t* const start = s.point_edge_start->ivals;
    int32_t* const cursor = s.point_edge_count->ivals;
    const int32_t slots = start_runs(points, start, cursor);

    if (s.face_points != nullptr)
        s.point_faces = new_list(DATA_TYPE_INT, slots, 1);
    if (s.point_faces != nullptr) {
        group_faces(faces, slots, cursor, s.point_faces->ivals);
        std::copy(start, start + points, cursor);
    }
    s.point_edges = new_list(DATA_TYPE_INT, slots, 1);
    if (s.point_edges != nullptr)
        group_edges(edges, cursor, s.point_edges->ivals);

    for (int32_t v = 0; v < points; ++v)
        cursor[v] = (v + 1 < points ? start[v + 1] : slots) - start[v];
}

} // namespace korvale::preserve
