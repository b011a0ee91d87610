#!/usr/bin/env bash
# usage: messages.sh SOURCES
# Fails where the door, the C++ face or the Python package can say something of an argument or an equation that
# docs/questions.md does not have in the first column of its tables, where that has what nobody says any more, and where
# it lacks a status.
set -euo pipefail
export LC_ALL=C
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
cd "$1"
page=docs/questions.md

sources=(python/korvale/*.py python/src/*.{cpp,h} door/*.cpp door/internal/*.h include/korvale/face/*.hpp)
said=$(awk -f "$here/messages.awk" pass=1 "${sources[@]}" pass=2 "${sources[@]}" | sort -u)
# The code in the first cell of each row between <!-- messages: KIND --> and <!-- messages: end -->.
told=$(awk -F '|' '
    /^<!-- messages: / { kind = $0; gsub(/^<!-- messages: | -->$|end/, "", kind) }
    kind != "" && $2 ~ /`/ {
        gsub(/``/, "`", $2) # around what ends in a quote, which Doxygen wants
        n = split($2, parts, "`")
        for (i = 2; i <= n; i += 2)
            print kind " " parts[i]
    }' "$page" | sort)

failed=0
complain() {
    echo "$page: $*"
    failed=1
}
while read -r line; do complain "nothing on \"$line\""; done < <(comm -23 <(echo "$said") <(uniq <<<"$told"))
while read -r line; do complain "nobody says \"$line\""; done < <(comm -13 <(echo "$said") <(uniq <<<"$told"))
while read -r line; do complain "twice \"$line\""; done < <(uniq -d <<<"$told")

statuses=$(sed -n '/^typedef enum korvale_status/,/^}/p; /KORVALE_RUN_/p' include/korvale_c.h |
    grep -oE '\bKORVALE_[A-Z_]+\b' | sort -u)
for status in $statuses; do
    grep -q "^| \`$status\` |" "$page" || complain "nothing on $status"
done
(($(wc -l <<<"$said") > 150 && $(wc -w <<<"$statuses") > 10)) || complain "only these were found: $said $statuses"
((failed == 0)) || exit 1
echo "$page has $(wc -l <<<"$said") messages and $(wc -w <<<"$statuses") statuses"
