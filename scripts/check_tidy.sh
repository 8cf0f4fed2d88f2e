#!/usr/bin/env bash
# check_tidy.sh BUILD: runs clang-tidy over every source of the program and its back ends in
# BUILD/compile_commands.json, two at a time, and fails if it finds anything. Skips sources that
# were clean before, if neither they nor any header or setting have changed since. The preset tidy
# has no precompiled headers: it also shows that each source includes what it uses.
set -eu
export LC_ALL=C
root=$(dirname "$(dirname "$(readlink -f "$0")")")
build=$(readlink -f "$1")
clean=$build/clean
mkdir -p "$clean"
newest=$(find "$root" -path "$root/build" -prune -o \( -name '*.h' -o -name .clang-tidy -o -name '*.cmake' \) \
    -printf '%T@ %p\n' | sort -n | tail -n 1 | cut -d ' ' -f 2-)

check() {
    local source=$1 mark
    mark=$clean/${source//\//_}
    if [ "$mark" -nt "$newest" ] && [ "$mark" -nt "$source" ]; then
        return 0
    fi
    rm -f "$mark"
    if ! clang-tidy-14 --quiet -p "$build" "$source" 2>"$mark.err"; then
        grep -vE '^[0-9]+ warnings? (and [0-9]+ errors? )?generated|^Suppressed ' "$mark.err" || true
        return 1
    fi
    : >"$mark"
}
export -f check
export clean newest build

sed -n 's/^ *"file": "\(.*\)",\{0,1\}$/\1/p' "$build/compile_commands.json" | sort -u |
    grep -E "^$root/(core|platform|backends|frontends|fuzz)/" |
    xargs -r -d '\n' -P 2 -n 1 bash -c 'check "$1"' check
