// Blocks that begin with a huge page.
#include "platform/internal/large_pages.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include <gtest/gtest.h>

namespace korvale::test {
namespace {

using platform::kLargePage;
using platform::large_pages_in;
using platform::new_block;

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

TEST(LargePagesIn, AreTheNextToBegin)
{
    auto* const memory = static_cast<unsigned char*>(std::malloc(3 * kLargePage));
    ASSERT_NE(memory, nullptr);
    auto* const pages = static_cast<unsigned char*>(large_pages_in(memory, 2 * kLargePage));
    EXPECT_TRUE(begins_large_page(pages));
    EXPECT_GE(pages, memory);
    EXPECT_LT(pages - memory, static_cast<ptrdiff_t>(kLargePage));
    EXPECT_EQ(large_pages_in(pages, kLargePage), pages);
    std::memset(pages, 0xff, 2 * kLargePage);
    std::free(memory);
}

} // namespace
} // namespace korvale::test
