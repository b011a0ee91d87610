#!/usr/bin/env bash
# usage: conventions.sh COMPILER HEADER
# Fails where the header breaks a rule that its first comment states, and that authors of bindings rely on:
# - a function returns korvale_status where it takes a korvale_error*, and takes that last;
# - what makes a handle takes the place for it, and each kind of handle has one function ending in _free;
# - options begin with their size, and have a function ending in _defaults.
set -euo pipefail
export LC_ALL=C
compiler=$1 header=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
# One declaration a line, those of the header alone.
"$compiler" -std=c99 -E "$header" | awk '
    /^# [0-9]+ "/ { ours = index($3, "korvale_c.h") > 0; next }
    ours { text = text " " $0 }
    END { print text }' | sed -E 's/__attribute__ *\(\([^)]*\([^)]*\)\)\)//g; s/\{[^}]*\}/{&}/g; s/  +/ /g' |
    awk 'BEGIN { RS = "\0" } {
        depth = 0
        for (i = 1; i <= length($0); ++i) {
            c = substr($0, i, 1)
            depth += (c == "{") - (c == "}")
            printf "%s", c
            if (c == ";" && depth == 0) printf "\n"
        }
    }' | sed 's/^ *//; s/{{/{/; s/}}/}/' >"$work/declarations"

failed=0
complain() {
    echo "$header: $*"
    failed=1
}
functions=0
while IFS= read -r line; do
    functions=$((functions + 1))
    name=$(grep -oE 'korvale_[a-z_]+ *\(' <<<"$line" | head -1 | tr -d ' (')
    [[ $line =~ ^korvale_status\  ]] && is_status=1 || is_status=0
    [[ $line =~ ,\ korvale_error\*\ error\)\;|\(korvale_error\*\ error\)\; ]] && is_told=1 || is_told=0
    ((is_status == is_told)) || complain "$name returns a status or takes an error, but not both"
    [[ $(grep -o 'korvale_error\*' <<<"$line" | wc -l) -le 1 ]] || complain "$name takes two errors"
done < <(grep -E '^[a-z].*\bkorvale_[a-z_]+\(.*\);' "$work/declarations" | grep -v '^typedef')
for handle in $(sed -nE 's/^typedef struct (korvale_[a-z_]+) \1;.*/\1/p' "$work/declarations"); do
    grep -qE "^void ${handle}_free\($handle\* [a-z]+\);" "$work/declarations" || complain "$handle has no ${handle}_free"
    grep -qE "^korvale_status .*\b$handle\*\* " "$work/declarations" || complain "nothing makes a $handle"
done
for options in $(sed -nE 's/^typedef struct (korvale_[a-z_]+_options) \{.*/\1/p' "$work/declarations"); do
    grep -qE "^typedef struct $options \{ uint32_t size;" "$work/declarations" || complain "$options has no size first"
    grep -qE "^void ${options%_options}_defaults\($options\* options, size_t size\);" "$work/declarations" ||
        complain "$options has no defaults"
done
((functions > 60)) || complain "only $functions functions were found"
((failed == 0)) || exit 1
echo "$functions functions keep the conventions"
