#include "page.h"

#include <cmath>

#include "picture.h"
#include "svg.h"

namespace gallery {
namespace {

const char* const kHead = R"(<!DOCTYPE html>
<html lang="en">
<head>
<meta charset="utf-8">
<meta name="viewport" content="width=device-width, initial-scale=1">
<title>korvale gallery</title>
<style>
:root { color-scheme: light dark; --ink: #22303c; --grey: #5d666f; --line: #e2ded3; --paper: #fbfaf6; --wall: #f1eee6;
        --link: #2b6cb0; }
@media (prefers-color-scheme: dark) {
  :root { --ink: #e6e3da; --grey: #a9b0b6; --line: #3a4149; --paper: #262b31; --wall: #1a1e22; --link: #7fb2e5; }
}
* { box-sizing: border-box; }
body { margin: 0; background: var(--wall); color: var(--ink); font: 17px/1.55 "DejaVu Sans", Verdana, sans-serif; }
.skip { position: absolute; top: -3em; left: 1rem; padding: .2rem .6rem; background: var(--paper); }
.skip:focus { top: .5rem; }
:focus-visible { outline: 3px solid var(--link); outline-offset: 2px; }
main { max-width: 1280px; margin: 0 auto; padding: 2.5rem 1.5rem 4rem; }
h1 { font: 700 2.6rem/1.1 "DejaVu Serif", Georgia, serif; margin: 0 0 .5rem; }
h2 { font: 700 1.6rem/1.2 "DejaVu Serif", Georgia, serif; margin: 3.5rem 0 .4rem; }
p { margin: 0 0 1.2rem; max-width: 46em; color: var(--grey); }
nav { display: flex; flex-wrap: wrap; gap: .4rem 1.2rem; margin: 1rem 0 0; }
a { color: var(--link); text-decoration: none; }
a:hover { text-decoration: underline; }
.pictures { display: grid; grid-template-columns: repeat(2, 1fr); gap: 1.2rem; }
figure { grid-column: span 2; margin: 0; background: var(--paper); border: 1px solid var(--line); border-radius: 6px;
         overflow: hidden; box-shadow: 0 1px 4px rgba(34, 48, 60, .08); }
figure.half { grid-column: span 1; }
img { display: block; width: 100%; height: auto; }
.links { white-space: nowrap; }
.links a { margin-left: .5em; }
figcaption { padding: .7rem 1rem .8rem; border-top: 1px solid var(--line); font-size: .95rem; }
/* Pictures are scrolled sideways where their lettering would be too small to read. */
img { min-width: var(--least, 0); }
figure > a { display: block; overflow-x: auto; }
@media (max-width: 760px) {
  main { padding: 1.5rem 19px 3rem; }
  figure.half { grid-column: span 2; }
}
</style>
</head>
<body>
<a class="skip" href="#scene-1">To the pictures</a>
<main>
<h1>korvale</h1>
<p>Pictures that a host program made with the library, and with nothing else but the language's own library.</p>
)";

constexpr double kReadable = 9;  // pixels per em
constexpr int kNarrowRoom = 320; // pixels for a picture on a screen of 380

std::string anchor(size_t i)
{
    return "scene-" + std::to_string(i + 1);
}

// A link whose words are many times on the page, with a name that is there once.
std::string link(const std::string& to, const std::string& words, const std::string& picture)
{
    return "<a href=\"" + to + "\" aria-label=\"" + words + ": " + to + " for " + picture + "\">" + words + "</a>";
}

std::string figure(const Section& section, const Exhibit& e)
{
    const bool is_half = e.width <= kNarrow;
    const int least = int(std::ceil(kReadable * e.width / e.lettering));
    const std::string sentence = escaped(e.sentence);
    return std::string("<figure") + (is_half ? " class=\"half\"" : "") + "><a href=\"" + e.file + "\"><img src=\"" +
           e.file + "\" width=\"" + std::to_string(e.width) + "\" height=\"" + std::to_string(e.height) + "\"" +
           (least > kNarrowRoom ? " style=\"--least: " + std::to_string(least) + "px\"" : "") + " alt=\"" + sentence +
           "\"></a>\n<figcaption>" + sentence + " <span class=\"links\">" + link(section.source, "its source", e.file) +
           " " + link(section.page, "its page", e.file) + "</span></figcaption></figure>\n";
}

} // namespace

std::string page_text(const std::vector<Section>& sections)
{
    std::string text = kHead;
    text += "<nav aria-label=\"Scenes\">\n";
    for (size_t i = 0; i < sections.size(); i++)
        text += "<a href=\"#" + anchor(i) + "\">" + escaped(sections[i].title) + "</a>\n";
    text += "</nav>\n";
    for (size_t i = 0; i < sections.size(); i++) {
        const Section& section = sections[i];
        text += "<h2 id=\"" + anchor(i) + "\">" + escaped(section.title) + "</h2>\n<p>" + escaped(section.idea);
        for (const Exhibit& e : section.exhibits)
            if (e.width == 0)
                text += " <a href=\"" + e.file + "\">" + escaped(e.file) + "</a>: " + escaped(e.sentence);
        text += "</p>\n<div class=\"pictures\">\n";
        for (const Exhibit& e : section.exhibits)
            if (e.width > 0)
                text += figure(section, e);
        text += "</div>\n";
    }
    return text + "</main>\n</body>\n</html>\n";
}

} // namespace gallery
