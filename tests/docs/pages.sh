#!/usr/bin/env bash
# usage: pages.sh INSTALLED BUILD WORK PAGE
# Compiles and runs the code of a page as a reader would, in the order of the page, against an installed copy of the
# library. Fails where something does not compile, fails, or prints other than the page says.
#
# A block of ```cpp with a main is a program; one without is "block.h" to around/PAGE_N.cpp, N counting such blocks
# from 1; one of ```c is a program in C99. A block of ```text that follows is what it prints. A comment
# <!-- file: NAME --> before a block writes it to that file instead, and <!-- of: NAME --> says that it is part of a file
# of the sources, which has tests of its own. The lines of ```sh are commands; blocks without a language are left alone,
# and so are ```python and what it prints, which python/tests/test_pages.py runs.
set -euo pipefail
export LC_ALL=C
shopt -s nullglob
installed=$1 build=$2 work=$3 page=$4
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
name=$(basename "$page" .md)
work=$work/$name
rm -rf "$work"
mkdir -p "$work/blocks" "$work/place/home"

fail() {
    echo "$page: $*"
    exit 1
}

# Each block as NN.language, with its file's name in NN.file.
awk -v folder="$work/blocks" '
    function start(language) { block = sprintf("%s/%03d", folder, ++count); out = block "." language; printf "" > out }
    !inside && /^<!-- file: .* -->$/ { file = $3; next }
    !inside && /^<!-- of: .* -->$/ { part = $3; next }
    !inside && /^```/ {
        language = substr($0, 4)
        inside = 1
        start(language == "" ? "plain" : language)
        if (file != "") print file > (block ".file")
        if (part != "") print part > (block ".part")
        file = part = ""
        next
    }
    inside && /^```$/ { inside = 0; close(out); next }
    inside { print > out }
' "$page"

# In place of the script that a reader has at hand: installs what this build made.
cat >"$work/place/dev" <<TEXT
#!/bin/sh
[ "\$1" = install ] && cmake --install '$build' --prefix "\$2" >/dev/null
TEXT
chmod +x "$work/place/dev"
mkdir "$work/place/korvale"
# In place of the sources, whose own targets the tests of consumers build below a project.
echo "find_package(korvale REQUIRED GLOBAL PATHS \"$installed\" NO_DEFAULT_PATH)" >"$work/place/korvale/CMakeLists.txt"
ln -s "$here/../../examples" "$work/place/examples"
cd "$work/place"
export PYTHONDONTWRITEBYTECODE=1 # beside those
export HOME=$work/place/home

pkg_config=$installed/lib/pkgconfig
compile() { # a source file and further flags, to ./program
    eval "g++ ${2:-} -std=c++20 -O1 -Wall -Wextra -Werror -Wno-unused-variable -Wno-misleading-indentation '$1' -o program" \
        "$(PKG_CONFIG_PATH=$pkg_config pkg-config --cflags --libs korvale) -Wl,-rpath,'$installed/lib'" ||
        fail "block $blocks does not compile"
}

blocks=0 fragments=0 of_python=0
for block in "$work"/blocks/*.*; do
    language=${block##*.}
    case $language in
    file | part | plain) continue ;;
    python)
        of_python=1
        continue
        ;;
    text) ((of_python)) && continue ;;
    *) of_python=0 ;;
    esac
    blocks=$((blocks + 1))
    if [[ -e ${block%.*}.file ]]; then
        file=$(<"${block%.*}.file")
        mkdir -p "$(dirname "$file")"
        cp "$block" "$file"
        continue
    fi
    if [[ -e ${block%.*}.part ]]; then
        file=$here/../../$(<"${block%.*}.part")
        [[ $(<"$file") == *"$(<"$block")"* ]] || fail "this is not in $file: $(cat "$block")"
        continue
    fi
    case $language in
    cpp)
        if grep -q '^int main(' "$block"; then
            compile "$block"
        else
            fragments=$((fragments + 1))
            cp "$block" "$work/block.h"
            compile "$here/around/${name}_$fragments.cpp" "-I'$work'"
        fi
        LD_LIBRARY_PATH=$installed/lib ./program >"$work/printed" || fail "this fails: $(cat "$block")"
        ;;
    c)
        eval "${CC:-gcc} -x c -std=c99 -pedantic-errors -Wall -Wextra -Wconversion -Werror '$block' -x none -o program" \
            "$(PKG_CONFIG_PATH=$pkg_config pkg-config --cflags --libs korvale) -Wl,-rpath,'$installed/lib'" ||
            fail "block $blocks does not compile"
        ./program >"$work/printed" || fail "this fails: $(cat "$block")"
        ;;
    sh)
        # What one block exports, the next ones have.
        bash -euo pipefail -c '[[ ! -e $1 ]] || . "$1"; . "$2"; export -p >"$1"' sh "$work/exports" "$block" \
            >"$work/printed" 2>"$work/errors" ||
            fail "these commands fail: $(cat "$block" "$work/printed" "$work/errors")"
        ;;
    text)
        diff "$block" "$work/printed" || fail "something else is printed (>)"
        ;;
    *) fail "what is a block of '$language'?" ;;
    esac
done
echo "$page: $blocks blocks of code"
