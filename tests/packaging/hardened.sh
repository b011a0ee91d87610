#!/usr/bin/env bash
# usage: hardened.sh LIBRARY
# Fails unless a process that loads the library keeps its stack, and all of the library's code, from being written or
# executed as the other, and its tables of addresses read-only once they are filled.
set -euo pipefail
export LC_ALL=C
library=$1
segments=$(readelf -lW "$library")
entries=$(readelf -dW "$library")
fail() {
    echo "$library $1"
    exit 1
}

grep -qE '^ +GNU_STACK .* RW +0x' <<<"$segments" || fail "does not ask for a stack that is not executed"
! grep -qE ' RWE +0x' <<<"$segments" || fail "has a segment that is both written and executed"
grep -qE '^ +GNU_RELRO ' <<<"$segments" || fail "leaves its relocated tables writable"
grep -qE '\(FLAGS\).*BIND_NOW|\(BIND_NOW\)' <<<"$entries" || fail "binds names late, so their table stays writable"
! grep -q TEXTREL <<<"$entries" || fail "has relocations in its code"
