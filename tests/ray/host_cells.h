#pragma once

#include <algorithm>
#include <array>
#include <cstdlib>
#include <vector>

#include "ray/grid.h"

// Cells, boxes and number nodes as a host makes them, from the C heap and not a byte larger than documented.
namespace korvale::test {

using Box = std::array<double, 6>;

/// Gives a cell without one a box of its own.
template <class Values>
void give_box(data_list_struct& cell, const Values& box)
{
    cell.type = DATA_TYPE_DOUBLE;
    cell.dim = 6;
    cell.count = 1;
    if (DataAllocate(&cell) == 1)
        std::copy(box.begin(), box.end(), cell.dvals);
}

/// A node with room for 100 numbers that holds those given.
inline data_list_struct* number_node(const std::vector<int>& numbers)
{
    data_list_struct* const node = DataListNew();
    node->type = DATA_TYPE_INT;
    node->dim = 1;
    node->count = 100;
    if (DataAllocate(node) == 1)
        std::copy(numbers.begin(), numbers.end(), node->ivals);
    node->count = static_cast<int32_t>(numbers.size());
    return node;
}

/// Gives a record cells along z with the boxes given and no numbers. What stood there is not released.
inline void make_cells(RayStatus* s, const std::vector<Box>& boxes)
{
    s->nx = s->ny = 1;
    s->nz = static_cast<int32_t>(boxes.size());
    s->cells = static_cast<data_list_struct*>(std::malloc(boxes.size() * sizeof(data_list_struct)));
    for (size_t c = 0; c < boxes.size(); ++c) {
        DataListInitialize(&s->cells[c]);
        give_box(s->cells[c], boxes[c]);
    }
}

} // namespace korvale::test
