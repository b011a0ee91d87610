#!/usr/bin/env bash
# usage: installed_copy.sh BUILD README
# Installs the library, moves the installed copy elsewhere, and builds and runs the example of the README from there, once
# through the CMake package and once through pkg-config.
set -euo pipefail
build=$1 readme=$2
top=$(mktemp -d)
trap 'rm -rf "$top"' EXIT

cmake --install "$build" --prefix "$top/first" >/dev/null
mv "$top/first" "$top/copy"
mkdir "$top/host"
sed -n '/^```cpp$/,/^```$/{//!p}' "$readme" >"$top/host/host.cpp"
cat >"$top/host/CMakeLists.txt" <<'TEXT'
cmake_minimum_required(VERSION 3.25)
project(host LANGUAGES CXX)
find_package(korvale 1.0 REQUIRED)
add_executable(host host.cpp)
target_link_libraries(host PRIVATE korvale::korvale)
TEXT
cat >"$top/expected" <<'TEXT'
-0.5 -0.5
4.5 -0.5
4.5 4.5
-0.5 4.5
TEXT

check() { # a program, by the way it was built
    diff "$top/expected" <("$1") || { echo "the program built with $2 prints something else (>)"; exit 1; }
    if ldd "$1" | grep korvale | grep -v " => $top/copy/"; then
        echo "the program built with $2 does not use the installed copy"
        exit 1
    fi
}

cmake -S "$top/host" -B "$top/host/build" -G Ninja -DCMAKE_PREFIX_PATH="$top/copy" >/dev/null
cmake --build "$top/host/build" >/dev/null
check "$top/host/build/host" "the CMake package"

flags=$(PKG_CONFIG_PATH=$(dirname "$(find "$top/copy" -name korvale.pc)") pkg-config --cflags --libs korvale)
# shellcheck disable=SC2086 # the flags are several words
g++ "$top/host/host.cpp" $flags -Wl,-rpath,"$top/copy/lib" -o "$top/host/host"
check "$top/host/host" pkg-config
