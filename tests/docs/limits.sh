#!/usr/bin/env bash
# usage: limits.sh SOURCES
# Every known limit has a place of its own, which its number in the index of the page leads to, and what pages call
# limit N leads to the place of limit N.
set -euo pipefail
export LC_ALL=C
cd "$1"
numbers=$(sed -n 's/^\*\*\([0-9]*\)\. .*/\1/p' docs/limits.md | sort -n)
[[ $numbers == "$(seq "$(wc -l <<<"$numbers")")" ]] || { echo "limits: the numbers leave gaps" && exit 1; }
for number in $numbers; do
    grep -qF "[$number](#limit-$number)" docs/limits.md &&
        sed -n "/^<a id=\"limit-$number\">/{n;p;}" docs/limits.md | grep -q "^\*\*$number\. " ||
        { echo "limits: limit $number has no place or no link in the index" && exit 1; }
done
links=$(grep -oE '\[[^]]*\]\([^)]*limits\.md[^)]*\)' README.md SECURITY.md docs/*.md docs/inside/*.md)
wrong=$(grep -E '\[([Ll]imits? )?[0-9]' <<<"$links" | grep -vE '\[([Ll]imit )?([0-9]+)\]\([^#]*limits\.md#limit-\2\)' || true)
[[ -z $wrong ]] || { printf 'limits: these links lead elsewhere\n%s\n' "$wrong" && exit 1; }
echo "limits: $(wc -l <<<"$numbers") limits, $(grep -c '#limit-' <<<"$links") links to them"
