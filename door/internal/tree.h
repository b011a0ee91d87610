#pragma once

#include <limits>

#include "door/internal/failure.h"
#include "door/internal/heap.h"
#include "include/korvale_c.h"
#include "math/transform.h"
#include "ray/internal/grid.h"

// Triangles that do not move, found by rays as a grid of cells finds them, through a tree of boxes.
namespace korvale::door {

/// Multiplies a direction that reaches less than 1, or 2^500 and more, by the power of two that makes it reach 1 to 2.
/// The unit vector of any other stays the same to the last bit.
void bring_to_length(double* direction);

/// A ray as the exact test of a triangle sees it.
struct Ray {
    double origin[3], unit[3];
    Xfm frame;       ///< into the frame of the ray
    double ahead[3]; ///< the direction that the frame makes z
    bool can_meet;   ///< false for a direction without length
    bool is_finite;  ///< whether all numbers of the frame are

    /// All lengths are multiplied by `scale`, a power of two.
    Ray(const double* from, const double* along, double scale = 1);

    /// Whether triangle[9] is met, and at which distance.
    bool meets(const double* triangle, double& distance) const;

    /// The weights of the three corners of a triangle that is met, at the meeting.
    void weigh(const double* triangle, double* weights) const;
};

/// What a query comes to.
struct RayHits {
    int32_t count = 0;
    double distance = std::numeric_limits<double>::infinity(); ///< of `ray_intersect`, once there is one
    int32_t triangle = -1; ///< the one with the least number of the nearest; -1 where no distance is below infinity
};

class Tree {
public:
    /// Boxes on the way down to a triangle, at most.
    static constexpr int32_t kMostDepth = 96;

    /// Over `count` triangles of finite numbers, which stay where they are, in n[3] cells of the box[6] around them.
    /// Lengths are multiplied by a power of two where the model or its smallest triangle is small: see `scale_of`.
    Tree(const double* triangles, int32_t count, const double* box, const int32_t (&n)[3], const Telling& telling);
    Tree(const Tree&) = delete;
    Tree& operator=(const Tree&) = delete;

    /// A ray for the queries below, which take and give lengths of the host.
    Ray ray(const double* from, const double* along) const { return Ray(from, along, scale_); }

    /// All that `ray_intersect` finds.
    RayHits meet(const Ray& ray) const;

    /// As `meet`, but the nearest alone: the count is 0 or 1.
    RayHits meet_nearest(const Ray& ray) const;

    /// Whether a triangle is met no farther than `reach`.
    bool meets_any(const Ray& ray, double reach) const;

    /// Hands each triangle that is met to `visit`, in no order.
    void for_each(const Ray& ray, void (*visit)(void* user, int32_t triangle, double distance), void* user) const;

private:
    static constexpr int kWidth = 4; ///< lanes of Floats

    /// Up to eight triangles, one behind the other.
    struct Leaf {
        int32_t first, count;
    };

    /// A leaf as a node has it: below 0, where a child that is another node is its number.
    static constexpr int32_t packed(Leaf leaf) { return -1 - (8 * leaf.first + leaf.count - 1); }
    static constexpr bool is_leaf(int32_t child) { return child < 0; }
    static constexpr Leaf unpacked(int32_t child) { return {(-1 - child) / 8, (-1 - child) % 8 + 1}; }

    /// Boxes of the children, less the centre, how far from them along a ray a triangle in them may be met, and what
    /// stands in them: another node or a leaf. A child that is not there has a box that nothing meets.
    struct Node {
        float low[3][kWidth], high[3][kWidth], slack[kWidth];
        int32_t children[kWidth];
    };

    class Growing;
    struct Slabs;
    struct Sight;
    struct Entered;
    struct MetChildren;

    void grow(const Telling& telling);

    /// Whether one of the cells that list a triangle is met.
    bool meets_cell(const Ray& ray, int32_t t) const;

    /// The least number of those cells.
    int32_t first_cell(const Ray& ray, int32_t t) const;
    template <class Visit>
    void for_each_cell(int32_t t, Visit visit) const;

    /// Hands over triangles that are met and lie, but for rounding, no farther than `reach`, which `visit` may lower;
    /// it ends the walk with false.
    template <bool kNearestFirst, class Visit>
    void walk(const Ray& ray, double reach, Visit visit) const;
    template <class Visit>
    bool test_leaf(Leaf leaf, const Ray& ray, const Sight& seen, double& reach, Visit& visit) const;
    template <class Visit>
    void walk_plainly(const Ray& ray, double& reach, Visit visit) const;
    RayHits settle(const Ray& ray) const;

    const double* triangle(int32_t t) const { return triangles_ + 9 * int64_t{t}; }

    /// The box that tells which cells list a triangle.
    void find_box(int32_t t, double* box) const;

    /// A meeting with its distance in lengths of the host.
    RayHits unscaled(RayHits meeting) const;

    const double* triangles_; ///< as the host has them; all other lengths are multiplied by scale_
    int32_t count_;
    double scale_;
    double centre_[3];
    double half_; ///< the largest half extent
    bool is_ordinary_;
    Vector<double> planes_;
    ray::Grid grid_;
    Vector<Node> nodes_;
    Block<int32_t> numbers_; ///< of triangles, leaf after leaf
};

} // namespace korvale::door
