"""Writes the headers' comments as a C++ source, so that Python shows them: describe.py OUTPUT HEADER..."""

import pathlib
import re
import sys

NAME = re.compile(
    r"^(?:KORVALE_API [^(]*?(\w+)\(|(?:struct|class) (?:KORVALE_API )?(\w+)[^;]*\{|KORVALE_API extern .*?(\w+);)"
)


def comments(text):
    """Every function and record of a header with the comment above it; functions that follow share one."""
    comment, shared = [], []
    for line in text.splitlines():
        if line.startswith("///"):
            comment.append(line[4:])
            continue
        found = NAME.match(line)
        if found:
            shared = comment or shared
            yield next(filter(None, found.groups())), "\n".join(shared)
        elif not line.strip():
            shared = []
        comment = []


def main(output, *headers):
    entries = {}
    for header in headers:
        entries.update(comments(pathlib.Path(header).read_text()))
    lines = [f'    {{"{name}", R"~~({text})~~"}},' for name, text in sorted(entries.items())]
    pathlib.Path(output).write_text(
        "#include <cstring>\n\n"
        "namespace korvale::raw {\n"
        "const char* described(const char* name);\n"
        "const char* described(const char* name)\n{\n"
        "    static constexpr struct { const char* name; const char* text; } kComments[] = {\n"
        + "\n".join(lines)
        + "\n    };\n"
        "    for (const auto& comment : kComments)\n"
        "        if (std::strcmp(comment.name, name) == 0)\n"
        "            return comment.text;\n"
        '    return "";\n}\n'
        "} // namespace korvale::raw\n"
    )


main(*sys.argv[1:])
