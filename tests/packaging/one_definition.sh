#!/usr/bin/env bash
# usage: one_definition.sh COMPILER ROOT FOLDER SOURCE...
# Fails where two sources of the library give different meanings to one name: compiles all of them for link-time
# optimisation, without optimising, and lets the linker compare their types. Two types of one name in an unnamed
# namespace are none.
set -euo pipefail
compiler=$1 root=$2 folder=$3
shift 3
rm -rf "$folder"
mkdir -p "$folder/library" "$folder/wrong"

compile=("$compiler" -std=c++20 -O0 -flto -ffp-contract=off -fPIC "-I$root"
    -include "$root/platform/internal/module_start.h")
links() {
    "$compiler" -O0 -flto -r -flinker-output=rel -Wodr -Werror=odr "$1"/*.o -o "$1/all"
}

# What this test is about is found where it is.
echo 'struct Edges { int first; }; int one(Edges& e) { return e.first; }' >"$folder/wrong/one.cpp"
echo 'struct Edges { double first; }; double two(Edges& e) { return e.first; }' >"$folder/wrong/two.cpp"
for name in one two; do
    "${compile[@]}" -c "$folder/wrong/$name.cpp" -o "$folder/wrong/$name.o"
done
if links "$folder/wrong" 2>/dev/null; then
    echo "two types of one name were not found, so this test would prove nothing"
    exit 1
fi

for source; do
    name=${source#"$root/"}
    printf '%s\0' -c "$source" -o "$folder/library/${name//\//_}.o"
done | xargs -0 -n 4 -P "$(nproc)" "${compile[@]}"
links "$folder/library"
rm -rf "$folder"
