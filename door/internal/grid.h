#pragma once

#include <atomic>
#include <optional>

#include "door/internal/tree.h"
#include "ray/query.h"

/// Triangles for rays. Those that the grid owns do not move: a tree finds them. Those that stay the caller's are found
/// by a `RayStatus`, whose marks a query writes.
struct korvale_grid {
    korvale_grid();
    ~korvale_grid();
    korvale_grid(const korvale_grid&) = delete;
    korvale_grid& operator=(const korvale_grid&) = delete;

    const double* triangle(int32_t t) const { return triangles + 9 * int64_t{t}; }

    const double* triangles = nullptr; // [count][9]
    int32_t count = 0;
    korvale::door::Block<double> owned;     // the triangles, unless they are the caller's
    korvale::door::Vector<int32_t> corners; // [3 count] numbers of points; empty where each has its own
    korvale::door::Vector<int32_t> faces;   // [count] of which face; empty where each is its own
    int32_t cells[3] = {1, 1, 1};
    std::optional<korvale::door::Tree> tree; // of owned triangles
    Data record;                             // borrows the triangles
    mutable RayStatus status;                // of borrowed triangles, and of owned ones once it is asked for
    mutable std::atomic<int64_t> open = -1;  // edges, once they have been counted
    mutable std::atomic<int64_t> first_open; // an open one, as its two corners
};

namespace korvale::door {

inline Ray ray_of(const korvale_grid& grid, const double* origin, const double* direction)
{
    return grid.tree ? grid.tree->ray(origin, direction) : Ray(origin, direction);
}

/// All triangles that a ray meets, nearest first.
Vector<korvale_hit> find_hits(const korvale_grid& grid, const Ray& ray, const double* direction);

/// Calls `work` for each of n rays, and a host's progress now and then.
template <class Work>
void for_each_ray(int64_t n, const Telling& telling, Work work)
{
    constexpr int64_t kReport = 256; // rays between two reports
    for (int64_t i = 0; i < n; ++i) {
        if (i % kReport == 0)
            telling.tell(static_cast<double>(i) / static_cast<double>(n));
        work(i);
    }
    telling.tell(1);
}

} // namespace korvale::door
