// The records of both flavours: their defaults and their arrays.
#include "border/status.h"

#include <gtest/gtest.h>

#include "tests/border/records.h"
#include "tests/support/heap.h"

namespace korvale::test {
TEST(BorderInitialize, SetsTheDefaults)
{
    BorderStatus status;
    BorderInitialize(&status);
    ASSERT_NE(status.path, nullptr);
    EXPECT_EQ(status.path->dim, -1);
    EXPECT_EQ(status.path->count, -1);
    EXPECT_EQ(status.path->dvals, nullptr);
    EXPECT_EQ(status.output, nullptr);
    EXPECT_EQ(status.height, 0.0);
    EXPECT_EQ(status.distance, 1.0);
    EXPECT_EQ(status.keep_collapsed, 1);
    EXPECT_EQ(status.reserved1, 1);
    EXPECT_EQ(status.split_events, 1);
    EXPECT_EQ(status.reserved2, 5);
    EXPECT_EQ(status.reserved3, 0);
    release(status.path);
}

TEST(BORDERInitialize, SetsTheDefaultsAndMakesTenArrays)
{
    BORDERStatus status;
    BORDERInitialize(&status);
    for (DATAstruct* const d : {status.path, status.output, status.flat, status.velocity, status.direction, status.line,
                                status.dead, status.length, status.rate, status.merge}) {
        ASSERT_NE(d, nullptr);
        EXPECT_EQ(d->dim, -1);
        EXPECT_EQ(d->count, -1);
        EXPECT_EQ(d->alloc_count, -1);
        release(d);
    }
    EXPECT_EQ(status.height, 0.0);
    EXPECT_EQ(status.distance, 1.0);
    EXPECT_EQ(status.keep_collapsed, 1);
    EXPECT_EQ(status.split_events, 1);
}

TEST(BorderInitialize, ANullRecordIsIgnored)
{
    BorderInitialize(nullptr);
    BORDERInitialize(nullptr);
}

TEST(BORDERInitialize, AnArrayIsNullWhenTheHeapIsExhausted)
{
    NEEDS_HEAP_FAILURES();
    BORDERStatus status;
    {
        const HeapFailure failure(3);
        BORDERInitialize(&status);
    }
    EXPECT_EQ(status.flat, nullptr);
    EXPECT_EQ(status.distance, 1.0);
    for (DATAstruct* const d : {status.path, status.output, status.velocity, status.direction, status.line, status.dead,
                                status.length, status.rate, status.merge}) {
        EXPECT_NE(d, nullptr);
        release(d);
    }
}

TEST(BorderInitialize, AbandonsThePathOfAnEarlierInitialisation)
{
    BorderStatus status;
    BorderInitialize(&status);
    Data* const first = status.path;
    first->count = 7;
    BorderInitialize(&status);
    EXPECT_NE(status.path, first);
    EXPECT_EQ(first->count, 7);
    release(first);
    release(status.path);
}

TEST(Border, DoesNotReadTheReservedFields)
{
    const Coordinates square = {0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0};
    OwnedBorderStatus plain(square), changed(square);
    changed->reserved1 = -7;
    changed->reserved2 = 0;
    changed->reserved3 = 99;
    ASSERT_EQ(Border(plain), 1);
    ASSERT_EQ(Border(changed), 1);
    EXPECT_EQ(points_of(plain->output), points_of(changed->output));
    EXPECT_EQ(changed->reserved1, -7);
    EXPECT_EQ(changed->reserved2, 0);
    EXPECT_EQ(changed->reserved3, 99);
}

} // namespace korvale::test
