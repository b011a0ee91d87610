#!/usr/bin/env bash
# usage: names.sh COMPILER HEADER PROGRAM
# Fails unless the program calls every function that the header declares.
set -euo pipefail
export LC_ALL=C
compiler=$1 header=$2 program=$3
declared=$("$compiler" -std=c99 -E -P "$header" | grep -oE '\<korvale_[a-z_]+\(' | tr -d '(' | sort -u)
called=$(nm -u "$program" | grep -oE '\<korvale_[a-z_]+' | sort -u)
diff <(echo "$declared") <(echo "$called") || {
    echo "these functions of $header (<) are not called by $program; a case in tests/c/ is missing"
    exit 1
}
echo "$(wc -l <<<"$declared") functions are called"
