#!/usr/bin/env bash
# usage: lanes_code.sh LIBRARY
# Fails where the optimised code is not what the lanes promise: registers of four lanes are used by functions made for
# them alone, and no operation on four lanes was left as a call.
set -euo pipefail
library=$1

code=$(objdump --disassemble --demangle --no-show-raw-insn "$library")
wide=$(awk '/^[0-9a-f]+ </ { name = $0 } /%ymm/ { print name }' <<<"$code" | sort -u)
if [[ -z $wide ]]; then
    echo "$library uses no four lanes, so this test would prove nothing"
    exit 1
fi
if grep -vE '_wide\(|_four_lanes<' <<<"$wide"; then
    echo "these are not marked for four lanes by their name, but use them"
    exit 1
fi
if grep -E '^[0-9a-f]+ <.*\(.*korvale::inside::Quad(Mask)?( const)?&' <<<"$code" || grep -E '^[0-9a-f]+ <korvale::inside::Quad' <<<"$code"; then
    echo "these operations were not drawn in"
    exit 1
fi
