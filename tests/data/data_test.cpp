// Records and lists of the first generation: empty ones, room for elements, disposal.
#include "data/data.h"

#include <cstdlib>
#include <cstring>
#include <limits>

#include <gtest/gtest.h>

#include "tests/support/arrays.h"
#include "tests/support/bits.h"
#include "tests/support/heap.h"

namespace korvale::test {
namespace {

constexpr int32_t kMost = std::numeric_limits<int32_t>::max();

void expect_empty(const Data& d)
{
    EXPECT_EQ(d.dim, -1);
    EXPECT_EQ(d.count, -1);
    EXPECT_EQ(d.type, DATA_TYPE_DOUBLE);
    EXPECT_EQ(d.dvals, nullptr);
    EXPECT_EQ(d.ivals, nullptr);
    EXPECT_EQ(d.bvals, nullptr);
}

Data shaped(int32_t type, int32_t count, int32_t dim)
{
    Data d;
    DataInitialize(&d);
    d.type = type;
    d.count = count;
    d.dim = dim;
    return d;
}

TEST(DataInitialize, MakesARecordEmpty)
{
    Data d;
    std::memset(&d, 0x55, sizeof d);
    DataInitialize(&d);
    expect_empty(d);
}

TEST(DataInitialize, ReleasesNothing)
{
    auto d = doubles<Data>(1, {1, 2});
    double* const values = d->dvals;
    DataInitialize(d);
    EXPECT_EQ(values[1], 2.0);
    std::free(values);
}

TEST(DataListInitialize, AlsoUnlinks)
{
    data_list_struct node;
    std::memset(&node, 0x55, sizeof node);
    DataListInitialize(&node);
    expect_empty(node);
    EXPECT_EQ(node.next, nullptr);
}

TEST(DataNew, GivesAnEmptyRecordFromTheHeap)
{
    Data* const d = DataNew();
    ASSERT_NE(d, nullptr);
    expect_empty(*d);
    std::free(d);
}

TEST(DataNew, GivesNullWhenTheHeapIsExhausted)
{
    NEEDS_HEAP_FAILURES();
    const HeapFailure failure(1);
    EXPECT_EQ(DataNew(), nullptr);
}

TEST(DataListNew, GivesAnEmptyNodeFromTheHeap)
{
    data_list_struct* const node = DataListNew();
    ASSERT_NE(node, nullptr);
    expect_empty(*node);
    EXPECT_EQ(node->next, nullptr);
    std::free(node);
}

TEST(DataListNew, GivesNullWhenTheHeapIsExhausted)
{
    NEEDS_HEAP_FAILURES();
    const HeapFailure failure(1);
    EXPECT_EQ(DataListNew(), nullptr);
}

TEST(DataAllocate, MakesTheBufferOfTheKind)
{
    Data d = shaped(DATA_TYPE_DOUBLE, 4, 3);
    EXPECT_EQ(DataAllocate(&d), 1);
    EXPECT_NE(d.dvals, nullptr);
    EXPECT_TRUE(d.ivals == nullptr && d.bvals == nullptr);
    std::memset(d.dvals, 0, 12 * sizeof *d.dvals);
    DataDispose(&d);

    d = shaped(DATA_TYPE_INT, 4, 3);
    EXPECT_EQ(DataAllocate(&d), 1);
    EXPECT_NE(d.ivals, nullptr);
    EXPECT_TRUE(d.dvals == nullptr && d.bvals == nullptr);
    std::memset(d.ivals, 0, 12 * sizeof *d.ivals);
    DataDispose(&d);

    d = shaped(DATA_TYPE_BYTE, 4, 3);
    EXPECT_EQ(DataAllocate(&d), 1);
    EXPECT_NE(d.bvals, nullptr);
    EXPECT_TRUE(d.dvals == nullptr && d.ivals == nullptr);
    std::memset(d.bvals, 0, 12);
    DataDispose(&d);
}

TEST(DataAllocate, TakesOneBlock)
{
    NEEDS_HEAP_COUNTS();
    Data d = shaped(DATA_TYPE_DOUBLE, 4, 3);
    const HeapWatch heap;
    EXPECT_EQ(DataAllocate(&d), 1);
    EXPECT_EQ(heap.allocations(), 1);
    EXPECT_EQ(heap.live_blocks(), 1);
    DataDispose(&d);
    EXPECT_EQ(heap.live_blocks(), 0);
}

TEST(DataAllocate, RefusesCountsAndDimsBelowOne)
{
    const HeapWatch heap;
    const int32_t wrong[][2] = {{0, 3}, {3, 0}, {-1, 3}, {3, -1}, {-2, -2}};
    for (const auto& shape : wrong) {
        Data d = shaped(DATA_TYPE_DOUBLE, shape[0], shape[1]);
        EXPECT_EQ(DataAllocate(&d), -1) << shape[0] << " x " << shape[1];
        EXPECT_EQ(d.dvals, nullptr);
    }
    EXPECT_EQ(heap.allocations(), 0);
}

TEST(DataAllocate, TakesOneElementOfOneComponent)
{
    Data d = shaped(DATA_TYPE_DOUBLE, 1, 1);
    EXPECT_EQ(DataAllocate(&d), 1);
    DataDispose(&d);
}

TEST(DataAllocate, GivesAnUnknownKindNoBuffer)
{
    const HeapWatch heap;
    for (const int32_t type : {3, 4, 5, -1, kMost}) {
        Data d = shaped(type, 4, 3);
        EXPECT_EQ(DataAllocate(&d), 1) << type;
        EXPECT_TRUE(d.dvals == nullptr && d.ivals == nullptr && d.bvals == nullptr);
    }
    EXPECT_EQ(heap.allocations(), 0);
}

TEST(DataAllocate, RefusesMoreElementsThan31Bits)
{
    const HeapWatch heap;
    const int32_t large[][2] = {{65536, 32768}, {65536, 65536}, {1 << 30, 2}, {kMost, kMost}};
    for (const auto& shape : large) {
        Data d = shaped(DATA_TYPE_BYTE, shape[0], shape[1]);
        EXPECT_EQ(DataAllocate(&d), -1) << shape[0] << " x " << shape[1];
        EXPECT_EQ(d.bvals, nullptr);
        EXPECT_EQ(d.count, shape[0]);
    }
    EXPECT_EQ(heap.allocations(), 0);
}

TEST(DataAllocate, NeitherLooksAtNorReleasesABufferItReplaces)
{
    auto d = doubles<Data>(1, {1, 2});
    double* const first = d->dvals;
    EXPECT_EQ(DataAllocate(d), 1);
    EXPECT_NE(d->dvals, first);
    EXPECT_EQ(first[1], 2.0);
    std::free(first);
}

TEST(DataAllocate, LeavesANullBufferWhenTheHeapIsExhausted)
{
    NEEDS_HEAP_FAILURES();
    for (const int32_t type : {DATA_TYPE_DOUBLE, DATA_TYPE_INT, DATA_TYPE_BYTE}) {
        Data d = shaped(type, 4, 3);
        {
            const HeapFailure failure(1);
            EXPECT_EQ(DataAllocate(&d), -1);
        }
        EXPECT_TRUE(d.dvals == nullptr && d.ivals == nullptr && d.bvals == nullptr);
        EXPECT_EQ(d.count, 4);
        EXPECT_EQ(d.dim, 3);
        EXPECT_EQ(d.type, type);
        DataDispose(&d);
        expect_empty(d);
    }
}

TEST(DataDispose, FreesEveryBufferAndNotTheRecord)
{
    NEEDS_HEAP_COUNTS();
    const HeapWatch heap;
    Data* const d = DataNew();
    d->dvals = static_cast<double*>(std::malloc(8));
    d->ivals = static_cast<int32_t*>(std::malloc(8));
    d->bvals = static_cast<uint8_t*>(std::malloc(8));
    d->type = DATA_TYPE_INT;
    EXPECT_EQ(heap.live_blocks(), 4);
    DataDispose(d);
    EXPECT_EQ(heap.live_blocks(), 1);
    expect_empty(*d);
    DataDispose(d);
    expect_empty(*d);
    std::free(d);
}

TEST(DataListDispose, ReleasesEveryNodeButTheFirst)
{
    NEEDS_HEAP_COUNTS();
    const HeapWatch heap;
    data_list_struct head;
    DataListInitialize(&head);
    data_list_struct* last = &head;
    for (int i = 0; i < 3; ++i) {
        last->count = last->dim = 2;
        ASSERT_EQ(DataAllocate(last), 1);
        last->next = DataListNew();
        last = last->next;
    }
    EXPECT_EQ(heap.live_blocks(), 6);
    DataListDispose(&head);
    EXPECT_EQ(heap.live_blocks(), 0);
    expect_empty(head);
    EXPECT_EQ(head.next, nullptr);
}

TEST(DataListDispose, DisposesALoneNode)
{
    const HeapWatch heap;
    data_list_struct head;
    DataListInitialize(&head);
    head.count = head.dim = 2;
    ASSERT_EQ(DataAllocate(&head), 1);
    DataListDispose(&head);
    EXPECT_EQ(heap.live_blocks(), 0);
    expect_empty(head);
}

TEST(DataListDispose, TakesLongListsWithoutRecursion)
{
    data_list_struct head;
    DataListInitialize(&head);
    for (int i = 0; i < 500000; ++i) {
        data_list_struct* const node = DataListNew();
        ASSERT_NE(node, nullptr);
        node->next = head.next;
        head.next = node;
    }
    DataListDispose(&head);
    EXPECT_EQ(head.next, nullptr);
}

TEST(Data, FunctionsTakeNull)
{
    DataInitialize(nullptr);
    DataListInitialize(nullptr);
    EXPECT_EQ(DataAllocate(nullptr), -1);
    DataDispose(nullptr);
    DataListDispose(nullptr);
    DataReverse(nullptr);
}

TEST(Data, NodesPassAsRecords)
{
    data_list_struct node;
    DataListInitialize(&node);
    node.count = 2;
    node.dim = 1;
    ASSERT_EQ(DataAllocate(&node), 1);
    node.dvals[0] = 1;
    node.dvals[1] = 2;
    DataReverse(&node);
    EXPECT_TRUE(same_bits({2, 1}, node.dvals));
    DataListDispose(&node);
}

} // namespace
} // namespace korvale::test
