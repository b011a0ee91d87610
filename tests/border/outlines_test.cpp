// BORDER: outlines and lists of them, lifted along the normal of the first.
#include "border/outlines.h"

#include <algorithm>
#include <initializer_list>
#include <limits>

#include <gtest/gtest.h>

#include "border/border.h"
#include "tests/border/records.h"
#include "tests/support/arrays.h"
#include "tests/support/bits.h"
#include "tests/support/heap.h"

namespace korvale::test {
namespace {

Coordinates square(double low, double high, double z = 0.0)
{
    return {low, low, z, high, low, z, high, high, z, low, high, z};
}

/// Coordinates of less than 16 are rounded by 9e-16, in moving and in carrying there and back.
void expect_near(const Coordinates& expected, const Coordinates& actual)
{
    ASSERT_EQ(expected.size(), actual.size());
    for (size_t i = 0; i < expected.size(); ++i)
        EXPECT_NEAR(expected[i], actual[i], 4e-15) << "coordinate " << i;
}

/// A record whose path is a list of outlines. Releases the list and leaves no pointer to it or to a child.
class ListStatus {
public:
    explicit ListStatus(const std::vector<DATAstruct*>& outlines)
        : list_(parent(outlines)), own_path_(status_->path), own_output_(status_->output)
    {
        status_->path = list_;
    }
    ~ListStatus()
    {
        const bool holds_unknown_output = status_->output != own_output_ && !in_outputs(status_->output);
        if (holds_unknown_output)
            release(status_->output);
        status_->path = own_path_;
        status_->output = own_output_;
    }
    operator BORDERStatus*() { return status_; }
    BORDERStatus* operator->() { return status_.operator->(); }
    DATAstruct* list() { return list_; }
    DATAstruct* outputs() { return own_output_; }
    DATAstruct* path(int k) { return static_cast<DATAstruct*>(list_->pvals[k]); }
    DATAstruct* output(int k) { return static_cast<DATAstruct*>(own_output_->pvals[k]); }

private:
    bool in_outputs(const DATAstruct* d)
    {
        for (int k = 0; own_output_->pvals != nullptr && k < own_output_->count; ++k)
            if (own_output_->pvals[k] == d)
                return true;
        return false;
    }

    OwnedBORDERStatus status_;
    Owned<DATAstruct> list_;
    DATAstruct *own_path_, *own_output_;
};

/// Runs `BORDER` in one record on lists of so many squares, one list after the other, and releases the record. Returns
/// how many blocks that leaves: they are those of the borders that a longer list has let go, and go as well.
int64_t blocks_left_after_lists_of(std::initializer_list<int> sizes)
{
    warm_up();
    std::vector<DATAstruct*> let_go, squares;
    let_go.reserve(100);
    squares.reserve(100);
    const HeapWatch heap;
    {
        OwnedBORDERStatus status;
        DATAstruct* const own_path = status->path;
        int slots = 0;
        for (const int size : sizes) {
            squares.clear();
            for (int k = 0; k < size; ++k)
                squares.push_back(new_doubles(3, square(0, 8)));
            Owned<DATAstruct> list(parent(squares));
            for (int k = 0; size > slots && k < slots; ++k)
                let_go.push_back(static_cast<DATAstruct*>(status->output->pvals[k]));
            slots = std::max(slots, size);
            status->path = list;
            EXPECT_EQ(BORDER(status), 1);
        }
        status->path = own_path;
    }
    const int64_t left = heap.live_blocks();
    for (DATAstruct* const border : let_go)
        release(border);
    EXPECT_EQ(heap.live_blocks(), 0);
    return left;
}

} // namespace

// One outline.

TEST(BORDER, AnOutlineIsLiftedByTheHeight)
{
    OwnedBORDERStatus status(square(0, 1));
    status->height = 2.0;
    ASSERT_EQ(BORDER(status), 1);
    expect_near(square(-1, 2, 2), points_of(status->output));
}

TEST(BORDER, AClockwiseOutlineIsLiftedToTheOtherSide)
{
    OwnedBORDERStatus status({0, 0, 0, 0, 1, 0, 1, 1, 0, 1, 0, 0});
    status->height = 2.0;
    ASSERT_EQ(BORDER(status), 1);
    expect_near({-1, -1, -2, -1, 2, -2, 2, 2, -2, 2, -1, -2}, points_of(status->output));
}

TEST(BORDER, WithoutHeightAnOutlineIsWhatTheSweepMakesOfIt)
{
    OwnedBORDERStatus lifted(square(0, 1)), swept(square(0, 1));
    ASSERT_EQ(BORDER(lifted), 1);
    ASSERT_EQ(BORDER_BORDER(swept), 1);
    expect_near(points_of(swept->output), points_of(lifted->output));
}

TEST(BORDER, RefusesNullAndOtherKinds)
{
    EXPECT_EQ(BORDER(nullptr), -1);
    OwnedBORDERStatus status(square(0, 1));
    for (const int32_t kind : std::initializer_list<int32_t>{DATA_TYPE_INT, DATA_TYPE_BYTE, DATA_TYPE_POINTER, 5, -1}) {
        status->path->type = kind;
        EXPECT_EQ(BORDER(status), -1);
        EXPECT_EQ(status->output->count, -1);
        EXPECT_EQ(status->flat->count, -1);
    }
    status->path->type = DATA_TYPE_DOUBLE;
    DATAstruct* const path = status->path;
    status->path = nullptr;
    EXPECT_EQ(BORDER(status), -1);
    EXPECT_EQ(status->output->count, -1);
    status->path = path;
}

TEST(BORDER, FailsWhereTheSweepFails)
{
    OwnedBORDERStatus status(square(0, 1));
    status->distance = std::numeric_limits<double>::infinity();
    EXPECT_EQ(BORDER(status), -1);
}

// Lists.

TEST(BORDER, AListGrowsTheOuterOutlineAndShrinksTheHoles)
{
    ListStatus status({new_doubles(3, square(-5, 5)), new_doubles(3, square(-2, 2))});
    ASSERT_EQ(BORDER(status), 1);
    EXPECT_EQ(status->path, status.list());
    EXPECT_EQ(status->output, status.outputs());
    EXPECT_EQ(status->distance, 1.0);
    ASSERT_EQ(status.outputs()->type, DATA_TYPE_DATA);
    ASSERT_EQ(status.outputs()->count, 2);
    ASSERT_EQ(status.outputs()->dim, 1);
    expect_near(square(-6, 6), points_of(status.output(0)));
    expect_near(square(-1, 1), points_of(status.output(1)));
}

TEST(BORDER, AllOutlinesOfAListAreLiftedAlongTheNormalOfTheFirst)
{
    const Coordinates clockwise_hole = {-2, -2, 0, -2, 2, 0, 2, 2, 0, 2, -2, 0};
    ListStatus status({new_doubles(3, square(-5, 5)), new_doubles(3, clockwise_hole)});
    status->height = 3.0;
    ASSERT_EQ(BORDER(status), 1);
    expect_near(square(-6, 6, 3), points_of(status.output(0)));
    expect_near({-1, -1, 3, -1, 1, 3, 1, 1, 3, 1, -1, 3}, points_of(status.output(1)));
}

TEST(BORDER, EveryFurtherOutlineIsAHole)
{
    ListStatus status({new_doubles(3, square(-9, 9)), new_doubles(3, square(-2, 2)), new_doubles(3, square(4, 8))});
    status->distance = -0.5;
    ASSERT_EQ(BORDER(status), 1);
    expect_near(square(-8.5, 8.5), points_of(status.output(0)));
    expect_near(square(-2.5, 2.5), points_of(status.output(1)));
    expect_near(square(3.5, 8.5), points_of(status.output(2)));
    EXPECT_EQ(status->distance, -0.5);
}

TEST(BORDER, ASecondCallReusesTheChildrenOfTheOutput)
{
    ListStatus status({new_doubles(3, square(-5, 5)), new_doubles(3, square(-2, 2))});
    ASSERT_EQ(BORDER(status), 1);
    DATAstruct *const first = status.output(0), *const second = status.output(1);
    double* const buffer = first->dvals;
    ASSERT_EQ(BORDER(status), 1);
    EXPECT_EQ(status.output(0), first);
    EXPECT_EQ(status.output(1), second);
    EXPECT_EQ(first->dvals, buffer);
}

TEST(BORDER, AListThatGrowsLeavesTheBordersItHeldToTheHost)
{
    NEEDS_HEAP_COUNTS();
    EXPECT_EQ(blocks_left_after_lists_of({2, 3}), 4); // two records and their buffers
    EXPECT_EQ(blocks_left_after_lists_of({1, 2, 3, 4, 5}), 20);
    EXPECT_EQ(blocks_left_after_lists_of({3, 2, 3}), 0);
    EXPECT_EQ(blocks_left_after_lists_of({3, 2}), 0);
}

TEST(BORDER, AListThatBecomesASingleOutlineLeavesTheBordersItHeldToTheHost)
{
    NEEDS_HEAP_COUNTS();
    for (const bool disposes_first : {false, true}) {
        warm_up();
        const HeapWatch heap;
        DATAstruct* borders[2];
        {
            OwnedBORDERStatus status(square(0, 8));
            DATAstruct* const own_path = status->path;
            {
                Owned<DATAstruct> list(parent({new_doubles(3, square(-5, 5)), new_doubles(3, square(-2, 2))}));
                status->path = list;
                ASSERT_EQ(BORDER(status), 1);
                status->path = own_path;
            }
            for (int k = 0; k < 2; ++k)
                borders[k] = static_cast<DATAstruct*>(status->output->pvals[k]);
            if (disposes_first)
                DATADispose(status->output);
            ASSERT_EQ(BORDER(status), 1);
            expect_near(square(-1, 9), points_of(status->output));
        }
        EXPECT_EQ(heap.live_blocks(), disposes_first ? 0 : 4);
        for (DATAstruct* const border : borders)
            if (!disposes_first)
                release(border);
        EXPECT_EQ(heap.live_blocks(), 0);
    }
}

TEST(BORDER, AListWithoutChildrenFailsWithNothingChanged)
{
    OwnedBORDERStatus status;
    status->path->type = DATA_TYPE_DATA;
    for (const int32_t count : {-1, 0, 2}) { // of 2 the slots are missing
        status->path->count = count;
        status->path->dim = 1;
        DATAstruct *const path = status->path, *const output = status->output;
        EXPECT_EQ(BORDER(status), -1);
        EXPECT_EQ(status->path, path);
        EXPECT_EQ(status->output, output);
        EXPECT_EQ(output->count, -1);
        EXPECT_EQ(output->type, DATA_TYPE_DOUBLE);
        EXPECT_EQ(status->distance, 1.0);
    }
}

TEST(BORDER, AListNeedsAnOutputRecord)
{
    ListStatus status({new_doubles(3, square(-5, 5))});
    status->output = nullptr;
    EXPECT_EQ(BORDER(status), -1);
    EXPECT_EQ(status->path, status.list());
}

TEST(BORDER, AFailingOuterOutlineLeavesTheRecordAtIt)
{
    ListStatus status({new_ints(3, {0, 0, 0, 1, 0, 0, 1, 1, 0}), new_doubles(3, square(-2, 2))});
    EXPECT_EQ(BORDER(status), -1);
    EXPECT_EQ(status->path, status.path(0));
    EXPECT_EQ(status->output, nullptr);
    EXPECT_EQ(status->distance, 1.0);
}

TEST(BORDER, AFailingHoleLeavesTheRecordAtItWithTheDistanceNegated)
{
    ListStatus status(
        {new_doubles(3, square(-5, 5)), new_ints(3, {0, 0, 0, 1, 0, 0, 1, 1, 0}), new_doubles(3, square(-2, 2))});
    EXPECT_EQ(BORDER(status), -1);
    EXPECT_EQ(status->path, status.path(1));
    EXPECT_EQ(status->output, nullptr);
    EXPECT_EQ(status->distance, -1.0);
    expect_near(square(-6, 6), points_of(status.output(0))); // done before
    EXPECT_EQ(status.output(2), nullptr);
}

TEST(BORDER, ANullChildFailsLikeAnyOther)
{
    ListStatus first({nullptr, new_doubles(3, square(-2, 2))});
    EXPECT_EQ(BORDER(first), -1);
    EXPECT_EQ(first->path, nullptr);
    EXPECT_EQ(first->distance, 1.0);
    ListStatus second({new_doubles(3, square(-5, 5)), nullptr});
    EXPECT_EQ(BORDER(second), -1);
    EXPECT_EQ(second->path, nullptr);
    EXPECT_EQ(second->distance, -1.0);
}

TEST(BORDER, AnEmptyChildFailsLikeAnyOther)
{
    DATAstruct* const empty = DATANew();
    empty->dim = 3;
    empty->count = 0;
    ListStatus status({new_doubles(3, square(-5, 5)), empty});
    EXPECT_EQ(BORDER(status), -1);
    EXPECT_EQ(status->path, empty);
    EXPECT_EQ(status->distance, -1.0);
}

TEST(BORDER, AFailingChildWithoutABorderLeavesItsNewOutputInNoSlot)
{
    NEEDS_HEAP_COUNTS();
    warm_up();
    const HeapWatch heap;
    {
        DATAstruct* const empty = DATANew();
        empty->dim = 3;
        empty->count = 0;
        ListStatus status({new_doubles(3, square(-5, 5)), empty});
        EXPECT_EQ(BORDER(status), -1);
        ASSERT_NE(status->output, nullptr);
        EXPECT_NE(status->output, status.outputs());
        EXPECT_EQ(status.output(1), nullptr);
        release(status->output); // nothing else leads to it
        status->output = status.outputs();
    }
    EXPECT_EQ(heap.live_blocks(), 0);
}

TEST(BORDER, EveryAllocationOfAListMayFail)
{
    NEEDS_HEAP_FAILURES();
    warm_up();
    int64_t failed = 0;
    for (bool happened = true; happened; ++failed) {
        const HeapWatch heap;
        {
            ListStatus status({new_doubles(3, square(-5, 5)), new_doubles(3, square(-2, 2))});
            const HeapFailure failure(failed + 1);
            const int code = BORDER(status);
            happened = failure.happened();
            EXPECT_EQ(code, happened ? -1 : 1);
        }
        EXPECT_EQ(heap.live_blocks(), 0) << "allocation " << failed + 1;
    }
    EXPECT_GE(failed, 1 + 2 + 8 + 2); // slots, child records, work arrays, child buffers
}

} // namespace korvale::test
