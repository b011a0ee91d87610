#!/usr/bin/env bash
# usage: dev.sh SOURCE
# What the script `dev` says to wrong arguments, and where it puts things. Nothing is built: cmake and the packages are
# played by stand-ins. Runs a copy of the scripts in a folder whose name has a space.
set -euo pipefail
source=$1
top=$(mktemp -d)
trap 'rm -rf "$top"' EXIT
project="$top/a project"
mkdir -p "$project" "$top/bin" "$top/elsewhere"
cp -r "$source"/{dev,packaging,tools} "$project"

cat >"$top/bin/dpkg-query" <<'TEXT'
#!/bin/sh
echo "ii "
TEXT
# Installs one file, as cmake would with its manifest.
cat >"$top/bin/cmake" <<'TEXT'
#!/bin/sh
[ "$1" = --install ] || exit 0
mkdir -p "$4/include" "$2"
echo library >"$4/include/korvale.h"
printf '%s' "$4/include/korvale.h" >"$2/install_manifest.txt"
TEXT
chmod +x "$top/bin/dpkg-query" "$top/bin/cmake"
export PATH=$top/bin:$PATH
cd "$top/elsewhere"
wrong=0

# The arguments of dev are refused with a sentence on one line that contains the first argument.
refuses() {
    local sentence=$1 said
    shift
    if said=$("$project/dev" "$@" 2>&1 >/dev/null); then
        echo "dev $*: is not refused"
        wrong=1
    elif [[ $(head -1 <<<"$said") != *"$sentence"* ]]; then
        echo "dev $*: says '$said' and not '$sentence'"
        wrong=1
    fi
}

# dev succeeds, and makes the file.
makes() {
    local file=$1
    shift
    "$project/dev" "$@" >/dev/null || wrong=1
    [[ -e $file ]] || { echo "dev $*: does not make $file"; wrong=1; }
}

refuses "there is no task 'nothing'" nothing
refuses "fuzz takes a number of seconds, not 'abc'" fuzz abc
refuses "abi takes 'update' or nothing, not 'store'" abi store
refuses "golden takes levels of optimisation, O0 to O3, not 'O9'" golden O0 O9
refuses "there is no check 'nothing'; there are: lint test" check lint nothing
refuses "lint takes no more than 0 argument(s), and was given: a b" lint a b
refuses "build takes no more than 1 argument(s)" build bench fuzz
refuses "bench takes no more than 2 argument(s)" bench a b c
refuses "bare takes the last commit, and these sources are no clone" bare
refuses "one folder is wanted" install --prefix
refuses "one folder is wanted" install --where there
refuses "one folder is wanted" install one two
refuses "nothing in $top/elsewhere/none that 'install' put there" uninstall none
touch "$top/elsewhere/file"
refuses "$top/elsewhere/file/below cannot be made" install file/below
refuses "$project has the sources; name another folder" install "$project"
(cd "$project" && refuses "has the sources" install . && exit $wrong) || wrong=1

makes "$top/elsewhere/relative path/include/korvale.h" install "relative path"
makes "$top/elsewhere/two/include/korvale.h" install --prefix two
makes "$top/elsewhere/three/include/korvale.h" install --prefix=three
makes "$top/absolute/include/korvale.h" install "$top/absolute"
mv "$top/absolute" "$top/moved"
touch "$top/moved/include/of-somebody-else.h"
"$project/dev" uninstall "$top/moved" >/dev/null
[[ $(cd "$top/moved" && find . | sort | paste -sd' ') == ". ./include ./include/of-somebody-else.h" ]] ||
    { echo "dev uninstall leaves or takes too much: $(find "$top/moved")"; wrong=1; }
"$project/dev" uninstall two >/dev/null
[[ -z $(ls -A two) ]] || { echo "dev uninstall leaves something"; wrong=1; }

for arguments in -h --help help "install -h" "fuzz --help"; do
    # shellcheck disable=SC2086 # several words
    "$project/dev" $arguments | grep -F './dev TASK' >/dev/null || { echo "dev $arguments: no help"; wrong=1; }
done
ln -s "$project/dev" "$top/link to dev"
"$top/link to dev" install linked >/dev/null
[[ -e $top/elsewhere/linked/include/korvale.h && -e $project/build/release/install_manifest.txt ]] ||
    { echo "dev does not find its project through a link"; wrong=1; }
exit $wrong
