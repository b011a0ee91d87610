#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "platform/internal/scratch.h"

// Names as functions and variables have them: up to 12 characters in slots of 13 bytes, ended by a zero.
namespace korvale::inside {

constexpr int32_t kNameBytes = 13;
constexpr size_t kLongestName = 12;

inline bool is_letter(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
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

/// The lowest of the first `count` slots that holds the word, or -1.
int32_t find_name(const uint8_t* slots, int32_t count, Word word);

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

} // namespace korvale::inside
