#!/usr/bin/env bash
# usage: hostile_preload.sh PROGRAM HOSTILE_LIBRARY
# Fails unless the preloaded library reaches the host's own calls and none that the library makes inside itself.
set -euo pipefail
program=$1 hostile=$2

# The program leaves its records to the end of the process, and the address sanitizer's runtime would refuse to start
# behind a preloaded library.
export ASAN_OPTIONS=detect_leaks=0:verify_asan_link_order=0

# By a name without the spaces and colons at which LD_PRELOAD would be split.
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
ln -s "$(realpath "$hostile")" "$folder/hostile.so"
with_hostile() {
    LD_PRELOAD=$folder/hostile.so "$program" "$@"
}

alone=$("$program" host)
preloaded=$(with_hostile host)
if [[ $alone == "$preloaded" ]]; then
    echo "$hostile reaches nobody, so this test would prove nothing"
    exit 1
fi

alone=$("$program")
preloaded=$(with_hostile)
if [[ -z $alone ]]; then
    echo "$program prints nothing to compare"
    exit 1
fi
if ! diff - <(echo "$preloaded") <<<"$alone"; then
    echo "a call inside the library went to $hostile"
    exit 1
fi
