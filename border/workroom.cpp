// A pool of memory blocks between calls, without a lock. A block is in one of the slots or belongs to one call; it
// changes hands by one atomic exchange, so no call ever waits for another.
#include "border/internal/workroom.h"

#include <atomic>
#include <cstdlib>

namespace korvale::border {

struct Workroom::Block {
    int64_t room;

    /// Where the values begin.
    double* values()
    {
        constexpr uintptr_t kBehind = kAlignment - 1; // the bits below
        return reinterpret_cast<double*>((reinterpret_cast<uintptr_t>(this + 1) + kBehind) & ~kBehind);
    }
};

struct KeptBlocks {
    using Block = Workroom::Block;

    constexpr KeptBlocks() : slots{} {}
    ~KeptBlocks()
    {
        while (Block* const block = take())
            std::free(block);
    }

    /// A block that is kept, or null.
    Block* take()
    {
        for (std::atomic<Block*>& slot : slots)
            if (slot.load(std::memory_order_relaxed) != nullptr)
                if (Block* const block = slot.exchange(nullptr, std::memory_order_acquire))
                    return block;
        return nullptr;
    }

    /// Keeps the block in an empty slot. False where there is none.
    bool keep(Block* block)
    {
        for (std::atomic<Block*>& slot : slots) {
            Block* empty = nullptr;
            if (slot.compare_exchange_strong(empty, block, std::memory_order_release, std::memory_order_relaxed))
                return true;
        }
        return false;
    }

    std::atomic<Block*> slots[Workroom::kKeptBlocks];
};

namespace {

KeptBlocks kept KORVALE_MADE_AT_LOAD;

} // namespace

void Workroom::take_block(int64_t count)
{
    block_ = count <= kMostKept ? kept.take() : nullptr;
    if (block_ == nullptr || block_->room < count) {
        std::free(block_);
        const uint64_t bytes = sizeof(Block) + kAlignment + static_cast<uint64_t>(count) * sizeof(double);
        block_ = bytes > SIZE_MAX / 2 || bytes / sizeof(double) < static_cast<uint64_t>(count)
                     ? nullptr
                     : static_cast<Block*>(std::malloc(static_cast<size_t>(bytes)));
        if (block_ != nullptr)
            block_->room = count;
    }
    values_ = block_ == nullptr ? nullptr : block_->values();
}

void Workroom::give_back()
{
    if (block_->room > kMostKept || !kept.keep(block_))
        std::free(block_);
}

} // namespace korvale::border
