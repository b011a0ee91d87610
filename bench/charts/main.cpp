// usage: charts MEASURED FOLDER
// Draws the times of the main jobs over their size, beside an earlier library and the peers, into FOLDER. MEASURED is
// bench/measured.txt.
#include <algorithm>
#include <cstdio>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include <korvale.h>

#include "plot.h"
#include "svg.h"

namespace {

using namespace gallery;

using Curve = std::vector<Point>; // size, nanoseconds

/// The curves of a job by who did it, as the file names them.
using Job = std::map<std::string, Curve>;

/// What a file has measured, with the versions of the peers.
struct Measured {
    std::map<std::string, Job> jobs;
    std::map<std::string, std::string> versions;
};

Measured read_measured(const char* file)
{
    Measured measured;
    std::ifstream in(file);
    const std::string peers = "# peers ";
    for (std::string line; std::getline(in, line);) {
        std::istringstream words(line);
        std::string job, who, version;
        double size, time;
        if (line.starts_with(peers)) {
            words.ignore(std::streamsize(peers.size()));
            while (words >> who >> std::ws && std::getline(words, version, ','))
                measured.versions[who] = version;
        } else if (line[0] != '#' && words >> job >> size >> who >> time) {
            measured.jobs[job][who].push_back({size, time});
        }
    }
    return measured;
}

/// Who did a job; whose version the file does not tell has it in the label.
struct Who {
    const char* name;
    const char* label;
    Colour colour;
};

const std::string kOwn = "own";

const Who kWho[] = {{"Clipper", "Clipper", kOrange},
                    {"GEOS", "GEOS", kGreen},
                    {"CGAL", "CGAL", kRed},
                    {"Embree", "Embree", kOrange},
                    {"Eigen", "Eigen", kGreen},
                    {"baseline", "before 1.0.0", kGrey},
                    {"own", "korvale " KORVALE_VERSION, kBlue}};

struct Panel {
    const char* file;
    const char* job;
    const char* title;
    const char* x_label;
};

std::string count_text(double count)
{
    if (count < 1e4)
        return number_text(count);
    return count < 1e6 ? number_text(count / 1e3) + "k" : number_text(count / 1e6) + "M";
}

std::string time_text(double nanoseconds)
{
    const char* const units[] = {" ns", " us", " ms", " s"};
    int unit = 0;
    for (; nanoseconds >= 999 && unit < 3; ++unit)
        nanoseconds /= 1000;
    return number_text(nanoseconds) + units[unit];
}

/// The curves of a panel below its names, in a rectangle of the drawing.
void draw_panel(Svg& drawing, const Panel& panel, const Measured& measured, Point corner, Point size)
{
    const Job& job = measured.jobs.at(panel.job);
    Box2 range = {{1e300, 1e300}, {0, 0}};
    for (const Who& who : kWho) {
        const auto found = job.find(who.name);
        if (found == job.end())
            continue;
        for (const Point p : found->second) {
            range.low = {std::min(range.low.x, p.x), std::min(range.low.y, p.y)};
            range.high = {std::max(range.high.x, p.x), std::max(range.high.y, p.y)};
        }
    }
    range = {{range.low.x / 1.3, range.low.y / 2}, {range.high.x * 1.3, range.high.y * 2}};
    Plot plot(drawing, corner, size, range, Scale::ratios);
    plot.axes(panel.title, panel.x_label, count_text, time_text);
    int place = 0;                // of a name, two in a row
    for (const Who& who : kWho) { // the library itself last, on top of the others
        const auto found = job.find(who.name);
        if (found == job.end())
            continue;
        const bool is_own = who.name == kOwn;
        plot.curve(found->second, who.colour, is_own ? 3.5 : 2);
        plot.dots(found->second, is_own ? 4 : 3, who.colour);
        const auto version = measured.versions.find(who.name);
        const std::string label = version == measured.versions.end() ? who.label : who.label + (" " + version->second);
        const Point at{10.0 + 170 * (place % 2), corner.y - 62 + 22 * (place / 2)};
        drawing.dot(at, 5, who.colour);
        drawing.text(at + Point{9, 5}, 15, label, who.colour);
        ++place;
    }
}

/// A panel in a file of its own, as wide as narrow screens are; on wide ones several stand side by side.
bool draw(const Measured& measured, const std::string& folder, const Panel& panel)
{
    if (!measured.jobs.contains(panel.job)) {
        std::fprintf(stderr, "charts: %s was not measured\n", panel.job);
        return false;
    }
    Svg drawing(340, 420);
    drawing.title(panel.title);
    draw_panel(drawing, panel, measured, {75, 90}, {238, 270});
    std::ofstream out(folder + "/speed-" + panel.file + ".svg");
    out << drawing.content();
    return out.good();
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 3) {
        std::fprintf(stderr, "usage: charts MEASURED FOLDER\n");
        return 2;
    }
    const Measured measured = read_measured(argv[1]);
    const std::string folder = argv[2];
    const Panel panels[] = {{"wave", "border.no_event", "A wave, nothing meets", "points"},
                            {"wave-inwards", "border.many_events", "A wave far inwards", "points"},
                            {"comb", "border.comb_inwards", "A comb inwards", "points"},
                            {"rays", "ray.thousand_queries", "1,000 rays, all hits", "triangles"},
                            {"transform", "array.transform", "Points through a matrix", "points"},
                            {"mix", "array.mix", "Mixing two arrays", "points"}};
    const bool drawn = std::ranges::all_of(panels, [&](const Panel& panel) { return draw(measured, folder, panel); });
    return drawn ? 0 : 1;
}
