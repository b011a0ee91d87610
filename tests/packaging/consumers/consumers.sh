#!/usr/bin/env bash
# usage: consumers.sh CASE SOURCE BUILD WORK [COMPILER]
# Builds host programs in one of the ways a host may take (see the functions below) and fails unless each prints the
# expected bits. SOURCE is the library's source tree, BUILD a tree it was built in, WORK a folder for all that is made.
# The case `install` comes first; `found`, `by_flags`, `from_c` and `opened` use what it installs.
set -euo pipefail
export LC_ALL=C
case=$1 source=$2 build=$3 work=$4 compiler=${5:-g++}
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
copy="$work/a moved place"
mine="$work/$case-${compiler##*/}"
mkdir -p "$work"
rm -rf "$mine" "$mine-installed"

fail() {
    echo "consumers: $*"
    exit 1
}

# Runs every program and compares what it prints.
expect_bits() {
    local program
    for program; do
        diff "$here/expected.txt" <("$program") || fail "$program prints something else (>)"
    done
}

configure() { # a project, in a folder of this case's own; further arguments go to cmake
    local project=$1
    shift
    cmake -S "$here/$project" -B "$mine" -G Ninja -DCMAKE_CXX_COMPILER="$compiler" "$@" >"$mine.log" 2>&1
}

build() {
    cmake --build "$mine" -j2 >>"$mine.log" 2>&1 || fail "$(cat "$mine.log")"
}

# Whether cmake's last words contain a sentence, wherever it broke the lines.
log_says() {
    tr -s ' \n' ' ' <"$mine.log" | grep -F "$1" >/dev/null
}

# The command that compiled a source file.
command_of() {
    grep -F '"command"' "$mine/compile_commands.json" | grep -F "$1" | head -1
}

# Into a folder whose name has a space, moved away from there, and read-only.
install() {
    [[ ! -e $work ]] || chmod -R u+w "$work"
    rm -rf "$work"
    mkdir -p "$work"
    cmake --build "$build" --target korvale_static -j2 >/dev/null
    cmake --install "$build" --prefix "$work/a first place" >/dev/null
    mv "$work/a first place" "$copy"
    if grep -rFl -e "$work" -e "$source" -e "$build" "$copy" --include='*.cmake' --include='*.pc' --include='*.h'; then
        fail "the files above name a place"
    fi
    cmp "$source/LICENSE" "$copy/share/doc/korvale/LICENSE" || fail "the licence is not installed"
    chmod -R a-w "$copy"
}

# find_package, shared and static, C++14 to C++23.
found() {
    configure found -DCMAKE_PREFIX_PATH="$copy" -DSTANDARDS="14;17;20;23" || fail "$(cat "$mine.log")"
    build
    expect_bits "$mine"/host_*_??
    [[ $("$mine/face_20") == "4 of 4.5" && $("$mine/face_23") == "4 of 4.5" ]] || fail "korvale.hpp gives another border"
    ldd "$mine/host_korvale_14" | grep -F " => $copy/" >/dev/null || fail "$mine/host_korvale_14 uses another library"
    if ldd "$mine/host_static_14" | grep korvale; then
        fail "the library is not inside $mine/host_static_14"
    fi
}

# pkg-config and a compiler by hand; the static program has nothing but itself.
by_flags() {
    local standard flags program
    export PKG_CONFIG_PATH="$copy/lib/pkgconfig"
    mkdir -p "$mine"
    flags="-Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror \"$here/host.cpp\""
    for standard in 14 17 20 2b; do
        program="$mine/host_$standard"
        eval "$compiler -std=c++$standard $flags -o '$program' $(pkg-config --cflags --libs korvale) -Wl,-rpath,'$copy/lib'"
        eval "$compiler -std=c++$standard -DHOST_INCLUDES_BY_FOLDER $flags -static -o '$program.static'" \
            "$(pkg-config --static --cflags --libs korvale)"
    done
    expect_bits "$mine"/host_*

    eval "$compiler -std=c++17 -fsyntax-only '$here/face_host.cpp' $(pkg-config --cflags korvale)" 2>"$mine/refused" &&
        fail "korvale.hpp does not say which language it wants"
    grep -F 'korvale.hpp is for C++20' "$mine/refused" >/dev/null || fail "$(head -3 "$mine/refused")"
}

# A C compiler alone: find_package in a project without C++, and pkg-config, shared and static.
from_c() {
    local program
    CXX=/bin/false cmake -S "$here/found_from_c" -B "$mine" -G Ninja -DCMAKE_C_COMPILER="$compiler" \
        -DCMAKE_PREFIX_PATH="$copy" >"$mine.log" 2>&1 || fail "$(cat "$mine.log")"
    build
    export PKG_CONFIG_PATH="$copy/lib/pkgconfig"
    compile_c() { # flags, and what to ask of pkg-config
        eval "$compiler -std=c99 -pedantic-errors -Wall -Wextra -Wconversion -Werror '$here/host.c' $1" \
            "$(pkg-config $2 korvale)"
    }
    compile_c "-o '$mine/by_flags' -Wl,-rpath,'$copy/lib'" "--cflags --libs"
    compile_c "-o '$mine/by_flags_static' -static" "--static --cflags --libs"
    compile_c "-o '$mine/by_flags_inside' -L$(pkg-config --variable=libdir korvale) -Wl,-u,korvale_second_stage \
        -Wl,-Bstatic -lkorvale -lkorvale-platform -lstdc++ -Wl,-Bdynamic -lm" --cflags
    for program in "$mine"/{host_c,host_static,by_flags,by_flags_inside,by_flags_static}; do
        diff - <("$program") <<'TEXT' || fail "$program prints something else (>)"
5 of 4.5
korvale_offset: outline must be given, but it is null
TEXT
    done
    ldd "$mine/host_c" | grep -F " => $copy/" >/dev/null || fail "$mine/host_c uses another library"
    if ldd "$mine/host_static" | grep korvale; then
        fail "the library is not inside $mine/host_static"
    fi
    if ldd "$mine/by_flags_inside" | grep -E 'korvale|stdc'; then
        fail "the library or the C++ runtime is not inside $mine/by_flags_inside"
    fi
}

# A host that knows the library at run time only.
opened() {
    mkdir -p "$mine"
    "$compiler" "$here/opener.cpp" -o "$mine/opener" -ldl
    if ldd "$mine/opener" | grep korvale; then
        fail "the library is there before it is opened"
    fi
    [[ $("$mine/opener" "$copy/lib/libkorvale.so.1") == 13 ]] || fail "the opened library counts differently"
}

# add_subdirectory, below a project with folders of the same names and without a build type.
beside() {
    configure beside -DKORVALE_SOURCE="$source" || fail "$(cat "$mine.log")"
    build
    expect_bits "$mine"/host_*
    [[ $(command_of border/sweep.cpp) == *' -O'[23]' '* ]] || fail "the library is not optimised"
    [[ $(command_of beside.cpp) != *' -O'[1-3]' '* ]] || fail "the library's build type became the parent's"
    cmake --install "$mine" --prefix "$mine/installed" >/dev/null
    [[ ! -e $mine/installed/lib ]] || fail "the parent installs the library without wanting to"
}

# FetchContent, below a project that does without exact arithmetic and has release flags of its own.
fetched() {
    configure fetched -DKORVALE_SOURCE="$source" -DCMAKE_BUILD_TYPE=Release -DCMAKE_CXX_FLAGS=-ffast-math \
        -DCMAKE_CXX_FLAGS_RELEASE="-Ofast -DOF_THE_PARENT" || fail "$(cat "$mine.log")"
    build
    expect_bits "$mine"/host_*
    [[ $(command_of border/sweep.cpp) == *-DOF_THE_PARENT* ]] || fail "the parent's release flags are lost"
    "$compiler" "$here/opener.cpp" -o "$mine/opener" -ldl
    "$mine/opener" "$(find "$mine" -name libkorvale.so.1)" || fail "opened, the library changes its host's arithmetic"
}

# A host's own platform layer in place of korvale's: a file with a number at its end and a soname, and one without.
host_layer() {
    local layer="$work/the host's layer/libhost-layer.so.1"
    mkdir -p "${layer%/*}"
    configure "$(realpath --relative-to "$here" "$source")" -DKORVALE_HOST_LAYER="$layer.missing" &&
        fail "a layer that is not there is no error"
    log_says "there is no file $layer.missing" || fail "$(cat "$mine.log")"
    rm -rf "$mine"

    "$compiler" -shared -fPIC -I"$source" "$source/platform/layer.cpp" -o "$layer" -Wl,-soname,libhost-layer.so.1
    stands_on "$layer"
    layer=${layer%.1}
    "$compiler" -shared -fPIC -I"$source" "$source/platform/layer.cpp" -o "$layer"
    stands_on "$layer"
}

# Programs of a library for this layer link, ask for it by the name of its file, and start.
stands_on() {
    local layer=$1 name=${1##*/} library=$work/$case-library installed=$mine-installed flags
    local mine=$library
    configure "$(realpath --relative-to "$here" "$source")" -DKORVALE_HOST_LAYER="$layer" -DCMAKE_BUILD_TYPE=Debug \
        -DCMAKE_CXX_FLAGS_DEBUG=-O0 || fail "$(cat "$mine.log")"
    build
    rm -rf "$installed"
    cmake --install "$mine" --prefix "$installed" >/dev/null
    if grep -rF "$work" "$installed" --include='*.cmake' --include='*.pc'; then
        fail "the installed files name a place"
    fi
    readelf -dW "$installed/lib/libkorvale.so.1" | grep -F 'NEEDED' | grep -F "[$name]" >/dev/null ||
        fail "the library does not ask for the layer by its name"
    if readelf -dW "$installed/lib/libkorvale.so.1" | grep -F "$work"; then
        fail "the installed library names a place"
    fi
    [[ ! -e $installed/lib/libkorvale-platform.so ]] || fail "korvale's own layer is installed as well"

    mine=$work/$case-found
    rm -rf "$mine"
    configure found -DCMAKE_PREFIX_PATH="$installed" -DSTANDARDS=14 && fail "found without the layer it needs"
    log_says 'say where that is with -DKORVALE_HOST_LAYER=FILE' || fail "$(cat "$mine.log")"
    configure found -DCMAKE_PREFIX_PATH="$installed" -DSTANDARDS=14 -DKORVALE_HOST_LAYER="$layer" ||
        fail "$(cat "$mine.log")"
    build
    expect_bits "$mine"/host_*_??

    export PKG_CONFIG_PATH=$installed/lib/pkgconfig
    [[ $(pkg-config --variable=layer korvale) == "$name" ]] || fail "pkg-config does not name the layer"
    flags=$(pkg-config --cflags --libs korvale)
    eval "$compiler '$here/host.cpp' -o '$mine/by_flags' -L\"${layer%/*}\" $flags" \
        "-Wl,-rpath,'$installed/lib' -Wl,-rpath,\"${layer%/*}\""
    expect_bits "$mine/by_flags"
}

"$case"
