#!/usr/bin/env bash
# usage: face.sh PRINTED PROGRAM
# Fails unless the C++ face comes to what all bindings print, but for the sentences of errors.
set -euo pipefail
diff <(grep -v '^korvale_' "$1") <("$2") || { echo "the C++ face prints something else (>) than the bindings"; exit 1; }
