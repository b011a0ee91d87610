#!/usr/bin/env bash
# usage: ci.sh SOURCE
# CONTRIBUTING.md shows the commands that CI runs.
set -euo pipefail
cd "$1"
runs=$(grep -oE '^\./dev [^|]*[^| ]' .ci/run)
shown=$(sed -n '/^## What CI runs/,/^## /s/^    \(\.\/dev .*\)/\1/p' CONTRIBUTING.md)
[[ -n $runs ]] && diff <(echo "$runs") <(echo "$shown")
