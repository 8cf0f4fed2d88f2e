#!/usr/bin/env bash
# run_test.sh ROOT: tests the interface of ./run, with a small program instead of the real one.
set -u
root=$1
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
failures=0

expect() { # WHAT EXPECTED ACTUAL
    if [ "$2" != "$3" ]; then
        printf '%s: expected\n%s\nbut there is\n%s\n' "$1" "$2" "$3"
        failures=$((failures + 1))
    fi
}

tree=$work/a\ tree
mkdir -p "$tree/commandline" "$tree/scripts" "$work/elsewhere"
cp "$root/run" "$tree"
cp "$root/scripts/common.sh" "$tree/scripts"
cp "$root/CMakePresets.json" "$tree"
: >"$tree/scripts/packages-run.txt"
cat >"$tree/CMakeLists.txt" <<'END'
cmake_minimum_required(VERSION 3.25)
project(stand_in LANGUAGES CXX)
add_executable(vistrane commandline/main.cpp)
set_target_properties(vistrane PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR})
END
cat >"$tree/commandline/main.cpp" <<'END'
#include <cstdio>
#include <cstring>
#include <unistd.h>

int main(int argc, char** argv) {
    char folder[4096];
    std::printf("%s\n", getcwd(folder, sizeof folder));
    for (int i = 1; i < argc; ++i)
        std::printf("[%s]\n", argv[i]);
    std::fflush(stdout);
    if (argc > 1 && !std::strcmp(argv[1], "wait"))
        pause();
    return argc > 1 ? 7 : 0;
}
END
unset DISPLAY WAYLAND_DISPLAY QT_QPA_PLATFORM
cd "$work/elsewhere" || exit

out=$("$tree/run" 'two words' '' '*' 2>/dev/null)
expect 'exit status' 7 $?
expect 'folder and arguments' "$(printf '%s\n' "$work/elsewhere" '[two words]' '[]' '[*]')" "$out"

stamp() {
    stat -c %y "$tree/build/release/build.ninja" "$tree/build/release/vistrane"
}
before=$(stamp)
out=$("$tree/run" 2>&1)
expect 'no argument' "$(printf '%s\n' "$work/elsewhere" '[demo]')" "$out"
out=$(DISPLAY=:1 "$tree/run" 2>&1)
expect 'no argument, with a display' "$work/elsewhere" "$out"
expect 'nothing is built again' "$before" "$(stamp)"

ln -s "$tree/run" "$work/link"
expect 'through a link' "$(printf '%s\n' "$work/elsewhere" '[x]')" "$("$work/link" x 2>&1)"

coproc "$tree/run" wait
program=$COPROC_PID
read -r -u "${COPROC[0]}" line && read -r -u "${COPROC[0]}" line
expect 'the program has started' '[wait]' "$line"
kill -TERM "$program"
wait "$program"
expect 'ended by a signal' 143 $?

for call in 1 2 3; do
    rm -rf "$tree/build/release"
    "$tree/run" first >"$work/first" 2>/dev/null &
    other=$!
    "$tree/run" second >"$work/second" 2>/dev/null
    expect "two calls at once, second, time $call" 7 $?
    wait $other
    expect "two calls at once, first, time $call" 7 $?
done
expect 'two calls at once' '[first] [second]' \
    "$(tail -n 1 "$work/first") $(tail -n 1 "$work/second")"

mv "$tree" "$work/moved"
tree=$work/moved
expect 'a tree that was moved' "$(printf '%s\n' "$work/elsewhere" '[x]')" "$("$tree/run" x 2>/dev/null)"

cat >>"$tree/CMakeLists.txt" <<'END'
option(VISTRANE_WERROR "" ON)
if(VISTRANE_WERROR)
    target_compile_options(vistrane PRIVATE -Wall -Werror)
endif()
END
echo 'static int unused;' >>"$tree/commandline/main.cpp"
expect 'a compiler that warns' "$(printf '%s\n' "$work/elsewhere" '[x]')" "$("$tree/run" x 2>/dev/null)"

echo 'a mistake here' >>"$tree/commandline/main.cpp"
out=$("$tree/run" x 2>"$work/errors")
expect 'status of a build that fails' 1 $?
expect 'output of a build that fails' '' "$out"
if ! grep -q 'a mistake here' "$work/errors" || ! grep -q "$tree/build/run.log" "$work/errors"; then
    printf 'a build that fails does not tell why and where:\n%s\n' "$(cat "$work/errors")"
    failures=$((failures + 1))
fi
exit $((failures > 0))
