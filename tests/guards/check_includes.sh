#!/usr/bin/env bash
# check_includes.sh RULES ROOT: tells every include under ROOT that RULES does not allow, and fails
# if there is one.
set -eu
export LC_ALL=C
rules=$(readlink -f "$1")
cd "$2"
mapfile -t files < <(find . \( -path ./build -o -path './.*' \) -prune -o -type f \
    \( -name '*.cpp' -o -name '*.h' -o -name '*.cc' -o -name '*.hpp' -o -name '*.c' \) -print |
    sed 's|^\./||' | sort)
if [ ${#files[@]} -eq 0 ]; then
    echo 'no source file found'
    exit 1
fi
awk -v rules="$rules" '
    function fits(header, pattern) {
        if (pattern ~ /\*$/)
            return index(header, substr(pattern, 1, length(pattern) - 1)) == 1
        return header == pattern
    }

    function allows(group, header,    i) {
        for (i = 1; i <= size[group]; i++)
            if (fits(header, member[group, i])) return 1
        return 0
    }

    # The longest path with a rule that is the file or holds it, or nothing.
    function folderOf(path) {
        while (!(path in groupsOf))
            if (!sub(/\/[^\/]*$/, "", path)) return ""
        return path
    }

    function report(text) {
        printf "%s:%d: %s\n", FILENAME, FNR, text
        bad = 1
    }

    BEGIN {
        while ((getline line < rules) > 0) {
            sub(/#.*/, "", line)
            count = split(line, word, /[ \t]+/)
            if (word[1] == "group")
                for (i = 3; i <= count; i++)
                    if (word[i] != "") member[word[2], ++size[word[2]]] = word[i]
            if (word[1] == "folder")
                for (i = 3; i <= count; i++)
                    if (word[i] != "") groupsOf[word[2]] = groupsOf[word[2]] " " word[i]
        }
        for (folder in groupsOf) {
            count = split(groupsOf[folder], group, " ")
            for (i = 1; i <= count; i++)
                if (!(group[i] in size)) {
                    printf "%s: no group is named %s\n", rules, group[i]
                    bad = 1
                }
        }
    }

    FNR == 1 {
        folder = folderOf(FILENAME)
        if (folder == "") report("no rule says what this folder may include")
    }

    /^[ \t]*(export[ \t]+)?import[ \t]*[<"]/ { report("a header is imported: use #include") }

    /^[ \t]*(#|%:)[ \t]*(include|include_next|import|embed)/ {
        if (folder == "") next
        name = $0
        if (!match(name, /[<"][^>"]*[>"]/)) {
            report("the included name is hidden behind a macro")
            next
        }
        name = substr(name, RSTART + 1, RLENGTH - 2)
        if (("/" name "/") ~ /\/\.\.?\//) {
            report("the included path goes through . or ..: " name)
            next
        }
        count = split(groupsOf[folder], group, " ")
        for (i = 1; i <= count; i++)
            if (allows(group[i], name)) next
        if (FILENAME ~ /_linux\.[a-z]+$/ && groupsOf[folder] ~ / posix/)
            if (allows("linux", name)) next
        report("files under " folder " may not include " name)
    }

    END { exit bad }
' "${files[@]}"
