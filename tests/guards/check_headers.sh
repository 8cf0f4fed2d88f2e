#!/usr/bin/env bash
# check_headers.sh ROOT FOLDERS COMPILER [OPTION...]: compiles every header in the FOLDERS (one
# argument) under ROOT on its own, included twice, and fails if one does not compile.
set -eu
cd "$1"
read -r -a folders <<<"$2"
shift 2
export LC_ALL=C
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
