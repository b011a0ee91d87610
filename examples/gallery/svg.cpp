#include "svg.h"

#include <cstdio>

namespace gallery {
namespace {

std::string number(double v)
{
    char text[32];
    std::snprintf(text, sizeof text, "%.2f", v);
    std::string s = text;
    while (s.back() == '0')
        s.pop_back();
    if (s.back() == '.')
        s.pop_back();
    return s == "-0" ? "0" : s;
}

std::string colour_name(Colour c)
{
    char text[16];
    std::snprintf(text, sizeof text, "#%02x%02x%02x", int(std::lround(255 * c.r)), int(std::lround(255 * c.g)),
                  int(std::lround(255 * c.b)));
    return text;
}

std::string path_data(const Outline& outline, bool closed)
{
    std::string d;
    for (size_t i = 0; i < outline.size(); i++)
        d += (i == 0 ? "M" : "L") + number(outline[i].x) + " " + number(outline[i].y);
    return closed ? d + "Z" : d;
}

} // namespace

std::string escaped(const std::string& text)
{
    std::string out;
    for (char c : text) {
        switch (c) {
        case '&':
            out += "&amp;";
            break;
        case '<':
            out += "&lt;";
            break;
        case '>':
            out += "&gt;";
            break;
        case '"':
            out += "&quot;";
            break;
        default:
            out += c;
        }
    }
    return out;
}

Svg::Svg(int width, int height, Colour background) : width_(width), height_(height)
{
    fill({{{0, 0}, {double(width), 0}, {double(width), double(height)}, {0, double(height)}}}, background);
}

void Svg::fill(const Shape& shape, Colour colour, double opacity)
{
    body_ += "<path fill=\"" + colour_name(colour) + "\" fill-rule=\"evenodd\"";
    if (opacity != 1)
        body_ += " fill-opacity=\"" + number(opacity) + "\"";
    body_ += " d=\"";
    for (const Outline& outline : shape)
        body_ += path_data(outline, true);
    body_ += "\"/>\n";
}

void Svg::stroke(const Outline& line, double width, Colour colour, bool closed)
{
    body_ += "<path fill=\"none\" stroke-linejoin=\"round\" stroke-linecap=\"round\" stroke=\"" + colour_name(colour) +
             "\" stroke-width=\"" + number(width) + "\" d=\"" + path_data(line, closed) + "\"/>\n";
}

void Svg::dot(Point middle, double radius, Colour colour)
{
    body_ += "<circle cx=\"" + number(middle.x) + "\" cy=\"" + number(middle.y) + "\" r=\"" + number(radius) +
             "\" fill=\"" + colour_name(colour) + "\"/>\n";
}

void Svg::text(Point at, double size, const std::string& text, Colour colour, const char* anchor)
{
    least_lettering_ = std::min(least_lettering_, size);
    body_ += "<text x=\"" + number(at.x) + "\" y=\"" + number(at.y) + "\" font-size=\"" + number(size) +
             "\" font-family=\"DejaVu Sans, Verdana, sans-serif\" text-anchor=\"" + anchor + "\" fill=\"" +
             colour_name(colour) + "\">" + escaped(text) + "</text>\n";
}

void Svg::title(const std::string& text)
{
    title_ = "<title>" + escaped(text) + "</title>\n";
}

std::string Svg::content() const
{
    const std::string w = std::to_string(width_), h = std::to_string(height_);
    return "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"" + w + "\" height=\"" + h + "\" viewBox=\"0 0 " + w +
           " " + h + "\">\n" + title_ + body_ + "</svg>\n";
}

} // namespace gallery
