// Rays into triangles that a grid owns, the teapot finer and finer: 4,096 rays a call. Peers are CGAL, whose tree has
// boxes in doubles as well; `plain_tree`, written for the nearest alone; `counts`, the same cast for counts only; and
// `classify`, which is `ray_classify` from nothing to nothing in the same cells, beside making a grid.
#include <cmath>
#include <memory>

#include "bench/job.h"
#include "bench/plain_tree.h"
#include "include/korvale.h"
#include "include/korvale_c.h"

#ifdef KORVALE_HAS_CGAL
#include <CGAL/AABB_traits.h>
#include <CGAL/AABB_tree.h>
#include <CGAL/AABB_triangle_primitive.h>
#include <CGAL/Simple_cartesian.h>
#endif

namespace korvale::bench {
namespace {

using Values = std::vector<double>;

constexpr int kRays = 4096;

korvale_points points_of(const Values& xyz)
{
    return {xyz.data(), static_cast<int64_t>(xyz.size() / 3), 0, 3, KORVALE_DOUBLE};
}

struct Grid {
    explicit Grid(const Values& mesh)
    {
        const korvale_triangles triangles = {points_of(mesh), {}};
        need(korvale_grid_new(&triangles, nullptr, &grid, nullptr) == KORVALE_OK);
    }
    ~Grid() { korvale_grid_free(grid); }
    Grid(const Grid&) = delete;
    Grid& operator=(const Grid&) = delete;

    korvale_grid* grid = nullptr;
};

/// A mesh and rays at it.
struct Scene {
    explicit Scene(int triangles) : mesh(teapot(triangles)), rays(mesh, kRays) {}

    size_t size() const { return rays.origins.size() / 3; }
    const double* origin(size_t i) const { return &rays.origins[3 * i]; }
    const double* direction(size_t i) const { return &rays.directions[3 * i]; }

    Values mesh;
    Rays rays;
};

struct GridScene : Scene {
    explicit GridScene(int n) : Scene(n), grid(mesh) {}

    void cast(const korvale_ray_columns& columns) const
    {
        const korvale_points from = points_of(rays.origins), along = points_of(rays.directions);
        need(korvale_grid_cast(grid.grid, &from, &along, &columns, nullptr, nullptr, nullptr) == KORVALE_OK);
    }

    Grid grid;
    Values distances = Values(kRays), weights = Values(3 * kRays);
    std::vector<int32_t> counts = std::vector<int32_t>(kRays), triangles = std::vector<int32_t>(kRays);
};

/// All hits.
Work cast_counts(int triangles)
{
    return [s = std::make_shared<GridScene>(triangles)] { s->cast({nullptr, nullptr, s->counts.data(), nullptr}); };
}

Work cast_all_columns(int triangles)
{
    return [s = std::make_shared<GridScene>(triangles)] {
        s->cast({s->distances.data(), s->triangles.data(), s->counts.data(), s->weights.data()});
    };
}

Work cast_nearest(int triangles)
{
    return [s = std::make_shared<GridScene>(triangles)] {
        s->cast({s->distances.data(), s->triangles.data(), nullptr, nullptr});
    };
}

Work ask_any(int triangles)
{
    return [s = std::make_shared<GridScene>(triangles)] {
        for (size_t i = 0; i < s->size(); ++i)
            keep(korvale_grid_any(s->grid.grid, s->origin(i), s->direction(i), HUGE_VAL));
    };
}

/// Made and released.
Work build(int triangles)
{
    return [mesh = teapot(triangles)] { const Grid grid(mesh); };
}

Work classify(int count)
{
    struct Input {
        explicit Input(int n) : triangles(9, teapot(n)) { korvale_grid_cells(Grid(triangles.numbers).grid, cells); }

        Around<Data> triangles;
        int32_t cells[3];
    };
    return [input = std::make_shared<Input>(count)] {
        RayStatus status = {};
        need(ray_initialize(&status) == 1);
        status.nx = input->cells[0];
        status.ny = input->cells[1];
        status.nz = input->cells[2];
        ray_set_triangles(&input->triangles, &status);
        ray_classify(&status);
        ray_declassify(&status);
        DataDispose(&status.bbox);
    };
}

Work nearest_in_plain_tree(int triangles)
{
    struct Input : Scene {
        explicit Input(int n) : Scene(n), tree(mesh) {}

        PlainTree tree;
    };
    return [s = std::make_shared<Input>(triangles)] {
        for (size_t i = 0; i < s->size(); ++i)
            keep(s->tree.nearest(s->origin(i), s->direction(i)));
    };
}

Work build_plain_tree(int triangles)
{
    return [mesh = teapot(triangles)] { keep(PlainTree(mesh)); };
}

#ifdef KORVALE_HAS_CGAL
using Kernel = CGAL::Simple_cartesian<double>;
using Primitive = CGAL::AABB_triangle_primitive<Kernel, std::vector<Kernel::Triangle_3>::const_iterator>;

struct CgalTree {
    explicit CgalTree(const Values& v)
    {
        for (size_t i = 0; i < v.size(); i += 9)
            triangles.emplace_back(Kernel::Point_3(v[i], v[i + 1], v[i + 2]),
                                   Kernel::Point_3(v[i + 3], v[i + 4], v[i + 5]),
                                   Kernel::Point_3(v[i + 6], v[i + 7], v[i + 8]));
        tree.rebuild(triangles.cbegin(), triangles.cend());
        tree.build();
    }

    static Kernel::Ray_3 ray(const Scene& s, size_t i)
    {
        const double *o = s.origin(i), *d = s.direction(i);
        return {Kernel::Point_3(o[0], o[1], o[2]), Kernel::Vector_3(d[0], d[1], d[2])};
    }

    std::vector<Kernel::Triangle_3> triangles;
    CGAL::AABB_tree<CGAL::AABB_traits<Kernel, Primitive>> tree;
};

struct CgalScene : Scene {
    explicit CgalScene(int triangles) : Scene(triangles), peer(mesh) {}

    CgalTree peer;
};

Work cgal_counts(int triangles)
{
    return [s = std::make_shared<CgalScene>(triangles)] {
        for (size_t i = 0; i < s->size(); ++i)
            keep(s->peer.tree.number_of_intersected_primitives(CgalTree::ray(*s, i)));
    };
}

Work cgal_any(int triangles)
{
    return [s = std::make_shared<CgalScene>(triangles)] {
        for (size_t i = 0; i < s->size(); ++i)
            keep(s->peer.tree.do_intersect(CgalTree::ray(*s, i)));
    };
}

Work build_cgal(int triangles)
{
    return [mesh = teapot(triangles)] { const CgalTree tree(mesh); };
}
#endif

} // namespace

std::vector<Job> grid_jobs()
{
    return {
        {"grid.counts", kTeapots, cast_counts},
        {"grid.all_columns", kTeapots, cast_all_columns},
        {"grid.all_columns@counts", kTeapots, cast_counts},
        {"grid.nearest", kTeapots, cast_nearest},
        {"grid.nearest@plain_tree", kTeapots, nearest_in_plain_tree},
        {"grid.any", kTeapots, ask_any},
        {"grid.build", kTeapots, build},
        {"grid.build@classify", kTeapots, classify},
        {"grid.build@plain_tree", kTeapots, build_plain_tree},
#ifdef KORVALE_HAS_CGAL
        {"grid.counts@CGAL", kTeapots, cgal_counts},
        {"grid.any@CGAL", kTeapots, cgal_any},
        {"grid.build@CGAL", kTeapots, build_cgal},
#endif
    };
}

} // namespace korvale::bench
