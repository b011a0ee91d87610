#!/usr/bin/env bash
# header_examples.sh OUTPUT HEADER...: writes a source file in which every example of the headers' comments (the lines
# between /// ``` and /// ```) is the body of a function. Fails when a header's example is not closed or there is none.
set -euo pipefail
output=$1
shift
awk '
    BEGIN { print "#include \"header_examples.h\"" }
    FNR == 1 && inside { print FILENAME ": an example before it is not closed" > "/dev/stderr"; exit 1 }
    /^ *\/\/\/ ```/ {
        inside = !inside
        if (inside) {
            examples++
            printf "\nvoid example_%d()\n{\n    [[maybe_unused]] Given given;\n    GIVEN(given)\n    {\n", examples
            printf "#line %d \"%s\"\n", FNR + 1, FILENAME
        } else {
            print "    }\n}"
        }
        next
    }
    inside { sub(/^ *\/\/\/ ?/, ""); print }
    END { if (inside || examples == 0) { print "no examples, or one not closed" > "/dev/stderr"; exit 1 } }
' "$@" > "$output"
