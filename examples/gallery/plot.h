#pragma once

#include <string>
#include <vector>

#include "font.h"
#include "picture.h"

namespace gallery {

/// Axes in a rectangle of a picture, and what is drawn between them.
class Plot {
public:
    /// The rectangle holds the axes alone; leave some 50 pixels to its left and below it for the numbers.
    Plot(Picture& picture, const Font& font, Point corner, Point size, const Box2& range);

    /// Lines at round numbers with the numbers beside them, and a frame.
    void axes(const std::string& title = "", const std::string& x_label = "");

    void curve(const std::vector<Point>& points, Colour colour, double width = 2.5);
    void dots(const std::vector<Point>& points, double radius, Colour colour);

    /// A bar from y = 0 (or the lower edge) to `height`.
    void bar(double from, double to, double height, Colour colour, double opacity = 1);

private:
    Point place(Point p) const;

    Picture& picture_;
    const Font& font_;
    Point corner_, size_;
    Box2 range_;
};

/// A number as short as it can be read: 0.5, 20, 1e6.
std::string number_text(double v);

} // namespace gallery
