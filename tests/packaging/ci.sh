#!/usr/bin/env bash
# usage: ci.sh SOURCE
# CONTRIBUTING.md shows the commands that CI runs, and dev the checks there are.
set -euo pipefail
cd "$1"
runs=$(grep -oE '^\./dev [^|]*[^| ]' .ci/run)
shown=$(sed -n '/^## What CI runs/,/^## /s/^    \(\.\/dev .*\)/\1/p' CONTRIBUTING.md)
[[ -n $runs ]] && diff <(echo "$runs") <(echo "$shown")
# The help of dev lists the checks there are.
checks=$(sed -nE 's/^checks=\((.*)\)$/\1/p' tools/checks)
[[ -n $checks ]] && ./dev help | grep -qxF "                          $checks"
