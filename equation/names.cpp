// A list of names without duplicates. In a short list a new name is compared with all others. A long one has a hash
// table with linear probing, which lives as long as the call that declares the list, so that the records hold nothing
// but the names.
#include "equation/internal/names.h"

namespace korvale::equation {
namespace {

/// A list with no more names than this is compared name by name, without a table. Chosen.
constexpr int64_t kFewNames = 8;

size_t hash_of(Word word) // 64-bit FNV-1a (G. Fowler, L. C. Noll, K.-P. Vo)
{
    uint64_t hash = 0xcbf29ce484222325u;
    for (size_t i = 0; i < word.length; ++i)
        hash = (hash ^ static_cast<unsigned char>(word.first[i])) * 0x100000001b3u;
    return static_cast<size_t>(hash ^ hash >> 32);
}

/// A power of two that leaves at least half of a hash table free.
int64_t table_size(int64_t names)
{
    int64_t size = 2;
    while (size < 2 * names)
        size *= 2;
    return size;
}

} // namespace

Word next_run_of_letters(const char* at)
{
    while (*at != '\0' && !is_letter(*at))
        ++at;
    const char* last = at;
    while (is_letter(*last))
        ++last;
    return {at, static_cast<size_t>(last - at)};
}

int32_t find_name(const uint8_t* slots, int32_t count, Word word)
{
    if (word.length > kLongestName)
        return -1;
    if (word.length > 0)
        return find_name(slots, count, NamePattern(word));
    for (int32_t i = 0; i < count; ++i)
        if (is_name(slots + int64_t{i} * kNameBytes, word))
            return i;
    return -1;
}

Names::Names(const uint8_t* slots, int64_t known, int64_t most)
    : slots_(slots), known_(known), added_(most * kNameBytes),
      entries_(most > kFewNames ? table_size(known + most) : 0),
      mask_(static_cast<size_t>(table_size(known + most)) - 1), is_hashed_(most > kFewNames)
{
    if (!is_hashed_ || !exists())
        return;
    for (size_t entry = 0; entry <= mask_; ++entry)
        entries_[static_cast<int64_t>(entry)] = -1;
    for (int64_t i = 0; i < known_; ++i) {
        const char* const slot = reinterpret_cast<const char*>(slot_at(i));
        enter({slot, strnlen(slot, kLongestName)}, i);
    }
}

void Names::add_unless_known(Word word)
{
    if (is_hashed_ ? !enter(word, known_ + count_) : is_listed(word))
        return;
    uint8_t* const slot = added_.get() + count_ * kNameBytes;
    std::memset(slot, 0, kNameBytes);
    std::memcpy(slot, word.first, word.length);
    ++count_;
}

bool Names::is_listed(Word word) const
{
    for (int64_t i = 0; i < known_ + count_; ++i)
        if (is_name(slot_at(i), word))
            return true;
    return false;
}

/// Enters the word as number `i` into the hash table; false where it is known.
bool Names::enter(Word word, int64_t i)
{
    for (size_t entry = hash_of(word) & mask_;; entry = (entry + 1) & mask_) {
        int32_t& number = entries_[static_cast<int64_t>(entry)];
        if (number < 0) {
            number = static_cast<int32_t>(i);
            return true;
        }
        if (is_name(slot_at(number), word))
            return false;
    }
}

} // namespace korvale::equation
