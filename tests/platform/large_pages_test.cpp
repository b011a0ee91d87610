#include "platform/internal/large_pages.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>

#include <gtest/gtest.h>

namespace korvale::test {
namespace {

using inside::kLargePage;
using inside::new_block;

bool begins_large_page(const void* block)
{
    return reinterpret_cast<uintptr_t>(block) % kLargePage == 0;
}

TEST(NewBlock, OneThatFillsLargePagesBeginsWithOne)
{
    for (const size_t bytes : {kLargePage, kLargePage + 1, 2 * kLargePage - 8, 5 * kLargePage}) {
        void* const block = new_block(bytes);
        ASSERT_NE(block, nullptr);
        EXPECT_TRUE(begins_large_page(block)) << bytes;
        std::memset(block, 0xff, bytes);
        std::free(block);
    }
}

TEST(NewBlock, ManySmallerOnesDoNotAllBeginLargePages)
{
    void* blocks[16];
    int beginning = 0;
    for (void*& block : blocks) {
        block = new_block(kLargePage / 2);
        ASSERT_NE(block, nullptr);
        beginning += begins_large_page(block) ? 1 : 0;
    }
    for (void* block : blocks)
        std::free(block);
    EXPECT_LT(beginning, 16);
}

TEST(NewBlock, KeepsItsContentWhenMadeSmaller)
{
    auto* block = static_cast<unsigned char*>(new_block(3 * kLargePage));
    ASSERT_NE(block, nullptr);
    block[0] = 1;
    block[kLargePage + 4] = 2;
    auto* const smaller = static_cast<unsigned char*>(std::realloc(block, kLargePage + 5));
    ASSERT_NE(smaller, nullptr);
    EXPECT_EQ(smaller[0], 1);
    EXPECT_EQ(smaller[kLargePage + 4], 2);
    std::free(smaller);
}

} // namespace
} // namespace korvale::test
