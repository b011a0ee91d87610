#include "../example.h"

#include <numeric>
#include <string>

EXAMPLE("korvale::carry korvale::try_carry korvale::Carried")
{
    const std::vector<korvale::Point> corner = {{0, 0, 0}, {4, 0, 0}, {4, 3.8, 0}, {3.8, 4, 0}, {0, 4, 0}};
    const std::vector<std::string> names = {"south", "east", "chamfer", "north", "west"};
    for (const std::string& name : korvale::carry(names, korvale::offset(corner, 1, {.join = korvale::Join::bevel})))
        std::printf(" %s", name.c_str());
    const korvale::Offset inside = korvale::offset(corner, -1, {.keep_vertices = false}); // the short edge is lost
    std::printf("\n%zu points:", inside.points.size());
    const auto joined = [](std::span<const std::string> merged) {
        return std::accumulate(merged.begin() + 1, merged.end(), merged[0],
                               [](const std::string& a, const std::string& b) { return a + "+" + b; });
    };
    for (const std::string& name : korvale::carry(names, inside, joined))
        std::printf(" %s", name.c_str());
    std::printf("\nwithout a copy: %s\n", korvale::carry(names, korvale::offset(corner, 1)).is_view() ? "yes" : "no");
    if (auto none = korvale::try_carry(names, korvale::offset({{0, 0, 0}, {4, 0, 0}, {4, 4, 0}}, 1)); !none)
        std::printf("%s\n", none.error().what());
    // >  south south east east chamfer chamfer north north west west
    // > 4 points: south east chamfer+north west
    // > without a copy: yes
    // > carry: values must be 3, one for each point of the outline, but there are 5
}
