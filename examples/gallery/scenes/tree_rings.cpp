// Coasts offset inwards to twenty depths in one sweep. Where a bay cuts the land in two, rings go on in both pieces.

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

// All rings inside the coast at each depth; corners that open are round.
std::vector<korvale::Rings> rings_of(const Outline& coast, double step)
{
    std::vector<double> depths;
    for (int k = 1; k <= kRings; k++)
        depths.push_back(-k * step);
    return korvale::offset_rings(lifted(coast), depths, {.join = korvale::Join::round});
}

// The coast, then the pieces of each depth; returns the largest number of pieces.
size_t fill_rings(Picture& picture, const View& view, const Outline& coast, const std::vector<korvale::Rings>& rings)
{
    const auto fill = [&](const Outline& ring, int depth) {
        const Colour colour = scale_colour(double(depth) / kRings);
        picture.fill({view(ring)}, colour);
        picture.stroke(view(ring), 0.7, mix(colour, hex(0x101a33), 0.45), true);
    };
    fill(coast, 0);
    size_t most = 0;
    for (int k = 1; k <= kRings; k++) {
        const korvale::Rings& pieces = rings[size_t(k - 1)];
        size_t alive = 0;
        for (size_t i = 0; i < pieces.size(); i++) {
            if (!pieces.collapsed[i]) {
                fill(plan(pieces[i]), k);
                alive++;
            }
        }
        most = std::max(most, alive);
    }
    picture.stroke(view(coast), 1.1, hex(0x16213f), true);
    return most;
}

void paint(Picture& picture, const Font& font, const Country& country, double step, Point corner, Point size)
{
    Box2 box;
    box.include(country.coast);
    const View view(box, corner + Point{18, 18}, size - Point{36, 78});
    const size_t most = fill_rings(picture, view, country.coast, rings_of(country.coast, step));
    const double middle = corner.x + size.x / 2;
    draw_text(picture, font, {middle, corner.y + size.y - 34}, 19, country.name, kInk, Align::middle);
    char note[64];
    std::snprintf(note, sizeof note, "every %.1f km, up to %zu pieces", step, most);
    draw_text(picture, font, {middle, corner.y + size.y - 13}, 14, note, kGrey, Align::middle);
}

void draw_tree_rings(Gallery& hall)
{
    const std::vector<Country> countries = read_countries(hall.data("coasts.txt"));
    constexpr int kColumns = 4;
    const Point cell{kWidth / double(kColumns), 330};
    Picture picture(kWidth, int(cell.y) * int((countries.size() + kColumns - 1) / kColumns));
    for (size_t i = 0; i < countries.size(); i++) {
        paint(picture, hall.sans(), countries[i], depth_of(countries[i].coast) / (kRings + 0.5),
              {cell.x * double(i % kColumns), cell.y * double(i / kColumns)}, cell);
        hall.progress(double(i + 1) / double(countries.size()));
    }
    hall.show("tree-rings.png", picture,
              "The largest land of a dozen countries with twenty depths of rings inside each; where a ring tears, all "
              "its pieces go on.");
}

} // namespace

Scene tree_rings()
{
    return {"Tree rings",
            "Coasts offset inwards to twenty depths in one call: bays widen, headlands wear off, and where the land is "
            "cut in two the rings go on in both pieces.",
            draw_tree_rings, "tree_rings.cpp", "border.md"};
}

} // namespace gallery
