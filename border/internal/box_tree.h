#pragma once

#include <bit>
#include <cstdint>

#include "border/internal/column.h"
#include "platform/internal/lanes.h"

namespace korvale::border {

/// An axis-aligned box in the plane.
struct Box {
    double low_x, low_y, high_x, high_y;
};

inline Box box_at(double x, double y)
{
    return {x, y, x, y};
}

inline void widen(Box& box, double x, double y)
{
    box.low_x = lesser(x, box.low_x);
    box.low_y = lesser(y, box.low_y);
    box.high_x = greater(x, box.high_x);
    box.high_y = greater(y, box.high_y);
}

inline double area(const Box& box)
{
    return (box.high_x - box.low_x) * (box.high_y - box.low_y);
}

inline Box hull(const Box& a, const Box& b)
{
    return {lesser(a.low_x, b.low_x), lesser(a.low_y, b.low_y), greater(a.high_x, b.high_x),
            greater(a.high_y, b.high_y)};
}

/// Whether the boxes share a point.
inline bool overlap(const Box& a, const Box& b)
{
    return !((a.low_x > b.high_x) | (b.low_x > a.high_x) | (a.low_y > b.high_y) | (b.low_y > a.high_y));
}

/// Boxes as columns.
struct Boxes {
    Column<double> low_x, low_y, high_x, high_y;

    Box operator[](int64_t i) const { return {low_x[i], low_y[i], high_x[i], high_y[i]}; }
    void set(int64_t i, const Box& box)
    {
        low_x[i] = box.low_x;
        low_y[i] = box.low_y;
        high_x[i] = box.high_x;
        high_y[i] = box.high_y;
    }
};

/// Boxes that a step only reads.
struct ConstBoxes {
    ConstBoxes(const Boxes& boxes) : low_x(boxes.low_x), low_y(boxes.low_y), high_x(boxes.high_x), high_y(boxes.high_y)
    {
    }

    const double *low_x, *low_y, *high_x, *high_y;
};

/// Columns for n boxes in `memory` of 4 n doubles.
inline Boxes boxes_in(double* memory, int64_t n)
{
    return {memory, memory + n, memory + 2 * n, memory + 3 * n};
}

/// Lane k: whether box i + k shares no point with `box`.
template <class V>
KORVALE_OVER_LANES auto boxes_apart(const Boxes& boxes, int64_t i, const Box& box)
{
    return (load<V>(boxes.low_x + i) > all<V>(box.high_x)) | (load<V>(boxes.low_y + i) > all<V>(box.high_y)) |
           (all<V>(box.low_x) > load<V>(boxes.high_x + i)) | (all<V>(box.low_y) > load<V>(boxes.high_y + i));
}

/// `boxes_apart` of the hulls of boxes i and i + 1.
template <class V>
KORVALE_OVER_LANES auto hulls_apart(const ConstBoxes& boxes, int64_t i, const Box& box)
{
    return (lesser(load<V>(boxes.low_x + i), load<V>(boxes.low_x + i + 1)) > all<V>(box.high_x)) |
           (lesser(load<V>(boxes.low_y + i), load<V>(boxes.low_y + i + 1)) > all<V>(box.high_y)) |
           (all<V>(box.low_x) > greater(load<V>(boxes.high_x + i), load<V>(boxes.high_x + i + 1))) |
           (all<V>(box.low_y) > greater(load<V>(boxes.high_y + i), load<V>(boxes.high_y + i + 1)));
}

/// A bounding volume hierarchy over the edges of a closed outline, in their order. Vertices have boxes; the box of an
/// edge is the hull of those of its two ends. `kFan` neighbours share a node, and so on upwards, to at most `kFan`
/// nodes.
struct BoxTree {
    static constexpr int32_t kFan = 8;     ///< two or four lanes at a time. Chosen
    static constexpr int kMostLevels = 12; ///< 8^11 is beyond 2^31 edges

    Boxes level[kMostLevels]; ///< level[0] are the edges; each is filled up to a multiple of kFan with empty boxes
    int32_t count[kMostLevels];
    int levels;
};

/// What a tree over n edges needs.
int64_t doubles_for_tree(int64_t n);

/// Boxes that columns of n vertices have room for. The first is repeated at the end, and a padding of kFan lets a step
/// read kFan boxes from any of them on.
inline int64_t boxes_for_vertices(int64_t n)
{
    return n + 1 + BoxTree::kFan;
}

/// The tree over the edges between n vertices, in `memory`.
BoxTree grow_tree(const Boxes& vertices, int32_t n, double* memory);

/// The box around all.
Box box_around(const BoxTree& tree);

/// Bit k is set where box first + k, of kFan, shares a point with `box`.
template <class V>
KORVALE_OVER_LANES unsigned find_overlaps(const Boxes& boxes, int64_t first, const Box& box)
{
    constexpr int kWidth = width_of<V>;
    unsigned apart = 0;
    for (int k = 0; k < BoxTree::kFan; k += kWidth)
        apart |= static_cast<unsigned>(bits(boxes_apart<V>(boxes, first + k, box))) << k;
    return ~apart & ((1u << BoxTree::kFan) - 1);
}

/// Whether high[i] < low[i] for kFan boxes from `first` on.
template <class V>
KORVALE_OVER_LANES bool all_clear(const double* high, const double* low, int64_t first)
{
    bool are_clear = true;
    for (int k = 0; k < BoxTree::kFan; k += width_of<V>)
        are_clear &= !any_false(load<V>(high + first + k) < load<V>(low + first + k));
    return are_clear;
}

/// Whether the boxes of kFan + 1 vertices lie one behind the other along an axis, each clear of the next. Then a vertex
/// of theirs meets none of the edges between them but its own.
template <class V>
KORVALE_OVER_LANES bool are_in_line(const Boxes& vertices, int64_t first)
{
    return all_clear<V>(vertices.high_x, vertices.low_x + 1, first) ||
           all_clear<V>(vertices.high_x + 1, vertices.low_x, first) ||
           all_clear<V>(vertices.high_y, vertices.low_y + 1, first) ||
           all_clear<V>(vertices.high_y + 1, vertices.low_y, first);
}

/// The bit of an edge in a leaf, 0 where it is in another.
inline unsigned bit_in_leaf(int32_t edge, int32_t first_edge)
{
    const int32_t within = edge - first_edge;
    return within >= 0 && within < BoxTree::kFan ? 1u << within : 0u;
}

/// Calls emit(vertex, edge) for the vertices of leaf `bunch` and the edges of leaf `node` whose boxes meet, until it
/// returns false.
template <class V, class Emit>
KORVALE_OVER_LANES bool meet_leaf(const BoxTree& tree, const Boxes& vertices, int32_t n, int32_t bunch, int32_t node,
                                  const Emit& emit)
{
    const int32_t first = BoxTree::kFan * bunch, first_edge = BoxTree::kFan * node;
    if (bunch == node && n - first >= BoxTree::kFan && are_in_line<V>(vertices, first))
        return true;
    unsigned near = find_overlaps<V>(vertices, first, tree.level[1][node]);
    near &= n - first < BoxTree::kFan ? (1u << (n - first)) - 1 : ~0u;
    for (; near != 0; near &= near - 1) {
        const int32_t m = first + std::countr_zero(near), before = m == 0 ? n - 1 : m - 1;
        unsigned edges = find_overlaps<V>(tree.level[0], first_edge, vertices[m]);
        edges &= ~(bit_in_leaf(m, first_edge) | bit_in_leaf(before, first_edge));
        for (; edges != 0; edges &= edges - 1)
            if (!emit(m, first_edge + std::countr_zero(edges)))
                return false;
    }
    return true;
}

/// `for_meeting_boxes` with V for lanes. The vertices of a leaf descend as a packet: one descent, for the box around
/// them. `pending[level]` holds the bits of the nodes still to visit, so the stack is a fixed array.
template <class V, class Emit, class GoesOn>
KORVALE_OVER_LANES bool descend(const BoxTree& tree, const Boxes& vertices, int32_t n, const Emit& emit,
                                const GoesOn& goes_on)
{
    const int top = tree.levels - 1;
    unsigned pending[BoxTree::kMostLevels];
    int32_t first[BoxTree::kMostLevels];
    for (int32_t bunch = 0; bunch < tree.count[1]; ++bunch) {
        const Box box = tree.level[1][bunch];
        int level = top;
        first[top] = 0;
        pending[top] = find_overlaps<V>(tree.level[top], 0, box);
        while (level <= top) {
            if (pending[level] == 0) {
                ++level;
                continue;
            }
            const int32_t node = first[level] + std::countr_zero(pending[level]);
            pending[level] &= pending[level] - 1;
            if (level > 1) {
                --level;
                first[level] = BoxTree::kFan * node;
                pending[level] = find_overlaps<V>(tree.level[level], first[level], box);
            } else if (!meet_leaf<V>(tree, vertices, n, bunch, node, emit) || !goes_on()) {
                return false;
            }
        }
    }
    return true;
}

/// Calls emit(vertex, edge) for every vertex and edge whose boxes meet, except its own two edges, until it returns
/// false, or goes_on() does, which is asked after every pair of leaves. Whether neither ever did. n is above kFan.
template <class Emit, class GoesOn>
bool for_meeting_boxes(const BoxTree& tree, const Boxes& vertices, int32_t n, const Emit& emit, const GoesOn& goes_on)
{
    return over_lanes([&]<class V>() { return descend<V>(tree, vertices, n, emit, goes_on); });
}

template <class Emit>
bool for_meeting_boxes(const BoxTree& tree, const Boxes& vertices, int32_t n, const Emit& emit)
{
    return for_meeting_boxes(tree, vertices, n, emit, [] { return true; });
}

} // namespace korvale::border
