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

TEST(Layout, BorderStatus)
{
    EXPECT_EQ(sizeof(BorderStatus), 56u);
    expect_fields({FIELD(BorderStatus, path, 0, 8), FIELD(BorderStatus, output, 8, 8),
                   FIELD(BorderStatus, height, 16, 8), FIELD(BorderStatus, distance, 24, 8),
                   FIELD(BorderStatus, keep_collapsed, 32, 4), FIELD(BorderStatus, reserved1, 36, 4),
                   FIELD(BorderStatus, split_events, 40, 4), FIELD(BorderStatus, reserved2, 44, 4),
                   FIELD(BorderStatus, reserved3, 48, 4)});
}

TEST(Layout, BORDERStatus)
{
    EXPECT_EQ(sizeof(BORDERStatus), 104u);
    expect_fields(
        {FIELD(BORDERStatus, path, 0, 8), FIELD(BORDERStatus, output, 8, 8), FIELD(BORDERStatus, flat, 16, 8),
         FIELD(BORDERStatus, velocity, 24, 8), FIELD(BORDERStatus, direction, 32, 8), FIELD(BORDERStatus, line, 40, 8),
         FIELD(BORDERStatus, dead, 48, 8), FIELD(BORDERStatus, length, 56, 8), FIELD(BORDERStatus, rate, 64, 8),
         FIELD(BORDERStatus, merge, 72, 8), FIELD(BORDERStatus, height, 80, 8), FIELD(BORDERStatus, distance, 88, 8),
         FIELD(BORDERStatus, keep_collapsed, 96, 4), FIELD(BORDERStatus, split_events, 100, 4)});
}

TEST(Layout, RayStatus)
{
    EXPECT_EQ(sizeof(RayStatus), 112u);
    expect_fields({FIELD(RayStatus, triangles, 0, 8), FIELD(RayStatus, bbox, 8, 40),
                   FIELD(RayStatus, tri_marks, 48, 40), FIELD(RayStatus, cells, 88, 8), FIELD(RayStatus, nx, 96, 4),
                   FIELD(RayStatus, ny, 100, 4), FIELD(RayStatus, nz, 104, 4)});
}

TEST(Layout, DependencyNode)
{
    EXPECT_EQ(sizeof(MwDependancyNode), 80u);
    EXPECT_EQ(offsetof(MwDependancyNode, libraries[1].name), 16u);
    EXPECT_EQ(offsetof(MwDependancyNode, libraries[4].node), 72u);
}

} // namespace
