#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "platform/internal/large_pages.h"

namespace korvale::inside {

/// Tells edges found before from new ones, which it lists: a hash table with open addressing of the places in the list.
/// It grows with what it finds and never is more than three quarters full.
class EdgeTable {
public:
    /// Lists up to `most` edges in `ends`, two points each.
    EdgeTable(int32_t* ends, int32_t most) : ends_(ends), most_(most) { renew(slots_for(most / 2)); }
    ~EdgeTable() { std::free(slots_); }
    EdgeTable(const EdgeTable&) = delete;
    EdgeTable& operator=(const EdgeTable&) = delete;

    /// False once the heap was exhausted.
    bool exists() const { return slots_ != nullptr; }
    int32_t found() const { return found_; }

    /// Lists the edge between a and b, the smaller first, unless it is listed. False where it finds no room, or the
    /// heap is exhausted.
    bool note(int32_t a, int32_t b)
    {
        const int32_t from = b < a ? b : a, to = b < a ? a : b;
        const uint64_t edge = packed(from, to);
        uint32_t slot = first_slot(from, to);
        for (int32_t place; (place = slots_[slot]) != kEmpty; slot = (slot + 1) & mask_)
            if (edge_at(place) == edge)
                return true;
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

    /// Edges in the same direction of a regular mesh lie side by side, those of one point far apart.
    uint32_t first_slot(int32_t a, int32_t b) const
    {
        const auto from = static_cast<uint32_t>(a), across = static_cast<uint32_t>(b - a);
        return (3 * from + 0x9e3779b1u * across) & mask_;
    }

    /// Two points as one number, as they stand in the list.
    static uint64_t packed(int32_t from, int32_t to)
    {
        const uint64_t first = static_cast<uint32_t>(from), second = static_cast<uint32_t>(to);
        return std::endian::native == std::endian::little ? second << 32 | first : first << 32 | second;
    }

    uint64_t edge_at(int32_t place) const
    {
        uint64_t edge;
        std::memcpy(&edge, ends_ + 2 * int64_t{place}, sizeof edge);
        return edge;
    }

    /// Starts over with a table of `count` empty slots, or none without memory.
    void renew(uint32_t count)
    {
        std::free(slots_);
        const size_t bytes = size_t{count} * sizeof(int32_t);
        slots_ = static_cast<int32_t*>(new_block(bytes));
        if (slots_ == nullptr)
            return;
        std::memset(slots_, 0xff, bytes);
        mask_ = count - 1;
        limit_ = static_cast<int32_t>(std::min<int64_t>(most_, int64_t{count} / 4 * 3));
    }

    /// Makes the table twice as large, unless the list is full.
    [[gnu::noinline]] bool grow()
    {
        if (found_ == most_)
            return false;
        renew(2 * (mask_ + 1));
        if (!exists())
            return false;
        for (int32_t place = 0; place < found_; ++place) {
            uint32_t slot = first_slot(ends_[2 * int64_t{place}], ends_[2 * int64_t{place} + 1]);
            while (slots_[slot] != kEmpty)
                slot = (slot + 1) & mask_;
            slots_[slot] = place;
        }
        return true;
    }

    int32_t* ends_;
    int32_t most_, found_ = 0, limit_ = 0; // limit_: as many as the table, or the list, has room for
    uint32_t mask_ = 0;
    int32_t* slots_ = nullptr;
};

} // namespace korvale::inside
