#pragma once

#include <bit>

#include "door/internal/heap.h"

namespace korvale::door {

/// A set of numbers below a bound that finds the next one in a few steps: a bit for each, and a bit for each word of
/// bits that is not empty, and so on.
class NumberSet {
public:
    explicit NumberSet(int32_t bound)
    {
        auto n = static_cast<size_t>(bound);
        do {
            n = (n + kBits - 1) / kBits;
            levels_.emplace_back(n, uint64_t{0});
        } while (n > 1);
    }

    bool has(int32_t number) const
    {
        const auto i = static_cast<size_t>(number);
        return (levels_[0][i / kBits] & bit(i)) != 0;
    }

    void insert(int32_t number)
    {
        auto i = static_cast<size_t>(number);
        for (Vector<uint64_t>& words : levels_) {
            words[i / kBits] |= bit(i);
            i /= kBits;
        }
    }

    void erase(int32_t number)
    {
        auto i = static_cast<size_t>(number);
        for (Vector<uint64_t>& words : levels_) {
            if ((words[i / kBits] &= ~bit(i)) != 0)
                return;
            i /= kBits;
        }
    }

    /// The least number that is not below `from`; -1 where there is none.
    int32_t next(int32_t from) const
    {
        auto i = static_cast<size_t>(from);
        for (size_t level = 0; level < levels_.size(); ++level) {
            const Vector<uint64_t>& words = levels_[level];
            if (i / kBits >= words.size())
                return -1;
            if (const uint64_t later = words[i / kBits] & (~uint64_t{0} << i % kBits); later != 0)
                return least_below(level, i / kBits * kBits + static_cast<size_t>(std::countr_zero(later)));
            i = i / kBits + 1;
        }
        return -1;
    }

private:
    static constexpr size_t kBits = 64; // of a word

    static uint64_t bit(size_t i) { return uint64_t{1} << i % kBits; }

    int32_t least_below(size_t level, size_t i) const
    {
        for (; level > 0; --level)
            i = i * kBits + static_cast<size_t>(std::countr_zero(levels_[level - 1][i]));
        return static_cast<int32_t>(i);
    }

    Vector<Vector<uint64_t>> levels_;
};

} // namespace korvale::door
