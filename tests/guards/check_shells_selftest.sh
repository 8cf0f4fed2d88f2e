#!/usr/bin/env bash
# check_shells_selftest.sh: tests that check_shells.sh accepts a clean tree and finds each planted
# fault.
set -eu
here=$(dirname "$(readlink -f "$0")")
tree=$(mktemp -d)
trap 'rm -rf "$tree"' EXIT
mkdir "$tree"/{core,platform,backends,frontends}
failures=0

finds() { # LINE
    printf '%s\n' "$1" >"$tree/backends/planted.cpp"
    if out=$(bash "$here/check_shells.sh" "$tree"); then
        printf 'not found: %s\n' "$1"
        failures=$((failures + 1))
    elif [[ $out != *"backends/planted.cpp:1:"* ]]; then
        printf 'found, but without its place: %s\n' "$out"
        failures=$((failures + 1))
    fi
}

printf '%s\n' 'file_system(path);' '// the system (or the user)' >"$tree/core/good.cpp"
if ! bash "$here/check_shells.sh" "$tree"; then
    echo 'a clean tree is refused'
    failures=$((failures + 1))
fi

finds 'std::system("xdg-open " + path);'
finds 'FILE* output = ::popen(command, "r");'
finds 'execl(path, name, nullptr);'
finds 'run({"sh", "-c", command});'
finds 'run({"/bin/sh", script});'
finds 'QProcess::startDetached(command);'

rm -r "$tree/core"
if bash "$here/check_shells.sh" "$tree" >/dev/null 2>&1; then
    echo 'a tree without a core passes'
    failures=$((failures + 1))
fi
exit $((failures > 0))
