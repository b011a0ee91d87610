#!/usr/bin/env bash
# usage: description.sh PYTHON SOURCES
# Fails unless the stored description of the C interface is that of its header, function by function, and its structs
# are those of the C compiler, field by field.
set -euo pipefail
export LC_ALL=C
python=$1 sources=$2
stored=$sources/packaging/korvale_c.json
"$python" -B "$sources/tools/describe_door" | diff "$stored" - || {
    echo "the C interface (>) is not as packaging/korvale_c.json describes it (<); store what tools/describe_door prints"
    exit 1
}
diff <(grep -oE '^KORVALE_C_API .*' "$sources/include/korvale_c.h" | grep -oE '\<korvale_\w+\(' | tr -d '(' | sort) \
    <("$python" -c 'import json, sys; print(*sorted(f["name"] for f in json.load(sys.stdin)["functions"]), sep="\n")' \
        <"$stored") || {
    echo "these functions are in korvale_c.h (<) or in its description (>) alone"
    exit 1
}
"$python" -B "$sources/tools/declare_door" assertions | "${CC:-gcc}" -x c -fsyntax-only -I"$sources/include" - || {
    echo "the structs of korvale_c.h do not lie as packaging/korvale_c.json says"
    exit 1
}
