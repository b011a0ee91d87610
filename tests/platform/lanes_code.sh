#!/usr/bin/env bash
# usage: lanes_code.sh LIBRARY SOURCES
# Fails where the optimised code is not what the lanes promise: registers of four lanes are used by functions marked
# KORVALE_FOUR_LANES alone, and no operation on four lanes was left as a call.
set -euo pipefail
library=$1 sources=$2

marked=$(find "$sources"/{platform,math,data,path,equation,preserve,ray,exchange,border,door} -name '*.h' -o -name '*.cpp' |
         xargs grep -hoPz 'KORVALE_FOUR_LANES\s+[^;{(#]*?\K\w+(?=\()' | tr '\0' '\n' | sort -u | paste -sd '|')
code=$(objdump --disassemble --demangle --no-show-raw-insn "$library")
wide=$(awk '/^[0-9a-f]+ </ { name = $0 } /%ymm/ { print name }' <<<"$code" | sort -u)
if [[ -z $marked || -z $wide ]]; then
    echo "$library uses no four lanes, so this test would prove nothing"
    exit 1
fi
if grep -vP "\b($marked)[(<]" <<<"$wide"; then
    echo "these use four lanes without being marked"
    exit 1
fi
if grep -E '^[0-9a-f]+ <.*\(.*korvale::platform::Quad(Mask)?( const)?&' <<<"$code" ||
    grep -E '^[0-9a-f]+ <korvale::platform::Quad' <<<"$code"; then
    echo "these operations were not drawn in"
    exit 1
fi
