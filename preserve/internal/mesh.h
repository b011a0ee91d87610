#pragma once

#include <cstdint>
#include <cstring>

#include "data/internal/buffers.h"
#include "platform/internal/wrapping.h"
#include "preserve/status.h"

// What this folder reads of a status, as plain pointers; what is missing or too short shows as none. An exported
// function calls `mesh_of` in its first lines, and nothing below it asks the record what it holds.
namespace korvale::preserve {

struct EdgeList {
    const int32_t* ends; // [count][2] the two points of each edge
    int32_t count;
};

inline EdgeList edges_in(const DATAstruct* edges)
{
    return edges == nullptr || edges->ivals == nullptr ? EdgeList{nullptr, 0} : EdgeList{edges->ivals, edges->count};
}

struct Faces {
    const int32_t* sizes;   // [count] corners of each face; none where negative, which leads back in the list
    const int32_t* corners; // [corner_count] the point of each corner
    int32_t count;
    int32_t corner_count;
};

inline Faces faces_in(const DATAstruct* sizes, const DATAstruct* points)
{
    if (sizes == nullptr || points == nullptr)
        return {nullptr, nullptr, 0, 0};
    return {sizes->ivals, points->ivals, sizes->count, points->count};
}

/// Where the next face starts in the list. A sum that wraps may lead anywhere; a face with corners outside is refused.
inline int32_t next_start(int32_t start, int32_t size)
{
    return wrapping_sum(start, size);
}

/// Calls visit(corners, n, first, f) for every face f with corners: their n points, and the first corner's place in the
/// list.
template <class Visit>
void for_each_face(const Faces& faces, Visit visit)
{
    int32_t first = 0;
    for (int32_t f = 0; f < faces.count; ++f) {
        if (faces.sizes[f] > 0)
            visit(faces.corners + first, faces.sizes[f], first, f);
        first = next_start(first, faces.sizes[f]);
    }
}

/// Calls visit(point, previous, next, corner) for each corner of face f, the first being corner `first`.
template <class Visit>
void for_each_corner_of(const Faces& faces, int32_t f, int32_t first, Visit visit)
{
    const int32_t n = faces.sizes[f], *const corners = faces.corners;
    for (int32_t k = 0; k < n; ++k)
        visit(corners[first + k], corners[k == 0 ? first + n - 1 : first + k - 1],
              corners[k + 1 == n ? first : first + k + 1], first + k);
}

/// Whether the n faces from f on, 2 or 4, exist and are triangles. Two sizes are compared at a time, as one 64-bit
/// word.
template <int n>
inline bool are_triangles(const Faces& faces, int32_t f)
{
    static_assert(n % 2 == 0);
    if (faces.count - f < n)
        return false;
    uint64_t others = 0;
    for (int i = 0; i < n; i += 2) {
        uint64_t two;
        std::memcpy(&two, faces.sizes + f + i, sizeof two);
        others |= two ^ 0x0000'0003'0000'0003;
    }
    return others == 0;
}

/// Which points are held fixed.
struct Tags {
    const uint8_t* bytes; // [count]
    int32_t count;

    bool exist() const { return count != 0; }
    bool contain(int32_t point) const { return point < count && bytes[point] != 0; }
};

/// A measure of all edges, or of all corners.
struct Measure {
    const double* reference; // or null
    double* current;         // or null

    bool exists() const { return reference != nullptr && current != nullptr; }
};

/// A mesh at the positions to measure.
struct Mesh {
    bool has_positions;  // for all points
    bool has_edges;      // or an empty list of them
    bool has_faces;      // or empty lists of them
    int32_t point_count; // that the connectivity refers to
    const double* p;     // [point_count][3]
    EdgeList edges;
    Faces faces;
    Tags tags;
    Measure lengths; // [edges]
    Measure cosines; // [corners]
    double* force;   // [force_values] the force of every point, or null
    int64_t force_values;

    bool can_have_force() const { return has_positions && force != nullptr; }
};

/// The mesh of a status at `points`, its own or those to evaluate.
Mesh mesh_of(const PreserveStatus& s, const DATAstruct* points);

} // namespace korvale::preserve
