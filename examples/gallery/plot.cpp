#include "plot.h"

#include <algorithm>
#include <cstdio>

namespace gallery {
namespace {

constexpr double kLetters = 15; // pixels per em of the numbers and labels

// The step of 1, 2 or 5 times a power of ten that cuts a range into at most `most` pieces.
double round_step(double range, int most)
{
    const double least = range / most, power = std::pow(10, std::floor(std::log10(least)));
    for (double factor : {1.0, 2.0, 5.0})
        if (factor * power >= least * (1 - 1e-9))
            return factor * power;
    return 10 * power;
}

} // namespace

std::string number_text(double v)
{
    char text[32];
    std::snprintf(text, sizeof text, "%.4g", std::fabs(v) < 1e-12 ? 0.0 : v);
    return text;
}

Plot::Plot(Picture& picture, const Font& font, Point corner, Point size, const Box2& range)
    : picture_(picture), font_(font), corner_(corner), size_(size), range_(range)
{
}

Point Plot::place(Point p) const
{
    return {corner_.x + size_.x * (p.x - range_.low.x) / range_.size().x,
            corner_.y + size_.y * (range_.high.y - p.y) / range_.size().y};
}

void Plot::axes(const std::string& title, const std::string& x_label)
{
    const Point end = corner_ + size_;
    const double dx = round_step(range_.size().x, std::max(2, int(size_.x / 80)));
    const double dy = round_step(range_.size().y, std::max(2, int(size_.y / 45)));
    for (double i = std::ceil(range_.low.x / dx - 1e-9); i * dx <= range_.high.x + 1e-9 * dx; i++) {
        const double x = place({i * dx, 0}).x;
        picture_.stroke({{x, corner_.y}, {x, end.y}}, 1, kFaint);
        draw_text(picture_, font_, {x, end.y + 20}, kLetters, number_text(i * dx), kGrey, Align::middle);
    }
    for (double i = std::ceil(range_.low.y / dy - 1e-9); i * dy <= range_.high.y + 1e-9 * dy; i++) {
        const double y = place({0, i * dy}).y;
        picture_.stroke({{corner_.x, y}, {end.x, y}}, 1, kFaint);
        draw_text(picture_, font_, {corner_.x - 8, y + 5}, kLetters, number_text(i * dy), kGrey, Align::right);
    }
    picture_.stroke({corner_, {end.x, corner_.y}, end, {corner_.x, end.y}}, 1.2, kGrey, true);
    draw_text(picture_, font_, {corner_.x, corner_.y - 12}, kLetters + 2, title);
    draw_text(picture_, font_, {end.x, end.y + 42}, kLetters, x_label, kGrey, Align::right);
}

void Plot::curve(const std::vector<Point>& points, Colour colour, double width)
{
    Outline line; // cut where it leaves the rectangle or is no number
    const auto draw = [&] {
        if (line.size() >= 2)
            picture_.stroke(line, width, colour);
        line.clear();
    };
    for (Point p : points) {
        if (p.y >= range_.low.y && p.y <= range_.high.y && p.x >= range_.low.x && p.x <= range_.high.x)
            line.push_back(place(p));
        else
            draw();
    }
    draw();
}

void Plot::dots(const std::vector<Point>& points, double radius, Colour colour)
{
    for (Point p : points)
        picture_.dot(place(p), radius, colour);
}

void Plot::bar(double from, double to, double height, Colour colour, double opacity)
{
    const Point a = place({from, std::max(0.0, range_.low.y)}), b = place({to, height});
    picture_.fill({{a, {b.x, a.y}, b, {a.x, b.y}}}, colour, opacity);
}

} // namespace gallery
