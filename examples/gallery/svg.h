#pragma once

#include <limits>
#include <string>

#include "picture.h"

namespace gallery {

/// A drawing of lines and areas, y downwards in units of a pixel, written as an SVG file.
class Svg {
public:
    Svg(int width, int height, Colour background = kPaper);

    int width() const { return width_; }
    int height() const { return height_; }
    double least_lettering() const { return least_lettering_; } ///< infinity where there is none

    /// Fills what an odd number of the outlines surrounds.
    void fill(const Shape& shape, Colour colour, double opacity = 1);
    void stroke(const Outline& line, double width, Colour colour, bool closed = false);
    void dot(Point middle, double radius, Colour colour);

    /// Writes with the reader's own sans-serif face; `anchor` is start, middle or end.
    void text(Point at, double size, const std::string& text, Colour colour = kInk, const char* anchor = "start");

    /// What is seen, for whoever cannot see it.
    void title(const std::string& text);

    /// The whole file.
    std::string content() const;

private:
    int width_, height_;
    double least_lettering_ = std::numeric_limits<double>::infinity();
    std::string title_, body_;
};

/// `text` with the characters that mean something in HTML and SVG replaced.
std::string escaped(const std::string& text);

} // namespace gallery
