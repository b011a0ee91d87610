#!/usr/bin/env bash
# usage: reference.sh SOURCES PROGRAM
# Runs the examples of the reference and compares what they print with the lines "// > ..." that stand in them. Fails
# where an exported function has no example, or an example names what is not exported. docs/reference/check does the
# same for korvale.hpp, whose names Doxygen knows.
set -euo pipefail
export LC_ALL=C
cd "$1"
shopt -s globstar
sources=(examples/reference/**/*.cpp)

told=$(awk '
    /^EXAMPLE\("/ { split($0, parts, "\""); print "= " parts[2] }
    /^    \/\/ > ?/ { print substr($0, 10) }
' "${sources[@]}")
# The lines of each example behind its name, as the program may run them in any order.
by_name() { sed -E 's/[[:space:]]+$//' | awk '/^= / { name = $0 } { print name "\t" $0 }' | sort -s -t "$(printf '\t')" -k 1,1; }
diff <(by_name <<<"$told") <("$2" | by_name) || { echo "examples/reference: something else is printed (>)"; exit 1; }

entries=$(sed -n 's/^= //p' <<<"$told" | tr ' ' '\n')
twice=$(sort <<<"$entries" | uniq -d)
[[ -z $twice ]] || { printf 'examples/reference: several examples of\n%s\n' "$twice"; exit 1; }
# Functions: those with arguments in their names but for the destructor, and those with C names.
exported=$(sed -nE '/~/d; s/^(.*::)?(\w+)\(.*/\2/p; s/^(korvale_\w+|_korvale_DllMain|Mw___\w+DllMain|Get\w+)$/\1/p' \
    packaging/exports.txt | sort -u)
failed=0
while read -r entry; do
    echo "examples/reference: no example of $entry"
    failed=1
done < <(comm -23 <(echo "$exported") <(sort -u <<<"$entries"))
while read -r entry; do
    echo "examples/reference: $entry is not exported"
    failed=1
done < <(grep -v '^korvale::' <<<"$entries" | sort -u | comm -13 <(echo "$exported") -)
((failed == 0)) || exit 1

# Those of the C interface are C.
if command -v gcc >/dev/null; then
    {
        printf '#include <%s>\n' korvale_c.h math.h stdio.h stdlib.h
        sed 's/^EXAMPLE(.*/void example(void);\nvoid example(void)/; /^#include/d' examples/reference/c/*.cpp |
            awk '/^void example/ { sub(/example/, "example" int((n++) / 2)) } { print }'
    } | gcc -x c -std=c99 -pedantic-errors -Wall -Wextra -Werror -Wno-missing-field-initializers -fsyntax-only \
        -I include - || { echo "examples/reference/c: this is not C"; exit 1; }
fi
echo "examples/reference: $(wc -l <<<"$entries") entries, $(grep -c '^= ' <<<"$told") examples"
