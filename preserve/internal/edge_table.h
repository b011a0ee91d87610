#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>

#include "platform/internal/large_pages.h"

namespace korvale::preserve {

/// The home slot of an edge is the lower bits of this hash, 7 from + scatter (to - from). It keeps locality: in a
/// regular mesh, edges in the same direction lie seven slots apart from point to point, and other directions far away.
/// So walking along a mesh walks along the table, whose cache lines are reused. Seven leaves room between the edges of
/// one direction for those of others.
inline uint32_t edge_hash(int32_t from, int32_t to)
{
    constexpr uint32_t kScatter = 0x5bd1e995;
    return (7 - kScatter) * static_cast<uint32_t>(from) + kScatter * static_cast<uint32_t>(to);
}

/// A hash without locality: all bits of both points reach the lower ones (two rounds of multiply and xor-shift).
/// noinline: inlined, it would take registers from the loops that note edges.
[[gnu::noinline]] inline uint32_t scattered_hash(int32_t from, int32_t to)
{
    uint64_t edge = uint64_t{static_cast<uint32_t>(from)} << 32 | static_cast<uint32_t>(to);
    for (int round = 0; round < 2; ++round) {
        edge *= 0x9e3779b97f4a7c15;
        edge ^= edge >> 32;
    }
    return static_cast<uint32_t>(edge);
}

/// Lists each edge once: a hash table with open addressing and linear probing, whose slots hold the numbers of edges in
/// the list. It grows with what it finds and is never more than three quarters full. It starts with `edge_hash`. Where
/// that clusters, as with point numbers in steps of a large power of two, probes pass many slots: at more than four for
/// each edge that the list has room for, all edges are rehashed by `scattered_hash`, for good. The probing is so
/// bounded, and the whole linear.
class EdgeTable {
public:
    /// Lists up to `most` edges in `ends`, two points each.
    EdgeTable(int32_t* ends, int32_t most) : ends_(ends), most_(most) { renew(slots_for(most / 2)); }
    ~EdgeTable() { std::free(memory_); }
    EdgeTable(const EdgeTable&) = delete;
    EdgeTable& operator=(const EdgeTable&) = delete;

    /// False once the heap was exhausted.
    bool exists() const { return memory_ != nullptr; }
    int32_t found() const { return found_; }
    /// Slots of other edges that probes have passed so far.
    int64_t passed() const { return passed_; }

    /// Lists the edge between a and b, the smaller first, unless it is listed. False where it finds no room, or the
    /// heap is exhausted.
    bool note(int32_t a, int32_t b)
    {
        const int32_t from = b < a ? b : a, to = b < a ? a : b;
        const uint64_t edge = packed(from, to);
        uint32_t slot = first_slot(from, to);
        for (int32_t e; (e = slots_[slot]) != kEmpty; slot = (slot + 1) & mask_) {
            if (edge_at(e) == edge)
                return true;
            if (++passed_ > most_passed_)
                return scatter() && note(a, b);
        }
        if (found_ == limit_)
            return grow() && note(a, b);
        slots_[slot] = found_;
        std::memcpy(ends_ + 2 * int64_t{found_}, &edge, sizeof edge);
        ++found_;
        return true;
    }

private:
    static constexpr int32_t kEmpty = -1;

    /// A power of two that `edges` fill to two thirds at most.
    static uint32_t slots_for(int32_t edges)
    {
        return std::bit_ceil(static_cast<uint32_t>(edges) + static_cast<uint32_t>(edges) / 2 + 4);
    }

    /// The bytes to allocate, of which `used` are touched. More than is used, on purpose:
    ///
    /// - Freeing an mmapped block raises glibc's mmap threshold to its size, where that is no more than 32 MiB, and the
    ///   trim threshold to twice that (mallopt(3), M_MMAP_THRESHOLD).
    /// - So a block of over half the mesh's arrays together keeps all of them on the heap, and the next mesh reuses
    ///   their pages without page faults.
    /// - 20 bytes for each edge there is room for are over half of the arrays by edge and by face, measures included.
    /// - Below twice 128 KiB, glibc's first mmap threshold, the arrays are on the heap anyway. A block above 32 MiB
    ///   would raise nothing; 31 leaves room for rounding.
    size_t bytes_for(size_t used) const
    {
        constexpr size_t kKeptAnyway = size_t{128} << 10, kMostKept = size_t{31} << 20;
        const size_t arrays = 20 * static_cast<size_t>(most_);
        return arrays < 2 * kKeptAnyway ? used : std::max(used, std::min(arrays + kKeptAnyway, kMostKept));
    }

    uint32_t first_slot(int32_t from, int32_t to) const
    {
        return (is_scattered_ ? scattered_hash(from, to) : edge_hash(from, to)) & mask_;
    }

    /// Two points as one 64-bit number, in the order of bytes that they have in the list.
    static uint64_t packed(int32_t from, int32_t to)
    {
        const uint64_t first = static_cast<uint32_t>(from), second = static_cast<uint32_t>(to);
        return std::endian::native == std::endian::little ? second << 32 | first : first << 32 | second;
    }

    uint64_t edge_at(int32_t e) const
    {
        uint64_t edge;
        std::memcpy(&edge, ends_ + 2 * int64_t{e}, sizeof edge);
        return edge;
    }

    /// Starts over with a table of `count` empty slots, or none without memory.
    void renew(uint32_t count)
    {
        std::free(memory_);
        const size_t used = size_t{count} * sizeof(int32_t), before_large = used < kLargePage ? 0 : kLargePage;
        memory_ = std::malloc(bytes_for(used) + before_large);
        if (memory_ == nullptr)
            return;
        slots_ = static_cast<int32_t*>(before_large == 0 ? memory_ : large_pages_in(memory_, used));
        std::memset(slots_, 0xff, used);
        mask_ = count - 1;
        limit_ = static_cast<int32_t>(std::min<int64_t>(most_, int64_t{count} / 4 * 3));
    }

    /// Makes the table twice as large, unless the list is full.
    [[gnu::noinline]] bool grow() { return found_ != most_ && rehash(2 * (mask_ + 1)); }

    /// Scatters the edges, for good.
    [[gnu::noinline]] bool scatter()
    {
        is_scattered_ = true;
        most_passed_ = std::numeric_limits<int64_t>::max();
        return rehash(mask_ + 1);
    }

    /// Starts over with `count` slots for the edges found so far.
    bool rehash(uint32_t count)
    {
        renew(count);
        if (!exists())
            return false;
        for (int32_t e = 0; e < found_; ++e) {
            uint32_t slot = first_slot(ends_[2 * int64_t{e}], ends_[2 * int64_t{e} + 1]);
            for (; slots_[slot] != kEmpty; slot = (slot + 1) & mask_)
                ++passed_;
            slots_[slot] = e;
        }
        return true;
    }

    int32_t* ends_;
    int32_t most_, found_ = 0, limit_ = 0; // limit_: edges before the table must grow, or the list is full
    int64_t passed_ = 0, most_passed_ = 4 * int64_t{most_};
    bool is_scattered_ = false;
    uint32_t mask_ = 0;
    void* memory_ = nullptr;
    int32_t* slots_ = nullptr; // in memory_
};

} // namespace korvale::preserve
