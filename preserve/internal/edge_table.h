#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "data/internal/scratch.h"

namespace korvale::inside {

/// Tells edges found before from new ones: a hash table with open addressing of the edges listed in `ends`.
class EdgeTable {
public:
    /// For at most `most` edges, of which usually half are found.
    EdgeTable(int32_t* ends, int32_t most)
        : ends_(ends), most_(most), mask_(slots_for(most) - 1), slots_(int64_t{mask_} + 1)
    {
        if (exists())
            std::memset(slots_.get(), 0xff, (size_t{mask_} + 1) * sizeof(int32_t));
    }

    bool exists() const { return slots_.exists(); }
    int32_t found() const { return found_; }

    /// Lists the edge a, b, a <= b, unless it is listed. False where it finds no room.
    bool note(int32_t a, int32_t b)
    {
        uint32_t slot = first_slot(a, b);
        for (; slots_[slot] != kEmpty; slot = (slot + 1) & mask_)
            if (ends_[2 * int64_t{slots_[slot]}] == a && ends_[2 * int64_t{slots_[slot]} + 1] == b)
                return true;
        if (found_ == most_)
            return false;
        slots_[slot] = found_;
        ends_[2 * int64_t{found_}] = a;
        ends_[2 * int64_t{found_} + 1] = b;
        ++found_;
        return true;
    }

private:
    static constexpr int32_t kEmpty = -1;

    /// A power of two with room to spare.
    static uint32_t slots_for(int32_t most)
    {
        return std::bit_ceil(static_cast<uint32_t>(most) + static_cast<uint32_t>(most) / 2 + 1);
    }

    /// Edges in the same direction of a regular mesh lie side by side, those of one point far apart.
    uint32_t first_slot(int32_t a, int32_t b) const
    {
        const auto from = static_cast<uint32_t>(a), across = static_cast<uint32_t>(b - a);
        return (3 * from + 0x9e3779b1u * across) & mask_;
    }

    int32_t* ends_;
    int32_t most_;
    uint32_t mask_;
    Scratch<int32_t> slots_;
    int32_t found_ = 0;
};

} // namespace korvale::inside
