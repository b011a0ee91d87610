// The gallery as a program: what it prints and the files it writes.
#include "tests/gallery/files.h"
#include "tests/gallery/outcome.h"

#include <algorithm>
#include <cstdlib>
#include <map>
#include <set>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace korvale::test {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

Outcome run_gallery(const std::string& arguments)
{
    return run_program("\"" GALLERY_PROGRAM "\" " + arguments);
}

/// A page's text without what it sets as code.
std::string without_code(std::string page)
{
    const std::string ends = "</code>";
    for (size_t at = page.find("<code>"); at != std::string::npos; at = page.find("<code>", at))
        page.erase(at, page.find(ends, at) + ends.size() - at);
    return page;
}

// One run for all tests, into a folder that goes away with them.
class Gallery : public testing::Test {
protected:
    static void SetUpTestSuite()
    {
        char name[] = "/tmp/korvale-gallery-XXXXXX";
        ASSERT_NE(mkdtemp(name), nullptr);
        base_ = name;
        run_ = run_gallery("\"" + folder().string() + "\"");
    }

    static void TearDownTestSuite() { fs::remove_all(base_); }

    // Made by the gallery, together with the folders above it.
    static fs::path folder() { return base_ / "made" / "here"; }

    static std::vector<std::string> files_ending(const std::string& ending)
    {
        std::vector<std::string> names;
        for (const auto& entry : fs::directory_iterator(folder()))
            if (entry.path().extension() == ending)
                names.push_back(entry.path().filename().string());
        std::sort(names.begin(), names.end());
        return names;
    }

    // What stands between `before` and the next quote, wherever it occurs.
    static std::set<std::string> quoted_after(const std::string& text, const std::string& before)
    {
        std::set<std::string> found;
        for (size_t at = text.find(before); at != std::string::npos; at = text.find(before, at + 1)) {
            const size_t from = at + before.size();
            found.insert(text.substr(from, text.find('"', from) - from));
        }
        return found;
    }

    inline static fs::path base_;
    inline static Outcome run_;
};

TEST_F(Gallery, EndsWell)
{
    EXPECT_EQ(run_.status, 0) << run_.printed;
}

TEST_F(Gallery, PrintsALineForEachFile)
{
    size_t files = 0;
    for (const auto& entry : fs::directory_iterator(folder())) {
        EXPECT_THAT(run_.printed, HasSubstr(entry.path().filename().string()));
        files++;
    }
    EXPECT_GE(files, 7u);
}

TEST_F(Gallery, HasTheBorderScenes)
{
    for (const char* name :
         {"bevelled-text.png", "bevelled-text.svg", "bevelled-text.obj", "tree-rings.png", "contour-fill.png",
          "joins.png", "caps.png", "road-band.png", "road-band.svg", "index.html"})
        EXPECT_TRUE(fs::exists(folder() / name)) << name;
}

TEST_F(Gallery, WritesWholePngFilesThatAreNotBlank)
{
    const std::vector<std::string> names = files_ending(".png");
    ASSERT_FALSE(names.empty());
    for (const std::string& name : names) {
        SCOPED_TRACE(name);
        Image image;
        ASSERT_NO_THROW(image = read_png(folder() / name));
        EXPECT_TRUE(image.width == 1200 || image.width <= 600) << image.width;
        std::map<std::array<uint8_t, 3>, size_t> pixels;
        for (size_t i = 0; i < image.bytes.size(); i += 3)
            pixels[{image.bytes[i], image.bytes[i + 1], image.bytes[i + 2]}]++;
        size_t most = 0;
        for (const auto& [colour, count] : pixels)
            most = std::max(most, count);
        EXPECT_GT(pixels.size(), 16u);
        EXPECT_LT(most, image.bytes.size() / 3 * 98 / 100);
    }
}

TEST_F(Gallery, CompressesItsPictures)
{
    for (const std::string& name : files_ending(".png")) {
        const Image image = read_png(folder() / name);
        EXPECT_LT(fs::file_size(folder() / name), image.bytes.size() / 4) << name;
    }
}

TEST_F(Gallery, WritesClosedSolids)
{
    const std::vector<std::string> names = files_ending(".obj");
    ASSERT_FALSE(names.empty());
    for (const std::string& name : names) {
        SCOPED_TRACE(name);
        const Solid solid = read_obj(folder() / name);
        std::map<std::pair<int, int>, int> edges;
        for (const auto& t : solid.triangles)
            for (size_t k = 0; k < 3; k++)
                edges[{t[k], t[(k + 1) % 3]}]++;
        ASSERT_FALSE(edges.empty());
        for (const auto& [edge, count] : edges) {
            ASSERT_EQ(count, 1) << edge.first << " " << edge.second;
            ASSERT_EQ(edges.count({edge.second, edge.first}), 1u) << edge.first << " " << edge.second;
        }
    }
}

TEST_F(Gallery, MakesSevenLettersWithThreeHoles)
{
    // A closed surface has points - edges + triangles = 2 for each piece, less 2 for each hole through it.
    const Solid text = read_obj(folder() / "bevelled-text.obj");
    std::set<int> used;
    for (const auto& t : text.triangles)
        used.insert(t.begin(), t.end());
    EXPECT_EQ(int(used.size()) - int(text.triangles.size()) / 2, 7 * 2 - 3 * 2);
}

TEST_F(Gallery, LiftsTheLettersToTheirHeight)
{
    const Solid text = read_obj(folder() / "bevelled-text.obj");
    double low = 1e9, high = -1e9, volume = 0;
    for (const auto& p : text.points) {
        low = std::min(low, p[2]);
        high = std::max(high, p[2]);
    }
    for (const auto& t : text.triangles) {
        const auto &a = text.points[size_t(t[0])], &b = text.points[size_t(t[1])], &c = text.points[size_t(t[2])];
        volume += (a[0] * (b[1] * c[2] - b[2] * c[1]) + a[1] * (b[2] * c[0] - b[0] * c[2]) +
                   a[2] * (b[0] * c[1] - b[1] * c[0])) /
                  6;
    }
    EXPECT_NEAR(low, 0, 1e-3);
    EXPECT_NEAR(high, 110, 1e-3);
    EXPECT_GT(volume, 0); // triangles run counter-clockwise seen from outside
}

TEST_F(Gallery, LinksLeadToEveryFileAndNoOther)
{
    std::set<std::string> written, shown{"index.html"}, targets;
    for (const auto& entry : fs::recursive_directory_iterator(folder()))
        if (entry.is_regular_file())
            written.insert(entry.path().lexically_relative(folder()).string());
    for (const std::string& page : files_ending(".html")) {
        const std::string text = read_file(folder() / page);
        shown.merge(quoted_after(text, "src=\""));
        for (const std::string& target : quoted_after(text, "href=\"")) {
            const size_t hash = std::min(target.find('#'), target.size());
            const std::string file = hash == 0 ? page : target.substr(0, hash);
            shown.insert(file);
            if (hash < target.size())
                targets.insert(file + target.substr(hash));
        }
    }
    EXPECT_EQ(shown, written);
    EXPECT_GE(targets.size(), 14u);
    for (const std::string& target : targets)
        EXPECT_THAT(read_file(folder() / target.substr(0, target.find('#'))),
                    HasSubstr(" id=\"" + target.substr(target.find('#') + 1) + "\""))
            << target;
}

// By key and by ear: what comes first, in which order, and what stands for pictures.
TEST_F(Gallery, PagesAreReadInTheirOrder)
{
    for (const std::string& page : files_ending(".html")) {
        SCOPED_TRACE(page);
        const bool is_front = page == "index.html";
        const std::string text = read_file(folder() / page);
        EXPECT_THAT(text, StartsWith("<!DOCTYPE html>\n<html lang=\"en\">\n"));
        const std::string first = text.substr(text.find("<a "), 40);
        EXPECT_THAT(first, StartsWith(is_front ? "<a class=\"skip\" href=\"#scene-1\">" : "<a href=\"index.html\">"));
        EXPECT_EQ(text.find("<main>"), text.rfind("<main>"));
        EXPECT_LT(text.find("<main>"), text.find("<h1"));
        EXPECT_EQ(text.find("<h1"), text.rfind("<h1"));
        char level = '0';
        for (size_t at = text.find("<h", text.find("<main>")); at != std::string::npos; at = text.find("<h", at + 1)) {
            EXPECT_LE(text[at + 2], level + 1) << text.substr(at, 60);
            level = text[at + 2];
        }
        EXPECT_NE(level, '0');
        for (size_t at = text.find("<img "); at != std::string::npos; at = text.find("<img ", at + 1)) {
            const std::string picture = text.substr(at, text.find('>', at) - at);
            EXPECT_GE(quoted_after(picture, " alt=\"").begin()->size(), 10u) << picture;
        }
        std::set<std::string> links;
        for (size_t at = text.find("<a "); at != std::string::npos; at = text.find("<a ", at + 1)) {
            const std::string link = text.substr(at, text.find("</a>", at) - at);
            EXPECT_GE(link.size(), link.find('>') + 2) << link << " has no words";
            EXPECT_TRUE(links.insert(link).second || !is_front) << link << " is there twice";
        }
    }
}

TEST_F(Gallery, PageSaysASentenceForEveryPicture)
{
    const std::string page = read_file(folder() / "index.html");
    size_t captions = 0;
    for (size_t at = page.find("<figcaption>"); at != std::string::npos; at = page.find("<figcaption>", at + 1)) {
        const std::string sentence = page.substr(at + 12, page.find(" <span", at) - at - 12);
        EXPECT_GE(sentence.size(), 30u) << sentence;
        EXPECT_EQ(sentence.back(), '.') << sentence;
        captions++;
    }
    EXPECT_EQ(captions, files_ending(".png").size() + files_ending(".svg").size());
}

TEST_F(Gallery, LinksEachPictureToItsSourceAndItsPage)
{
    const std::string page = read_file(folder() / "index.html");
    size_t pictures = 0;
    for (size_t at = page.find("<figure"); at != std::string::npos; at = page.find("<figure", at + 1)) {
        const std::string figure = page.substr(at, page.find("</figure>", at) - at);
        const std::set<std::string> links = quoted_after(figure, "href=\"");
        ASSERT_EQ(links.size(), 3u) << figure; // the picture itself, its source and its page
        const std::string picture = *quoted_after(figure, "src=\"").begin();
        size_t found = 0;
        for (const std::string& link : links) {
            if (link.ends_with(".cpp.txt")) {
                const std::string source = read_file(folder() / link);
                EXPECT_THAT(source, HasSubstr("\"" + picture + "\""));
                EXPECT_EQ(source, read_file(fs::path(PROJECT_FOLDER "/examples/gallery/scenes") /
                                            link.substr(0, link.size() - 4)));
                found++;
            } else if (link.ends_with(".html")) {
                const std::string written =
                    read_file(fs::path(PROJECT_FOLDER "/docs") / (link.substr(0, link.size() - 5) + ".md"));
                const std::string title = written.substr(2, written.find('\n') - 2), shown = read_file(folder() / link);
                EXPECT_THAT(shown, StartsWith("<!DOCTYPE html>\n<html lang=\"en\">"));
                EXPECT_THAT(shown, HasSubstr("\">" + title + "</h1>"));
                const std::string words = without_code(shown);
                for (const char* mark : {"](", "**", "`", "\n#", "\n|", "\n- "})
                    EXPECT_THAT(words, Not(HasSubstr(mark))) << link;
                found++;
            }
        }
        EXPECT_EQ(found, 2u) << figure;
        pictures++;
    }
    EXPECT_EQ(pictures, files_ending(".png").size() + files_ending(".svg").size());
}

// Functions of the C library may differ in a last bit between processors, and a pixel at an edge with them.
TEST_F(Gallery, PicturesOfTheDocsAreItsOwn)
{
    size_t pictures = 0;
    for (const auto& entry : fs::directory_iterator(PROJECT_FOLDER "/docs/images")) {
        const fs::path made = folder() / entry.path().filename();
        if (!fs::exists(made))
            continue;
        SCOPED_TRACE(made.filename());
        pictures++;
        if (made.extension() != ".png") {
            EXPECT_TRUE(read_file(entry.path()) == read_file(made));
            continue;
        }
        const Image kept = read_png(entry.path()), drawn = read_png(made);
        ASSERT_EQ(kept.bytes.size(), drawn.bytes.size());
        EXPECT_EQ(kept.width, drawn.width);
        EXPECT_EQ(kept.least_lettering, drawn.least_lettering);
        size_t differing = 0;
        for (size_t i = 0; i < kept.bytes.size(); i++)
            differing += kept.bytes[i] != drawn.bytes[i];
        EXPECT_LE(differing, kept.bytes.size() / 10000);
    }
    EXPECT_GE(pictures, 6u);
}

TEST_F(Gallery, LetteringIsReadableWherePicturesAreScrolled)
{
    const std::string page = read_file(folder() / "index.html");
    size_t pictures = 0;
    for (size_t at = page.find("<img "); at != std::string::npos; at = page.find("<img ", at + 1)) {
        const std::string shown = page.substr(at, page.find('>', at) - at);
        const Lettered picture = read_lettered(folder() / *quoted_after(shown, "src=\"").begin());
        const std::string least = "style=\"--least: ";
        const size_t wide = shown.find(least);
        const double width = wide == std::string::npos ? 320 : std::stod(shown.substr(wide + least.size()));
        EXPECT_GE(picture.least_lettering * width / picture.width, 9) << shown;
        EXPECT_LE(width, picture.width) << shown;
        pictures++;
    }
    EXPECT_GE(pictures, 20u);
}

TEST_F(Gallery, NothingRefersToTheNetwork)
{
    const std::string svg_name = "http://www.w3.org/2000/svg"; // the name of the format; nothing is fetched from there
    for (const char* ending : {".html", ".svg"}) {
        for (const std::string& name : files_ending(ending)) {
            std::string text = without_code(read_file(folder() / name));
            if (const size_t at = text.find(svg_name); at != std::string::npos)
                text.erase(at, svg_name.size());
            for (const char* sign : {"http", "//", "@import", "url(", "<script"})
                EXPECT_EQ(text.find(sign), std::string::npos) << name << ": " << sign;
        }
    }
}

TEST_F(Gallery, TellsWhenItCannotWrite)
{
    const Outcome run = run_gallery("/dev/null/nowhere");
    EXPECT_EQ(run.status, 1);
    EXPECT_THAT(run.printed, HasSubstr("/dev/null/nowhere"));
}

TEST_F(Gallery, TellsHowItIsCalled)
{
    for (const char* arguments : {"--help", "one two"}) {
        const Outcome run = run_gallery(arguments);
        EXPECT_EQ(run.status, 2);
        EXPECT_THAT(run.printed, HasSubstr("usage: gallery"));
    }
}

} // namespace
} // namespace korvale::test
