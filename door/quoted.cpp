#include "door/internal/quoted.h"

#include <algorithm>

namespace korvale::door {
namespace {

constexpr size_t kMostQuoted = 60; ///< bytes of a word in a reason

/// Where a text of at most `most` bytes can end without cutting a character of UTF-8 in two.
size_t whole_characters(std::string_view text, size_t most)
{
    if (text.size() <= most)
        return text.size();
    while (most > 0 && (static_cast<unsigned char>(text[most]) & 0xc0) == 0x80)
        --most;
    return most;
}

} // namespace

Text quoted(std::string_view text)
{
    Text shown;
    shown << "\"" << std::string_view(quoted_part(text)) << "\"";
    return shown;
}

Text quoted_part(std::string_view text)
{
    return shortened(text, kMostQuoted);
}

Text shortened(std::string_view text, size_t most)
{
    const size_t kept = whole_characters(text, most);
    Text shown;
    shown << text.substr(0, kept) << (kept < text.size() ? "..." : "");
    return shown;
}

Text part_around(std::string_view text, size_t place, size_t most)
{
    constexpr std::string_view kMore = "...";
    if (text.size() <= most)
        return shortened(text, most);
    most -= 2 * kMore.size();
    size_t first = place <= most - most / 8 ? 0 : std::min(place, text.size()) - (most - most / 8);
    while (first > 0 && first < text.size() && (static_cast<unsigned char>(text[first]) & 0xc0) == 0x80)
        ++first;
    Text shown;
    shown << (first > 0 ? kMore : "") << std::string_view(shortened(text.substr(first), most));
    return shown;
}

size_t first_character(std::string_view text)
{
    const auto lead = static_cast<unsigned char>(text[0]);
    const size_t size = lead < 0xc0 ? 1 : lead < 0xe0 ? 2 : lead < 0xf0 ? 3 : lead < 0xf8 ? 4 : 1;
    for (size_t i = 1; i < size; ++i)
        if (i >= text.size() || (static_cast<unsigned char>(text[i]) & 0xc0) != 0x80)
            return 1;
    return size;
}

} // namespace korvale::door
