#!/usr/bin/env bash
# installed.sh BUILD TASKS: installs the library and builds every program of a folder from the installed copy alone, as
# its reader would, with the flags that pkg-config names. Each has to print what stands in the folder's printed/.
set -euo pipefail
build=$1 tasks=$2
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
top=$(mktemp -d)
trap 'rm -rf "$top"' EXIT

cmake --install "$build" --prefix "$top/copy" >/dev/null
PKG_CONFIG_PATH=$(dirname "$(find "$top/copy" -name korvale.pc)")
export PKG_CONFIG_PATH
libraries=$(pkg-config --variable=libdir korvale)
count=0
for source in "$tasks"/*.cpp; do
    name=$(basename "$source" .cpp)
    wc -l <"$source" | { read -r lines; ((lines < 80)) || { echo "$source has $lines lines"; exit 1; }; }
    if [[ $name == host_layer ]]; then
        # shellcheck disable=SC2046 # the flags are several words
        "${CXX:-c++}" -std=c++20 "$source" $(pkg-config --cflags korvale) -rdynamic -ldl -o "$top/$name"
        "$here/prints.sh" "$tasks/printed/$name.txt" "$top/$name" "$libraries/libkorvale.so.1"
    else
        # shellcheck disable=SC2046
        "${CXX:-c++}" -std=c++20 "$source" $(pkg-config --cflags --libs korvale) -Wl,-rpath,"$libraries" -pthread \
            -o "$top/$name"
        "$here/prints.sh" "$tasks/printed/$name.txt" "$top/$name"
    fi
    count=$((count + 1))
done
((count >= 14)) || { echo "only $count programs in $tasks"; exit 1; }
echo "$count programs print what they should"
