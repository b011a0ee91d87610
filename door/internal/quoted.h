#pragma once

#include "door/internal/failure.h"

// Parts of a host's text as they stand in messages, which are UTF-8 and have little room.
namespace korvale::door {

/// The text in quotation marks, of a long one the beginning.
Text quoted(std::string_view text);

/// As much of the text as `quoted` shows.
Text quoted_part(std::string_view text);

/// The text, or its beginning and three dots.
Text shortened(std::string_view text, size_t most);

/// A part of a long text with `place` in it.
Text part_around(std::string_view text, size_t place, size_t most);

/// The bytes of the character of UTF-8 at the beginning; 1 where there is none.
size_t first_character(std::string_view text);

} // namespace korvale::door
