// The size of every public record and the place of every field in it, as hosts were compiled to them.
#include <cstddef>

#include <gtest/gtest.h>

#include "korvale.h"

namespace {

struct Field {
    const char* name;
    size_t expected_offset;
    size_t offset;
    size_t expected_size;
    size_t size;
};

#define FIELD(record, name, expected_offset, expected_size)                                                            \
    {                                                                                                                  \
#name, expected_offset, offsetof(record, name), expected_size, sizeof(record::name)                            \
    }

/// The fields in order, without a hole that padding does not explain.
void expect_fields(std::initializer_list<Field> fields)
{
    for (const Field& field : fields) {
        EXPECT_EQ(field.offset, field.expected_offset) << field.name;
        EXPECT_EQ(field.size, field.expected_size) << field.name;
    }
}

TEST(Layout, Data)
{
    EXPECT_EQ(sizeof(Data), 40u);
    expect_fields({FIELD(Data, dim, 0, 4), FIELD(Data, count, 4, 4), FIELD(Data, type, 8, 4), FIELD(Data, dvals, 16, 8),
                   FIELD(Data, ivals, 24, 8), FIELD(Data, bvals, 32, 8)});
}

TEST(Layout, DataList)
{
    EXPECT_EQ(sizeof(data_list_struct), 48u);
    expect_fields({FIELD(data_list_struct, dim, 0, 4), FIELD(data_list_struct, next, 40, 8)});
}

TEST(Layout, DATAstruct)
{
    EXPECT_EQ(sizeof(DATAstruct), 64u);
    expect_fields({FIELD(DATAstruct, dim, 0, 4), FIELD(DATAstruct, count, 4, 4), FIELD(DATAstruct, alloc_dim, 8, 4),
                   FIELD(DATAstruct, alloc_count, 12, 4), FIELD(DATAstruct, type, 16, 4),
                   FIELD(DATAstruct, alloc_type, 20, 4), FIELD(DATAstruct, dvals, 24, 8),
                   FIELD(DATAstruct, ivals, 32, 8), FIELD(DATAstruct, bvals, 40, 8), FIELD(DATAstruct, pvals, 48, 8),
                   FIELD(DATAstruct, next, 56, 8)});
}

TEST(Layout, DependencyNode)
{
    EXPECT_EQ(sizeof(MwDependancyNode), 80u);
    EXPECT_EQ(offsetof(MwDependancyNode, libraries[1].name), 16u);
    EXPECT_EQ(offsetof(MwDependancyNode, libraries[4].node), 72u);
}

} // namespace
