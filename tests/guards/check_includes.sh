#!/usr/bin/env bash
# check_includes.sh RULES ROOT: reports every include under ROOT that RULES does not allow and every
# cycle between the folders of RULES, and fails if there is one.
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

    function isIn(library, header,    i) {
        for (i = 1; i <= size[library]; i++)
            if (fits(header, member[library, i])) return 1
        return 0
    }

    # The longest path with a rule that is the file or holds it, or nothing.
    function folderOf(path) {
        while (!(path in rule))
            if (!sub(/\/[^\/]*$/, "", path)) return ""
        return path
    }

    function report(text) {
        printf "%s:%d: %s\n", FILENAME, FNR, text
        bad = 1
    }

    # Whether a file of this folder may include this header: of the folder itself, of a folder that
    # its rule names, or of a library that its rule names.
    function allows(folder, header,    count, item, i) {
        if (folderOf(header) == folder) return 1
        count = split(rule[folder], item, " ")
        for (i = 1; i <= count; i++)
            if (item[i] in rule ? folderOf(header) == item[i] : isIn(item[i], header)) return 1
        return 0
    }

    # Depth first, along the folders that a rule names; `path` is the way here.
    function findCycle(folder, path,    count, item, i) {
        if (state[folder] == "done") return
        if (state[folder] == "open") {
            printf "%s: a cycle: %s %s\n", rules, path, folder
            bad = 1
            return
        }
        state[folder] = "open"
        count = split(rule[folder], item, " ")
        for (i = 1; i <= count; i++)
            if (item[i] in rule) findCycle(item[i], path folder " -> ")
        state[folder] = "done"
    }

    BEGIN {
        while ((getline line < rules) > 0) {
            sub(/#.*/, "", line)
            count = split(line, word, /[ \t]+/)
            if (word[1] == "library")
                for (i = 3; i <= count; i++)
                    if (word[i] != "") member[word[2], ++size[word[2]]] = word[i]
            if (word[1] == "folder")
                for (i = 2; i <= count; i++)
                    if (word[i] != "") rule[word[2]] = rule[word[2]] (i > 2 ? " " word[i] : "")
        }
        for (folder in rule) {
            count = split(rule[folder], item, " ")
            for (i = 1; i <= count; i++)
                if (!(item[i] in size) && !(item[i] in rule)) {
                    printf "%s: no folder and no library is named %s\n", rules, item[i]
                    bad = 1
                }
            findCycle(folder, "")
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
        if (allows(folder, name)) next
        if (FILENAME ~ /_linux\.[a-z]+$/ && rule[folder] ~ /(^| )posix( |$)/ && isIn("linux", name))
            next
        report("files under " folder " may not include " name)
    }

    END { exit bad }
' "${files[@]}"
