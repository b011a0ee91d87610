#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "picture.h"

namespace gallery {

/// The outlines of one character, 1000 units per em, the base line at y = 0.
struct Glyph {
    double advance = 0;
    std::vector<Shape> shapes; ///< most have one, an i has two
};

/// A face made of outlines; draws the lettering of pictures and gives scenes their text.
class Font {
public:
    /// Reads a file as `examples/data/sans.txt`; throws std::runtime_error when it cannot.
    explicit Font(const std::filesystem::path& file);

    const Glyph& glyph(char c) const;

    /// How wide `text` is at `size` units per em.
    double width(const std::string& text, double size) const;

    /// The shapes of `text` at 1000 units per em, `spacing` added after each character.
    std::vector<Shape> lay_out(const std::string& text, double spacing = 0) const;

private:
    std::map<char, Glyph> glyphs_;
    Glyph missing_;
};

enum class Align { left, middle, right };

/// Writes `text` with its base line at `at`, `size` pixels per em.
void draw_text(Picture& picture, const Font& font, Point at, double size, const std::string& text, Colour colour = kInk,
               Align align = Align::left);

} // namespace gallery
