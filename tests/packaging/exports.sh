#!/usr/bin/env bash
# usage: exports.sh LIBRARY LIST [SYMBOLS]
# Fails unless the library exports exactly the names of the list, each with the symbol version that the symbols file of
# the Debian package gives it, or all without any, and shows what differs. Lines with # are headings of the list.
set -euo pipefail
export LC_ALL=C
library=$1 list=$2 symbols=${3:-/dev/null}

# The address sanitizer adds one name for each exported datum, the linker the version itself.
exported=$(nm -DC --defined-only "$library" | grep -v ' A ' | cut -d' ' -f3- | grep -v '^__odr_asan' | sort -u)
versions=$(sed -nE 's/^ (\(c\+\+\)")?([^"]*)@(KORVALE_[0-9.]+)"? .*/\2@@\3/p' "$symbols")
wanted=$(awk '
    { name = $0; sub(/@@.*/, "", name) }
    versions { full[name] = $0; next }
    { print name in full ? full[name] : name }' versions=1 <(echo "$versions") versions=0 <(grep -vE '^(#|$)' "$list") | sort)
missing=$(comm -13 - <(echo "$wanted") <<<"$exported")
unlisted=$(comm -23 - <(echo "$wanted") <<<"$exported")

# A unique symbol would keep the library from ever being unloaded.
unique=$(nm -DC --defined-only "$library" | sed -n 's/.* u //p')

[[ -z $missing ]] || sed 's/^/missing: /' <<<"$missing"
[[ -z $unlisted ]] || sed 's/^/not in the list: /' <<<"$unlisted"
[[ -z $unique ]] || sed 's/^/unique: /' <<<"$unique"
[[ -z $missing && -z $unlisted && -z $unique ]]
