#!/usr/bin/env bash
# check_format.sh: fails if clang-format would change a source or header, and prints the commands
# that format them.
set -eu
cd "$(dirname "$(dirname "$(readlink -f "$0")")")"
clang-format-14 --version >/dev/null
mapfile -d '' -t files < <(find . \( -path ./build -o -path './.?*' \) -prune -o \
    -type f \( -name '*.cpp' -o -name '*.h' \) -print0 | sort -z)
if ! found=$(clang-format-14 --dry-run --Werror "${files[@]}" 2>&1); then
    sed -n 's|^\./\([^:]*\):[0-9]*:[0-9]*: .*|clang-format-14 -i \1|p' <<<"$found" | uniq
    exit 1
fi
