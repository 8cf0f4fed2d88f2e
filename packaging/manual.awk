# Prints the manual page: the template, with the usage and the commands of the program's help.
#
#   awk -f manual.awk help.txt vistrane.1.in

# Hyphens that can be copied into a shell.
function literal(text) {
    gsub(/\\/, "\\\\e", text)
    gsub(/-/, "\\\\-", text)
    return text
}

# A usage in which options are bold and what the user fills in is italic. An option and its value
# stay on one line.
function usage(text,    words, count, i, result) {
    count = split(text, words, " ")
    for (i = 1; i <= count; i++) {
        if (i > 1) {
            result = result (words[i] ~ /^[A-Z]/ && words[i - 1] ~ /--/ ? "\\~" : " ")
        }
        if (match(words[i], /--[a-z0-9-]+/)) {
            result = result styled(words[i], "\\fB")
        } else if (match(words[i], /[A-Z]+/)) {
            result = result styled(words[i], "\\fI")
        } else {
            result = result literal(words[i])
        }
    }
    return result
}

# The part that was matched in this font.
function styled(word, font) {
    return literal(substr(word, 1, RSTART - 1)) font literal(substr(word, RSTART, RLENGTH)) "\\fP" \
        literal(substr(word, RSTART + RLENGTH))
}

function prose(text) {
    text = literal(text)
    gsub(/\\-\\-[a-z0-9-]+(\\-[a-z0-9]+)*/, "\\fB&\\fP", text)
    sub(/^[.']/, "\\\\\\&&", text)
    return text
}

FNR == NR && /^  vistrane / {
    count++
    name[count] = $2 ~ /^[a-z]+$/ ? "vistrane " $2 : "vistrane"
    synopsis[count] = substr($0, 3 + length(name[count]))
    isUsage = 1
    next
}
FNR == NR && count && /^$/ {
    general = general ".PP\n"
    isGeneral = 1
    next
}
FNR == NR && isGeneral { general = general prose($0) "\n"; next }
FNR == NR && isUsage && /^       / { synopsis[count] = synopsis[count] " " $0; next }
FNR == NR && count {
    isUsage = 0
    sub(/^ +/, "")
    description[count] = description[count] prose($0) "\n"
    next
}
FNR == NR { next }

/^\.\\" the usage of help.txt$/ {
    for (i = 1; i <= count; i++) {
        printf ".SY \"%s\"\n%s\n.YS\n", name[i], usage(synopsis[i])
    }
    next
}
/^\.\\" the commands of help.txt$/ {
    for (i = 1; i <= count; i++) {
        printf ".TP\n.B %s\n%s", name[i], description[i]
    }
    printf "%s", general
    next
}
{ print }
