#include "scene.h"

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <stdexcept>

#include <unistd.h>

#include "markdown.h"
#include "png.h"

namespace gallery {
namespace {

std::string read(const std::filesystem::path& file)
{
    std::ifstream in(file, std::ios::binary);
    if (!in)
        throw std::runtime_error("cannot read " + file.string());
    return {std::istreambuf_iterator<char>(in), {}};
}

// The file of a page of docs/ as the gallery has it.
std::string page_file(std::filesystem::path page)
{
    std::string file = page.replace_extension(".html").string();
    std::ranges::replace(file, '/', '-');
    return file;
}

} // namespace

Gallery::Gallery(std::filesystem::path data, std::filesystem::path out)
    : data_(std::move(data)), out_(std::move(out)), sans_(data_ / "sans.txt")
{
    std::filesystem::create_directories(out_ / "images");
}

double Gallery::seconds() const
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - begun_).count();
}

void Gallery::begin(const Scene& scene)
{
    begun_ = std::chrono::steady_clock::now();
    report(scene.title);
    const std::string source = std::string(scene.source) + ".txt"; // which every browser shows
    copy(data_ / ".." / "gallery" / "scenes" / scene.source, source);
    sections_.push_back({scene.title, scene.idea, source, page_file(scene.page), {}});
}

void Gallery::copy(const std::filesystem::path& file, const std::string& name)
{
    const std::string content = read(file);
    write(name, content.data(), content.size());
    report("  " + name);
}

// The pages of the scenes and all pages and pictures that they lead to.
void Gallery::write_pages()
{
    const std::filesystem::path docs = data_ / ".." / ".." / "docs";
    std::vector<std::filesystem::path> pages; // below docs/, each once
    const auto add = [&](const std::filesystem::path& page) {
        if (std::ranges::find(pages, page) == pages.end())
            pages.push_back(page);
        return page_file(page);
    };
    for (const Section& section : sections_)
        add(std::filesystem::path(section.page).replace_extension(".md"));
    for (size_t i = 0; i < pages.size(); i++) {
        const auto link = [&, folder = pages[i].parent_path()](const std::string& target) -> std::string {
            const size_t hash = std::min(target.find('#'), target.size());
            if (hash == 0)
                return target;
            const std::filesystem::path file = (folder / target.substr(0, hash)).lexically_normal();
            if (*file.begin() == ".." || !exists(docs / file))
                return {};
            if (file.extension() == ".md")
                return add(file) + target.substr(hash);
            if (exists(out_ / file.filename())) // the gallery's own
                return file.filename().string();
            const std::string name = "images/" + file.filename().string();
            copy(docs / file, name);
            return name;
        };
        const std::string text = html_of_markdown(read(docs / pages[i]), link);
        write(page_file(pages[i]), text.data(), text.size());
        report("  " + page_file(pages[i]));
    }
}

void Gallery::write(const std::string& file, const void* bytes, size_t count)
{
    std::ofstream out(out_ / file, std::ios::binary);
    out.write(static_cast<const char*>(bytes), std::streamsize(count));
    if (!out.flush())
        throw std::runtime_error("cannot write " + (out_ / file).string());
}

void Gallery::report(const std::string& line)
{
    if (line_open_)
        std::printf("\r\033[K");
    line_open_ = false;
    std::printf("%s\n", line.c_str());
    std::fflush(stdout);
}

void Gallery::show(const std::string& file, const Picture& picture, const std::string& sentence)
{
    const std::vector<uint8_t> bytes = png_bytes(picture);
    write(file, bytes.data(), bytes.size());
    sections_.back().exhibits.push_back({file, sentence, picture.width(), picture.height(), picture.least_lettering()});
    char line[160];
    std::snprintf(line, sizeof line, "  %-28s %4d x %-4d %5zu kB  %5.2f s", file.c_str(), picture.width(),
                  picture.height(), (bytes.size() + 999) / 1000, seconds());
    report(line);
}

void Gallery::show(const std::string& file, const Svg& drawing, const std::string& sentence)
{
    const std::string text = drawing.content();
    write(file, text.data(), text.size());
    sections_.back().exhibits.push_back({file, sentence, drawing.width(), drawing.height(), drawing.least_lettering()});
    char line[160];
    std::snprintf(line, sizeof line, "  %-28s %4d x %-4d %5zu kB  %5.2f s", file.c_str(), drawing.width(),
                  drawing.height(), (text.size() + 999) / 1000, seconds());
    report(line);
}

void Gallery::attach(const std::string& file, const std::string& content, const std::string& sentence)
{
    write(file, content.data(), content.size());
    sections_.back().exhibits.push_back({file, sentence});
    char line[160];
    std::snprintf(line, sizeof line, "  %-28s             %5zu kB  %5.2f s", file.c_str(),
                  (content.size() + 999) / 1000, seconds());
    report(line);
}

// A terminal gets a line that is written over; anything else, such as a log, gets none.
void Gallery::progress(double done)
{
    static const bool is_terminal = isatty(STDOUT_FILENO) != 0;
    const auto now = std::chrono::steady_clock::now();
    if (!is_terminal || now - shown_ < std::chrono::milliseconds(80))
        return;
    shown_ = now;
    line_open_ = true;
    const int length = 30, filled = int(done * length);
    std::printf("\r  [%s%s] %3.0f %%", std::string(size_t(filled), '=').c_str(),
                std::string(size_t(length - filled), ' ').c_str(), 100 * done);
    std::fflush(stdout);
}

void Gallery::close()
{
    write_pages();
    const std::string text = page_text(sections_);
    write("index.html", text.data(), text.size());
    report("Open " + std::filesystem::absolute(out_ / "index.html").lexically_normal().string());
}

} // namespace gallery
