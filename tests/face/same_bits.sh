#!/usr/bin/env bash
# usage: same_bits.sh PLAIN FAST
# Fails unless both programs, made of bits.cpp by different flags, print the same hashes.
set -euo pipefail
plain=$("$1")
[[ $(wc -l <<<"$plain") == 7 ]] || { echo "$1 prints something else: $plain"; exit 1; }
diff <(echo "$plain") <("$2") || { echo "$2 (>) gives other bits than $1 (<)"; exit 1; }
