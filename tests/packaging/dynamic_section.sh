#!/usr/bin/env bash
# usage: dynamic_section.sh LIBRARY SONAME NEEDED...
# Fails unless the library has this name and needs these libraries, no others and none less.
set -euo pipefail
export LC_ALL=C
library=$1 soname=$2
shift 2

entries=$(readelf -dW "$library")
found() { # the bracketed values of the entries of a kind, sorted
    sed -nE "s/.*\($1\).*\[(.*)\]/\1/p" <<<"$entries" | sort
}

[[ $(found SONAME) == "$soname" ]] || { echo "$library is called $(found SONAME), not $soname"; exit 1; }
diff <(printf '%s\n' "$@" | sort) <(found NEEDED) || { echo "$library needs other libraries than listed (<)"; exit 1; }
