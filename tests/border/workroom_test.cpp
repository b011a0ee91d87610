// Memory that is kept between calls.
#include "border/internal/workroom.h"

#include <algorithm>
#include <memory>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "border/border.h"
#include "tests/support/heap.h"
#include "tests/support/outlines.h"

namespace korvale::test {
using namespace border;

namespace {

/// Where a room of `count` is, which is given back at once.
const double* place_of_room(int64_t count)
{
    const Workroom room(count);
    EXPECT_TRUE(room.exists());
    room.get()[count - 1] = 1.0;
    return room.get();
}

} // namespace

TEST(Workroom, ASecondOneTakesTheMemoryOfTheFirst)
{
    NEEDS_HEAP_COUNTS();
    const double* const first = place_of_room(1000);
    const HeapWatch heap;
    EXPECT_EQ(place_of_room(513), first);
    EXPECT_EQ(place_of_room(900), first);
    EXPECT_EQ(place_of_room(1000), first);
    EXPECT_EQ(heap.live_blocks(), 0);
    EXPECT_EQ(heap.frees(), 0);
}

TEST(Workroom, BeginsWhereFourLanesAreAligned)
{
    for (const int64_t count : {int64_t{1}, Workroom::kNearby, Workroom::kNearby + 1, Workroom::kMostKept + 1})
        EXPECT_EQ(reinterpret_cast<uintptr_t>(place_of_room(count)) % Workroom::kAlignment, 0u) << count;
}

TEST(Workroom, ASmallOneNeedsNoBlock)
{
    NEEDS_HEAP_COUNTS();
    const HeapWatch heap;
    const Workroom room(Workroom::kNearby);
    EXPECT_EQ(heap.live_blocks(), 0);
    const auto* const begin = reinterpret_cast<const char*>(&room);
    const auto* const values = reinterpret_cast<const char*>(room.get());
    EXPECT_GE(values, begin);
    EXPECT_LE(values + Workroom::kNearby * sizeof(double), begin + sizeof room);
}

TEST(Workroom, ALargerOneTakesThePlaceOfASmaller)
{
    NEEDS_HEAP_COUNTS();
    place_of_room(1000);
    const HeapWatch heap;
    const double* const large = place_of_room(100000);
    EXPECT_EQ(heap.live_blocks(), 0); // the small one went
    EXPECT_EQ(heap.frees(), 1);
    EXPECT_EQ(place_of_room(1000), large);
}

TEST(Workroom, WhatIsLargerThanTheBoundIsNotKept)
{
    NEEDS_HEAP_COUNTS();
    const HeapWatch heap;
    {
        const Workroom huge(Workroom::kMostKept + 1);
        EXPECT_TRUE(huge.exists());
    }
    EXPECT_EQ(heap.live_blocks(), 0);
}

TEST(Workroom, NoMoreBlocksAreKeptThanPromised)
{
    NEEDS_HEAP_COUNTS();
    std::vector<std::unique_ptr<Workroom>> rooms;
    rooms.reserve(Workroom::kKeptBlocks + 3);
    for (int i = 0; i < Workroom::kKeptBlocks + 3; ++i)
        rooms.push_back(std::make_unique<Workroom>(1000));
    const HeapWatch heap;
    rooms.clear(); // the objects go, and three of the blocks
    EXPECT_EQ(heap.frees(), Workroom::kKeptBlocks + 3 + 3);
}

TEST(Workroom, TheFirstSweepWithSplitsAfterSweepsWithoutChangesItsBlockForALargerOne)
{
    NEEDS_HEAP_COUNTS();
    std::vector<std::unique_ptr<Workroom>> rooms; // all that were kept
    for (int i = 0; i < Workroom::kKeptBlocks; ++i)
        rooms.push_back(std::make_unique<Workroom>(1000));
    const Coordinates path = gear(64, 9, 10);
    BORDERStatus status;
    BORDERInitialize(&status);
    status.path->count = 256;
    status.path->dim = 3;
    ASSERT_EQ(DATAAllocate(status.path), 1);
    std::copy(path.begin(), path.end(), status.path->dvals);
    status.split_events = 0;
    ASSERT_EQ(BORDER_BORDER(&status), 1);
    const auto blocks_given_up = [&status](int32_t split_events) {
        status.split_events = split_events;
        const HeapWatch heap;
        EXPECT_EQ(BORDER_BORDER(&status), 1);
        EXPECT_EQ(heap.live_blocks(), 0);
        return heap.frees();
    };
    EXPECT_EQ(blocks_given_up(0), 0);
    EXPECT_EQ(blocks_given_up(1), 1);
    EXPECT_EQ(blocks_given_up(1), 0);
    EXPECT_EQ(blocks_given_up(0), 0);
    release_arrays(status);
}

TEST(Workroom, MoreThanThereIsGivesNone)
{
    NEEDS_HEAP_FAILURES(); // a sanitizer ends the program at such a size
    EXPECT_FALSE(Workroom(INT64_MAX).exists());
    EXPECT_FALSE(Workroom(int64_t{1} << 58).exists());
}

TEST(Workroom, ThreadsNeverShareABlock)
{
    std::vector<std::thread> threads;
    for (int t = 1; t <= 6; ++t)
        threads.emplace_back([t] {
            for (int round = 0; round < 3000; ++round) {
                const Workroom room(600);
                ASSERT_TRUE(room.exists());
                for (int i = 0; i < 600; ++i)
                    room.get()[i] = t;
                for (int i = 0; i < 600; ++i)
                    ASSERT_EQ(room.get()[i], t);
            }
        });
    for (std::thread& thread : threads)
        thread.join();
}

} // namespace korvale::test
