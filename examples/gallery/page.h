#pragma once

#include <string>
#include <vector>

namespace gallery {

/// A file of the gallery as the page shows it.
struct Exhibit {
    std::string file;
    std::string sentence;
    int width = 0, height = 0; ///< 0 for what is no picture and only linked to
    double lettering = 0;      ///< the least of it in pixels per em, infinity where there is none
};

/// The exhibits of one scene.
struct Section {
    std::string title, idea;
    std::string source, page; ///< files that every picture of it links to, a source as text and a page as HTML
    std::vector<Exhibit> exhibits;
};

/// The page: one file without scripts, fonts or pictures from elsewhere.
std::string page_text(const std::vector<Section>& sections);

} // namespace gallery
