// What the two flavours of the sweep do around it: validation, records, allocation, flattening, height.
#include "border/border.h"

#include <sys/resource.h>

#include <algorithm>
#include <cmath>
#include <initializer_list>
#include <limits>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/layer.h"
#include "tests/border/records.h"
#include "tests/support/arrays.h"
#include "tests/support/bits.h"
#include "tests/support/heap.h"

namespace korvale::test {
namespace {

const Coordinates kUnitSquare = {0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0};
constexpr double kInfinity = std::numeric_limits<double>::infinity();
const double kNotFinite[] = {kInfinity, -kInfinity, std::numeric_limits<double>::quiet_NaN()};

/// Rooms joined by a corridor; shrinks with collapses, a split and hairpins.
const Coordinates kRooms = {0, 0, 0, 4, 0, 0, 4, 1.5, 0, 6, 1.4, 0, 6, 0, 0, 8, 0, 0,
                            8, 4, 0, 6, 4, 0, 6, 2.6, 0, 4, 2.5, 0, 4, 4, 0, 0, 4, 0};

std::vector<DATAstruct*> work_arrays(BORDERStatus* s)
{
    return {s->flat, s->velocity, s->direction, s->line, s->dead, s->length, s->rate, s->merge};
}

} // namespace

// Validation.

TEST(Border, RefusesANullRecord)
{
    EXPECT_EQ(Border(nullptr), -1);
    EXPECT_EQ(BORDER_BORDER(nullptr), -1);
}

TEST(Border, RefusesANullPathAfterReplacingTheOutput)
{
    OwnedBorderStatus status(kUnitSquare);
    ASSERT_EQ(Border(status), 1);
    release(status->path);
    status->path = nullptr;
    EXPECT_EQ(Border(status), -1);
    ASSERT_NE(status->output, nullptr);
    EXPECT_EQ(status->output->count, -1);
}

TEST(BORDER_BORDER, RefusesANullPath)
{
    OwnedBORDERStatus status(kUnitSquare);
    DATAstruct* const path = status->path;
    status->path = nullptr;
    EXPECT_EQ(BORDER_BORDER(status), -1);
    EXPECT_EQ(status->output->count, -1);
    status->path = path;
}

TEST(BORDER_BORDER, RefusesOtherKindsWithoutTouchingAnything)
{
    for (const int32_t kind :
         std::initializer_list<int32_t>{DATA_TYPE_INT, DATA_TYPE_BYTE, DATA_TYPE_POINTER, DATA_TYPE_DATA, 5, -1}) {
        OwnedBORDERStatus status(kUnitSquare);
        status->path->type = kind;
        EXPECT_EQ(BORDER_BORDER(status), -1);
        EXPECT_EQ(status->flat->count, -1);
        EXPECT_EQ(status->output->count, -1);
        status->path->type = DATA_TYPE_DOUBLE;
    }
}

TEST(Border, RefusesOtherKinds)
{
    for (const int32_t kind : std::initializer_list<int32_t>{DATA_TYPE_INT, DATA_TYPE_BYTE, 7}) {
        OwnedBorderStatus status(kUnitSquare);
        status->path->type = kind;
        EXPECT_EQ(Border(status), -1);
        status->path->type = DATA_TYPE_DOUBLE;
    }
}

TEST(Border, RefusesPointsThatAreNotThreeWide)
{
    for (const int32_t dim : {1, 2, 4, 6}) {
        OwnedBorderStatus first(kUnitSquare);
        first->path->count = 12 / dim;
        first->path->dim = dim;
        EXPECT_EQ(Border(first), -1) << dim;
        OwnedBORDERStatus second(kUnitSquare);
        second->path->count = 12 / dim;
        second->path->dim = dim;
        EXPECT_EQ(BORDER_BORDER(second), -1) << dim;
    }
}

TEST(Border, RefusesAnEmptyPathAndOneWithoutABuffer)
{
    OwnedBorderStatus first;
    EXPECT_EQ(Border(first), -1);
    first->path->dim = 3;
    first->path->count = 4;
    EXPECT_EQ(Border(first), -1);

    OwnedBORDERStatus second;
    EXPECT_EQ(BORDER_BORDER(second), -1);
    second->path->dim = 3;
    second->path->count = 0;
    EXPECT_EQ(BORDER_BORDER(second), -1);
    second->path->count = 4;
    EXPECT_EQ(BORDER_BORDER(second), -1);
}

TEST(BORDER_BORDER, RefusesAPathThatIsLongerThanItsBuffer)
{
    OwnedBORDERStatus status(kUnitSquare);
    status->path->count = 5;
    EXPECT_EQ(BORDER_BORDER(status), -1);
}

TEST(BORDER_BORDER, ReadsMemoryThatTheHostWrapped)
{
    OwnedBORDERStatus status;
    DATAstruct* const own = status->path;
    Coordinates points = kUnitSquare;
    DATAstruct path = wrapped<DATAstruct>(points.data(), 4, 3);
    status->path = &path;
    EXPECT_EQ(BORDER_BORDER(status), 1);
    EXPECT_EQ(status->output->count, 4);
    EXPECT_EQ(points, kUnitSquare);
    status->path = own;
}

TEST(BORDER_BORDER, AnOutputThatWrapsHostMemoryGetsABufferOfItsOwn)
{
    OwnedBORDERStatus status(kUnitSquare);
    DATAstruct* const own = status->output;
    Coordinates points(12, 7.0);
    DATAstruct output = wrapped<DATAstruct>(points.data(), 4, 3);
    status->output = &output;
    EXPECT_EQ(BORDER_BORDER(status), 1);
    EXPECT_NE(output.dvals, points.data());
    EXPECT_EQ(points, Coordinates(12, 7.0));
    EXPECT_TRUE(same_bits(border_of<SecondFlavour>({kUnitSquare, 1.0}).border, points_of(&output)));
    DATADispose(&output);
    status->output = own;
}

TEST(Border, RefusesMorePointsThanAnArrayMayHave)
{
    Coordinates points = kUnitSquare;
    for (const int32_t count : {715827883, 1 << 30}) { // three times as many coordinates leave 31 bits
        OwnedBORDERStatus second;
        DATAstruct* const own = second->path;
        DATAstruct path = wrapped<DATAstruct>(points.data(), count, 3);
        second->path = &path;
        EXPECT_EQ(BORDER_BORDER(second), -1);
        second->path = own;
        OwnedBorderStatus first;
        Data* const first_own = first->path;
        Data first_path = wrapped<Data>(points.data(), count, 3);
        first->path = &first_path;
        EXPECT_EQ(Border(first), -1);
        first->path = first_own;
    }
}

TEST(Border, ADistanceThatIsNotFiniteFailsAfterTheOutputWasReplaced)
{
    for (const double distance : kNotFinite) {
        OwnedBorderStatus status(kUnitSquare);
        ASSERT_EQ(Border(status), 1);
        status->distance = distance;
        EXPECT_EQ(Border(status), -1);
        ASSERT_NE(status->output, nullptr);
        EXPECT_EQ(status->output->count, -1);
        EXPECT_EQ(status->output->dvals, nullptr);
    }
}

TEST(BORDER_BORDER, ADistanceThatIsNotFiniteFailsWithoutTouchingTheOutput)
{
    for (const double distance : kNotFinite) {
        OwnedBORDERStatus status(kUnitSquare);
        ASSERT_EQ(BORDER_BORDER(status), 1);
        const Coordinates before = points_of(status->output);
        status->distance = distance;
        EXPECT_EQ(BORDER_BORDER(status), -1);
        EXPECT_EQ(points_of(status->output), before);
    }
}

TEST(BORDER_BORDER, ADistanceThatIsNotFiniteMakesNoOutput)
{
    for (const double distance : kNotFinite) {
        OwnedBORDERStatus status(kUnitSquare);
        release(status->output);
        status->output = nullptr;
        status->distance = distance;
        EXPECT_EQ(BORDER_BORDER(status), -1);
        EXPECT_EQ(status->output, nullptr);
        EXPECT_EQ(status->flat->count, -1);
    }
}

TEST(Border, AHeightThatIsNotFiniteIsNotLookedAt)
{
    OwnedBorderStatus status(kUnitSquare);
    status->height = kInfinity;
    EXPECT_EQ(Border(status), 1);
    EXPECT_EQ(status->output->count, 4);
}

TEST(Border, CoordinatesThatAreNotFiniteEndTheSweep)
{
    for (const double value : kNotFinite)
        for (const double distance : {0.5, -0.5}) {
            Coordinates path = kUnitSquare;
            path[4] = value;
            EXPECT_EQ(border_of<SecondFlavour>({path, distance}).border.size(), 12u);
            EXPECT_EQ(border_of<FirstFlavour>({path, distance}).code * border_of<FirstFlavour>({path, distance}).code,
                      1);
        }
}

TEST(Border, ThreePointsOnOneLineHaveNoPlane)
{
    EXPECT_EQ(border_of<FirstFlavour>({{0, 0, 0, 1, 1, 1, 2, 2, 2}, 1.0}).code, -1);
    EXPECT_EQ(border_of<SecondFlavour>({{0, 0, 0, 1, 1, 1, 2, 2, 2}, 1.0}).code, 1);
}

TEST(Border, OneAndTwoPointsNeedNoPlane)
{
    EXPECT_EQ(border_of<FirstFlavour>({{1, 2, 3}, 1.0}).code, 1);
    EXPECT_EQ(border_of<FirstFlavour>({{0, 0, 0, 1, 1, 1}, 1.0}).code, 1);
}

TEST(Border, AnOutlineAThousandthAcrossHasNoPlane)
{
    const auto square = [](double side) { return Coordinates{0, 0, 0, side, 0, 0, side, side, 0, 0, side, 0}; };
    EXPECT_EQ(border_of<FirstFlavour>({square(0.0009), 1e-4}).code, -1);
    EXPECT_EQ(border_of<FirstFlavour>({square(0.0011), 1e-4}).code, 1);
}

// The output record.

TEST(Border, MakesANewOutputOnEveryCallAndReleasesThePrevious)
{
    NEEDS_HEAP_COUNTS();
    OwnedBorderStatus status(kUnitSquare);
    ASSERT_EQ(Border(status), 1);
    const HeapWatch heap;
    ASSERT_EQ(Border(status), 1);
    EXPECT_EQ(heap.live_blocks(), 16); // the work arrays of the second call
}

TEST(Border, ReleasesThePreviousOutputEvenWhenItFails)
{
    NEEDS_HEAP_COUNTS();
    OwnedBorderStatus status(kUnitSquare);
    ASSERT_EQ(Border(status), 1);
    status->distance = kInfinity;
    const HeapWatch heap;
    EXPECT_EQ(Border(status), -1);
    EXPECT_EQ(heap.live_blocks(), -1); // a record and a buffer went, a record came
}

TEST(Border, DoesNotReleaseAnOutputThatIsThePath)
{
    OwnedBorderStatus status(kUnitSquare);
    status->output = status->path;
    ASSERT_EQ(Border(status), 1);
    EXPECT_NE(status->output, status->path);
    EXPECT_EQ(points_of(status->path), kUnitSquare);
    EXPECT_EQ(status->output->count, 4);
}

TEST(BORDER_BORDER, KeepsItsOutputRecordAndBuffer)
{
    OwnedBORDERStatus status(kUnitSquare);
    ASSERT_EQ(BORDER_BORDER(status), 1);
    DATAstruct* const output = status->output;
    double* const buffer = output->dvals;
    status->keep_collapsed = 0;
    status->distance = -2.0;
    ASSERT_EQ(BORDER_BORDER(status), 1);
    EXPECT_EQ(status->output, output);
    EXPECT_EQ(output->dvals, buffer);
    EXPECT_EQ(output->count, 1);
    EXPECT_EQ(output->alloc_count, 4);
}

TEST(BORDER_BORDER, MakesAnOutputWhereThereIsNone)
{
    OwnedBORDERStatus status(kUnitSquare);
    release(status->output);
    status->output = nullptr;
    ASSERT_EQ(BORDER_BORDER(status), 1);
    ASSERT_NE(status->output, nullptr);
    EXPECT_EQ(status->output->count, 4);
    EXPECT_EQ(status->output->dim, 3);
    EXPECT_EQ(status->output->type, DATA_TYPE_DOUBLE);
}

TEST(BORDER_BORDER, ReshapesAnOutputOfAnotherKind)
{
    OwnedBORDERStatus status(kUnitSquare);
    status->output->type = DATA_TYPE_INT;
    status->output->dim = 2;
    status->output->count = 5;
    ASSERT_EQ(DATAAllocate(status->output), 1);
    ASSERT_EQ(BORDER_BORDER(status), 1);
    EXPECT_EQ(status->output->type, DATA_TYPE_DOUBLE);
    EXPECT_EQ(status->output->ivals, nullptr);
    EXPECT_EQ(status->output->count, 4);
}

TEST(BORDER_BORDER, TheOutputMayBeThePath)
{
    OwnedBORDERStatus apart(kRooms), same(kRooms);
    apart->distance = same->distance = -0.75;
    release(same->output);
    same->output = same->path;
    ASSERT_EQ(BORDER_BORDER(apart), 1);
    ASSERT_EQ(BORDER_BORDER(same), 1);
    EXPECT_TRUE(same_bits(points_of(apart->output), points_of(same->path)));
}

// Work arrays.

TEST(Border, LeavesExactlyEightRecordsAndTheirBuffersAllocated)
{
    NEEDS_HEAP_COUNTS();
    warm_up();
    const HeapWatch heap;
    {
        OwnedBorderStatus status(kRooms);
        status->distance = -0.75;
        ASSERT_EQ(Border(status), 1);
    }
    EXPECT_EQ(heap.live_blocks(), 16);
}

TEST(Border, AnEmptyPathLeavesEightRecordsWithoutBuffers)
{
    NEEDS_HEAP_COUNTS();
    const HeapWatch heap;
    {
        OwnedBorderStatus status;
        status->path->dim = 3;
        status->path->count = 0;
        ASSERT_EQ(Border(status), -1);
    }
    EXPECT_EQ(heap.live_blocks(), 8);
}

TEST(BORDER_BORDER, LeavesNothingBehindWhenItsArraysAreReleased)
{
    NEEDS_HEAP_COUNTS();
    warm_up();
    const HeapWatch heap;
    for (const double distance : {0.0, 1.0, -0.75, -5.0}) {
        OwnedBORDERStatus status(kRooms);
        status->distance = distance;
        ASSERT_EQ(BORDER_BORDER(status), 1);
    }
    EXPECT_EQ(heap.live_blocks(), 0);
}

TEST(BORDER_BORDER, ShapesItsWorkArrays)
{
    OwnedBORDERStatus status(kUnitSquare);
    ASSERT_EQ(BORDER_BORDER(status), 1);
    for (DATAstruct* const d : work_arrays(status))
        EXPECT_EQ(d->count, 4);
    for (DATAstruct* const d : {status->flat, status->velocity, status->direction, status->line}) {
        EXPECT_EQ(d->dim, 3);
        EXPECT_EQ(d->type, DATA_TYPE_DOUBLE);
    }
    for (DATAstruct* const d : {status->length, status->rate}) {
        EXPECT_EQ(d->dim, 1);
        EXPECT_EQ(d->type, DATA_TYPE_DOUBLE);
    }
    EXPECT_EQ(status->dead->dim, 1);
    EXPECT_EQ(status->dead->type, DATA_TYPE_BYTE);
    EXPECT_EQ(status->merge->dim, 1);
    EXPECT_EQ(status->merge->type, DATA_TYPE_INT);
}

TEST(BORDER_BORDER, ReusesTheBuffersOfAnEarlierAndLargerOutline)
{
    OwnedBORDERStatus status(kRooms);
    ASSERT_EQ(BORDER_BORDER(status), 1);
    std::vector<const void*> buffers;
    for (DATAstruct* const d : work_arrays(status))
        buffers.insert(buffers.end(), {d->dvals, d->ivals, d->bvals});
    status.set_path(kUnitSquare);
    ASSERT_EQ(BORDER_BORDER(status), 1);
    std::vector<const void*> reused;
    for (DATAstruct* const d : work_arrays(status)) {
        reused.insert(reused.end(), {d->dvals, d->ivals, d->bvals});
        EXPECT_EQ(d->count, 4);
        EXPECT_EQ(d->alloc_count, 12);
    }
    EXPECT_EQ(buffers, reused);
    EXPECT_TRUE(same_bits(border_of<SecondFlavour>({kUnitSquare, 1.0}).border, points_of(status->output)));
}

TEST(BORDER_BORDER, RefusesANullWorkArray)
{
    DATAstruct* BORDERStatus::*const fields[] = {&BORDERStatus::flat, &BORDERStatus::velocity, &BORDERStatus::direction,
                                                 &BORDERStatus::line, &BORDERStatus::dead,     &BORDERStatus::length,
                                                 &BORDERStatus::rate, &BORDERStatus::merge};
    for (DATAstruct* BORDERStatus::*const field : fields) {
        OwnedBORDERStatus status(kUnitSquare);
        BORDERStatus* const s = status;
        release(s->*field);
        s->*field = nullptr;
        EXPECT_EQ(BORDER_BORDER(status), -1);
        for (DATAstruct* const d : work_arrays(status))
            if (d != nullptr) {
                EXPECT_EQ(d->alloc_count, 4); // the others were made nevertheless
            }
    }
}

// An exhausted heap.

TEST(BORDER_BORDER, EveryAllocationMayFailAndLeavesThePointsOfTheOutput)
{
    NEEDS_HEAP_FAILURES();
    warm_up();
    int64_t failed = 0;
    for (bool happened = true; happened; ++failed) {
        const HeapWatch heap;
        {
            OwnedBORDERStatus status(kRooms);
            status->distance = -0.75;
            fill_points(*status->output, {7, 8, 9});
            const HeapFailure failure(failed + 1);
            const int code = BORDER_BORDER(status);
            happened = failure.happened();
            EXPECT_EQ(code, happened ? -1 : 1);
            if (happened && status->output->dvals != nullptr) {
                EXPECT_TRUE(same_bits(Coordinates({7, 8, 9}).data(), status->output->dvals, 3));
            }
        }
        EXPECT_EQ(heap.live_blocks(), 0) << "allocation " << failed + 1;
    }
    EXPECT_GE(failed, 8 + 1);
}

TEST(BORDER_BORDER, WorkingMemoryThatCannotBeMadeFails)
{
    NEEDS_HEAP_FAILURES();
    const HeapWatch heap;
    {
        OwnedBORDERStatus status(gear(10000, 9, 10)); // more than the library keeps memory for
        fill_points(*status->output, {7, 8, 9});
        const HeapFailure failure(8 + 1);
        EXPECT_EQ(BORDER_BORDER(status), -1);
        EXPECT_TRUE(failure.happened());
        EXPECT_TRUE(same_bits({7, 8, 9}, points_of(status->output)));
    }
    EXPECT_EQ(heap.live_blocks(), 0);
}

// The second call in records that fit.

TEST(BORDER_BORDER, ASecondSweepAllocatesNothing)
{
    NEEDS_HEAP_COUNTS();
    for (const int32_t split_events : {0, 1})
        for (const double distance : {0.25, -0.75, -5.0}) {
            OwnedBORDERStatus few(kRooms), many(gear(64, 9, 10));
            for (BORDERStatus* const status : {static_cast<BORDERStatus*>(few), static_cast<BORDERStatus*>(many)}) {
                status->distance = distance;
                status->split_events = split_events;
                ASSERT_EQ(BORDER_BORDER(status), 1);
                const HeapWatch heap;
                ASSERT_EQ(BORDER_BORDER(status), 1);
                EXPECT_EQ(heap.allocations(), 0);
                EXPECT_EQ(heap.frees(), 0);
            }
        }
}

TEST(BORDER_BORDER, WorkingMemoryIsKeptForOutlinesOf30610PointsAnd13890WithSplits)
{
    NEEDS_HEAP_COUNTS();
    for (const bool split_events : {false, true})
        for (const int excess : {0, 1}) {
            OwnedBORDERStatus status(wiggly((split_events ? 13890 : 30610) + excess, 1, 0.0));
            status->split_events = split_events;
            status->distance = 1e-5;
            ASSERT_EQ(BORDER_BORDER(status), 1);
            const HeapWatch heap;
            ASSERT_EQ(BORDER_BORDER(status), 1);
            EXPECT_EQ(heap.allocations(), excess);
            EXPECT_EQ(heap.frees(), excess);
        }
}

TEST(BORDER_BORDER, ASecondSweepTouchesNoNewPage)
{
    NEEDS_HEAP_COUNTS();
    OwnedBORDERStatus status(wiggly(4096, 256, 0.001));
    status->distance = -0.0001;
    ASSERT_EQ(BORDER_BORDER(status), 1);
    const auto faults = [] {
        rusage usage;
        getrusage(RUSAGE_THREAD, &usage);
        return usage.ru_minflt + usage.ru_majflt;
    };
    faults();
    const long before = faults();
    for (int i = 0; i < 20; ++i)
        BORDER_BORDER(status);
    EXPECT_EQ(faults() - before, 0);
    EXPECT_EQ(std::count(status->dead->bvals, status->dead->bvals + 4096, 1), 0);
}

TEST(BORDER_BORDER, ThreadsSweepRecordsOfTheirOwnAtOnce)
{
    const Coordinates path = wiggly(200, 12, 0.5);
    const Coordinates expected = border_of<SecondFlavour>({path, -3.0}).border;
    std::vector<std::thread> threads;
    for (int t = 0; t < 5; ++t)
        threads.emplace_back([&path, &expected] {
            for (int round = 0; round < 40; ++round)
                ASSERT_TRUE(same_bits(expected, border_of<SecondFlavour>({path, -3.0}).border));
        });
    for (std::thread& thread : threads)
        thread.join();
}

TEST(BORDER_BORDER, AnOutputThatCannotBeMadeFails)
{
    NEEDS_HEAP_FAILURES();
    OwnedBORDERStatus status(kUnitSquare);
    release(status->output);
    status->output = nullptr;
    const HeapFailure failure(1);
    EXPECT_EQ(BORDER_BORDER(status), -1);
    EXPECT_EQ(status->output, nullptr);
}

TEST(BORDER_BORDER, AnOutputThatTheHeapHasNoRoomForLosesItsBuffer)
{
    NEEDS_HEAP_FAILURES();
    warm_up();
    OwnedBORDERStatus status(kUnitSquare);
    fill_points(*status->output, {7, 8, 9});
    const HeapFailure failure(8 + 1); // behind the work arrays
    EXPECT_EQ(BORDER_BORDER(status), -1);
    EXPECT_TRUE(failure.happened());
    EXPECT_EQ(status->output->dvals, nullptr);
    EXPECT_EQ(status->output->count, 4);
}

TEST(Border, EveryAllocationMayFail)
{
    NEEDS_HEAP_FAILURES();
    warm_up();
    int64_t failed = 0;
    for (bool happened = true; happened; ++failed) {
        OwnedBorderStatus status(kRooms);
        status->distance = -0.75;
        const HeapWatch heap;
        const HeapFailure failure(failed + 1);
        const int code = Border(status);
        happened = failure.happened();
        EXPECT_EQ(code, happened ? -1 : 1);
        const int64_t output =
            (status->output != nullptr) + (status->output != nullptr && status->output->dvals != nullptr);
        EXPECT_LE(heap.live_blocks(), 16 + output) << "allocation " << failed + 1;
    }
    EXPECT_GE(failed, 1 + 16 + 1);
}

// Flattening and height.

TEST(Border, MayLayACounterClockwiseTriangleOutClockwise)
{
    const Coordinates triangle = {0, 0, 0, 9, 0, 0, 10, 5, 0};
    EXPECT_LT(border_of<FirstFlavour>({triangle, 0.1}).border[3], 9.0);
    EXPECT_GT(border_of<SecondFlavour>({triangle, 0.1}).border[3], 9.0);
}

TEST(BORDER_BORDER, GrowsAnOutlineWhicheverWayItRuns)
{
    const Coordinates clockwise = {0, 0, 0, 0, 1, 0, 1, 1, 0, 1, 0, 0};
    const Result result = border_of<SecondFlavour>({clockwise, 1.0});
    const Coordinates expected = {-1, -1, 0, -1, 2, 0, 2, 2, 0, 2, -1, 0};
    for (size_t i = 0; i < expected.size(); ++i)
        EXPECT_NEAR(result.border[i], expected[i], 4e-16); // a corner moves by root 2 along a rounded diagonal
}

// The diagonal through the first corner is the test line, and the corner across lies on it. In a small square random
// turns of the line do not take it off that corner; from two of the corners they add up to enough.
TEST(BORDER_BORDER, AVertexCloseByOnTheBisectorOfTheFirstCornerTurnsTheOutlineOver)
{
    const auto grows = [](double side, int start) {
        const Coordinates corners = {0, 0, 0, side, 0, 0, side, side, 0, 0, side, 0};
        Coordinates path;
        for (int i = 0; i < 12; ++i)
            path.push_back(corners[(3 * start + i) % 12]);
        const Coordinates border = border_of<SecondFlavour>({path, 0.1 * side}).border;
        return std::hypot(border[3] - border[0], border[4] - border[1]) > side;
    };
    const auto grows_each_time = [&grows](double side, int start) {
        int times = 0;
        for (unsigned seed = 1; seed <= 2000; ++seed) {
            Mwsrand(seed);
            times += grows(side, start);
        }
        return times;
    };
    EXPECT_EQ(grows_each_time(0.01, 0), 0);
    EXPECT_EQ(grows_each_time(0.01, 1), 2000);
    EXPECT_EQ(grows_each_time(0.01, 2), 0);
    EXPECT_EQ(grows_each_time(0.01, 3), 2000);
    EXPECT_LT(grows_each_time(0.1, 0), 2000); // side 0.1: about one seed in fifty
    EXPECT_GT(grows_each_time(0.1, 0), 1900);
    EXPECT_EQ(grows_each_time(0.2, 0), 2000);

    // A long outline can do the same: a step of 0.01 at its start, and a vertex across the first corner.
    const Coordinates stepped = {0, 0, 0, 0.01, 0, 0, 0.01, 0.01, 0, 9, 0.02, 0, 9, 9, 0, 0, 9, 0};
    EXPECT_LT(border_of<SecondFlavour>({stepped, 0.1}).border[15 + 1], 9.0);
    Coordinates further(stepped.begin() + 9, stepped.end());
    further.insert(further.end(), stepped.begin(), stepped.begin() + 9);
    EXPECT_GT(border_of<SecondFlavour>({further, 0.1}).border[6 + 1], 9.0);
}

TEST(Border, PutsEveryPointAtTheHeight)
{
    OwnedBorderStatus status({0, 0, 1, 2, 0, 1, 2, 2, 1, 0, 2, 1});
    status->height = 0.5;
    ASSERT_EQ(Border(status), 1);
    for (int i = 0; i < 4; ++i)
        EXPECT_EQ(status->output->dvals[3 * i + 2], 1.5);
}

TEST(Border, FlattensAnOutlineThatIsNotQuitePlane)
{
    OwnedBorderStatus status({0, 0, 0, 2, 0, 0, 2, 2, 0.25, 0, 2, 0});
    status->distance = 0.0;
    ASSERT_EQ(Border(status), 1);
    // All four now lie in the plane that the flattening found, that of points 0, 1 and 2.
    const double* const p = status->output->dvals;
    const double u[3] = {p[3] - p[0], p[4] - p[1], p[5] - p[2]}, v[3] = {p[6] - p[0], p[7] - p[1], p[8] - p[2]};
    const double w[3] = {p[9] - p[0], p[10] - p[1], p[11] - p[2]};
    const double volume =
        u[0] * (v[1] * w[2] - v[2] * w[1]) - u[1] * (v[0] * w[2] - v[2] * w[0]) + u[2] * (v[0] * w[1] - v[1] * w[0]);
    EXPECT_EQ(volume, 0.0);
}

TEST(BORDER_BORDER, DoesNotLookAtTheHeight)
{
    OwnedBORDERStatus status(kUnitSquare);
    status->height = 5.0;
    ASSERT_EQ(BORDER_BORDER(status), 1);
    EXPECT_EQ(status->output->dvals[2], 0.0);
}

TEST(BORDER_BORDER, OffsetsAnOutlineThatStandsUpright)
{
    const Result result = border_of<SecondFlavour>({{5, 0, 0, 5, 2, 0, 5, 2, 2, 5, 0, 2}, 1.0});
    const Coordinates expected = {5, -1, -1, 5, 3, -1, 5, 3, 3, 5, -1, 3};
    for (size_t i = 0; i < expected.size(); ++i)
        EXPECT_NEAR(result.border[i], expected[i], 2e-15); // carried into its plane and back: a few roundings by 4e-16
}

} // namespace korvale::test
