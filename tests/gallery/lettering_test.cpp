// The pictures of the pages on a screen of 380 pixels, where a page leaves them 320: lettering has at least 9 pixels.
// python/tests/test_pages.py looks at those that Python draws.
#include "tests/gallery/files.h"

#include <algorithm>
#include <sstream>

#include <gtest/gtest.h>

namespace korvale::test {
namespace {

namespace fs = std::filesystem;

constexpr double kRoom = 320, kLeast = 9;

std::vector<fs::path> pages()
{
    std::vector<fs::path> found{PROJECT_FOLDER "/README.md"};
    for (const auto& entry : fs::recursive_directory_iterator(PROJECT_FOLDER "/docs"))
        if (entry.path().extension() == ".md")
            found.push_back(entry.path());
    std::sort(found.begin(), found.end());
    return found;
}

TEST(PicturesOfPages, HaveLetteringOfNinePixelsOnNarrowScreens)
{
    size_t pictures = 0;
    for (const fs::path& page : pages()) {
        std::istringstream lines(read_file(page));
        for (std::string line; std::getline(lines, line);) {
            // The cells of a table share the room.
            const auto bars = line.starts_with("|") ? std::count(line.begin(), line.end(), '|') : 2;
            for (size_t at = line.find("!["); at != std::string::npos; at = line.find("![", at + 1)) {
                const size_t from = line.find("](", at) + 2;
                const fs::path file = page.parent_path() / line.substr(from, line.find(')', from) - from);
                if (file.filename().string().starts_with("python-") || file.extension() == ".jpg") // scenes of a host
                    continue;
                const Lettered picture = read_lettered(file);
                EXPECT_GE(picture.least_lettering * std::min(1.0, kRoom / double(bars - 1) / picture.width), kLeast)
                    << page << ": " << file;
                pictures++;
            }
        }
    }
    EXPECT_GE(pictures, 23u);
}

} // namespace
} // namespace korvale::test
