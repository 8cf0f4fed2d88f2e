#!/usr/bin/env bash
# check_hardening.sh FILE...: fails if a program or shared object lacks a protection that the
# compiler and the linker offer, and names it.
set -eu
export LC_ALL=C
bad=0

# requires FILE NAME COMMAND...: the command must succeed.
requires() {
    local file=$1 name=$2
    shift 2
    if ! "$@"; then
        echo "$file has no $name"
        bad=1
    fi
}

for file; do
    header=$(readelf -hW "$file")
    segments=$(readelf -lW "$file")
    dynamic=$(readelf -dW "$file")
    imports=$(readelf --dyn-syms -W "$file")
    requires "$file" 'position-independent code' grep -qE '^ *Type: +DYN' <<<"$header"
    requires "$file" 'read-only relocations' grep -q 'GNU_RELRO' <<<"$segments"
    requires "$file" 'immediate binding' grep -qE '\((FLAGS|FLAGS_1|BIND_NOW)\).*NOW' <<<"$dynamic"
    requires "$file" 'stack without execution' grep -qE 'GNU_STACK .* RW ' <<<"$segments"
    requires "$file" 'relocations outside of the code' \
        bash -c '! grep -q TEXTREL' <<<"$dynamic"
    requires "$file" 'stack protector' grep -qw '__stack_chk_fail' <<<"$imports"
    requires "$file" 'checked functions of the C library' \
        grep -qE ' __[a-z0-9_]+_chk(@|$)' <<<"$imports"
done
exit $bad
