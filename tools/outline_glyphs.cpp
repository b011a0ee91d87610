// Flattens the glyphs of a font into outlines, once, by hand:
//
//     g++ -O2 -std=c++20 tools/outline_glyphs.cpp -o outline_glyphs $(pkg-config --cflags --libs freetype2)
//     ./outline_glyphs /usr/share/fonts/truetype/dejavu/DejaVuSerif-Bold.ttf 0.4 > examples/data/serif-bold.txt
//     ./outline_glyphs /usr/share/fonts/truetype/dejavu/DejaVuSans.ttf 4 > examples/data/sans.txt
//
// The last argument is how far a chord may leave its curve, in units of 1/1000 em. The result lists the printable
// characters of ASCII, each outline without its closing point: outer outlines counter-clockwise, each followed by its
// holes, which run clockwise.

#include <ft2build.h>
#include FT_FREETYPE_H
#include FT_OUTLINE_H

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <vector>

namespace {

struct Point {
    double x, y;
};
using Outline = std::vector<Point>;

struct Flattener {
    double scale;     // from font units to 1/1000 em
    double tolerance; // largest distance of a chord from its curve
    std::vector<Outline> outlines;
};

Point scaled(const Flattener& f, const FT_Vector& v)
{
    return {double(v.x) * f.scale, double(v.y) * f.scale};
}

int move_to(const FT_Vector* to, void* user)
{
    Flattener& f = *static_cast<Flattener*>(user);
    f.outlines.push_back({scaled(f, *to)});
    return 0;
}

int line_to(const FT_Vector* to, void* user)
{
    Flattener& f = *static_cast<Flattener*>(user);
    f.outlines.back().push_back(scaled(f, *to));
    return 0;
}

int conic_to(const FT_Vector* control, const FT_Vector* to, void* user)
{
    Flattener& f = *static_cast<Flattener*>(user);
    const Point a = f.outlines.back().back(), b = scaled(f, *control), c = scaled(f, *to);
    // A parabola cut into n equal steps of its parameter leaves its chords by |a - 2b + c| / 4n^2.
    const double bend = std::hypot(a.x - 2 * b.x + c.x, a.y - 2 * b.y + c.y);
    const int n = std::max(1, int(std::ceil(std::sqrt(bend / (4 * f.tolerance)))));
    for (int i = 1; i <= n; i++) {
        const double t = double(i) / n, s = 1 - t;
        f.outlines.back().push_back(
            {s * s * a.x + 2 * s * t * b.x + t * t * c.x, s * s * a.y + 2 * s * t * b.y + t * t * c.y});
    }
    return 0;
}

int cubic_to(const FT_Vector*, const FT_Vector*, const FT_Vector*, void*)
{
    std::fprintf(stderr, "a cubic curve: only fonts with quadratic curves are handled\n");
    return 1;
}

double signed_area(const Outline& outline)
{
    double twice = 0;
    for (size_t i = 0; i < outline.size(); i++) {
        const Point p = outline[i], q = outline[(i + 1) % outline.size()];
        twice += p.x * q.y - q.x * p.y;
    }
    return twice / 2;
}

bool contains(const Outline& outline, Point p)
{
    bool inside = false;
    for (size_t i = 0; i < outline.size(); i++) {
        const Point a = outline[i], b = outline[(i + 1) % outline.size()];
        if ((a.y > p.y) != (b.y > p.y) && p.x < a.x + (p.y - a.y) / (b.y - a.y) * (b.x - a.x))
            inside = !inside;
    }
    return inside;
}

// Rounds to what is printed, and drops points that then repeat their predecessor.
Outline rounded(const Outline& outline)
{
    Outline out;
    for (Point p : outline) {
        p = {std::round(p.x * 100) / 100, std::round(p.y * 100) / 100};
        if (out.empty() || out.back().x != p.x || out.back().y != p.y)
            out.push_back(p);
    }
    while (out.size() > 1 && out.front().x == out.back().x && out.front().y == out.back().y)
        out.pop_back();
    return out;
}

void print(const char* role, const Outline& outline)
{
    std::printf("%s %zu\n", role, outline.size());
    for (Point p : outline)
        std::printf("%.10g %.10g\n", p.x, p.y);
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 3) {
        std::fprintf(stderr, "usage: outline_glyphs font.ttf tolerance\n");
        return 2;
    }
    FT_Library library;
    FT_Face face;
    if (FT_Init_FreeType(&library) != 0 || FT_New_Face(library, argv[1], 0, &face) != 0) {
        std::fprintf(stderr, "%s cannot be read as a font\n", argv[1]);
        return 1;
    }
    std::printf("# %s %s, flattened to %s thousandths of an em. Licence: fonts-licence.txt.\n", face->family_name,
                face->style_name, argv[2]);
    std::printf("# glyph: character code, advance. outer, hole: number of points, then x y each.\n");
    for (unsigned code = 32; code < 127; code++) {
        if (FT_Load_Char(face, code, FT_LOAD_NO_SCALE) != 0)
            continue;
        Flattener f{1000.0 / face->units_per_EM, std::atof(argv[2]), {}};
        const FT_Outline_Funcs callbacks{move_to, line_to, conic_to, cubic_to, 0, 0};
        if (FT_Outline_Decompose(&face->glyph->outline, &callbacks, &f) != 0)
            return 1;
        std::printf("glyph %u %.10g\n", code, double(face->glyph->advance.x) * f.scale);

        std::vector<Outline> outers, holes;
        for (const Outline& outline : f.outlines) { // this kind of font fills to the right: outer outlines clockwise
            const Outline clean = rounded(outline);
            if (clean.size() >= 3)
                (signed_area(clean) < 0 ? outers : holes).emplace_back(clean.rbegin(), clean.rend());
        }
        for (const Outline& outer : outers) {
            print("outer", outer);
            for (const Outline& hole : holes)
                if (contains(outer, hole[0]))
                    print("hole", hole);
        }
    }
    FT_Done_Face(face);
    FT_Done_FreeType(library);
}
