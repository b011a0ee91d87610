#pragma once

#include <cstring>
#include <vector>

#include <gmock/gmock.h>

#include "exchange/vertices.h"

// Two hosts: one whose every call must be expected, in order, and one that just holds vertices.
namespace korvale::test {

class MockAccessor : public I3DVertexAccessor {
public:
    MOCK_METHOD(int32_t, QueryInterface, (const void*, void**), (override));
    MOCK_METHOD(uint32_t, AddRef, (), (override));
    MOCK_METHOD(uint32_t, Release, (), (override));
    MOCK_METHOD(int32_t, ReadPositions, (uint32_t, double*, uint32_t*), (override));
    MOCK_METHOD(void, Unused4, (), (override));
    MOCK_METHOD(int32_t, WritePositions, (uint32_t, const double*, uint32_t*), (override));
    MOCK_METHOD(void, Unused6, (), (override));
    MOCK_METHOD(int32_t, Seek, (uint32_t), (override));
    MOCK_METHOD(int32_t, ReadNormals, (uint32_t, double*, void*, uint32_t*), (override));
    MOCK_METHOD(int32_t, BeginEdit, (), (override));
    MOCK_METHOD(int32_t, EndEdit, (), (override));
};

class MockCollection : public I3DVertexCollection {
public:
    MOCK_METHOD(int32_t, QueryInterface, (const void*, void**), (override));
    MOCK_METHOD(uint32_t, AddRef, (), (override));
    MOCK_METHOD(uint32_t, Release, (), (override));
    MOCK_METHOD(int32_t, GetVertexCount, (uint32_t*), (override));
    MOCK_METHOD(void, Unused4, (), (override));
    MOCK_METHOD(int32_t, GetAccessor, (uint32_t, I3DVertexAccessor**), (override));
};

constexpr int32_t kFailed = static_cast<int32_t>(0x80004005);
constexpr int32_t kNotImplemented = static_cast<int32_t>(0x80004001);
constexpr int32_t kDeviceLost = static_cast<int32_t>(0x88760868); // some status of the host's own
constexpr int32_t kSucceededOtherwise = 1;                        // success for others, but not 0

/// What a host says to one read or write; `number` below 0 leaves the caller's number untouched.
struct Answer {
    int32_t status = 0;
    int number = 1;
};

/// The collection and its accessor. Each `expect_...` adds one call to the sequence that must happen; any other call,
/// and any other order, fails the test.
class Host {
public:
    testing::StrictMock<MockCollection> collection;
    testing::StrictMock<MockAccessor> accessor;

    void expect_count(uint32_t count, int32_t status = 0)
    {
        EXPECT_CALL(collection, GetVertexCount).InSequence(calls_).WillOnce([count, status](uint32_t* out) {
            *out = count;
            return status;
        });
    }

    void expect_accessor(int32_t status = 0)
    {
        EXPECT_CALL(collection, GetAccessor(0u, testing::NotNull()))
            .InSequence(calls_)
            .WillOnce([this, status](uint32_t, I3DVertexAccessor** out) {
                *out = &accessor;
                return status;
            });
    }

    void expect_no_accessor()
    {
        EXPECT_CALL(collection, GetAccessor).InSequence(calls_).WillOnce([](uint32_t, I3DVertexAccessor**) {
            return 0;
        });
    }

    void expect_seek(uint32_t vertex, int32_t status = 0)
    {
        EXPECT_CALL(accessor, Seek(vertex)).InSequence(calls_).WillOnce(testing::Return(status));
    }

    void expect_read_position(const std::vector<double>& xyz, Answer answer = {})
    {
        EXPECT_CALL(accessor, ReadPositions(1u, testing::NotNull(), testing::NotNull()))
            .InSequence(calls_)
            .WillOnce(
                [xyz, answer](uint32_t, double* out, uint32_t* number) { return give(xyz, answer, out, number); });
    }

    void expect_read_normal(const std::vector<double>& xyz, Answer answer = {})
    {
        EXPECT_CALL(accessor, ReadNormals(1u, testing::NotNull(), testing::NotNull(), testing::NotNull()))
            .InSequence(calls_)
            .WillOnce([xyz, answer](uint32_t, double* out, void* ignored, uint32_t* number) {
                std::memset(ignored, 0xff, 256);
                return give(xyz, answer, out, number);
            });
    }

    void expect_write(const std::vector<double>& xyz, Answer answer = {})
    {
        EXPECT_CALL(accessor, WritePositions(1u, testing::NotNull(), testing::NotNull()))
            .InSequence(calls_)
            .WillOnce([xyz, answer](uint32_t, const double* in, uint32_t* number) {
                EXPECT_EQ(std::memcmp(xyz.data(), in, 3 * sizeof(double)), 0);
                if (answer.number >= 0)
                    *number = static_cast<uint32_t>(answer.number);
                return answer.status;
            });
    }

    void expect_begin_edit(int32_t status = 0)
    {
        EXPECT_CALL(accessor, BeginEdit).InSequence(calls_).WillOnce(testing::Return(status));
    }

    void expect_end_edit(int32_t status = 0)
    {
        EXPECT_CALL(accessor, EndEdit).InSequence(calls_).WillOnce(testing::Return(status));
    }

    void expect_release(uint32_t references = 0)
    {
        EXPECT_CALL(accessor, Release).InSequence(calls_).WillOnce(testing::Return(references));
    }

private:
    static int32_t give(const std::vector<double>& xyz, Answer answer, double* out, uint32_t* number)
    {
        std::memcpy(out, xyz.data(), 3 * sizeof(double));
        if (answer.number >= 0)
            *number = static_cast<uint32_t>(answer.number);
        return answer.status;
    }

    testing::Sequence calls_;
};

/// A host that holds vertices and takes nothing from the heap while it is asked.
class PlainHost : public I3DVertexCollection, private I3DVertexAccessor {
public:
    explicit PlainHost(std::vector<double> xyz) : positions(std::move(xyz)) {}

    std::vector<double> positions; // [3 n]
    int references = 0;            // to the accessor
    int edits = 0;                 // begun and not ended

    int32_t QueryInterface(const void*, void**) override { return kFailed; }
    uint32_t AddRef() override { return 1; }
    uint32_t Release() override { return static_cast<uint32_t>(--references); }
    void Unused4() override {}
    int32_t GetVertexCount(uint32_t* count) override
    {
        *count = static_cast<uint32_t>(positions.size() / 3);
        return 0;
    }
    int32_t GetAccessor(uint32_t, I3DVertexAccessor** accessor) override
    {
        ++references;
        *accessor = this;
        return 0;
    }

private:
    int32_t ReadPositions(uint32_t, double* out, uint32_t* number) override
    {
        std::memcpy(out, &positions[current_], 3 * sizeof(double));
        *number = 1;
        return 0;
    }
    int32_t WritePositions(uint32_t, const double* in, uint32_t* number) override
    {
        std::memcpy(&positions[current_], in, 3 * sizeof(double));
        *number = 1;
        return 0;
    }
    int32_t Seek(uint32_t vertex) override
    {
        current_ = 3 * static_cast<size_t>(vertex);
        return 0;
    }
    int32_t ReadNormals(uint32_t, double*, void*, uint32_t*) override { return kFailed; }
    int32_t BeginEdit() override { return ++edits, 0; }
    int32_t EndEdit() override { return --edits, 0; }

    size_t current_ = 0;
};

} // namespace korvale::test
