#!/usr/bin/env bash
# page_programs.sh PAGE SOURCES LIBRARIES: compiles every cpp block of a page as a program, with the headers below
# SOURCES and the libraries in LIBRARIES, and compares what it prints with the text block that follows.
set -euo pipefail
page=$1 sources=$2 libraries=$3
top=$(mktemp -d)
trap 'rm -rf "$top"' EXIT

awk -v top="$top" '
    /^```cpp$/ { n++; file = top "/" n ".cpp"; next }
    /^```text$/ { file = top "/" n ".txt"; next }
    /^```$/ { file = ""; next }
    file { print > file }
' "$page"
count=0
for program in "$top"/*.cpp; do
    name=${program%.cpp}
    "${CXX:-c++}" -std=c++20 -Wall -Wextra -I"$sources/include" "$program" -L"$libraries" -lkorvale -lkorvale-platform \
        -Wl,-rpath,"$libraries" -o "$name"
    diff "$name.txt" <("$name") || { echo "$page: program $(basename "$name") prints something else (>)"; exit 1; }
    count=$((count + 1))
done
((count > 0)) || { echo "$page has no program"; exit 1; }
