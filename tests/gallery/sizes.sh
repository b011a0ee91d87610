#!/usr/bin/env bash
# usage: sizes.sh GALLERY SOURCES
# Opens the pages that the program GALLERY makes on narrow and wide screens, light and dark. Without a browser there is
# nothing to look with.
set -euo pipefail
command -v chromium >/dev/null || { echo "no chromium" && exit 77; }
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
"$1" "$folder" >/dev/null
cd "$folder"
for scheme in light dark; do
    "$2/docs/reference/sizes" $scheme . *.html
done
