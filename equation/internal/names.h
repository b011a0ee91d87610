#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "platform/internal/scratch.h"

// Names as functions and variables have them: up to 12 characters in slots of 13 bytes, ended by a zero.
namespace korvale::equation {

constexpr int32_t kNameBytes = 13;
constexpr size_t kLongestName = 12;

inline bool is_letter(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

inline bool is_number_part(char c)
{
    return (c >= '0' && c <= '9') || c == '.';
}

inline bool is_space(char c)
{
    return c == ' ' || (c >= '\t' && c <= '\r');
}

/// Characters of a text: [first, first + length).
struct Word {
    const char* first;
    size_t length;
};

inline Word word_of(const char* text)
{
    return {text, std::strlen(text)};
}

/// The next run of letters from `at` on, of length 0 at the end of the text.
Word next_run_of_letters(const char* at);

/// Whether the slot holds the word, of at most 12 characters, and nothing more.
inline bool is_name(const uint8_t* slot, Word word)
{
    return std::memcmp(slot, word.first, word.length) == 0 && slot[word.length] == 0;
}

/// A word of 1 to 12 characters as it would stand in a slot, to be compared with many slots. Nearly all slots differ in
/// their first two bytes; the others are compared as two overlapping words of eight bytes, up to the terminating zero.
class NamePattern {
public:
    explicit NamePattern(Word word)
    {
        for (size_t i = 0; i < 8 && i < word.length; ++i)
            first_ |= uint64_t{static_cast<unsigned char>(word.first[i])} << 8 * i;
        for (size_t i = kLast; i < word.length; ++i)
            last_ |= uint64_t{static_cast<unsigned char>(word.first[i])} << 8 * (i - kLast);
        const size_t bytes = word.length + 1; // those behind the terminating zero are not compared
        first_mask_ = leading(bytes);
        last_mask_ = bytes <= kLast ? 0 : leading(bytes - kLast);
    }

    bool is_at(const uint8_t* slot) const
    {
        if (leading_bytes<uint16_t>(slot) != static_cast<uint16_t>(first_)) [[likely]]
            return false;
        return ((leading_bytes<uint64_t>(slot) ^ first_) & first_mask_) == 0 &&
               ((leading_bytes<uint64_t>(slot + kLast) ^ last_) & last_mask_) == 0;
    }

private:
    static constexpr size_t kLast = kNameBytes - 8; // where the last eight bytes of a slot begin

    /// Ones in the first bytes.
    static uint64_t leading(size_t bytes) { return bytes >= 8 ? ~uint64_t{0} : (uint64_t{1} << 8 * bytes) - 1; }

    /// The first bytes of a slot, the very first of them lowest.
    template <class Bytes>
    static Bytes leading_bytes(const uint8_t* slot)
    {
        Bytes value;
        std::memcpy(&value, slot, sizeof value);
        if constexpr (std::endian::native == std::endian::big)
            value = sizeof value == 2 ? __builtin_bswap16(value) : __builtin_bswap64(value);
        return value;
    }

    uint64_t first_ = 0, last_ = 0, first_mask_, last_mask_;
};

/// The lowest of the first `count` slots that holds the word, or -1.
int32_t find_name(const uint8_t* slots, int32_t count, Word word);

/// The lowest slot of that name from slot `from` on, or -1.
inline int32_t find_name(const uint8_t* slots, int32_t count, const NamePattern& name, int32_t from = 0)
{
    const uint8_t* const end = slots + int64_t{count} * kNameBytes;
    for (const uint8_t* slot = slots + int64_t{from} * kNameBytes; slot < end; slot += kNameBytes)
        if (name.is_at(slot))
            return static_cast<int32_t>((slot - slots) / kNameBytes);
    return -1;
}

/// The first characters of some names as a set of 64 bits, a Bloom filter with one hash. Letters have a bit each; other
/// characters may share one.
class Initials {
public:
    Initials(const uint8_t* slots, int32_t count)
    {
        for (int32_t i = 0; i < count; ++i)
            bits_ |= bit_of(slots[int64_t{i} * kNameBytes]);
    }

    /// False where no name begins like the word, which is not empty.
    bool may_begin(Word word) const { return (bits_ & bit_of(static_cast<uint8_t>(*word.first))) != 0; }

private:
    static uint64_t bit_of(uint8_t c) { return uint64_t{1} << (c & 63); }

    uint64_t bits_ = 0;
};

/// The names there are, and those to be added to them.
class Names {
public:
    /// Stands on `known` slots from `slots` on, which it only reads; `most` names may be added.
    Names(const uint8_t* slots, int64_t known, int64_t most);

    /// False where the heap has no room; nothing else may be asked then.
    bool exists() const { return added_.exists() && entries_.exists(); }

    /// Adds a word of at most 12 characters, unless there is such a name.
    void add_unless_known(Word word);

    /// Names added, and their slots.
    int64_t count() const { return count_; }
    const uint8_t* added() const { return added_.get(); }

private:
    const uint8_t* slot_at(int64_t i) const
    {
        return i < known_ ? slots_ + i * kNameBytes : added_.get() + (i - known_) * kNameBytes;
    }
    bool is_listed(Word word) const;
    bool enter(Word word, int64_t i);

    const uint8_t* slots_;
    int64_t known_;
    int64_t count_ = 0;
    Scratch<uint8_t> added_;
    Scratch<int32_t> entries_; ///< of the hash table: the number of a name, -1 where free
    size_t mask_;              ///< entries less 1, a power of two less 1
    bool is_hashed_;
};

} // namespace korvale::equation
