#!/usr/bin/env bash
# usage: figures.sh FOLDER PROGRAM
# Draws the pictures of the reference and compares them with those of FOLDER, which `PROGRAM FOLDER` writes anew.
set -euo pipefail
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
"$2" "$work"
diff -r "$1" "$work" >/dev/null || { diff -rq "$1" "$work"; exit 1; }
big=$(find "$work" -size +20k)
[[ -z $big ]] || { printf 'figures: larger than 20 kB is\n%s\n' "$big"; exit 1; }
