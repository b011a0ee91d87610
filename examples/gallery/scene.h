#pragma once

#include <chrono>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "font.h"
#include "page.h"
#include "picture.h"
#include "svg.h"

namespace gallery {

/// What a scene is given: where its data lies, lettering, and somewhere to hang its pictures.
class Gallery {
public:
    /// Pictures go to `out`, which is made when missing.
    Gallery(std::filesystem::path data, std::filesystem::path out);

    /// A file of examples/data.
    std::filesystem::path data(const std::string& file) const { return data_ / file; }

    const Font& sans() const { return sans_; } ///< for lettering

    /// Writes a picture and puts it on the page with a sentence that says what is seen. A picture is kWidth wide, or
    /// half of it when two stand side by side. Names end in .png and .svg.
    void show(const std::string& file, const Picture& picture, const std::string& sentence);
    void show(const std::string& file, const Svg& drawing, const std::string& sentence);

    /// Writes another file, which the page links to.
    void attach(const std::string& file, const std::string& content, const std::string& sentence);

    /// Tells the user how much of the scene is done, from 0 to 1. Call it wherever a second may pass.
    void progress(double done);

    void begin(const struct Scene& scene); ///< called before each scene; its source goes to the folder as well
    void close();                          ///< writes the pages of the scenes and index.html

private:
    void write(const std::string& file, const void* bytes, size_t count);
    void copy(const std::filesystem::path& file, const std::string& name);
    void write_pages();
    void report(const std::string& line);
    double seconds() const;

    std::filesystem::path data_, out_;
    Font sans_;
    std::vector<Section> sections_;
    std::chrono::steady_clock::time_point begun_, shown_;
    bool line_open_ = false;
};

/// A scene: `draw` makes its pictures. Each lives in a file of its own under scenes/, is declared here, and is listed
/// in main.cpp in the order of the page.
struct Scene {
    const char* title;
    const char* idea; ///< a sentence or two for the page
    void (*draw)(Gallery&);
    const char* source; ///< its file under scenes/
    const char* page;   ///< the page of docs/ about what it shows
};

Scene bevelled_text();
Scene tree_rings();
Scene contour_fill();
Scene corners_and_ends();
Scene road_band();
Scene drum_head();
Scene teapot_rays();
Scene squashed_teapot();
Scene swept_tubes();
Scene scattered_points();
Scene bent_vertices();
Scene tilted_planes();
Scene scaled_turned_moved();

} // namespace gallery
