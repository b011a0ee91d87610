#include "preserve/internal/connectivity.h"

#include <algorithm>
#include <cstdlib>

#include "data/internal/buffers.h"
#include "data/internal/record.h"
#include "preserve/internal/edge_table.h"

namespace korvale::inside {
namespace {

/// Whether every index is that of a point.
bool are_points(const int32_t* indices, int64_t count, int32_t points)
{
    return std::all_of(indices, indices + count, [=](int32_t i) { return i >= 0 && i < points; });
}

/// Whether `wanted` ints of `d` can be read. A buffer of the host has what the host says it has: nobody has to set the
/// dims of these arrays.
bool has_ints(const DATAstruct& d, int64_t wanted)
{
    return wanted <= kMostElements && (is_wrapped(d) || wanted <= room(d));
}

/// Whether every corner of every face is in the list and at one of the points. What no face uses is not looked at.
bool are_sound(const Faces& faces, int32_t points)
{
    int32_t first = 0, reach = 0; // faces follow each other, or lead back: all corners below `reach` are used
    for (int32_t f = 0; f < faces.count; ++f) {
        const int32_t n = faces.sizes[f];
        if (n > 0 && (first < 0 || n > faces.corner_count - first))
            return false;
        if (n > 0 && first <= reach)
            reach = std::max(reach, first + n);
        else if (n > 0 && !are_points(faces.corners + first, n, points)) // sums that wrapped left a gap
            return false;
        first = next_start(first, n);
    }
    return are_points(faces.corners, reach, points);
}

/// The corners that all faces have, or `most` where they are more.
int32_t count_corners(const Faces& faces, int32_t most)
{
    int64_t corners = 0;
    for (int32_t f = 0; f < faces.count; ++f)
        corners += std::max(faces.sizes[f], 0);
    return static_cast<int32_t>(std::min<int64_t>(corners, most));
}

/// Lists the edges of all faces until, after a face, `room` of them are found. False where a face has more.
bool list_edges(const Faces& faces, int32_t room, EdgeTable& table)
{
    int32_t first = 0;
    for (int32_t f = 0; f < faces.count && table.found() < room; ++f) {
        const int32_t n = faces.sizes[f];
        for (int32_t k = 0; k < n; ++k) {
            const int32_t here = faces.corners[first + k], next = faces.corners[k + 1 == n ? first : first + k + 1];
            if (!table.note(std::min(here, next), std::max(here, next)))
                return false;
        }
        first = next_start(first, n);
    }
    return true;
}

void release(DATAstruct*& d)
{
    DATADispose(d);
    std::free(d);
    d = nullptr;
}

/// How many edges each point has, an edge from a point to itself counted twice.
void count_edges(const Edges& edges, DATAstruct& counts)
{
    std::fill(counts.ivals, counts.ivals + counts.count, 0);
    for (int64_t i = 0; i < components(edges.count, 2); ++i)
        ++counts.ivals[edges.ends[i]];
}

} // namespace

DATAstruct* new_list(int32_t type, int32_t count, int32_t dim)
{
    if (count > 0)
        return new_array(type, count, dim);
    DATAstruct* const empty = DATANew();
    if (empty != nullptr)
        shape_as(*empty, type, count, dim);
    return empty;
}

bool is_sound_mesh(const DATAstruct& points, const DATAstruct* edges, const DATAstruct* face_sizes,
                   const DATAstruct* face_points)
{
    if (components(points.count, 3) > kMostElements)
        return false;
    if (edges != nullptr) {
        const int64_t ends = components(edges->count, 2);
        if (!has_ints(*edges, ends) || !are_points(edges->ivals, ends, points.count))
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
    const int32_t room = count_corners(faces, faces.corner_count);
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

// Each point's run is filled at a cursor of its own, for which the counts stand in meanwhile.
void group_by_point(PreserveStatus& s)
{
    const Edges edges = edges_of(s);
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
    int32_t slots = 0;
    for (int32_t v = 0; v < points; ++v) {
        start[v] = slots;
        slots += cursor[v];
        cursor[v] = start[v];
    }

    if (s.face_points != nullptr)
        s.point_faces = new_list(DATA_TYPE_INT, slots, 1);
    if (s.point_faces != nullptr) {
        int32_t* const grouped = s.point_faces->ivals;
        std::fill(grouped, grouped + slots, -1);
        for_each_face(faces_of(s), [=](const int32_t* corners, int32_t n, int32_t, int32_t f) {
            for (int32_t k = 0; k < n; ++k) {
                int32_t& place = cursor[corners[k]];
                if (place < slots) // Deliberate: beyond the point's own run as well
                    grouped[place++] = f;
            }
        });
        std::copy(start, start + points, cursor);
    }

    s.point_edges = new_list(DATA_TYPE_INT, slots, 1);
    if (s.point_edges != nullptr)
        for (int32_t e = 0; e < edges.count; ++e)
            for (int end = 0; end < 2; ++end)
                s.point_edges->ivals[cursor[edges.ends[2 * int64_t{e} + end]]++] = e;

    for (int32_t v = 0; v < points; ++v)
        cursor[v] = (v + 1 < points ? start[v + 1] : slots) - start[v];
}

} // namespace korvale::inside
