// gallery [folder]: draws what the library does, and a page that shows it, into a folder (out/gallery when not named).

#include <cstdio>
#include <exception>
#include <filesystem>

#include "scene.h"

namespace {

const gallery::Scene kScenes[] = {
    gallery::bevelled_text(), gallery::tree_rings(),    gallery::contour_fill(),        gallery::corners_and_ends(),
    gallery::road_band(),     gallery::drum_head(),     gallery::teapot_rays(),         gallery::squashed_teapot(),
    gallery::swept_tubes(),   gallery::tilted_planes(), gallery::scaled_turned_moved(), gallery::scattered_points(),
    gallery::bent_vertices(),
};

// Where the sources lay when this was built, or else as seen from the top of a checkout.
std::filesystem::path data_folder()
{
    return std::filesystem::exists(GALLERY_DATA) ? GALLERY_DATA : "examples/data";
}

} // namespace

int main(int argc, char** argv)
{
    if (argc > 2 || (argc == 2 && argv[1][0] == '-')) {
        std::fprintf(stderr, "usage: gallery [folder]\n");
        return 2;
    }
    try {
        gallery::Gallery hall(data_folder(), argc == 2 ? argv[1] : "out/gallery");
        for (const gallery::Scene& scene : kScenes) {
            hall.begin(scene);
            scene.draw(hall);
        }
        hall.close();
    } catch (const std::exception& problem) {
        std::fprintf(stderr, "gallery: %s\n", problem.what());
        return 1;
    }
    return 0;
}
