#!/usr/bin/env bash
# prints.sh EXPECTED PROGRAM [ARGUMENT...]: runs the program and compares what it prints with a file. Fails when either
# differs or the program fails.
set -euo pipefail
expected=$1
shift
printed=$("$@" && printf .) || { echo "$1 fails"; exit 1; }
diff "$expected" <(printf %s "${printed%.}") || { echo "$1 prints something else (>)"; exit 1; }
