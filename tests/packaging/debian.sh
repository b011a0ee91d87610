#!/usr/bin/env bash
# usage: debian.sh SOURCE
# Fails unless the Debian packaging lists exactly the exported names of both libraries, and the changelogs begin with the
# version of the header.
set -euo pipefail
export LC_ALL=C
cd "$1"
version=$(sed -n 's/^#define KORVALE_VERSION "\(.*\)"/\1/p' include/korvale.h)
wrong=0

listed() { # the names with a symbol version, without tags and quotes
    sed -nE "s/^ (\(c\+\+\)\")?(.*)@$1\"? [0-9.]+$/\2/p" packaging/debian/libkorvale1.symbols | grep -v '^KORVALE_' | sort
}
differ() {
    echo "packaging/debian/libkorvale1.symbols (>) has other names, or $1 (<) is not sorted by bytes"
    wrong=1
}
diff <(grep -vE '^(#|$)' packaging/exports.txt | sort) <(listed 'KORVALE_[0-9.]+') || differ packaging/exports.txt
awk '/^(#|$)/ { last = ""; next } $0 < last { exit 1 } { last = $0 }' packaging/exports.txt || differ packaging/exports.txt
diff packaging/exports-platform.txt <(listed Base) || differ packaging/exports-platform.txt

[[ $(head -1 packaging/debian/changelog) == "korvale ($version) "* ]] ||
    { echo "packaging/debian/changelog does not begin with $version"; wrong=1; }
grep -qE "^## $version, [0-9]{4}-[0-9]{2}-[0-9]{2}$" CHANGELOG.md || { echo "CHANGELOG.md has no dated $version"; wrong=1; }
exit $wrong
