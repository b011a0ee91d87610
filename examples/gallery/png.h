#pragma once

#include <cstdint>
#include <vector>

#include "picture.h"

namespace gallery {

/// The bytes of a PNG file of the picture, compressed; its text "Lettering" tells the least pixels per em of letters.
std::vector<uint8_t> png_bytes(const Picture& picture);

} // namespace gallery
