#pragma once

#include <memory>
#include <string>
#include <vector>

#include "font.h"
#include "picture.h"

namespace gallery {

/// A number as short as it can be read: 0.5, 20, 1e6.
std::string number_text(double v);

class Svg;

/// What a plot is drawn on.
class Canvas {
public:
    virtual ~Canvas() = default;
    virtual void fill(const Shape& shape, Colour colour, double opacity) = 0;
    virtual void stroke(const Outline& line, double width, Colour colour, bool closed) = 0;
    virtual void dot(Point middle, double radius, Colour colour) = 0;
    virtual void text(Point at, double size, const std::string& text, Colour colour, Align align) = 0;
};

/// How far apart numbers stand on both axes: by their differences, or by their ratios, which wants them above 0.
enum class Scale { differences, ratios };

/// Axes in a rectangle of a picture or a drawing, and what is drawn between them.
class Plot {
public:
    /// The rectangle holds the axes alone; leave some 50 pixels to its left and below it for the numbers.
    Plot(Picture& picture, const Font& font, Point corner, Point size, const Box2& range);
    Plot(Svg& drawing, Point corner, Point size, const Box2& range, Scale scale = Scale::differences);

    /// Lines at round numbers with the numbers beside them, written by the two functions, and a frame.
    void axes(const std::string& title = "", const std::string& x_label = "",
              std::string (*x_text)(double) = number_text, std::string (*y_text)(double) = number_text);

    void curve(const std::vector<Point>& points, Colour colour, double width = 2.5);
    void dots(const std::vector<Point>& points, double radius, Colour colour);

    /// A bar from y = 0 (or the lower edge) to `height`.
    void bar(double from, double to, double height, Colour colour, double opacity = 1);

private:
    double scaled(double v) const;
    Point place(Point p) const;
    bool is_inside(Point p) const;
    std::vector<double> round_numbers(double low, double high, double pixels) const;

    std::shared_ptr<Canvas> canvas_;
    Point corner_, size_;
    Box2 range_;
    Scale scale_ = Scale::differences;
};

} // namespace gallery
