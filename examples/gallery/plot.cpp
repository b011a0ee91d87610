#include "plot.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "svg.h"

namespace gallery {
namespace {

// The step of 1, 2 or 5 times a power of ten that cuts a range into at most `most` pieces.
double round_step(double range, int most)
{
    const double least = range / most, power = std::pow(10, std::floor(std::log10(least)));
    for (double factor : {1.0, 2.0, 5.0})
        if (factor * power >= least * (1 - 1e-9))
            return factor * power;
    return 10 * power;
}

class PictureCanvas : public Canvas {
public:
    PictureCanvas(Picture& picture, const Font& font) : picture_(picture), font_(font) {}
    void fill(const Shape& shape, Colour colour, double opacity) override { picture_.fill(shape, colour, opacity); }
    void stroke(const Outline& line, double width, Colour colour, bool closed) override
    {
        picture_.stroke(line, width, colour, closed);
    }
    void dot(Point middle, double radius, Colour colour) override { picture_.dot(middle, radius, colour); }
    void text(Point at, double size, const std::string& text, Colour colour, Align align) override
    {
        draw_text(picture_, font_, at, size, text, colour, align);
    }

private:
    Picture& picture_;
    const Font& font_;
};

class SvgCanvas : public Canvas {
public:
    explicit SvgCanvas(Svg& drawing) : drawing_(drawing) {}
    void fill(const Shape& shape, Colour colour, double opacity) override { drawing_.fill(shape, colour, opacity); }
    void stroke(const Outline& line, double width, Colour colour, bool closed) override
    {
        drawing_.stroke(line, width, colour, closed);
    }
    void dot(Point middle, double radius, Colour colour) override { drawing_.dot(middle, radius, colour); }
    void text(Point at, double size, const std::string& text, Colour colour, Align align) override
    {
        const char* const anchors[] = {"start", "middle", "end"};
        drawing_.text(at, size, text, colour, anchors[int(align)]);
    }

private:
    Svg& drawing_;
};

} // namespace

std::string number_text(double v)
{
    char text[32];
    std::snprintf(text, sizeof text, "%.4g", std::fabs(v) < 1e-12 ? 0.0 : v);
    return text;
}

Plot::Plot(Picture& picture, const Font& font, Point corner, Point size, const Box2& range)
    : canvas_(std::make_shared<PictureCanvas>(picture, font)), corner_(corner), size_(size), range_(range)
{
}

Plot::Plot(Svg& drawing, Point corner, Point size, const Box2& range, Scale scale)
    : canvas_(std::make_shared<SvgCanvas>(drawing)), corner_(corner), size_(size), range_(range), scale_(scale)
{
}

double Plot::scaled(double v) const
{
    return scale_ == Scale::ratios ? std::log10(v) : v;
}

Point Plot::place(Point p) const
{
    const auto share = [this](double v, double low, double high) {
        return (scaled(v) - scaled(low)) / (scaled(high) - scaled(low));
    };
    return {corner_.x + size_.x * share(p.x, range_.low.x, range_.high.x),
            corner_.y + size_.y * (1 - share(p.y, range_.low.y, range_.high.y))};
}

bool Plot::is_inside(Point p) const
{
    return p.y >= range_.low.y && p.y <= range_.high.y && p.x >= range_.low.x && p.x <= range_.high.x;
}

// Where lines stand that are some `pixels` apart.
std::vector<double> Plot::round_numbers(double low, double high, double pixels) const
{
    std::vector<double> numbers;
    if (scale_ == Scale::ratios) {
        const bool is_short = high < 50 * low;
        for (double power = std::floor(std::log10(low)); power <= std::log10(high); power++)
            for (double factor : {1.0, 2.0, 5.0})
                if (const double v = factor * std::pow(10, power); v >= low && v <= high && (is_short || factor == 1.0))
                    numbers.push_back(v);
        return numbers;
    }
    const double step = round_step(high - low, std::max(2, int(pixels)));
    for (double i = std::ceil(low / step - 1e-9); i * step <= high + 1e-9 * step; i++)
        numbers.push_back(i * step);
    return numbers;
}

void Plot::axes(const std::string& title, const std::string& x_label, std::string (*x_text)(double),
                std::string (*y_text)(double))
{
    const Point end = corner_ + size_;
    for (double v : round_numbers(range_.low.x, range_.high.x, size_.x / 80)) {
        const double x = place({v, range_.low.y}).x;
        canvas_->stroke({{x, corner_.y}, {x, end.y}}, 1, kFaint, false);
        canvas_->text({x, end.y + 20}, kLettering, x_text(v), kGrey, Align::middle);
    }
    for (double v : round_numbers(range_.low.y, range_.high.y, size_.y / 45)) {
        const double y = place({range_.low.x, v}).y;
        canvas_->stroke({{corner_.x, y}, {end.x, y}}, 1, kFaint, false);
        canvas_->text({corner_.x - 8, y + 5}, kLettering, y_text(v), kGrey, Align::right);
    }
    canvas_->stroke({corner_, {end.x, corner_.y}, end, {corner_.x, end.y}}, 1.2, kGrey, true);
    canvas_->text({corner_.x, corner_.y - 12}, kLettering + 2, title, kInk, Align::left);
    canvas_->text({end.x, end.y + 42}, kLettering, x_label, kGrey, Align::right);
}

void Plot::curve(const std::vector<Point>& points, Colour colour, double width)
{
    Outline line; // cut where it leaves the rectangle or is no number
    const auto draw = [&] {
        if (line.size() >= 2)
            canvas_->stroke(line, width, colour, false);
        line.clear();
    };
    for (Point p : points) {
        if (is_inside(p))
            line.push_back(place(p));
        else
            draw();
    }
    draw();
}

void Plot::dots(const std::vector<Point>& points, double radius, Colour colour)
{
    for (Point p : points)
        canvas_->dot(place(p), radius, colour);
}

void Plot::bar(double from, double to, double height, Colour colour, double opacity)
{
    const Point a = place({from, std::max(0.0, range_.low.y)}), b = place({to, height});
    canvas_->fill({{a, {b.x, a.y}, b, {a.x, b.y}}}, colour, opacity);
}

} // namespace gallery
