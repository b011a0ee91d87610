// Which boxes of vertices and edges meet? Neighbours along an outline lie close to each other, so a hierarchy over the
// edges in their order has small boxes and is built bottom-up without sorting. Invariant: the box of a node is the hull
// of those of its children. Every level is padded to a multiple of kFan with empty boxes, which meet nothing and add
// nothing to a hull.
#include "border/internal/box_tree.h"

#include <limits>

namespace korvale::border {
namespace {

int64_t filled_up(int64_t n)
{
    return (n + BoxTree::kFan - 1) / BoxTree::kFan * BoxTree::kFan;
}

void fill_up(Boxes& boxes, int64_t n)
{
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    for (int64_t i = n; i < filled_up(n); ++i)
        boxes.set(i, {kInfinity, kInfinity, -kInfinity, -kInfinity});
}

void join_ends(const ConstBoxes& vertices, int32_t n, Boxes& edges)
{
    double *const low_x = edges.low_x, *const low_y = edges.low_y;
    double *const high_x = edges.high_x, *const high_y = edges.high_y;
    for_lanes(0, n, [=]<class V>(int32_t i) {
        store(low_x + i, lesser(load<V>(vertices.low_x + i), load<V>(vertices.low_x + i + 1)));
        store(low_y + i, lesser(load<V>(vertices.low_y + i), load<V>(vertices.low_y + i + 1)));
        store(high_x + i, greater(load<V>(vertices.high_x + i), load<V>(vertices.high_x + i + 1)));
        store(high_y + i, greater(load<V>(vertices.high_y + i), load<V>(vertices.high_y + i + 1)));
    });
}

/// The box around the kFan boxes from `first` on.
Box around_children(const Boxes& boxes, int64_t first)
{
    Pair low_x = load<Pair>(boxes.low_x + first), low_y = load<Pair>(boxes.low_y + first);
    Pair high_x = load<Pair>(boxes.high_x + first), high_y = load<Pair>(boxes.high_y + first);
    for (int64_t i = first + 2; i < first + BoxTree::kFan; i += 2) {
        low_x = lesser(low_x, load<Pair>(boxes.low_x + i));
        low_y = lesser(low_y, load<Pair>(boxes.low_y + i));
        high_x = greater(high_x, load<Pair>(boxes.high_x + i));
        high_y = greater(high_y, load<Pair>(boxes.high_y + i));
    }
    return {reduce_least(low_x), reduce_least(low_y), reduce_greatest(high_x), reduce_greatest(high_y)};
}

} // namespace

int64_t doubles_for_tree(int64_t n)
{
    int64_t total = filled_up(n);
    while (n > BoxTree::kFan) {
        n = (n + BoxTree::kFan - 1) / BoxTree::kFan;
        total += filled_up(n);
    }
    return 4 * total;
}

BoxTree grow_tree(const Boxes& vertices, int32_t n, double* memory)
{
    BoxTree tree{};
    int top = 0;
    tree.level[0] = boxes_in(memory, filled_up(n));
    tree.count[0] = n;
    join_ends(vertices, n, tree.level[0]);
    fill_up(tree.level[0], n);
    while (tree.count[top] > BoxTree::kFan) {
        memory += 4 * filled_up(tree.count[top]);
        const Boxes& children = tree.level[top];
        const int32_t count = (tree.count[top] + BoxTree::kFan - 1) / BoxTree::kFan;
        ++top;
        tree.level[top] = boxes_in(memory, filled_up(count));
        tree.count[top] = count;
        for (int32_t k = 0; k < count; ++k)
            tree.level[top].set(k, around_children(children, int64_t{BoxTree::kFan} * k));
        fill_up(tree.level[top], count);
    }
    tree.levels = top + 1;
    return tree;
}

Box box_around(const BoxTree& tree)
{
    return around_children(tree.level[tree.levels - 1], 0);
}

} // namespace korvale::border
