// The places of the virtual functions, which hosts rely on without seeing this library's declarations.
#include <cstddef>
#include <cstdint>
#include <cstring>

#include <gtest/gtest.h>

#include "exchange/vertices.h"

namespace korvale::test {
namespace {

/// The place of a virtual function in its table. A pointer to it starts with the distance into the table in bytes; some
/// processors add 1 to tell it from a plain function.
template <class Function>
size_t slot(Function function)
{
    uintptr_t distance;
    std::memcpy(&distance, &function, sizeof distance);
    return (distance & ~uintptr_t{1}) / sizeof(void*);
}

} // namespace

TEST(I3DVertexCollection, FunctionsStandInTheirPlaces)
{
    EXPECT_EQ(slot(&I3DVertexCollection::QueryInterface), 0u);
    EXPECT_EQ(slot(&I3DVertexCollection::AddRef), 1u);
    EXPECT_EQ(slot(&I3DVertexCollection::Release), 2u);
    EXPECT_EQ(slot(&I3DVertexCollection::GetVertexCount), 3u);
    EXPECT_EQ(slot(&I3DVertexCollection::Unused4), 4u);
    EXPECT_EQ(slot(&I3DVertexCollection::GetAccessor), 5u);
}

TEST(I3DVertexAccessor, FunctionsStandInTheirPlaces)
{
    EXPECT_EQ(slot(&I3DVertexAccessor::QueryInterface), 0u);
    EXPECT_EQ(slot(&I3DVertexAccessor::AddRef), 1u);
    EXPECT_EQ(slot(&I3DVertexAccessor::Release), 2u);
    EXPECT_EQ(slot(&I3DVertexAccessor::ReadPositions), 3u);
    EXPECT_EQ(slot(&I3DVertexAccessor::Unused4), 4u);
    EXPECT_EQ(slot(&I3DVertexAccessor::WritePositions), 5u);
    EXPECT_EQ(slot(&I3DVertexAccessor::Unused6), 6u);
    EXPECT_EQ(slot(&I3DVertexAccessor::Seek), 7u);
    EXPECT_EQ(slot(&I3DVertexAccessor::ReadNormals), 8u);
    EXPECT_EQ(slot(&I3DVertexAccessor::BeginEdit), 9u);
    EXPECT_EQ(slot(&I3DVertexAccessor::EndEdit), 10u);
}

TEST(I3DVertexAccessor, ATableIsAllThereIs)
{
    EXPECT_EQ(sizeof(I3DVertexAccessor), sizeof(void*));
    EXPECT_EQ(sizeof(I3DVertexCollection), sizeof(void*));
}

} // namespace korvale::test
