// Reading positions and normals into both generations: the same steps four times over.
#include <gtest/gtest.h>

#include "exchange/vertices.h"
#include "tests/exchange/host.h"
#include "tests/support/arrays.h"
#include "tests/support/bits.h"
#include "tests/support/heap.h"

namespace korvale::test {
namespace {

struct PositionsToData {
    static constexpr char kName[] = "PositionsToData";
    using Array = Data;
    static int32_t read(I3DVertexCollection* c, Data* a) { return F3DKorvaleVertex2Data(c, a); }
    static void expect(Host& h, const std::vector<double>& xyz, Answer a = {}) { h.expect_read_position(xyz, a); }
};

struct PositionsToDATA {
    static constexpr char kName[] = "PositionsToDATA";
    using Array = DATAstruct;
    static int32_t read(I3DVertexCollection* c, DATAstruct* a) { return F3DKorvaleVertex2DATA(c, a); }
    static void expect(Host& h, const std::vector<double>& xyz, Answer a = {}) { h.expect_read_position(xyz, a); }
};

struct NormalsToData {
    static constexpr char kName[] = "NormalsToData";
    using Array = Data;
    static int32_t read(I3DVertexCollection* c, Data* a) { return F3DKorvaleNormal2Data(c, a); }
    static void expect(Host& h, const std::vector<double>& xyz, Answer a = {}) { h.expect_read_normal(xyz, a); }
};

struct NormalsToDATA {
    static constexpr char kName[] = "NormalsToDATA";
    using Array = DATAstruct;
    static int32_t read(I3DVertexCollection* c, DATAstruct* a) { return F3DKorvaleNormal2DATA(c, a); }
    static void expect(Host& h, const std::vector<double>& xyz, Answer a = {}) { h.expect_read_normal(xyz, a); }
};

const std::vector<std::vector<double>> kVertices = {{1, 2, 3}, {4, 5, 6}, {7, 8, 9}, {-1, -0.0, 0.5}};
const std::vector<double> kAll = {1, 2, 3, 4, 5, 6, 7, 8, 9, -1, -0.0, 0.5};

template <class Direction>
class Reading : public testing::Test {
protected:
    using Array = typename Direction::Array;

    /// The calls up to and with the reading of `n` vertices.
    void expect_vertices(size_t n)
    {
        for (size_t i = 0; i < n; ++i) {
            host.expect_seek(static_cast<uint32_t>(i));
            Direction::expect(host, kVertices[i]);
        }
    }

    /// The calls of a reading that succeeds.
    void expect_all()
    {
        host.expect_count(4);
        host.expect_accessor();
        expect_vertices(4);
        host.expect_release();
    }

    static void expect_read(const Array& array)
    {
        EXPECT_EQ(array.dim, 3);
        EXPECT_EQ(array.count, 4);
        EXPECT_EQ(array.type, DATA_TYPE_DOUBLE);
        EXPECT_TRUE(same_bits(kAll, array.dvals));
    }

    Host host;
};

using Directions = testing::Types<PositionsToData, PositionsToDATA, NormalsToData, NormalsToDATA>;
struct DirectionNames {
    template <class Direction>
    static std::string GetName(int)
    {
        return Direction::kName;
    }
};

TYPED_TEST_SUITE(Reading, Directions, DirectionNames);

} // namespace

TYPED_TEST(Reading, SeeksAndReadsEveryVertexAndReleasesTheAccessor)
{
    Owned<typename TypeParam::Array> array;
    this->expect_all();
    EXPECT_EQ(TypeParam::read(&this->host.collection, array), 0);
    this->expect_read(*array);
}

TYPED_TEST(Reading, AFittingArrayKeepsItsBuffer)
{
    auto array = array_of<typename TypeParam::Array>(DATA_TYPE_DOUBLE, 4, 3);
    const double* const buffer = array->dvals;
    this->expect_all();
    EXPECT_EQ(TypeParam::read(&this->host.collection, array), 0);
    this->expect_read(*array);
    EXPECT_EQ(array->dvals, buffer);
}

TYPED_TEST(Reading, AHostsOwnMemoryIsFilledInPlace)
{
    double values[12] = {};
    auto array = wrapped<typename TypeParam::Array>(values, 4, 3);
    this->expect_all();
    EXPECT_EQ(TypeParam::read(&this->host.collection, &array), 0);
    EXPECT_EQ(array.dvals, values);
    this->expect_read(array);
}

TYPED_TEST(Reading, AnArrayOfAnotherShapeIsReshaped)
{
    const std::vector<std::pair<int, int>> shapes = {{4, 2}, {4, 4}, {3, 3}, {5, 3}, {1, 1}, {6, 2}}; // count, dim
    for (const auto& [count, dim] : shapes) {
        auto array = array_of<typename TypeParam::Array>(DATA_TYPE_DOUBLE, count, dim);
        this->expect_all();
        EXPECT_EQ(TypeParam::read(&this->host.collection, array), 0);
        this->expect_read(*array);
    }
}

TYPED_TEST(Reading, AnArrayOfAnotherKindIsReshaped)
{
    for (const int kind : {DATA_TYPE_INT, DATA_TYPE_BYTE}) {
        auto array = array_of<typename TypeParam::Array>(kind, 4, 3);
        this->expect_all();
        EXPECT_EQ(TypeParam::read(&this->host.collection, array), 0);
        this->expect_read(*array);
        EXPECT_EQ(array->ivals, nullptr);
        EXPECT_EQ(array->bvals, nullptr);
    }
}

TYPED_TEST(Reading, AnArrayWithoutABufferIsReshaped)
{
    Owned<typename TypeParam::Array> array;
    array->dim = 3;
    array->count = 4;
    this->expect_all();
    EXPECT_EQ(TypeParam::read(&this->host.collection, array), 0);
    this->expect_read(*array);
}

TYPED_TEST(Reading, ANullCollectionOrArrayFails)
{
    Owned<typename TypeParam::Array> array;
    EXPECT_EQ(TypeParam::read(nullptr, array), kFailed);
    EXPECT_EQ(TypeParam::read(&this->host.collection, nullptr), kFailed);
    EXPECT_EQ(array->count, -1);
}

TYPED_TEST(Reading, AStatusOfTheCountIsReturned)
{
    for (const int32_t status : {kDeviceLost, kSucceededOtherwise}) {
        auto array = array_of<typename TypeParam::Array>(DATA_TYPE_DOUBLE, 2, 2);
        this->host.expect_count(4, status);
        EXPECT_EQ(TypeParam::read(&this->host.collection, array), status);
        EXPECT_EQ(array->count, 2);
        EXPECT_EQ(array->dim, 2);
    }
}

TYPED_TEST(Reading, AnEmptyCollectionFailsAndLeavesTheArray)
{
    auto array = doubles<typename TypeParam::Array>(2, {1, 2, 3, 4});
    this->host.expect_count(0);
    EXPECT_EQ(TypeParam::read(&this->host.collection, array), kFailed);
    EXPECT_EQ(array->count, 2);
    EXPECT_EQ(array->dim, 2);
    EXPECT_TRUE(same_bits({1, 2, 3, 4}, array->dvals));
}

TYPED_TEST(Reading, ACollectionTooLargeForAnArrayFails)
{
    for (const uint32_t count : {715827883u, 0x80000000u, 0xffffffffu}) { // the first has 2^31 + 1 coordinates
        auto array = doubles<typename TypeParam::Array>(2, {1, 2, 3, 4});
        this->host.expect_count(count);
        EXPECT_EQ(TypeParam::read(&this->host.collection, array), kFailed);
        EXPECT_TRUE(same_bits({1, 2, 3, 4}, array->dvals));
    }
}

TYPED_TEST(Reading, AnExhaustedHeapFailsBeforeTheAccessorIsAskedFor)
{
    NEEDS_HEAP_FAILURES();
    auto array = array_of<typename TypeParam::Array>(DATA_TYPE_DOUBLE, 2, 2);
    this->host.expect_count(4);
    const HeapFailure failure(1);
    EXPECT_EQ(TypeParam::read(&this->host.collection, array), kFailed);
    EXPECT_TRUE(failure.happened());
    EXPECT_EQ(array->dvals, nullptr);
    EXPECT_EQ(array->dim, 3);
    EXPECT_EQ(array->count, 4);
}

TYPED_TEST(Reading, AStatusOfTheAccessorIsReturned)
{
    for (const int32_t status : {kDeviceLost, kSucceededOtherwise}) {
        Owned<typename TypeParam::Array> array;
        this->host.expect_count(4);
        this->host.expect_accessor(status); // handed out all the same, but not released
        EXPECT_EQ(TypeParam::read(&this->host.collection, array), status);
        EXPECT_EQ(array->dim, 3);
        EXPECT_EQ(array->count, 4);
    }
}

TYPED_TEST(Reading, AMissingAccessorFails)
{
    Owned<typename TypeParam::Array> array;
    this->host.expect_count(4);
    this->host.expect_no_accessor();
    EXPECT_EQ(TypeParam::read(&this->host.collection, array), kFailed);
}

TYPED_TEST(Reading, AFailingSeekEndsItWithTheAccessorUnreleased)
{
    for (const int32_t status : {kDeviceLost, kSucceededOtherwise})
        for (size_t failing = 0; failing < 4; ++failing) {
            auto array = array_of<typename TypeParam::Array>(DATA_TYPE_DOUBLE, 4, 3);
            this->host.expect_count(4);
            this->host.expect_accessor();
            this->expect_vertices(failing);
            this->host.expect_seek(static_cast<uint32_t>(failing), status);
            EXPECT_EQ(TypeParam::read(&this->host.collection, array), status);
            EXPECT_TRUE(same_bits(kAll.data(), array->dvals, static_cast<int64_t>(3 * failing)));
            EXPECT_TRUE(same_bits(0.0, array->dvals[3 * failing]));
        }
}

TYPED_TEST(Reading, AFailingReadEndsItWithTheAccessorUnreleased)
{
    for (const int32_t status : {kDeviceLost, kSucceededOtherwise})
        for (size_t failing = 0; failing < 4; ++failing) {
            auto array = array_of<typename TypeParam::Array>(DATA_TYPE_DOUBLE, 4, 3);
            this->host.expect_count(4);
            this->host.expect_accessor();
            this->expect_vertices(failing);
            this->host.expect_seek(static_cast<uint32_t>(failing));
            TypeParam::expect(this->host, {70, 80, 90}, {status, 1});
            EXPECT_EQ(TypeParam::read(&this->host.collection, array), status);
            EXPECT_TRUE(same_bits(kAll.data(), array->dvals, static_cast<int64_t>(3 * failing)));
            EXPECT_TRUE(same_bits(0.0, array->dvals[3 * failing])); // what the failed read left is not stored
        }
}

TYPED_TEST(Reading, AReadOfAnyNumberButOneFails)
{
    for (const int number : {0, 2, 3, -1}) { // -1: the host does not say, and none counts as read
        for (size_t failing = 0; failing < 4; ++failing) {
            auto array = array_of<typename TypeParam::Array>(DATA_TYPE_DOUBLE, 4, 3);
            this->host.expect_count(4);
            this->host.expect_accessor();
            this->expect_vertices(failing);
            this->host.expect_seek(static_cast<uint32_t>(failing));
            TypeParam::expect(this->host, {70, 80, 90}, {0, number});
            EXPECT_EQ(TypeParam::read(&this->host.collection, array), kFailed);
            EXPECT_TRUE(same_bits(kAll.data(), array->dvals, static_cast<int64_t>(3 * failing)));
            EXPECT_TRUE(same_bits(0.0, array->dvals[3 * failing]));
        }
    }
}

TYPED_TEST(Reading, AStatusComesBeforeTheNumber)
{
    Owned<typename TypeParam::Array> array;
    this->host.expect_count(4);
    this->host.expect_accessor();
    this->host.expect_seek(0);
    TypeParam::expect(this->host, {70, 80, 90}, {kDeviceLost, 0});
    EXPECT_EQ(TypeParam::read(&this->host.collection, array), kDeviceLost);
}

TYPED_TEST(Reading, WhatReleaseAnswersIsIgnored)
{
    Owned<typename TypeParam::Array> array;
    this->host.expect_count(1);
    this->host.expect_accessor();
    this->expect_vertices(1);
    this->host.expect_release(17);
    EXPECT_EQ(TypeParam::read(&this->host.collection, array), 0);
}

TEST(F3DKorvaleNormal2Data, TheHostMayWrite256BytesBesideEachNormal)
{
    Host host; // does so
    OwnedData data;
    OwnedDATA array;
    host.expect_count(1);
    host.expect_accessor();
    host.expect_seek(0);
    host.expect_read_normal({0, 0, 1});
    host.expect_release();
    EXPECT_EQ(F3DKorvaleNormal2Data(&host.collection, data), 0);
    EXPECT_TRUE(same_bits({0, 0, 1}, data->dvals));
    host.expect_count(1);
    host.expect_accessor();
    host.expect_seek(0);
    host.expect_read_normal({0, 1, 0});
    host.expect_release();
    EXPECT_EQ(F3DKorvaleNormal2DATA(&host.collection, array), 0);
    EXPECT_TRUE(same_bits({0, 1, 0}, array->dvals));
}

// ---- What is known of a DATAstruct's buffer

TEST(F3DKorvaleVertex2DATA, ABufferAllocatedTooSmallIsReshaped)
{
    Host host;
    auto array = array_of<DATAstruct>(DATA_TYPE_DOUBLE, 2, 3);
    array->count = 1;
    host.expect_count(1);
    host.expect_accessor();
    host.expect_seek(0);
    host.expect_read_position({1, 2, 3});
    host.expect_release();
    const double* const larger = array->dvals;
    EXPECT_EQ(F3DKorvaleVertex2DATA(&host.collection, array), 0);
    EXPECT_EQ(array->dvals, larger); // room for more is no mismatch
    EXPECT_EQ(array->alloc_count, 2);

    array->count = 4; // more than was allocated
    host.expect_count(4);
    host.expect_accessor();
    for (uint32_t i = 0; i < 4; ++i) {
        host.expect_seek(i);
        host.expect_read_position(kVertices[i]);
    }
    host.expect_release();
    EXPECT_EQ(F3DKorvaleVertex2DATA(&host.collection, array), 0);
    EXPECT_EQ(array->alloc_count, 4);
    EXPECT_TRUE(same_bits(kAll, array->dvals));
}

// ---- Against a host that just holds vertices

TEST(F3DKorvaleVertex2Data, ReshapingReleasesWhatTheArrayHeld)
{
    NEEDS_HEAP_COUNTS();
    PlainHost host({1, 2, 3, 4, 5, 6});
    const HeapWatch heap;
    {
        auto array = array_of<Data>(DATA_TYPE_INT, 9, 5);
        EXPECT_EQ(F3DKorvaleVertex2Data(&host, array), 0);
        EXPECT_EQ(heap.live_blocks(), 1);
    }
    EXPECT_EQ(heap.live_blocks(), 0);
    EXPECT_EQ(host.references, 0);
}

TEST(F3DKorvaleVertex2DATA, ReshapingReleasesTheListBehindTheArray)
{
    NEEDS_HEAP_COUNTS();
    PlainHost host({1, 2, 3, 4, 5, 6});
    const HeapWatch heap;
    {
        auto array = array_of<DATAstruct>(DATA_TYPE_INT, 9, 5);
        array->next = new_doubles(1, {1, 2});
        EXPECT_EQ(F3DKorvaleVertex2DATA(&host, array), 0);
        EXPECT_EQ(array->next, nullptr);
        EXPECT_EQ(heap.live_blocks(), 1);
    }
    EXPECT_EQ(heap.live_blocks(), 0);
}

} // namespace korvale::test
