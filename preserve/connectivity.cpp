#include "preserve/internal/connectivity.h"

#include <algorithm>
#include <bit>
#include <cstdlib>
#include <cstring>

#include "data/internal/scratch.h"
#include "data/internal/shape.h"
#include "preserve/internal/mesh.h"

namespace korvale::inside {
namespace {

bool are_points(const int32_t* indices, int64_t count, int32_t points)
{
    return std::all_of(indices, indices + count, [=](int32_t i) { return i >= 0 && i < points; });
}

/// The corners of all faces, or -1 where a size is negative or they are more than `most`.
int64_t total_corners(const int32_t* sizes, int32_t faces, int64_t most)
{
    int64_t total = 0;
    for (int32_t f = 0; f < faces; ++f) {
        if (sizes[f] < 0)
            return -1;
        total += sizes[f];
        if (total > most)
            return -1;
    }
    return total;
}

/// Tells edges found before from new ones: a hash table with open addressing of the edges listed in `ends`.
class EdgeTable {
public:
    /// For at most `most` edges, of which usually half are found.
    EdgeTable(int32_t* ends, int32_t most) : ends_(ends), mask_(slots_for(most) - 1), slots_(int64_t{mask_} + 1)
    {
        if (exists())
            std::memset(slots_.get(), 0xff, (size_t{mask_} + 1) * sizeof(int32_t));
    }

    bool exists() const { return slots_.exists(); }
    int32_t found() const { return found_; }

    /// Lists the edge a, b, a <= b, unless it is listed.
    void note(int32_t a, int32_t b)
    {
        uint32_t slot = first_slot(a, b);
        for (; slots_[slot] != kEmpty; slot = (slot + 1) & mask_)
            if (ends_[2 * int64_t{slots_[slot]}] == a && ends_[2 * int64_t{slots_[slot]} + 1] == b)
                return;
        slots_[slot] = found_;
        ends_[2 * int64_t{found_}] = a;
        ends_[2 * int64_t{found_} + 1] = b;
        ++found_;
    }

private:
    static constexpr int32_t kEmpty = -1;

    /// A power of two with room to spare.
    static uint32_t slots_for(int32_t most)
    {
        return std::bit_ceil(static_cast<uint32_t>(most) + static_cast<uint32_t>(most) / 2 + 1);
    }

    /// Edges in the same direction of a regular mesh lie side by side, those of one point far apart.
    uint32_t first_slot(int32_t a, int32_t b) const
    {
        const auto from = static_cast<uint32_t>(a), across = static_cast<uint32_t>(b - a);
        return (3 * from + 0x9e3779b1u * across) & mask_;
    }

    int32_t* ends_;
    uint32_t mask_;
    Scratch<int32_t> slots_;
    int32_t found_ = 0;
};

/// Writes the edges of all faces to `ends`, which has room for one per corner, and returns how many they are. None
/// without memory.
int32_t find_edges(const int32_t* sizes, int32_t faces, const int32_t* corners, int32_t most, int32_t* ends)
{
    EdgeTable table(ends, most);
    if (!table.exists())
        return 0;
    for (int32_t f = 0; f < faces; corners += sizes[f++])
        for (int32_t k = 0; k < sizes[f]; ++k) {
            const int32_t here = corners[k], next = corners[k + 1 == sizes[f] ? 0 : k + 1];
            table.note(std::min(here, next), std::max(here, next));
        }
    return table.found();
}

void clear(const DATAstruct& counts)
{
    std::memset(counts.ivals, 0, static_cast<size_t>(counts.count) * sizeof(int32_t));
}

} // namespace

DATAstruct* new_ints(int32_t count, int32_t dim)
{
    DATAstruct* const d = DATANew();
    if (d == nullptr)
        return nullptr;
    d->dim = dim;
    d->count = count;
    d->type = DATA_TYPE_INT;
    DATAAllocate(d);
    return d;
}

bool is_sound_mesh(const DATAstruct& points, const DATAstruct* edges, const DATAstruct* face_sizes,
                   const DATAstruct* face_points)
{
    if (elements(points.count, 3) > kMostElements)
        return false;
    if (edges != nullptr) {
        const int64_t ends = elements(edges->count, 2);
        if (ends > kMostElements || !holds(*edges, DATA_TYPE_INT, ends) ||
            !are_points(edges->ivals, ends, points.count))
            return false;
    }
    if (face_sizes == nullptr || face_points == nullptr)
        return true;
    if (edges == nullptr && elements(face_points->count, 2) > kMostElements)
        return false;
    if (!holds(*face_sizes, DATA_TYPE_INT, face_sizes->count) ||
        !holds(*face_points, DATA_TYPE_INT, face_points->count))
        return false;
    const int64_t corners = total_corners(face_sizes->ivals, face_sizes->count, face_points->count);
    return corners >= 0 && are_points(face_points->ivals, corners, points.count);
}

DATAstruct* new_starts(const DATAstruct& face_sizes)
{
    DATAstruct* const starts = new_ints(face_sizes.count, 1);
    if (!is_made(starts))
        return starts;
    int32_t start = 0;
    for (int32_t f = 0; f < face_sizes.count; ++f) {
        starts->ivals[f] = start;
        start += face_sizes.ivals[f];
    }
    return starts;
}

DATAstruct* new_edges(const DATAstruct& face_sizes, const DATAstruct& face_points)
{
    DATAstruct* const edges = new_ints(face_points.count, 2);
    if (!is_made(edges)) {
        std::free(edges);
        return nullptr;
    }
    edges->count = find_edges(face_sizes.ivals, face_sizes.count, face_points.ivals, face_points.count, edges->ivals);
    DATAReAllocate(edges);
    return edges;
}

void group_by_point(PreserveStatus& s)
{
    const int32_t points = s.points->count, edges = s.edges->count;
    const int32_t* const ends = s.edges->ivals;

    s.point_edge_count = new_ints(points, 1);
    s.point_edge_start = new_ints(points, 1);
    s.point_edges = new_ints(2 * edges, 1);
    if (s.face_points != nullptr)
        s.point_faces = new_ints(2 * edges, 1);
    if (!is_made(s.point_edge_count) || !is_made(s.point_edge_start))
        return;
    int32_t* const count = s.point_edge_count->ivals;
    int32_t* const start = s.point_edge_start->ivals;

    clear(*s.point_edge_count);
    for (int32_t i = 0; i < 2 * edges; ++i)
        ++count[ends[i]];
    int32_t next_start = 0;
    for (int32_t v = 0; v < points; ++v) {
        start[v] = next_start;
        next_start += count[v];
    }

    if (is_made(s.point_faces)) {
        int32_t* const grouped = s.point_faces->ivals;
        std::fill(grouped, grouped + 2 * edges, -1);
        clear(*s.point_edge_count);
        const int32_t* corner = s.face_points->ivals;
        for (int32_t f = 0; f < s.face_sizes->count; ++f)
            for (int32_t k = 0; k < s.face_sizes->ivals[f]; ++k, ++corner) {
                const int64_t place = int64_t{start[*corner]} + count[*corner]++;
                if (place < 2 * edges) // Deliberate: beyond the point's own run as well
                    grouped[place] = f;
            }
    }

    if (!is_made(s.point_edges))
        return;
    clear(*s.point_edge_count);
    for (int32_t i = 0; i < 2 * edges; ++i)
        s.point_edges->ivals[start[ends[i]] + count[ends[i]]++] = i / 2;
}

} // namespace korvale::inside
