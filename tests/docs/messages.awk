# Prints what the sources given can say of an argument or an equation, one line each:
#   must TEXT    of "function: argument must TEXT, but ...": argument 2 of a Refusal, 3 of a Failure and an Error, and
#                whatever is handed to a parameter `must` of a function
#   why TEXT     of a refused equation
# A text that is put together has "..." in place of what is not a literal. What cannot be read is an error.
# All files are read twice: with pass=1 for the functions that have a parameter `must`, with pass=2 for the rest.

BEGIN { RS = "\001" }

{
    source = $0
    is_python = FILENAME ~ /\.py$/
    blank_comments()
    if (pass == 1) {
        find_parameters()
    } else {
        find_constants()
        read_calls()
    }
}

END { exit failed }

function complain(text) {
    print FILENAME ": " text >"/dev/stderr"
    failed = 1
}

# The place behind the literal whose opening quote is at `i`.
function behind_literal(s, i,    quote, j, c) {
    quote = substr(s, i, 1)
    if (quote == "\"" && substr(s, i, 3) == "\"\"\"") {
        j = index(substr(s, i + 3), "\"\"\"")
        return i + j + 5
    }
    for (j = i + 1; j <= length(s); ++j) {
        c = substr(s, j, 1)
        if (c == "\\")
            ++j
        else if (c == quote)
            return j + 1
    }
    return j
}

# Whether a quote at `i` opens a literal, rather than parting the digits of a number in C++.
function opens_literal(s, i,    c) {
    c = substr(s, i, 1)
    return c == "\"" || (c == "'" && (is_python || substr(s, i - 1, 1) !~ /[0-9A-Za-z]/))
}

# Comments, and texts of three quotes, become spaces, and each file one line.
function blank_comments(    s, out, i, j, c, two, from) {
    s = source
    out = ""
    from = 1
    for (i = 1; i <= length(s); ++i) {
        c = substr(s, i, 1)
        if (c !~ /["'\/#]/)
            continue
        two = substr(s, i, 2)
        if (opens_literal(s, i)) {
            j = behind_literal(s, i)
            if (substr(s, i, 3) != "\"\"\"") {
                i = j - 1
                continue
            }
        } else if ((is_python && c == "#") || (!is_python && two == "//")) {
            j = index(substr(s, i), "\n")
            j = j == 0 ? length(s) + 1 : i + j - 1
        } else if (!is_python && two == "/*") {
            j = i + index(substr(s, i), "*/") + 1
        } else {
            continue
        }
        out = out substr(s, from, i - from) " "
        from = j
        i = j - 1
    }
    source = out substr(s, from)
}

# Constants whose value is a literal, by their names.
function find_constants(    s, name) {
    split("", constant)
    s = source
    while (match(s, /[ *]k[A-Z][A-Za-z]* = "([^"\\]|\\.)*";/)) {
        name = substr(s, RSTART + 1)
        s = substr(s, RSTART + RLENGTH)
        name = substr(name, 1, index(name, ";") - 1)
        constant[substr(name, 1, index(name, " ") - 1)] = substr(name, index(name, "\""))
    }
}

# The functions that have a parameter `must`, and which of theirs it is.
function find_parameters(    s, definition, name, before, parts) {
    s = source
    definition = is_python ? "def [A-Za-z_]+[(][^()]*must: str" : "[A-Za-z_]+[(][^(){};]*(char[*]|string_view) must[,)]"
    while (match(s, definition)) {
        name = substr(s, RSTART, RLENGTH)
        s = substr(s, RSTART + RLENGTH)
        sub(/^def /, "", name)
        before = substr(name, index(name, "(") + 1)
        sub(/\(.*/, "", name)
        sub(/must[,)]$/, "must", before)
        split("", parts)
        place_of[is_python, name] = cut(before, parts, ",") - (trim(parts[1]) == "self")
    }
}

# Cuts `s` at `separators` outside of parentheses and literals into parts[1 ..], and returns how many there are.
function cut(s, parts, separators,    i, j, c, depth, from, count) {
    from = 1
    for (i = 1; i <= length(s); ++i) {
        c = substr(s, i, 1)
        if (opens_literal(s, i))
            i = behind_literal(s, i) - 1
        else if (c ~ /[({[]/)
            ++depth
        else if (c ~ /[)}\]]/)
            --depth
        else if (depth == 0 && separators == "<<" ? substr(s, i, 2) == "<<" : depth == 0 && c == separators) {
            parts[++count] = substr(s, from, i - from)
            i += length(separators) - 1
            from = i + 1
        }
    }
    parts[++count] = substr(s, from)
    return count
}

function trim(s) {
    gsub(/^[ \t\r\n]+|[ \t\r\n]+$/, "", s)
    return s
}

# The text of one or several literals side by side, with "..." for what an f-string puts in; "..." for all else.
function text_of_literals(s,    out, i, j, part, is_format) {
    s = trim(s)
    if (s in constant)
        s = constant[s]
    if (s !~ /^f?["']/)
        return "..."
    while (s != "") {
        is_format = sub(/^f/, "", s)
        if (s !~ /^["']/)
            return "..."
        j = behind_literal(s, 1)
        part = substr(s, 2, j - 3)
        gsub(/\\"/, "\"", part)
        gsub(/\\'/, "'", part)
        if (is_format)
            gsub(/[{][^}]*[}]/, "...", part)
        out = out part
        s = trim(substr(s, j))
    }
    return out
}

# What an expression says.
function text_of(s,    sums, i, n, terms, k, m, out) {
    n = cut(s, sums, "<<")
    for (i = 1; i <= n; ++i) {
        if (trim(sums[i]) ~ /^Text(\(\)| why| reason)?$/)
            continue
        m = cut(sums[i], terms, "+")
        for (k = 1; k <= m; ++k)
            out = out text_of_literals(terms[k])
    }
    while (sub(/\.\.\.\.\.\./, "...", out))
        ;
    if (out ~ /[a-z]\.\.\.$/) # advice behind a sentence
        sub(/\.\.\.$/, "", out)
    return out
}

# Prints what an argument says; one that only hands on what was said elsewhere says nothing.
function tell(kind, argument,    before, choices, n, k, text) {
    argument = trim(argument)
    if (argument ~ /(^|[ .>_*])(must|must: str|wanted|but|given|why|text)$|^str\(error\)/)
        return
    n = 1
    choices[1] = argument
    if (match(argument, / \(?[a-z_]+ [?] "[^"]*" : "[^"]*"\)?$|[^ ]* == 3 [?] "[^"]*" : "[^"]*"$/)) { # one of two
        before = substr(argument, 1, RSTART - 1)
        n = cut(substr(argument, RSTART + index(substr(argument, RSTART), "?")), choices, ":")
        sub(/\)$/, "", choices[2])
        for (k = 1; k <= n; ++k)
            choices[k] = before choices[k]
    } else if (is_python && match(argument, / if [a-z_]+ else /)) {
        choices[1] = substr(argument, 1, RSTART - 1)
        choices[n = 2] = substr(argument, RSTART + RLENGTH)
    }
    for (k = 1; k <= n; ++k) {
        text = text_of(choices[k])
        if (text == "..." || text == "")
            complain("what is said by " argument "?")
        else
            print kind " " text
    }
}

# The source of a call's arguments, from behind its parenthesis at `i`.
function arguments_at(i,    s, j, c, depth) {
    for (j = i; j <= length(source); ++j) {
        c = substr(source, j, 1)
        if (opens_literal(source, j))
            j = behind_literal(source, j) - 1
        else if (c ~ /[({[]/)
            ++depth
        else if (c ~ /[)}\]]/ && --depth < 0)
            return substr(source, i, j - i)
    }
    complain("a parenthesis is not closed")
    return ""
}

function read_calls(    s, at, name, parts, n) {
    s = source
    at = 0
    while (match(s, /[A-Za-z_]+ ?\(|must = |[^a-z]why <</)) {
        name = substr(s, RSTART, RLENGTH)
        at += RSTART + RLENGTH - 1
        s = substr(source, at + 1)
        if (name == "must = ") {
            tell("must", substr(s, 1, index(s, "\n") - 1))
            continue
        }
        split("", parts)
        if (name ~ /why <</) {
            cut(s, parts, ";")
            tell("why", parts[1])
            continue
        }
        sub(/ ?\($/, "", name)
        if (name !~ /^(Refusal|Failure|Error|EquationError|note|refuse)$/ && !((is_python, name) in place_of))
            continue
        n = cut(arguments_at(at + 1), parts, ",")
        if (name == "Refusal") {
            if (n == 3 && parts[1] !~ /int32_t/)
                tell("must", parts[2])
        } else if (!is_python && name ~ /^(Failure|Error)$/) {
            if (n >= 4)
                tell("must", parts[3])
        } else if (!is_python && name ~ /^(EquationError|refuse)$/) {
            if (n == 4)
                tell("why", parts[4])
        } else if (name == "note") {
            if (n == 3 && FILENAME ~ /refusal/)
                tell("why", parts[3])
        } else if ((is_python, name) in place_of && n >= place_of[is_python, name]) {
            tell("must", parts[place_of[is_python, name]])
        }
    }
    if (FILENAME ~ /spellings\.cpp$/) {
        s = source
        sub(/^.* kSigns\[\] = /, "", s)
        sub(/};.*$/, "", s)
        while (match(s, /[{]"[^\n]*"[}]/)) { # signs that people write elsewhere
            cut(substr(s, RSTART + 1, RLENGTH - 2), parts, ",")
            s = substr(s, RSTART + RLENGTH)
            print "why ... is no sign of equations: " text_of_literals(parts[2])
        }
    }
}
