// An outline grown and shrunk: what is left, which corners gave way, and when nothing is.

#include <cstdio>
#include <vector>

#include <korvale.hpp>

int main()
{
    // An ell with a small bevelled corner.
    const std::vector<korvale::Point> ell = {{0, 0, 0},   {6, 0, 0}, {6, 2, 0}, {2.2, 2, 0},
                                             {2, 2.2, 0}, {2, 6, 0}, {0, 6, 0}};

    korvale::Offsetter offsetter; // keeps its arrays from call to call
    for (const double distance : {0.5, 0.25, -0.25, -0.75, -1.5}) {
        offsetter(ell, distance, {.keep_vertices = false});
        if (offsetter.collapsed()) {
            std::printf("%5.2f: nothing is left\n", distance);
            continue;
        }
        std::printf("%5.2f:", distance);
        for (const auto& [x, y, z] : offsetter.points())
            std::printf("  %.3f %.3f", x, y);
        std::printf("\n");
        for (size_t i = 0; i < ell.size(); ++i)
            if (offsetter.removed()[i])
                std::printf("       corner %zu went into corner %d\n", i, offsetter.merged_into()[i]);
    }

    try {
        korvale::offset({{0, 0, 0}, {1, 0, 0}}, 1);
    } catch (const korvale::Error& error) {
        std::printf("%s\n", error.what());
    }
}
