#include "picture.h"

#include <algorithm>

namespace gallery {

Colour hex(uint32_t rrggbb)
{
    return {(rrggbb >> 16 & 255) / 255.0, (rrggbb >> 8 & 255) / 255.0, (rrggbb & 255) / 255.0};
}

Colour mix(Colour a, Colour b, double t)
{
    return {a.r + t * (b.r - a.r), a.g + t * (b.g - a.g), a.b + t * (b.b - a.b)};
}

Colour scale_colour(double t)
{
    static const Colour stops[] = {hex(0x20305f), hex(0x2f5f8a), hex(0x2f8f8d),
                                   hex(0x63b679), hex(0xb9d66a), hex(0xf8eca0)};
    const double s = 5 * std::clamp(t, 0.0, 1.0);
    const int i = std::min(int(s), 4);
    return mix(stops[i], stops[i + 1], s - i);
}

Picture::Picture(int width, int height, Colour background)
    : width_(width), height_(height), bytes_(size_t(width) * size_t(height) * 3)
{
    for (int y = 0; y < height; y++)
        for (int x = 0; x < width; x++)
            set(x, y, background);
}

void Picture::set(int x, int y, Colour colour)
{
    uint8_t* pixel = &bytes_[(size_t(y) * size_t(width_) + size_t(x)) * 3];
    pixel[0] = uint8_t(std::lround(255 * std::clamp(colour.r, 0.0, 1.0)));
    pixel[1] = uint8_t(std::lround(255 * std::clamp(colour.g, 0.0, 1.0)));
    pixel[2] = uint8_t(std::lround(255 * std::clamp(colour.b, 0.0, 1.0)));
}

Colour Picture::at(int x, int y) const
{
    const uint8_t* pixel = &bytes_[(size_t(y) * size_t(width_) + size_t(x)) * 3];
    return {pixel[0] / 255.0, pixel[1] / 255.0, pixel[2] / 255.0};
}

void Picture::blend(int x, int y, Colour colour, double opacity)
{
    if (opacity > 0)
        set(x, y, mix(at(x, y), colour, std::min(opacity, 1.0)));
}

// Each row of pixels is cut by kCuts lines; along a line the coverage is exact.
void Picture::fill(const Shape& shape, Colour colour, double opacity)
{
    constexpr int kCuts = 8;
    Box2 box;
    for (const Outline& outline : shape)
        box.include(outline);
    const int top = std::max(0, int(std::floor(box.low.y)));
    const int bottom = std::min(height_, int(std::ceil(box.high.y)));
    if (top >= bottom)
        return;

    std::vector<std::vector<double>> crossings(size_t(bottom - top) * kCuts);
    for (const Outline& outline : shape) {
        for (size_t i = 0; i < outline.size(); i++) {
            Point a = outline[i], b = outline[(i + 1) % outline.size()];
            if (a.y > b.y)
                std::swap(a, b);
            const auto cut_above = [&](double y) { return int(std::ceil((y - top) * kCuts - 0.5)); };
            const int last = std::min(cut_above(b.y), int(crossings.size()));
            for (int cut = std::max(0, cut_above(a.y)); cut < last; cut++) {
                const double y = top + (cut + 0.5) / kCuts;
                crossings[size_t(cut)].push_back(a.x + (y - a.y) / (b.y - a.y) * (b.x - a.x));
            }
        }
    }

    std::vector<double> coverage(static_cast<size_t>(width_));
    for (int y = top; y < bottom; y++) {
        std::fill(coverage.begin(), coverage.end(), 0.0);
        for (int cut = 0; cut < kCuts; cut++) {
            std::vector<double>& xs = crossings[size_t(y - top) * kCuts + size_t(cut)];
            std::sort(xs.begin(), xs.end());
            for (size_t k = 0; k + 1 < xs.size(); k += 2) {
                const double from = std::clamp(xs[k], 0.0, double(width_));
                const double to = std::clamp(xs[k + 1], 0.0, double(width_));
                for (int x = int(from); x < to; x++)
                    coverage[size_t(x)] += std::min(to, x + 1.0) - std::max(from, double(x));
            }
        }
        for (int x = 0; x < width_; x++)
            blend(x, y, colour, opacity * coverage[size_t(x)] / kCuts);
    }
}

// A pixel is covered as far as the nearest segment reaches over its middle; the nearest counts once, so that
// see-through lines do not darken at their corners.
void Picture::stroke(const Outline& line, double width, Colour colour, bool closed, double opacity)
{
    const double reach = width / 2 + 0.5;
    Box2 box;
    box.include(line);
    const int left = std::max(0, int(box.low.x - reach)), right = std::min(width_, int(box.high.x + reach) + 1);
    const int top = std::max(0, int(box.low.y - reach)), bottom = std::min(height_, int(box.high.y + reach) + 1);
    if (left >= right || top >= bottom)
        return;

    std::vector<float> coverage(size_t(right - left) * size_t(bottom - top), 0.0f);
    const size_t segments = closed ? line.size() : std::max<size_t>(line.size(), 2) - 1;
    for (size_t i = 0; i < segments; i++) {
        const Point a = line[i], b = line[(i + 1) % line.size()], along = b - a;
        const double square = along.x * along.x + along.y * along.y;
        const int x0 = std::max(left, int(std::min(a.x, b.x) - reach));
        const int x1 = std::min(right, int(std::max(a.x, b.x) + reach) + 1);
        const int y0 = std::max(top, int(std::min(a.y, b.y) - reach));
        const int y1 = std::min(bottom, int(std::max(a.y, b.y) + reach) + 1);
        for (int y = y0; y < y1; y++) {
            for (int x = x0; x < x1; x++) {
                const Point p = Point{x + 0.5, y + 0.5} - a;
                const double t = square > 0 ? std::clamp((p.x * along.x + p.y * along.y) / square, 0.0, 1.0) : 0.0;
                const double distance = std::hypot(p.x - t * along.x, p.y - t * along.y);
                float& c = coverage[size_t(y - top) * size_t(right - left) + size_t(x - left)];
                c = std::max(c, float(std::clamp(reach - distance, 0.0, 1.0) * std::min(1.0, width)));
            }
        }
    }
    for (int y = top; y < bottom; y++)
        for (int x = left; x < right; x++)
            blend(x, y, colour, opacity * coverage[size_t(y - top) * size_t(right - left) + size_t(x - left)]);
}

void Picture::dot(Point middle, double radius, Colour colour, double opacity)
{
    stroke({middle, middle}, 2 * radius, colour, false, opacity);
}

void Picture::put(const Picture& other, int x, int y)
{
    for (int j = std::max(0, -y); j < other.height_ && y + j < height_; j++)
        for (int i = std::max(0, -x); i < other.width_ && x + i < width_; i++)
            set(x + i, y + j, other.at(i, j));
    has_lettering(other.least_lettering_);
}

} // namespace gallery
