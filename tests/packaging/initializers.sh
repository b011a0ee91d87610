#!/usr/bin/env bash
# usage: initializers.sh OBJECT...
# Fails unless every object file of the library has an initialiser of priority 1000, frame.cpp's also one of priority
# 101, and last.cpp's alone one without a priority: nothing may come before the first stage of loading or after the
# second. Priorities up to 100 belong to the compiler's own instrumentation.
set -euo pipefail

wrong=0
for object; do
    case $object in
    */frame/frame.cpp.o) expected="101 1000" ;;
    */frame/last.cpp.o) expected="1000 none" ;;
    *) expected="1000" ;;
    esac
    found=$(readelf -SW "$object" |
        sed -nE 's/.* \.init_array\.0*([0-9]+) .*/\1/p; s/.* \.init_array .*/none/p' |
        awk '$1 == "none" || $1 > 100' | sort -V | paste -sd' ')
    if [[ $found != "$expected" ]]; then
        echo "$object: initialisers of priority '$found' instead of '$expected'"
        wrong=1
    fi
done
exit $wrong
