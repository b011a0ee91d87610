// Writing the positions of both generations, and the two functions that are not provided.
#include <type_traits>

#include <gtest/gtest.h>

#include "exchange/vertices.h"
#include "tests/exchange/host.h"
#include "tests/support/arrays.h"
#include "tests/support/bits.h"

namespace korvale::test {
namespace {

int32_t write(Data* array, I3DVertexCollection* collection)
{
    return F3DKorvaleData2Vertex(array, collection);
}

int32_t write(DATAstruct* array, I3DVertexCollection* collection)
{
    return F3DKorvaleDATA2Vertex(array, collection);
}

const std::vector<double> kAll = {1, 2, 3, 4, 5, 6, 7, 8, 9, -1, -0.0, 0.5};

std::vector<double> vertex(size_t i)
{
    return {kAll[3 * i], kAll[3 * i + 1], kAll[3 * i + 2]};
}

template <class Array>
class Writing : public testing::Test {
protected:
    int32_t write_to_host(Array* array) { return write(array, &host.collection); }

    void expect_vertices(size_t n)
    {
        for (size_t i = 0; i < n; ++i) {
            host.expect_seek(static_cast<uint32_t>(i));
            host.expect_write(vertex(i));
        }
    }

    /// The calls before the first vertex.
    void expect_start(uint32_t count)
    {
        host.expect_count(count);
        host.expect_accessor();
        host.expect_begin_edit();
    }

    Host host;
};

using Generations = testing::Types<Data, DATAstruct>;
TYPED_TEST_SUITE(Writing, Generations, GenerationNames);

} // namespace

TYPED_TEST(Writing, SeeksAndWritesEveryVertexWithinOneEdit)
{
    auto array = points<TypeParam>(kAll);
    this->expect_start(4);
    this->expect_vertices(4);
    this->host.expect_end_edit();
    this->host.expect_release();
    EXPECT_EQ(this->write_to_host(array), 0);
    EXPECT_TRUE(same_bits(kAll, array->dvals));
}

TYPED_TEST(Writing, AHostsOwnMemoryIsWritten)
{
    std::vector<double> values = kAll;
    auto array = wrapped<TypeParam>(values.data(), 4, 3);
    this->expect_start(4);
    this->expect_vertices(4);
    this->host.expect_end_edit();
    this->host.expect_release();
    EXPECT_EQ(this->write_to_host(&array), 0);
}

TYPED_TEST(Writing, AHostsOwnMemoryInAZeroFilledRecordIsWritten)
{
    std::vector<double> values = kAll;
    TypeParam array = {};
    array.count = 4;
    array.dim = 3;
    array.dvals = values.data();
    this->expect_start(4);
    this->expect_vertices(4);
    this->host.expect_end_edit();
    this->host.expect_release();
    EXPECT_EQ(this->write_to_host(&array), 0);
}

TYPED_TEST(Writing, TheDimIsTakenToBeThree)
{
    std::vector<double> values = kAll;
    for (const int dim : {-1, 0, 1, 2, 4, 100}) {
        auto array = wrapped<TypeParam>(values.data(), 4, dim);
        this->expect_start(4);
        this->expect_vertices(4);
        this->host.expect_end_edit();
        this->host.expect_release();
        EXPECT_EQ(this->write_to_host(&array), 0) << "dim " << dim;
    }
}

TYPED_TEST(Writing, TheAnswersToTheEditAreIgnored)
{
    auto array = points<TypeParam>({1, 2, 3});
    this->host.expect_count(1);
    this->host.expect_accessor();
    this->host.expect_begin_edit(kDeviceLost);
    this->expect_vertices(1);
    this->host.expect_end_edit(kDeviceLost);
    this->host.expect_release(3);
    EXPECT_EQ(this->write_to_host(array), 0);
}

TYPED_TEST(Writing, AnEmptyArrayOpensAndClosesTheEditOfAnEmptyCollection)
{
    auto array = wrapped<TypeParam>(nullptr, 0, 3);
    this->expect_start(0);
    this->host.expect_end_edit();
    this->host.expect_release();
    EXPECT_EQ(this->write_to_host(&array), 0);
}

TYPED_TEST(Writing, ANullCollectionOrArrayFails)
{
    auto array = points<TypeParam>(kAll);
    EXPECT_EQ(write(array.get(), nullptr), kFailed);
    EXPECT_EQ(this->write_to_host(nullptr), kFailed);
}

TYPED_TEST(Writing, AStatusOfTheCountIsReturned)
{
    auto array = points<TypeParam>(kAll);
    for (const int32_t status : {kDeviceLost, kSucceededOtherwise}) {
        this->host.expect_count(4, status);
        EXPECT_EQ(this->write_to_host(array), status);
    }
}

TYPED_TEST(Writing, AnotherCountFailsAndOnlyTheCountIsAskedFor)
{
    auto array = array_of<TypeParam>(DATA_TYPE_DOUBLE, 5, 3);
    for (const uint32_t count : {0u, 4u, 6u, 0x80000005u}) {
        this->host.expect_count(count);
        EXPECT_EQ(this->write_to_host(array), kFailed);
    }
}

TYPED_TEST(Writing, AnUnsetCountFitsNoCollection)
{
    double values[3] = {};
    auto array = wrapped<TypeParam>(values, -1, 3);
    for (const uint32_t count : {0u, 1u, 0xffffffffu}) {
        this->host.expect_count(count);
        EXPECT_EQ(this->write_to_host(&array), kFailed);
    }
}

TYPED_TEST(Writing, AnArrayWithoutABufferFailsBeforeTheAccessorIsAskedFor)
{
    auto missing = wrapped<TypeParam>(nullptr, 4, 3);
    this->host.expect_count(4);
    EXPECT_EQ(this->write_to_host(&missing), kFailed);

    auto whole = array_of<TypeParam>(DATA_TYPE_INT, 4, 3);
    this->host.expect_count(4);
    EXPECT_EQ(this->write_to_host(whole), kFailed);
}

TYPED_TEST(Writing, MoreCoordinatesThan31BitsFailBeforeTheAccessorIsAskedFor)
{
    double value = 0.0;
    for (const int count : {715827883, 2147483647}) { // the first is the least whose coordinates do not fit
        auto array = wrapped<TypeParam>(&value, count, 3);
        this->host.expect_count(static_cast<uint32_t>(count));
        EXPECT_EQ(this->write_to_host(&array), kFailed);
    }
}

TYPED_TEST(Writing, AStatusOfTheAccessorIsReturned)
{
    auto array = points<TypeParam>(kAll);
    for (const int32_t status : {kDeviceLost, kSucceededOtherwise}) {
        this->host.expect_count(4);
        this->host.expect_accessor(status);
        EXPECT_EQ(this->write_to_host(array), status);
    }
}

TYPED_TEST(Writing, AMissingAccessorFails)
{
    auto array = points<TypeParam>(kAll);
    this->host.expect_count(4);
    this->host.expect_no_accessor();
    EXPECT_EQ(this->write_to_host(array), kFailed);
}

TYPED_TEST(Writing, AFailingSeekLeavesTheEditOpenAndTheAccessorUnreleased)
{
    auto array = points<TypeParam>(kAll);
    for (const int32_t status : {kDeviceLost, kSucceededOtherwise})
        for (size_t failing = 0; failing < 4; ++failing) {
            this->expect_start(4);
            this->expect_vertices(failing);
            this->host.expect_seek(static_cast<uint32_t>(failing), status);
            EXPECT_EQ(this->write_to_host(array), status);
        }
}

TYPED_TEST(Writing, AFailingWriteLeavesTheEditOpenAndTheAccessorUnreleased)
{
    auto array = points<TypeParam>(kAll);
    for (const int32_t status : {kDeviceLost, kSucceededOtherwise})
        for (const int number : {0, 1})
            for (size_t failing = 0; failing < 4; ++failing) {
                this->expect_start(4);
                this->expect_vertices(failing);
                this->host.expect_seek(static_cast<uint32_t>(failing));
                this->host.expect_write(vertex(failing), {status, number});
                EXPECT_EQ(this->write_to_host(array), status);
            }
}

TYPED_TEST(Writing, AWriteOfAnyNumberButOneFails)
{
    auto array = points<TypeParam>(kAll);
    for (const int number : {0, 2, -1}) // -1: the host does not say, and none counts as written
        for (size_t failing = 0; failing < 4; ++failing) {
            this->expect_start(4);
            this->expect_vertices(failing);
            this->host.expect_seek(static_cast<uint32_t>(failing));
            this->host.expect_write(vertex(failing), {0, number});
            EXPECT_EQ(this->write_to_host(array), kFailed);
        }
}

TEST(F3DKorvaleDATA2Vertex, ABufferAllocatedTooSmallFails)
{
    Host host;
    auto array = array_of<DATAstruct>(DATA_TYPE_DOUBLE, 4, 2); // 8 doubles, 12 are wanted
    host.expect_count(4);
    EXPECT_EQ(F3DKorvaleDATA2Vertex(array, &host.collection), kFailed);
}

TEST(F3DKorvaleDATA2Vertex, ABufferAllocatedInAnotherShapeIsWritten)
{
    Host host;
    auto array = doubles<DATAstruct>(6, {1, 2, 3, 4, 5, 6});
    array->count = 2;
    host.expect_count(2);
    host.expect_accessor();
    host.expect_begin_edit();
    for (uint32_t i = 0; i < 2; ++i) {
        host.expect_seek(i);
        host.expect_write(vertex(i));
    }
    host.expect_end_edit();
    host.expect_release();
    EXPECT_EQ(F3DKorvaleDATA2Vertex(array, &host.collection), 0);
}

TYPED_TEST(Writing, WhatIsReadComesBackUnchanged)
{
    PlainHost from(kAll), to(std::vector<double>(kAll.size(), 0.0));
    auto array = points<TypeParam>({});
    if constexpr (std::is_same_v<TypeParam, Data>)
        EXPECT_EQ(F3DKorvaleVertex2Data(&from, array), 0);
    else
        EXPECT_EQ(F3DKorvaleVertex2DATA(&from, array), 0);
    EXPECT_EQ(write(array.get(), &to), 0);
    EXPECT_TRUE(same_bits(kAll, to.positions));
    EXPECT_EQ(to.references, 0);
    EXPECT_EQ(to.edits, 0);
}

TEST(F3DKorvale2DataNormal, IsNotProvided)
{
    Host host;
    auto array = points<Data>(kAll);
    EXPECT_EQ(F3DKorvale2DataNormal(array, &host.collection), kNotImplemented);
    EXPECT_EQ(F3DKorvale2DataNormal(nullptr, nullptr), kNotImplemented);
}

TEST(F3DKorvale2DATANormal, IsNotProvided)
{
    Host host;
    auto array = points<DATAstruct>(kAll);
    EXPECT_EQ(F3DKorvale2DATANormal(array, &host.collection), kNotImplemented);
    EXPECT_EQ(F3DKorvale2DATANormal(nullptr, nullptr), kNotImplemented);
}

} // namespace korvale::test
