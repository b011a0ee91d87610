#pragma once

#include <functional>
#include <string>

namespace gallery {

/// Where a link or a picture of a page leads, or nothing where its words stand alone.
using Links = std::function<std::string(const std::string& target)>;

/// A page of docs/ as one file of HTML: headings and places `<a id>`, which links may lead to, paragraphs, lists,
/// tables, blocks of code, and links, pictures, code and bold text within them. It begins with the way back to the
/// gallery.
std::string html_of_markdown(const std::string& text, const Links& links);

} // namespace gallery
