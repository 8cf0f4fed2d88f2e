#!/usr/bin/env bash
# check_headers.sh ROOT COMPILER [OPTION...]: compiles every header of the program and of platform/
# under ROOT on its own, twice in a row, and fails if one does not stand alone.
set -eu
cd "$1"
shift
export LC_ALL=C
folders=()
for folder in app folder capture preview compiler infopanel platform; do
    [ ! -d "$folder" ] || folders+=("$folder")
done
mapfile -t headers < <(find "${folders[@]}" -name '*.h' | sort)
if [ ${#headers[@]} -eq 0 ]; then
    echo 'no header found'
    exit 1
fi

check() {
    local header=$1
    shift
    if ! printf '#include "%s"\n#include "%s"\n' "$header" "$header" |
        "$@" -I. -fsyntax-only -x c++ - >"$reports/${header//\//_}" 2>&1; then
        printf '%s does not compile on its own:\n' "$header"
        cat "$reports/${header//\//_}"
        return 1
    fi
}
export -f check
export reports
reports=$(mktemp -d)
trap 'rm -rf "$reports"' EXIT
printf '%s\0' "${headers[@]}" |
    xargs -0 -P 2 -I '{}' bash -c 'check "$@"' check '{}' "$@"
