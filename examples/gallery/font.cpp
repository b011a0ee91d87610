#include "font.h"

#include <fstream>
#include <sstream>
#include <stdexcept>

namespace gallery {

Font::Font(const std::filesystem::path& file)
{
    std::ifstream in(file);
    if (!in)
        throw std::runtime_error("cannot read " + file.string());
    Glyph* glyph = nullptr;
    for (std::string line; std::getline(in, line);) {
        std::istringstream words(line);
        std::string word;
        if (!(words >> word) || word[0] == '#')
            continue;
        if (word == "glyph") {
            int code = 0;
            double advance = 0;
            words >> code >> advance;
            glyph = &glyphs_[char(code)];
            glyph->advance = advance;
        } else if (glyph != nullptr && (word == "outer" || (word == "hole" && !glyph->shapes.empty()))) {
            size_t points = 0;
            words >> points;
            Outline outline(points);
            for (Point& p : outline)
                in >> p.x >> p.y;
            if (word == "outer")
                glyph->shapes.emplace_back();
            glyph->shapes.back().push_back(std::move(outline));
            std::getline(in, line);
        }
        if (!in)
            throw std::runtime_error(file.string() + " ends early");
    }
}

const Glyph& Font::glyph(char c) const
{
    const auto found = glyphs_.find(c);
    return found != glyphs_.end() ? found->second : missing_;
}

double Font::width(const std::string& text, double size) const
{
    double width = 0;
    for (char c : text)
        width += glyph(c).advance * size / 1000;
    return width;
}

std::vector<Shape> Font::lay_out(const std::string& text, double spacing) const
{
    std::vector<Shape> shapes;
    double x = 0;
    for (char c : text) {
        for (Shape shape : glyph(c).shapes) {
            for (Outline& outline : shape)
                for (Point& p : outline)
                    p.x += x;
            shapes.push_back(std::move(shape));
        }
        x += glyph(c).advance + spacing;
    }
    return shapes;
}

void draw_text(Picture& picture, const Font& font, Point at, double size, const std::string& text, Colour colour,
               Align align)
{
    if (align != Align::left)
        at.x -= font.width(text, size) * (align == Align::middle ? 0.5 : 1.0);
    for (Shape shape : font.lay_out(text)) {
        for (Outline& outline : shape)
            for (Point& p : outline)
                p = {at.x + p.x * size / 1000, at.y - p.y * size / 1000};
        picture.fill(shape, colour);
    }
    picture.has_lettering(size);
}

} // namespace gallery
