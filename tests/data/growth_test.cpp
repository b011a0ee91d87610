// Which arrays may be made longer in place.
#include <gtest/gtest.h>

#include "data/internal/buffers.h"
#include "tests/support/arrays.h"

namespace korvale::test {
namespace {

TEST(MayGrow, TakesArraysThatTheLibraryMade)
{
    OwnedDATA empty;
    EXPECT_TRUE(data::may_grow(*empty));
    for (int32_t type = 0; type <= 4; ++type)
        EXPECT_TRUE(data::may_grow(*array_of<DATAstruct>(type, 2, 3))) << type;
    empty->count = 0;
    empty->dim = 3;
    EXPECT_EQ(DATAReAllocate(empty), 1);
    EXPECT_TRUE(data::may_grow(*empty)) << "shaped to 0 elements";
}

TEST(MayGrow, RefusesMemoryOfTheHost)
{
    double value = 1;
    int32_t whole = 1;
    uint8_t byte = 1;
    void* slot = nullptr;
    for (const int32_t unset : {-1, 0})
        for (int32_t type = 0; type <= 4; ++type) {
            DATAstruct d = wrapped<DATAstruct>(nullptr, 1, 1);
            d.type = type;
            d.alloc_dim = 1;
            d.alloc_count = unset;
            EXPECT_TRUE(data::may_grow(d)) << "no buffer yet";
            if (type == DATA_TYPE_DOUBLE)
                d.dvals = &value;
            else if (type == DATA_TYPE_INT)
                d.ivals = &whole;
            else if (type == DATA_TYPE_BYTE)
                d.bvals = &byte;
            else
                d.pvals = &slot;
            EXPECT_FALSE(data::may_grow(d)) << type;
            d.type = 9;
            EXPECT_FALSE(data::may_grow(d)) << "of whatever kind";
        }
}

} // namespace
} // namespace korvale::test
