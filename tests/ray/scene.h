#pragma once

#include <numeric>
#include <utility>
#include <vector>

#include "ray/grid.h"
#include "ray/query.h"
#include "tests/support/arrays.h"

namespace korvale::test {

/// Triangles and a record that is set to them; both are released in the end.
class Scene {
public:
    explicit Scene(const std::vector<double>& triangles) : triangles_(doubles<Data>(9, triangles))
    {
        ray_initialize(&status_);
        ray_set_triangles(triangles_, &status_);
    }
    Scene(const std::vector<double>& triangles, int nx, int ny, int nz) : Scene(triangles)
    {
        status_.nx = nx;
        status_.ny = ny;
        status_.nz = nz;
        ray_classify(&status_);
    }
    ~Scene()
    {
        ray_declassify(&status_);
        DataDispose(&status_.bbox);
    }
    Scene(const Scene&) = delete;
    Scene& operator=(const Scene&) = delete;

    operator RayStatus*() { return &status_; }
    RayStatus* operator->() { return &status_; }
    Data& triangles() { return *triangles_; }

    /// The triangle numbers in a cell.
    std::vector<int> numbers(int cell) const
    {
        std::vector<int> all;
        for (const data_list_struct* node = status_.cells[cell].next; node != nullptr; node = node->next)
            all.insert(all.end(), node->ivals, node->ivals + node->count);
        return all;
    }

    /// The box of a cell.
    std::vector<double> box(int cell) const
    {
        const double* const b = status_.cells[cell].dvals;
        return std::vector<double>(b, b + 6);
    }

    /// The marks as they stand.
    std::vector<int> marks() const
    {
        const Data& m = status_.tri_marks;
        return m.bvals == nullptr ? std::vector<int>() : std::vector<int>(m.bvals, m.bvals + m.count);
    }

private:
    OwnedData triangles_;
    RayStatus status_;
};

/// Two triangles that span the box of two opposite corners.
inline std::vector<double> spanning(double x0, double y0, double z0, double x1, double y1, double z1)
{
    return {x0, y0, z0, x1, y0, z0, x0, y1, z0, x1, y1, z1, x0, y1, z1, x1, y0, z1};
}

/// One list of triangles after the other.
inline std::vector<double> joined(std::vector<double> first, const std::vector<double>& second)
{
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

/// A triangle over (0, 0), (1, 0), (0, 1) at one height.
inline std::vector<double> level(double z)
{
    return {0, 0, z, 1, 0, z, 0, 1, z};
}

/// `n` of them, at the heights 0, 1, ...
inline std::vector<double> levels(int n)
{
    std::vector<double> all;
    for (int i = 0; i < n; ++i)
        all = joined(std::move(all), level(i));
    return all;
}

/// Hits of a ray upwards through all levels.
inline int hits_upwards(RayStatus* s)
{
    double o[3] = {0.25, 0.25, -1}, d[3] = {0, 0, 1}, distance;
    return ray_intersect(o, d, s, &distance);
}

/// The triangles that a ray upwards tested.
inline std::vector<int> tested_upwards(Scene& s)
{
    hits_upwards(s);
    std::vector<int> tested;
    const std::vector<int> marks = s.marks();
    for (size_t t = 0; t < marks.size(); ++t)
        if (marks[t] != 0)
            tested.push_back(static_cast<int>(t));
    return tested;
}

/// `n` copies of one triangle.
inline std::vector<double> copies(int n)
{
    std::vector<double> all;
    for (int i = 0; i < n; ++i)
        all = joined(std::move(all), {0, 0, 0, 1, 0, 0, 0, 1, 0});
    return all;
}

inline std::vector<int> first_numbers(int n)
{
    std::vector<int> numbers(static_cast<size_t>(n));
    std::iota(numbers.begin(), numbers.end(), 0);
    return numbers;
}

/// The counts of the number nodes of a cell.
inline std::vector<int> node_counts(const data_list_struct& cell)
{
    std::vector<int> counts;
    for (const data_list_struct* node = cell.next; node != nullptr; node = node->next)
        counts.push_back(node->count);
    return counts;
}

} // namespace korvale::test
