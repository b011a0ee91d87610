// Coasts offset inwards, twenty times, each ring from the one before. Where a bay cuts the land in two, a split event
// drops the smaller piece, and the rings go on in the larger.

#include "mesh.h"
#include "scene.h"

#include <algorithm>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace gallery {
namespace {

constexpr int kRings = 20;
constexpr size_t kCountries = 12;

struct Country {
    std::string name;
    Outline coast; // kilometres
};

// The first dozen of the file.
std::vector<Country> read_countries(const std::filesystem::path& file)
{
    std::ifstream in(file);
    if (!in)
        throw std::runtime_error("cannot read " + file.string());
    std::vector<Country> countries;
    for (std::string line; countries.size() < kCountries && std::getline(in, line);) {
        std::istringstream words(line);
        std::string word;
        size_t points = 0;
        if (!(words >> word >> points) || word != "outline")
            continue;
        Country country;
        std::getline(words >> std::ws, country.name);
        country.coast.resize(points);
        for (Point& p : country.coast)
            in >> p.x >> p.y;
        std::getline(in, line);
        countries.push_back(std::move(country));
    }
    return countries;
}

double distance_to(const Outline& outline, Point p)
{
    double nearest = 1e300;
    for (size_t i = 0; i < outline.size(); i++) {
        const Point a = outline[i], along = outline[(i + 1) % outline.size()] - a, d = p - a;
        const double square = along.x * along.x + along.y * along.y;
        const double t = square > 0 ? std::clamp((d.x * along.x + d.y * along.y) / square, 0.0, 1.0) : 0.0;
        nearest = std::min(nearest, std::hypot(d.x - t * along.x, d.y - t * along.y));
    }
    return nearest;
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

// How far from the coast the innermost place lies, found on a grid.
double depth_of(const Outline& coast)
{
    Box2 box;
    box.include(coast);
    double depth = 0;
    constexpr int kCells = 48;
    for (int j = 0; j < kCells; j++) {
        for (int i = 0; i < kCells; i++) {
            const Point p{box.low.x + box.size().x * (i + 0.5) / kCells, box.low.y + box.size().y * (j + 0.5) / kCells};
            if (contains(coast, p))
                depth = std::max(depth, distance_to(coast, p));
        }
    }
    return depth;
}

// Takes out points that lie within `tolerance` of the line between their neighbours kept (Douglas and Peucker 1973).
void keep_corners(const Outline& line, size_t from, size_t to, double tolerance, Outline& kept)
{
    double furthest = 0;
    size_t at = from;
    for (size_t i = from + 1; i < to; i++) {
        const double distance = distance_to({line[from], line[to]}, line[i]);
        if (distance > furthest) {
            furthest = distance;
            at = i;
        }
    }
    if (furthest > tolerance) {
        keep_corners(line, from, at, tolerance, kept);
        keep_corners(line, at, to, tolerance, kept);
    } else {
        kept.push_back(line[from]);
    }
}

// Cuts each corner that turns by more than 60 degrees, so that two of half the turn stand in its place.
Outline blunted(const Outline& outline)
{
    Outline out;
    const size_t n = outline.size();
    for (size_t i = 0; i < n; i++) {
        const Point before = outline[(i + n - 1) % n], p = outline[i], after = outline[(i + 1) % n];
        const Point u = p - before, v = after - p;
        if (u.x * v.x + u.y * v.y > 0.5 * std::hypot(u.x, u.y) * std::hypot(v.x, v.y)) {
            out.push_back(p);
        } else {
            out.push_back(p - 0.25 * u);
            out.push_back(p + 0.25 * v);
        }
    }
    return out;
}

// The coast as the picture can show it. A corner moves the faster the sharper it is: the tip of a fjord would run
// through the whole country, so sharp corners are made blunt.
Outline prepared(const Outline& coast, double tolerance)
{
    Outline closed = coast, kept;
    closed.push_back(coast[0]);
    keep_corners(closed, 0, coast.size() / 2, tolerance, kept);
    keep_corners(closed, coast.size() / 2, coast.size(), tolerance, kept);
    for (int round = 0; round < 3; round++)
        kept = blunted(kept);
    return kept;
}

// The coast and the rings inside it, as many as there is room for.
std::vector<Outline> rings_of(korvale::Offsetter& offsetter, const Outline& coast, double step)
{
    std::vector<Outline> rings{coast};
    for (int k = 1; k <= kRings; k++) {
        offsetter(lifted(rings.back()), -step, {.keep_vertices = false}); // the next ring starts from what is left
        Outline ring = plan(offsetter.points());
        if (offsetter.collapsed() || signed_area(ring) <= 0)
            break;
        rings.push_back(std::move(ring));
    }
    return rings;
}

void paint(Picture& picture, const Font& font, const Country& country, const std::vector<Outline>& rings, double step,
           Point corner, Point size)
{
    Box2 box;
    box.include(country.coast);
    const View view(box, corner + Point{18, 18}, size - Point{36, 78});
    for (size_t k = 0; k < rings.size(); k++) {
        const Colour colour = scale_colour(double(k) / kRings);
        picture.fill({view(rings[k])}, colour);
        picture.stroke(view(rings[k]), 0.7, mix(colour, hex(0x101a33), 0.45), true);
    }
    picture.stroke(view(rings[0]), 1.1, hex(0x16213f), true);
    const double middle = corner.x + size.x / 2;
    draw_text(picture, font, {middle, corner.y + size.y - 34}, 19, country.name, kInk, Align::middle);
    char note[64];
    std::snprintf(note, sizeof note, "%zu rings of %.1f km", rings.size() - 1, step);
    draw_text(picture, font, {middle, corner.y + size.y - 13}, 14, note, kGrey, Align::middle);
}

void draw_tree_rings(Gallery& hall)
{
    const std::vector<Country> countries = read_countries(hall.data("coasts.txt"));
    constexpr int kColumns = 4;
    const Point cell{kWidth / double(kColumns), 330};
    Picture picture(kWidth, int(cell.y) * int((countries.size() + kColumns - 1) / kColumns));
    korvale::Offsetter offsetter;
    for (size_t i = 0; i < countries.size(); i++) {
        const double depth = depth_of(countries[i].coast), step = depth / (kRings + 0.5);
        const std::vector<Outline> rings = rings_of(offsetter, prepared(countries[i].coast, 0.02 * depth), step);
        paint(picture, hall.sans(), countries[i], rings, step,
              {cell.x * double(i % kColumns), cell.y * double(i / kColumns)}, cell);
        hall.progress(double(i + 1) / double(countries.size()));
    }
    hall.show("tree-rings.png", picture,
              "The largest land of a dozen countries with up to twenty rings inside each; where a ring tears, the "
              "larger piece is followed.");
}

} // namespace

Scene tree_rings()
{
    return {"Tree rings",
            "Coasts offset inwards step by step with split events on: bays widen, headlands wear off, and where the "
            "land is cut in two the piece with the smaller box is dropped.",
            draw_tree_rings, "tree_rings.cpp", "border.md"};
}

} // namespace gallery
