#!/usr/bin/env bash
# check_format.sh: tells every source and header that clang-format would change, and fails if there
# is one.
set -eu
cd "$(dirname "$(dirname "$(readlink -f "$0")")")"
find . \( -path ./build -o -path './.?*' \) -prune -o -type f \( -name '*.cpp' -o -name '*.h' \) -print0 |
    sort -z | xargs -0 -r clang-format-14 --dry-run --Werror
