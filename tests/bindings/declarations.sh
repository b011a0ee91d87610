#!/usr/bin/env bash
# usage: declarations.sh PYTHON SOURCES
# Fails unless the stored declarations for other languages are those of the description of the C interface.
set -euo pipefail
python=$1 sources=$2
for language in luajit:lua ctypes:py; do
    stored=$sources/examples/bindings/korvale_c.${language#*:}
    "$python" -B "$sources/tools/declare_door" "${language%:*}" | diff "$stored" - || {
        echo "$stored (<) is not what tools/declare_door ${language%:*} prints (>); store that"
        exit 1
    }
done
