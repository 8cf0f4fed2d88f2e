#!/usr/bin/env bash
# core_properties_selftest.sh CMAKE ROOT: tests that configuring a tree succeeds with a clean core,
# and fails with the reason for each planted fault.
set -eu
cmake=$1
root=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir -p "$work/tree/app" "$work/tree/elsewhere"
: >"$work/tree/app/part.cpp"
: >"$work/tree/elsewhere/part.cpp"
failures=0

configure() { # PLANT
    rm -rf "$work/build"
    cat >"$work/tree/CMakeLists.txt" <<END
cmake_minimum_required(VERSION 3.25)
project(planted LANGUAGES CXX)
include_directories(\${PROJECT_SOURCE_DIR})
add_library(vistrane_interfaces STATIC app/part.cpp)
add_library(other STATIC elsewhere/part.cpp)
add_library(vistrane_core STATIC app/part.cpp)
target_link_libraries(vistrane_core PUBLIC vistrane_interfaces)
include($root/cmake/CoreIndependence.cmake)
cmake_language(DEFER CALL vistrane_require_independence vistrane_core vistrane_interfaces)
cmake_language(DEFER CALL vistrane_require_sources_in vistrane_core app)
$1
END
    "$cmake" -S "$work/tree" -B "$work/build" -DCMAKE_CXX_COMPILER_WORKS=1 2>&1
}

accepts() { # PLANT
    if ! out=$(configure "$1"); then
        printf 'refused, but valid: %s\n%s\n' "$1" "$out"
        failures=$((failures + 1))
    fi
}

finds() { # PLANT
    if out=$(configure "$1"); then
        printf 'not found: %s\n' "$1"
        failures=$((failures + 1))
    elif [[ $out != *"vistrane_core must"* ]]; then
        printf 'failed for another reason: %s\n%s\n' "$1" "$out"
        failures=$((failures + 1))
    fi
}

accepts ''
accepts 'target_link_options(vistrane_core PRIVATE -fsanitize=address)'

finds 'target_link_libraries(vistrane_core PRIVATE other)'
finds 'target_link_libraries(vistrane_core INTERFACE other)'
finds 'target_link_libraries(vistrane_core PUBLIC m)'
finds 'target_link_options(vistrane_core PRIVATE -lz)'
finds 'target_link_options(vistrane_core INTERFACE -lz)'
finds 'target_link_directories(vistrane_core PUBLIC elsewhere)'
finds 'set_target_properties(vistrane_core PROPERTIES STATIC_LIBRARY_OPTIONS other.o)'
finds 'set_target_properties(vistrane_core PROPERTIES LINK_FLAGS -lz)'
finds 'target_include_directories(vistrane_core PRIVATE elsewhere)'
finds 'target_sources(vistrane_core PRIVATE elsewhere/part.cpp)'
exit $((failures > 0))
