#!/usr/bin/env bash
# usage: exports.sh LIBRARY LIST
# Fails unless the library exports exactly the names of the list, and shows what differs.
set -euo pipefail
export LC_ALL=C
library=$1 list=$2

# The address sanitizer adds one name for each exported datum.
exported=$(nm -DC --defined-only "$library" | cut -d' ' -f3- | grep -v '^__odr_asan' | sort -u)
missing=$(comm -23 "$list" - <<<"$exported")
unlisted=$(comm -13 "$list" - <<<"$exported")

# A unique symbol would keep the library from ever being unloaded.
unique=$(nm -DC --defined-only "$library" | sed -n 's/.* u //p')

[[ -z $missing ]] || sed 's/^/missing: /' <<<"$missing"
[[ -z $unlisted ]] || sed 's/^/not in the list: /' <<<"$unlisted"
[[ -z $unique ]] || sed 's/^/unique: /' <<<"$unique"
[[ -z $missing && -z $unlisted && -z $unique ]]
