#!/usr/bin/env bash
# usage: leaves_nothing.sh VALGRIND PROGRAM [ARGUMENT...]
# Fails where a program has lost memory in the end, or touched what is not its own. Interpreters end with some that only
# pointers into the middle of it lead to.
set -euo pipefail
valgrind=$1
shift
[[ $(head -c 2 "$1") != '#!' ]] || { echo "valgrind would see the shell of $1 alone"; exit 1; }
PYTHONMALLOC=malloc "$valgrind" -q --leak-check=full --show-leak-kinds=definite --errors-for-leak-kinds=definite \
    --error-exitcode=1 "$@" >/dev/null
