#pragma once

#include <array>
#include <cstdint>
#include <filesystem>
#include <limits>
#include <stdexcept>
#include <string>
#include <vector>

// Readers of what the gallery writes, made apart from its writers. A file that is not as it should be throws.
namespace korvale::test {

struct BadFile : std::runtime_error {
    using std::runtime_error::runtime_error;
};

std::string read_file(const std::filesystem::path& file);

struct Image {
    int width = 0, height = 0;
    double least_lettering = std::numeric_limits<double>::infinity(); // pixels per em, as the gallery notes it
    std::vector<uint8_t> bytes;                                       // [height][width][3]
};

/// Decodes a PNG of 8-bit red, green, blue, checking every check sum on the way.
Image read_png(const std::filesystem::path& file);

struct Lettered {
    double width = 0, least_lettering = 0; // pixels, infinity where there is no lettering
};

/// Width and least lettering of a PNG of the gallery or of an SVG file.
Lettered read_lettered(const std::filesystem::path& file);

struct Solid {
    std::vector<std::array<double, 3>> points;
    std::vector<std::array<int, 3>> triangles; // point numbers from 0
};

/// Reads an OBJ file of points and triangles.
Solid read_obj(const std::filesystem::path& file);

} // namespace korvale::test
