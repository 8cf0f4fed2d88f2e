#!/usr/bin/env bash
# check_needed.sh PROGRAM: fails if PROGRAM needs a shared library other than the C and C++ standard
# libraries, and names it.
set -eu
needed=$(LC_ALL=C readelf -d "$1" | sed -n 's/.*(NEEDED).*\[\(.*\)\]/\1/p')
if [ -z "$needed" ]; then
    echo "$1 needs no shared library at all: this is not the program to look at"
    exit 1
fi
bad=0
for library in $needed; do
    case $library in
    libstdc++.so.* | libgcc_s.so.* | libm.so.* | libc.so.* | ld-linux*.so.*) ;;
    libc++.so.* | libc++abi.so.* | libunwind.so.*) ;;
    *)
        echo "$1 needs $library, but the core may need the standard libraries only"
        bad=1
        ;;
    esac
done
exit $bad
