#!/usr/bin/env bash
# check_hardening_selftest.sh COMPILER: tests that check_hardening.sh accepts a hardened program and
# finds each protection that is missing.
set -eu
here=$(dirname "$(readlink -f "$0")")
compiler=$1
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
failures=0

cat >"$work/program.cpp" <<'END'
#include <cstdio>
#include <cstring>
int main(int count, char** arguments) {
    char text[16];
    std::strcpy(text, arguments[count - 1]);
    return std::puts(text);
}
END
# Debian's compilers do these by themselves, others do not.
hardened=(-O2 -fPIE -pie -fstack-protector-strong -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2
    "-Wl,-z,relro,-z,now,-z,noexecstack")

check() { # OPTION...
    "$compiler" "${hardened[@]}" "$@" -o "$work/program" "$work/program.cpp"
    bash "$here/check_hardening.sh" "$work/program"
}

finds() { # MISSING OPTION...
    local missing=$1
    shift
    if out=$(check "$@"); then
        printf 'not found: %s\n' "$*"
        failures=$((failures + 1))
    elif [ "$out" != "$work/program has no $missing" ]; then
        printf 'found with another message: %s\n%s\n' "$*" "$out"
        failures=$((failures + 1))
    fi
}

if ! check; then
    echo 'a hardened program is refused'
    failures=$((failures + 1))
fi
finds 'position-independent code' -fno-pie -no-pie
finds 'read-only relocations' -Wl,-z,norelro
finds 'immediate binding' -Wl,-z,lazy
finds 'stack without execution' -Wl,-z,execstack
finds 'stack protector' -fno-stack-protector
finds 'checked functions of the C library' -U_FORTIFY_SOURCE
exit $((failures > 0))
