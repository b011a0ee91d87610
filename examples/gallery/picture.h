#pragma once

#include <algorithm>
#include <cstdint>
#include <limits>
#include <vector>

#include "geometry.h"

namespace gallery {

/// A colour as the screen shows it, each part from 0 to 1.
struct Colour {
    double r = 0, g = 0, b = 0;
};

/// The colour written 0xrrggbb.
Colour hex(uint32_t rrggbb);

/// `a` at t = 0, `b` at t = 1.
Colour mix(Colour a, Colour b, double t);

/// A colour of a scale from deep blue over green to pale yellow, of even steps to the eye; t from 0 to 1.
Colour scale_colour(double t);

// What all pictures share.
const Colour kPaper = hex(0xfbfaf6), kInk = hex(0x22303c), kFaint = hex(0xd9d6cc), kGrey = hex(0x7a828a);
const Colour kBlue = hex(0x2b6cb0), kOrange = hex(0xdd7a1c), kGreen = hex(0x2f855a), kRed = hex(0xc0392b);
const int kWidth = 1200;        ///< pixels of a picture as wide as the page
const int kNarrow = kWidth / 2; ///< pixels of one that narrow screens show whole, or two of which stand side by side
const double kLettering = 17;   ///< pixels per em of lettering; in a narrow picture 9 on a screen of 380 pixels

/// A picture of square pixels, 8 bits a colour, with smooth edges: pixel (i, j) covers [i, i + 1] x [j, j + 1], y
/// downwards. Drawing outside the picture is cut off.
class Picture {
public:
    Picture(int width, int height, Colour background = kPaper);

    int width() const { return width_; }
    int height() const { return height_; }
    const std::vector<uint8_t>& bytes() const { return bytes_; } ///< [height][width][3]

    void set(int x, int y, Colour colour);
    Colour at(int x, int y) const;

    /// Fills what an odd number of the outlines surrounds.
    void fill(const Shape& shape, Colour colour, double opacity = 1);

    /// Draws a line along the points, with round ends and corners.
    void stroke(const Outline& line, double width, Colour colour, bool closed = false, double opacity = 1);

    /// A filled circle.
    void dot(Point middle, double radius, Colour colour, double opacity = 1);

    /// Copies another picture in with its upper left pixel at (x, y).
    void put(const Picture& other, int x, int y);

    /// Remembers the pixels per em of lettering that has been drawn.
    void has_lettering(double size) { least_lettering_ = std::min(least_lettering_, size); }
    double least_lettering() const { return least_lettering_; } ///< infinity where there is none

private:
    void blend(int x, int y, Colour colour, double opacity);

    int width_, height_;
    double least_lettering_ = std::numeric_limits<double>::infinity();
    std::vector<uint8_t> bytes_;
};

} // namespace gallery
