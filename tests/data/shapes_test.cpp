// DATACheckIfPoints, DATACheckIfFace, DATACheckIfPatch and DATACheckIfMesh.
#include <gtest/gtest.h>

#include "data/datastruct.h"
#include "tests/support/arrays.h"

namespace korvale::test {
namespace {

void shape(DATAstruct* d, int32_t type, int32_t count, int32_t dim)
{
    d->type = type;
    d->count = count;
    d->dim = dim;
}

TEST(DATACheckIfPoints, WantsDoublesOfDim3)
{
    EXPECT_EQ(DATACheckIfPoints(nullptr), 0);
    auto d = points<DATAstruct>({1, 2, 3});
    EXPECT_EQ(DATACheckIfPoints(d), 1);
    OwnedDATA none;
    shape(none, DATA_TYPE_DOUBLE, 0, 3);
    EXPECT_EQ(DATACheckIfPoints(none), 1);
    shape(none, DATA_TYPE_DOUBLE, -1, 3);
    EXPECT_EQ(DATACheckIfPoints(none), 0);
    shape(none, DATA_TYPE_INT, 1, 3);
    EXPECT_EQ(DATACheckIfPoints(none), 0);
    shape(none, DATA_TYPE_DOUBLE, 1, 2);
    EXPECT_EQ(DATACheckIfPoints(none), 0);
    shape(none, DATA_TYPE_DOUBLE, 1, 4);
    EXPECT_EQ(DATACheckIfPoints(none), 0);
}

TEST(DATACheckIfFace, WantsPointsInEverySlot)
{
    EXPECT_EQ(DATACheckIfFace(nullptr), 0);
    auto face = parent({new_doubles(3, {1, 2, 3}), new_doubles(3, {4, 5, 6})});
    EXPECT_EQ(DATACheckIfFace(face), 1);
    static_cast<DATAstruct*>(face->pvals[1])->dim = 1;
    EXPECT_EQ(DATACheckIfFace(face), 0);
    auto gap = parent({new_doubles(3, {1, 2, 3}), nullptr});
    EXPECT_EQ(DATACheckIfFace(gap), 0);
    gap->count = 1;
    EXPECT_EQ(DATACheckIfFace(gap), 1) << "only the first count slots are examined";
}

TEST(DATACheckIfFace, WantsOneColumnOfChildren)
{
    auto face = parent({new_doubles(3, {1, 2, 3}), new_doubles(3, {1, 2, 3})}, 2);
    EXPECT_EQ(DATACheckIfFace(face), 0);
    auto points_only = points<DATAstruct>({1, 2, 3});
    EXPECT_EQ(DATACheckIfFace(points_only), 0);
    auto pointers = array_of<DATAstruct>(DATA_TYPE_POINTER, 1, 1);
    EXPECT_EQ(DATACheckIfFace(pointers), 0);
    OwnedDATA no_slots;
    shape(no_slots, DATA_TYPE_DATA, 1, 1);
    EXPECT_EQ(DATACheckIfFace(no_slots), 0);
    auto empty = parent({new_doubles(3, {1, 2, 3})});
    empty->count = 0;
    EXPECT_EQ(DATACheckIfFace(empty), 0);
}

TEST(DATACheckIfFace, ReadsNoSlotBeyondTheCapacity)
{
    auto face = parent({new_doubles(3, {1, 2, 3})});
    face->count = 1000;
    EXPECT_EQ(DATACheckIfFace(face), 0);
    face->count = 1;
}

TEST(DATACheckIfPatch, DoesNotExamineTheChildren)
{
    EXPECT_EQ(DATACheckIfPatch(nullptr), 0);
    auto patch = parent({nullptr, nullptr});
    EXPECT_EQ(DATACheckIfPatch(patch), 1);
    patch->count = 0;
    EXPECT_EQ(DATACheckIfPatch(patch), 0);
    auto wide = parent({nullptr, nullptr}, 2);
    EXPECT_EQ(DATACheckIfPatch(wide), 0);
    auto pointers = array_of<DATAstruct>(DATA_TYPE_POINTER, 1, 1);
    EXPECT_EQ(DATACheckIfPatch(pointers), 0);
    OwnedDATA no_slots;
    shape(no_slots, DATA_TYPE_DATA, 1, 1);
    EXPECT_EQ(DATACheckIfPatch(no_slots), 0);
}

TEST(DATACheckIfMesh, WantsDimFiveExactly)
{
    EXPECT_EQ(DATACheckIfMesh(nullptr), 0);
    for (const int32_t dim : {1, 4, 5, 6}) {
        auto mesh = array_of<DATAstruct>(DATA_TYPE_DATA, 2, dim);
        EXPECT_EQ(DATACheckIfMesh(mesh), dim == 5 ? 1 : 0) << dim;
    }
    OwnedDATA no_slots;
    shape(no_slots, DATA_TYPE_DATA, 1, 5);
    EXPECT_EQ(DATACheckIfMesh(no_slots), 0);
}

} // namespace
} // namespace korvale::test
