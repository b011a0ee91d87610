#pragma once

#include <string>

namespace gallery {

/// A page of docs/ as one file of HTML: headings, paragraphs, lists, tables, blocks of code, and code and bold text
/// within them. Links and pictures are their words alone.
std::string html_of_markdown(const std::string& text);

} // namespace gallery
