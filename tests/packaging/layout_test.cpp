// The size of every public record and the place of every field in it, as hosts were compiled to them.
#include <cstddef>

#include <gtest/gtest.h>

#include "korvale.h"

namespace korvale::test {
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

TEST(Layout, EquationSystem)
{
    EXPECT_EQ(sizeof(EquationSystem), 80u);
    expect_fields({FIELD(EquationSystem, funcs, 0, 8), FIELD(EquationSystem, func_names, 8, 8),
                   FIELD(EquationSystem, func_nargs, 16, 8), FIELD(EquationSystem, var_names, 24, 8),
                   FIELD(EquationSystem, var_vals, 32, 8), FIELD(EquationSystem, var_flags, 40, 8),
                   FIELD(EquationSystem, equations, 48, 8), FIELD(EquationSystem, tables, 56, 8),
                   FIELD(EquationSystem, table_pos, 64, 8), FIELD(EquationSystem, table_index, 72, 8)});
}

TEST(Layout, PreserveStatus)
{
    EXPECT_EQ(sizeof(PreserveStatus), 216u);
    expect_fields({FIELD(PreserveStatus, flags, 0, 4),
                   FIELD(PreserveStatus, points, 8, 8),
                   FIELD(PreserveStatus, edges, 16, 8),
                   FIELD(PreserveStatus, face_sizes, 24, 8),
                   FIELD(PreserveStatus, face_points, 32, 8),
                   FIELD(PreserveStatus, tags, 40, 8),
                   FIELD(PreserveStatus, masses, 48, 8),
                   FIELD(PreserveStatus, face_starts, 56, 8),
                   FIELD(PreserveStatus, point_edge_count, 64, 8),
                   FIELD(PreserveStatus, point_edge_start, 72, 8),
                   FIELD(PreserveStatus, point_edges, 80, 8),
                   FIELD(PreserveStatus, point_faces, 88, 8),
                   FIELD(PreserveStatus, weights, 96, 32),
                   FIELD(PreserveStatus, olen, 128, 8),
                   FIELD(PreserveStatus, ofang, 136, 8),
                   FIELD(PreserveStatus, ovolume, 144, 8),
                   FIELD(PreserveStatus, oarea, 152, 8),
                   FIELD(PreserveStatus, cur_points, 160, 8),
                   FIELD(PreserveStatus, nlen, 168, 8),
                   FIELD(PreserveStatus, nfang, 176, 8),
                   FIELD(PreserveStatus, nvolume, 184, 8),
                   FIELD(PreserveStatus, narea, 192, 8),
                   FIELD(PreserveStatus, force, 200, 8),
                   FIELD(PreserveStatus, energy, 208, 8)});
}

/// The host calls through these tables, so the places of their functions count as fields do.
TEST(Layout, HostInterfacesAreBarePointersToTheirTables)
{
    EXPECT_EQ(sizeof(I3DVertexCollection), 8u);
    EXPECT_EQ(sizeof(I3DVertexAccessor), 8u);
}

TEST(Layout, DependencyNode)
{
    EXPECT_EQ(sizeof(MwDependancyNode), 80u);
    EXPECT_EQ(offsetof(MwDependancyNode, libraries[1].name), 16u);
    EXPECT_EQ(offsetof(MwDependancyNode, libraries[4].node), 72u);
}

} // namespace
} // namespace korvale::test
