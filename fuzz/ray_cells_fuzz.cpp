// Edits the cells of a classified record, or makes cells of its own, as arbitrary bytes say, and casts rays at them
// beside the documented steps. In the end nothing may be left.
#include <cstdlib>
#include <cstring>
#include <vector>

#include "fuzz/input.h"
#include "ray/grid.h"
#include "ray/query.h"
#include "tests/ray/host_cells.h"
#include "tests/reference/ray.h"

using namespace korvale::fuzz;

namespace {

using korvale::test::Box;
using korvale::test::give_box;
using korvale::test::number_node;

/// Mostly a small multiple of 1/2, so that things touch; now and then any double.
double value_of(Input& in)
{
    const auto small = in.any<int8_t>();
    return small > -120 ? 0.5 * small : in.any<double>();
}

std::vector<Box> boxes_of(const RayStatus& s)
{
    std::vector<Box> boxes(static_cast<size_t>(s.nx * s.ny * s.nz));
    for (size_t c = 0; c < boxes.size(); ++c)
        std::copy(s.cells[c].dvals, s.cells[c].dvals + 6, boxes[c].begin());
    return boxes;
}

/// Changes one cell. `boxes` are those of all cells.
void edit(RayStatus& s, const std::vector<Box>& boxes, Input& in)
{
    const int c = in.below(static_cast<int>(boxes.size()));
    const int t = in.below(s.triangles->count);
    data_list_struct& cell = s.cells[c];
    switch (in.below(8)) {
    case 0:
        DataListDispose(&cell);
        break;
    case 1:
        DataDispose(&cell);
        break;
    case 2:
        if (cell.dvals == nullptr)
            give_box(cell, boxes[static_cast<size_t>(in.below(static_cast<int>(boxes.size())))]);
        break;
    case 3: {
        data_list_struct* const node = number_node({t, in.below(s.triangles->count)});
        node->next = cell.next;
        cell.next = node;
        break;
    }
    case 4:
        if (data_list_struct* const node = cell.next; node != nullptr) {
            cell.next = node->next;
            DataDispose(node);
            std::free(node);
        }
        break;
    case 5:
        if (cell.next != nullptr) // no number node any more
            DataDispose(cell.next);
        break;
    default:
        for (int n = in.below(120); n >= 0; --n)
            ray_add_tri_to_bbox(&s, t, c);
        break;
    }
}

/// One ray, beside the documented steps. `boxes` are those of the library's cells, null for a host's.
void cast(RayStatus& s, const Box* boxes, Input& in)
{
    double origin[3], direction[3];
    for (int k = 0; k < 3; ++k) {
        origin[k] = value_of(in);
        direction[k] = value_of(in);
    }
    double expected_distance = -1, distance = -1;
    const int expected = korvale::reference::intersect(origin, direction, s, &expected_distance, boxes);
    const std::vector<uint8_t> marks(s.tri_marks.bvals, s.tri_marks.bvals + s.tri_marks.count);
    require(ray_intersect(origin, direction, &s, &distance) == expected);
    require(is_same(distance, expected_distance));
    require(std::memcmp(marks.data(), s.tri_marks.bvals, marks.size()) == 0);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t count)
{
    Input in(bytes, count);
    RayStatus s;
    require(ray_initialize(&s) == 1);
    s.nx = 1 + in.below(5);
    s.ny = 1 + in.below(5);
    s.nz = 1 + in.below(5);
    std::vector<double> values(9 * static_cast<size_t>(1 + in.below(20)));
    for (double& value : values)
        value = value_of(in);
    Data triangles = {9, static_cast<int32_t>(values.size() / 9), DATA_TYPE_DOUBLE, values.data(), nullptr, nullptr};
    ray_set_triangles(&triangles, &s);

    std::vector<Box> boxes;
    const bool is_made_by_host = in.below(2) == 1;
    if (is_made_by_host) {
        boxes.resize(static_cast<size_t>(1 + in.below(30)));
        for (Box& box : boxes)
            for (double& value : box)
                value = value_of(in);
        korvale::test::make_cells(&s, boxes);
    } else {
        ray_classify(&s);
        require(s.cells != nullptr);
        boxes = boxes_of(s);
    }
    while (!in.is_used_up()) {
        if (in.below(4) != 0)
            edit(s, boxes, in);
        else
            cast(s, is_made_by_host ? nullptr : boxes.data(), in);
    }
    if (!is_made_by_host) { // neither may other sizes and moved boxes lead astray
        const int sizes[] = {-1, 0, 1, 7, 20};
        s.nx = sizes[count % 5];
        s.nz = sizes[count / 5 % 5];
        for (size_t c = count % 3; c < boxes.size(); c += 3)
            if (s.cells[c].dvals != nullptr)
                std::fill(s.cells[c].dvals, s.cells[c].dvals + 6, 0.5);
        double origin[3] = {0, 0, -1}, direction[3] = {0, 0.5, 1}, distance;
        require(ray_intersect(origin, direction, &s, &distance) <= triangles.count);
    }
    if (count % 2 == 0)
        ray_declassify(&s);
    else if (is_made_by_host)
        ray_declassify(&s), ray_set_triangles(&triangles, &s), ray_classify(&s);
    else
        ray_classify(&s);
    ray_declassify(&s);
    DataDispose(&s.bbox);
    return 0;
}
