#pragma once

#include <cstdint>

namespace korvale::border {

/// Working memory of one call: uninitialised doubles, the first aligned for four lanes. A few are stored in the object
/// itself. More come from a pool of blocks that the library keeps between calls, so that calls neither ask the heap nor
/// take page faults on new memory.
///
/// At most `kKeptBlocks` blocks of at most `kMostKept` doubles are kept, for all threads together; what is larger or
/// one too many goes back to the heap. They are released when the library is unloaded.
class Workroom {
public:
    static constexpr int64_t kNearby = 512;                ///< doubles in the object. Chosen: 4 KB of a stack
    static constexpr int kAlignment = 32;                  ///< in bytes
    static constexpr int kKeptBlocks = 4;                  ///< Chosen: as many threads sweep at once without the heap
    static constexpr int64_t kMostKept = int64_t{1} << 19; ///< Chosen: 4 MB, so that 16 MB are kept at most

    explicit Workroom(int64_t count) : values_(nearby_), block_(nullptr)
    {
        if (count > kNearby)
            take_block(count);
    }
    ~Workroom()
    {
        if (block_ != nullptr)
            give_back();
    }
    Workroom(const Workroom&) = delete;
    Workroom& operator=(const Workroom&) = delete;

    /// Whether there is room for `count` values; false where the heap is exhausted.
    bool exists() const { return values_ != nullptr; }
    double* get() const { return values_; }

private:
    struct Block;

    void take_block(int64_t count);
    void give_back();

    double* values_;
    Block* block_;
    alignas(kAlignment) double nearby_[kNearby];

    friend struct KeptBlocks;
};

} // namespace korvale::border
