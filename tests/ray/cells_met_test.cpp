// The cells found by way of the planes between them, against every cell held against the ray.
#include "ray/internal/cells_met.h"

#include <algorithm>
#include <vector>

#include <gtest/gtest.h>

#include "ray/internal/meet.h"
#include "tests/ray/host_cells.h"
#include "tests/support/random.h"

namespace korvale::test {
namespace {

using namespace korvale::ray;

/// Classified cells, each with or without a number.
class Record {
public:
    Record(const Box& box, int nx, int ny, int nz)
    {
        ray_initialize(&s_);
        s_.nx = nx;
        s_.ny = ny;
        s_.nz = nz;
        std::copy(box.begin(), box.end(), s_.bbox.dvals);
        ray_make_sub_bbox(&s_);
    }
    ~Record()
    {
        ray_declassify(&s_);
        DataDispose(&s_.bbox);
    }
    Record(const Record&) = delete;
    Record& operator=(const Record&) = delete;

    RayStatus* operator->() { return &s_; }
    void fill(int cell) { ray_add_tri_to_bbox(&s_, 0, cell); }
    Cells cells() const { return cells_of(s_); }

private:
    RayStatus s_;
};

struct Ray {
    double origin[3], direction[3];
};

std::vector<int> found(const Record& record, const Ray& ray)
{
    static int32_t met[kMostCellsMet];
    const int32_t count = find_cells_met(ray.origin, ray.direction, record.cells(), met);
    return count < 0 ? std::vector<int>{-1} : std::vector<int>(met, met + count);
}

std::vector<int> met_one_by_one(const Record& record, const Ray& ray)
{
    const Cells cells = record.cells();
    std::vector<int> met;
    cells.grid->for_each_cell([&](int32_t c, const double* box) {
        if (can_be_met(cells.first[c]) && meets_box(ray.origin, ray.direction, box))
            met.push_back(c);
    });
    return met;
}

/// From a plane of the grid, from a round number or from anywhere, mostly along an axis or nearly so.
Ray random_ray(Random& random, const Grid& grid)
{
    Ray ray;
    for (int k = 0; k < 3; ++k) {
        const GridAxis& axis = grid.axes[k];
        ray.origin[k] = random.one_in(3)   ? axis.planes[random.below(axis.cells + 1)]
                        : random.one_in(2) ? random.between(-6, 6)
                                           : random.uniform(-6, 6);
        ray.direction[k] = random.one_in(3)   ? 0.0
                           : random.one_in(4) ? random.uniform(-3e-06, 3e-06)
                                              : random.uniform(-1, 1);
        if (random.one_in(40))
            ray.direction[k] = random.awkward();
    }
    return ray;
}

TEST(CellsMetSteps, AreThoseWithAFaceThatTheRayMeets)
{
    Random random(1101);
    int64_t cells_met = 0;
    for (int i = 0; i < rounds(300) && !HasFailure(); ++i) {
        Box box;
        for (size_t k = 0; k < 3; ++k) {
            box[k] = random.between(-4, 2);
            box[k + 3] = box[k] + (random.one_in(5) ? 0.0 : random.one_in(2) ? random.between(1, 4) : random.unit());
        }
        Record record(box, random.between(1, 9), random.between(1, 9), random.between(1, 9));
        const Cells cells = record.cells();
        ASSERT_TRUE(cells.grid != nullptr && cells.grid->in_order);
        for (int c = 0; c < cells.count; ++c)
            if (random.one_in(3) || i % 2 == 0)
                record.fill(c);
        for (int r = 0; r < 40 && !HasFailure(); ++r) {
            const Ray ray = random_ray(random, *cells.grid);
            const std::vector<int> expected = met_one_by_one(record, ray);
            const std::vector<int> actual = found(record, ray);
            // Where boxes without extent lie upon each other, a cell is found from up to all its six planes, and again.
            if (expected.size() > kMostCellsMet / 12 && actual == std::vector<int>{-1})
                continue;
            EXPECT_EQ(actual, expected);
            cells_met += static_cast<int64_t>(expected.size());
        }
    }
    EXPECT_GT(cells_met, 5000);
}

TEST(CellsMet, AreFoundOnAllPlanesThatCoincide)
{
    // Three quarters of the last place below 1 are a step up to 1 and none beyond: the last three planes are one.
    constexpr double kPlace = 0x1p-53;
    Record record({1 - 6 * kPlace, 0, 0, 1, 1, 1}, 8, 1, 1);
    const Cells cells = record.cells();
    for (int c = 0; c < 8; ++c)
        record.fill(c);
    for (int i = 0; i <= 8; ++i)
        ASSERT_EQ(cells.grid->axes[0].planes[i], 1 - std::max(6 - i, 0) * kPlace);
    const std::vector<int> touching = {5, 6, 7};
    for (const Ray& ray : {Ray{{1, 0.5, 0.5}, {1, 0, 0}}, Ray{{1, 0.5, 0.5}, {-1, 0, 0}}, Ray{{1, -1, 0.5}, {0, 1, 0}},
                           Ray{{1, 2, 0.5}, {0, -1, 0}}, Ray{{1, 0.5, 2}, {0, 0, -1}}}) {
        const std::vector<int> expected = met_one_by_one(record, ray);
        EXPECT_EQ(found(record, ray), expected);
        EXPECT_TRUE(std::includes(expected.begin(), expected.end(), touching.begin(), touching.end()));
    }
}

TEST(CellsMet, AreNotFoundInAnEmptiedCell)
{
    Record record({0, 0, 0, 1, 1, 4}, 1, 1, 4);
    for (int c = 0; c < 4; ++c)
        record.fill(c);
    const Ray ray = {{0.5, 0.5, -1}, {0, 0, 1}};
    EXPECT_EQ(found(record, ray), (std::vector<int>{0, 1, 2, 3}));
    DataDispose(&record->cells[0]);
    DataListDispose(&record->cells[2]);
    EXPECT_EQ(found(record, ray), (std::vector<int>{1, 3}));
}

TEST(CellsMet, AreTooManyAboveTheRoomForThem)
{
    Record record({0, 0, 0, 1, 1, 0}, 1, 1, kMostCellsMet + 1);
    const Ray ray = {{0.5, 0.5, -1}, {0, 0, 1}};
    for (int c = 0; c < kMostCellsMet / 4; ++c) // each is found from more than one plane
        record.fill(c);
    EXPECT_EQ(found(record, ray), met_one_by_one(record, ray));
    for (int c = kMostCellsMet / 4; c <= kMostCellsMet; ++c)
        record.fill(c);
    EXPECT_EQ(found(record, ray), std::vector<int>{-1});
}

} // namespace
} // namespace korvale::test
