// Edits the cells of a classified record, or makes cells of its own, as arbitrary bytes say, and casts rays at them
// beside the documented steps. In the end nothing may be left.
#include <cstdlib>
#include <cstring>
#include <vector>

#include "ray/grid.h"
#include "ray/query.h"
#include "tests/ray/host_cells.h"
#include "tests/reference/ray.h"

namespace {

using korvale::test::Box;
using korvale::test::give_box;
using korvale::test::number_node;

void require(bool fact)
{
    if (!fact)
        std::abort();
}

/// The bytes of the input one after the other, zeros behind their end.
class Bytes {
public:
    Bytes(const uint8_t* bytes, size_t count) : at_(bytes), left_(count) {}
    bool any_left() const { return left_ > 0; }
    uint8_t next()
    {
        if (left_ == 0)
            return 0;
        --left_;
        return *at_++;
    }
    int below(int n) { return next() % n; }

    /// Mostly a small multiple of 1/2, so that things touch; now and then any double.
    double value()
    {
        const int8_t small = static_cast<int8_t>(next());
        if (small > -120)
            return 0.5 * small;
        uint8_t raw[sizeof(double)];
        for (uint8_t& byte : raw)
            byte = next();
        double any;
        std::memcpy(&any, raw, sizeof any);
        return any;
    }

private:
    const uint8_t* at_;
    size_t left_;
};

std::vector<Box> boxes_of(const RayStatus& s)
{
    std::vector<Box> boxes(static_cast<size_t>(s.nx * s.ny * s.nz));
    for (size_t c = 0; c < boxes.size(); ++c)
        std::copy(s.cells[c].dvals, s.cells[c].dvals + 6, boxes[c].begin());
    return boxes;
}

/// Changes one cell. `boxes` are those of all cells. Whether it was given a box.
bool edit(RayStatus& s, const std::vector<Box>& boxes, Bytes& bytes)
{
    const int c = bytes.below(static_cast<int>(boxes.size()));
    const int t = bytes.below(s.triangles->count);
    data_list_struct& cell = s.cells[c];
    switch (bytes.below(8)) {
    case 0:
        DataListDispose(&cell);
        break;
    case 1:
        DataDispose(&cell);
        break;
    case 2:
        if (cell.dvals == nullptr) {
            give_box(cell, boxes[static_cast<size_t>(c)]);
            return true;
        }
        break;
    case 3: {
        data_list_struct* const node = number_node({t, bytes.below(s.triangles->count)});
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
        for (int n = bytes.below(120); n >= 0; --n)
            ray_add_tri_to_bbox(&s, t, c);
        break;
    }
    return false;
}

/// One ray, beside the documented steps.
void cast(RayStatus& s, Bytes& bytes)
{
    double origin[3], direction[3];
    for (int k = 0; k < 3; ++k) {
        origin[k] = bytes.value();
        direction[k] = bytes.value();
    }
    double expected_distance = -1, distance = -1;
    const int expected = korvale::reference::intersect(origin, direction, s, &expected_distance);
    const std::vector<uint8_t> marks(s.tri_marks.bvals, s.tri_marks.bvals + s.tri_marks.count);
    require(ray_intersect(origin, direction, &s, &distance) == expected);
    require(std::memcmp(&distance, &expected_distance, sizeof distance) == 0 ||
            (distance != distance && expected_distance != expected_distance));
    require(std::memcmp(marks.data(), s.tri_marks.bvals, marks.size()) == 0);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* input, size_t count)
{
    Bytes bytes(input, count);
    RayStatus s;
    require(ray_initialize(&s) == 1);
    s.nx = 1 + bytes.below(5);
    s.ny = 1 + bytes.below(5);
    s.nz = 1 + bytes.below(5);
    std::vector<double> values(9 * static_cast<size_t>(1 + bytes.below(20)));
    for (double& value : values)
        value = bytes.value();
    Data triangles = {9, static_cast<int32_t>(values.size() / 9), DATA_TYPE_DOUBLE, values.data(), nullptr, nullptr};
    ray_set_triangles(&triangles, &s);

    std::vector<Box> boxes;
    const bool is_made_by_host = bytes.below(2) == 1;
    if (is_made_by_host) {
        boxes.resize(static_cast<size_t>(1 + bytes.below(30)));
        for (Box& box : boxes)
            for (double& value : box)
                value = bytes.value();
        korvale::test::make_cells(&s, boxes);
    } else {
        ray_classify(&s);
        require(s.cells != nullptr);
        boxes = boxes_of(s);
    }
    bool has_given_box = false;
    while (bytes.any_left()) {
        if (bytes.below(4) != 0)
            has_given_box = edit(s, boxes, bytes) || has_given_box;
        else
            cast(s, bytes);
    }
    // Neither may other sizes and moved boxes lead astray, as long as the cells can be told from those of a host.
    if (!is_made_by_host && !has_given_box) {
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
