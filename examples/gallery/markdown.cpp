#include "markdown.h"

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <sstream>
#include <vector>

#include "svg.h"

namespace gallery {
namespace {

const char* const kStyle = R"(<style>
:root { color-scheme: light dark; }
body { max-width: 50em; margin: 0 auto; padding: 1rem; font: 17px/1.55 "DejaVu Sans", Verdana, sans-serif;
       overflow-wrap: anywhere; }
pre, table { display: block; overflow-x: auto; overflow-wrap: normal; }
pre { padding: .7rem; border: 1px solid #7a828a; }
img { max-width: 100%; height: auto; }
a { color: #2b6cb0; }
@media (prefers-color-scheme: dark) { a { color: #7fb2e5; } }
:focus-visible { outline: 3px solid #2b6cb0; outline-offset: 2px; }
td, th { padding: .2rem .7rem; border: 1px solid #7a828a; text-align: left; }
</style>
)";

// Code, bold text, places, links and pictures of a piece of text.
std::string inline_html(const std::string& text, const Links& links)
{
    std::string out;
    for (size_t i = 0; i < text.size();) {
        size_t end = std::string::npos;
        if (text[i] == '\\' && i + 1 < text.size()) {
            out += escaped(text.substr(i + 1, 1));
            i += 2;
        } else if (text.compare(i, 7, "<a id=\"") == 0 && (end = text.find("></a>", i)) != std::string::npos) {
            out += "<span" + text.substr(i + 2, end - i - 2) + "></span>"; // a place is no link
            i = end + 5;
        } else if (text[i] == '`' && (end = text.find("`", i + 1)) != std::string::npos) {
            out += "<code>" + escaped(text.substr(i + 1, end - i - 1)) + "</code>";
            i = end + 1;
        } else if (text.compare(i, 2, "**") == 0 && (end = text.find("**", i + 2)) != std::string::npos) {
            out += "<strong>" + inline_html(text.substr(i + 2, end - i - 2), links) + "</strong>";
            i = end + 2;
        } else if (text[i] == '*' && i + 1 < text.size() && std::isalpha(uint8_t(text[i + 1])) &&
                   (end = text.find('*', i + 1)) != std::string::npos) {
            out += "<em>" + inline_html(text.substr(i + 1, end - i - 1), links) + "</em>";
            i = end + 1;
        } else if (const bool is_picture = text.compare(i, 2, "![") == 0;
                   (is_picture || text[i] == '[') && (end = text.find("](", i)) != std::string::npos &&
                   text.find(")", end) != std::string::npos) {
            const size_t close = text.find(")", end), from = i + (is_picture ? 2 : 1);
            const std::string to = links(text.substr(end + 2, close - end - 2));
            const std::string words = inline_html(text.substr(from, end - from), links);
            if (to.empty())
                out += words;
            else if (is_picture)
                out += "<img src=\"" + to + "\" alt=\"" + words + "\">";
            else
                out += "<a href=\"" + to + "\">" + words + "</a>";
            i = close + 1;
        } else {
            out += escaped(text.substr(i++, 1));
        }
    }
    return out;
}

// The cells between the bars of a row of a table; a bar may stand in a cell behind a backslash.
std::string row_html(const std::string& line, const char* cell, const Links& links)
{
    std::string out = "<tr>", text;
    for (size_t i = 1; i < line.size(); i++) {
        if (line[i] == '|' && line[i - 1] != '\\') {
            out += "<" + std::string(cell) + ">" + inline_html(text, links) + "</" + cell + ">";
            text.clear();
        } else {
            if (line[i] == '|')
                text.pop_back(); // the backslash
            text += line[i];
        }
    }
    return out + "</tr>\n";
}

// The words of a heading as links name it: small letters, digits and hyphens.
std::string place_of(const std::string& heading)
{
    std::string place;
    for (const char c : heading)
        if (c == ' ')
            place += '-';
        else if (std::isalnum(uint8_t(c)) || c == '-' || c == '_')
            place += char(std::tolower(uint8_t(c)));
    return place;
}

bool is_item(const std::string& line)
{
    return line.starts_with("- ") || (!line.empty() && std::isdigit(line[0]) && line.find(". ") < 4);
}

// What a block goes on with: lines that neither are empty nor begin another one.
bool goes_on(const std::string& line)
{
    return !line.empty() && !is_item(line) && line[0] != '|' && line[0] != '#' && !line.starts_with("```");
}

} // namespace

std::string html_of_markdown(const std::string& text, const Links& links)
{
    std::vector<std::string> lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);)
        lines.push_back(line);
    std::string title = "korvale", body;
    bool has_title = false;
    for (size_t i = 0; i < lines.size();) {
        const std::string& line = lines[i];
        if (line.empty() || line.starts_with("<!--")) {
            i++;
        } else if (line.starts_with("```")) {
            body += "<pre tabindex=\"0\"><code>";
            for (i++; i < lines.size() && !lines[i].starts_with("```"); i++)
                body += escaped(lines[i]) + "\n";
            body += "</code></pre>\n";
            i++;
        } else if (line.starts_with("    ")) {
            body += "<pre tabindex=\"0\"><code>";
            for (; i < lines.size() && (lines[i].starts_with("    ") || lines[i].empty()); i++)
                body += escaped(lines[i].substr(std::min<size_t>(4, lines[i].size()))) + "\n";
            body += "</code></pre>\n";
        } else if (line[0] == '#') {
            const size_t level = std::min<size_t>(line.find(' '), 6);
            const std::string words = inline_html(line.substr(level + 1), links), name = "h" + std::to_string(level);
            if (!has_title)
                title = words;
            has_title = true;
            body += "<" + name + " id=\"" + place_of(line.substr(level + 1)) + "\">" + words + "</" + name + ">\n";
            i++;
        } else if (line[0] == '|') {
            body += "<table tabindex=\"0\">\n";
            for (bool is_head = true; i < lines.size() && lines[i].starts_with("|"); i++)
                if (lines[i].find_first_not_of("|-: ") == std::string::npos && lines[i].find('-') != std::string::npos)
                    is_head = false;
                else if (lines[i].find_first_not_of("| ") != std::string::npos)
                    body += row_html(lines[i], is_head ? "th" : "td", links);
            body += "</table>\n";
        } else if (is_item(line)) {
            const bool is_numbered = line[0] != '-';
            body += is_numbered ? "<ol>\n" : "<ul>\n";
            while (i < lines.size() && is_item(lines[i])) {
                std::string item = lines[i].substr(lines[i].find(' ') + 1);
                for (i++; i < lines.size() && goes_on(lines[i]); i++)
                    item += "\n" + lines[i];
                body += "<li>" + inline_html(item, links) + "</li>\n";
            }
            body += is_numbered ? "</ol>\n" : "</ul>\n";
        } else {
            std::string words = line;
            for (i++; i < lines.size() && goes_on(lines[i]); i++)
                words += "\n" + lines[i];
            body += "<p>" + inline_html(words, links) + "</p>\n";
        }
    }
    return "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
           "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n<title>" +
           title + "</title>\n" + kStyle +
           "</head>\n<body>\n<nav><a href=\"index.html\">korvale gallery</a></nav>\n<main>\n" + body +
           "</main>\n</body>\n</html>\n";
}

} // namespace gallery
