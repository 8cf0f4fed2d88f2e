#!/usr/bin/env bash
# check_headers_selftest.sh COMPILER [OPTION...]: tests that check_headers.sh accepts a clean tree
# and finds each planted fault.
set -eu
here=$(dirname "$(readlink -f "$0")")
tree=$(mktemp -d)
trap 'rm -rf "$tree"' EXIT
mkdir -p "$tree/platform/foundation"
failures=0

check() {
    bash "$here/check_headers.sh" "$tree" platform "$@" 2>&1
}

finds() { # TEXT COMPILER [OPTION...]
    printf '%s\n' "$1" >"$tree/platform/foundation/Planted.h"
    shift
    if out=$(check "$@"); then
        printf 'not found:\n%s\n' "$(cat "$tree/platform/foundation/Planted.h")"
        failures=$((failures + 1))
    elif [[ $out != *"platform/foundation/Planted.h does not compile on its own"* ]]; then
        printf 'found, but without its place:\n%s\n' "$out"
        failures=$((failures + 1))
    fi
    rm "$tree/platform/foundation/Planted.h"
}

if check "$@" >/dev/null; then
    echo 'a tree without headers passes'
    failures=$((failures + 1))
fi

printf '#pragma once\n#include <string>\nstd::string name();\n' >"$tree/platform/foundation/Good.h"
if ! check "$@"; then
    echo 'a self-contained header is refused'
    failures=$((failures + 1))
fi

finds $'#pragma once\nstd::string name();' "$@"
finds $'#pragma once\n#include "platform/foundation/Missing.h"' "$@"
finds $'struct Twice {};' "$@"
finds $'#pragma once\ninline int part(int) { int unused; return 0; }' "$@"
exit $((failures > 0))
