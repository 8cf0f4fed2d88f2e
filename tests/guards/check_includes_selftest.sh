#!/usr/bin/env bash
# check_includes_selftest.sh: tests that check_includes.sh accepts a clean tree and finds each
# planted fault.
set -eu
here=$(dirname "$(readlink -f "$0")")
tree=$(mktemp -d)
trap 'rm -rf "$tree"' EXIT
failures=0

plant() { # PATH LINE
    mkdir -p "$tree/$(dirname "$1")"
    printf '#pragma once\n%s\n' "$2" >"$tree/$1"
}

check() {
    bash "$here/check_includes.sh" "$here/includes.rules" "$tree" 2>&1
}

accepts() { # PATH LINE
    plant "$1" "$2"
    if ! out=$(check); then
        printf 'refused, but valid: %s in %s\n%s\n' "$2" "$1" "$out"
        failures=$((failures + 1))
    fi
}

finds() { # PATH LINE
    plant "$1" "$2"
    if out=$(check); then
        printf 'not found: %s in %s\n' "$2" "$1"
        failures=$((failures + 1))
    elif [[ $out != "$1:2: "* && $out != "$1:1: "* ]]; then
        printf 'found, but without its place: %s in %s\n%s\n' "$2" "$1" "$out"
        failures=$((failures + 1))
    fi
    rm "$tree/$1"
}

accepts core/app/a.cpp '#include <vector>'
accepts core/folder/a.h '#include "core/app/AppDelegate.h"'
accepts core/compiler/a.cpp '#include "platform/corevideo/CoreVideo.h"'
accepts backends/movies/a.cpp '#include <libavcodec/avcodec.h>'
accepts backends/cameras/a_linux.cpp '#include <sys/inotify.h>'
accepts core/app/words.cpp '// #include <unistd.h>'

finds core/app/b.cpp '#include <unicode/coll.h>'
finds core/folder/b.cpp '#include <unistd.h>'
finds core/capture/b.h '#  include <gst/gst.h>'
finds core/preview/b.cpp '#include "backends/sim/Sim.h"'
finds core/compiler/b.cpp '#include "backends/movies/MovieWriter.h"'
finds core/infopanel/b.cpp '#include "backends/console/Console.h"'
finds core/app/b.cpp '#include "AppDelegate.h"'
finds core/app/b.cpp '#include "../backends/sim/Sim.h"'
finds core/app/b.cpp '#include "platform/appkit/../sim/Sim.h"'
finds core/app/b.cpp '#include CAMERA_HEADER'
finds core/app/b.cpp 'import <thread>;'
finds core/app/b_linux.cpp '#include <sys/inotify.h>'
finds platform/foundation/b.h '#include "core/app/AppDelegate.h"'
finds platform/appkit/b.h '#include "backends/sim/Sim.h"'
finds backends/sim/b.cpp '#include <unistd.h>'
finds backends/sim/b.cpp '#include "core/app/AppDelegate.h"'
finds backends/movies/b.cpp '#include <gst/gst.h>'
finds backends/cameras/b.cpp '#include <sys/inotify.h>'
finds backends/console/b.cpp '#include "frontends/commandline/main.h"'
finds tests/core/app/b.cpp '#include <png.h>'
finds backends/posix/b.cpp '#include "backends/pictures/MediaImage.h"'
finds backends/pictures/b.cpp '#include "frontends/window/WindowSession.h"'
finds elsewhere/b.cpp '#include <vector>'
finds b.cpp '#include <vector>'

# A cycle in the rules themselves is a fault, however long it is.
sed 's|^folder backends/icu .*|& backends/cameras|' "$here/includes.rules" >"$tree/cyclic.rules"
if out=$(bash "$here/check_includes.sh" "$tree/cyclic.rules" "$tree" 2>&1) ||
    [[ $out != *'a cycle: '*'backends/icu'* ]]; then
    printf 'the cycle through backends/icu was not found:\n%s\n' "$out"
    failures=$((failures + 1))
fi
sed 's|^folder core .*|& backends/unknown|' "$here/includes.rules" >"$tree/unknown.rules"
if bash "$here/check_includes.sh" "$tree/unknown.rules" "$tree" >/dev/null 2>&1; then
    echo 'a rule that names an unknown folder passes'
    failures=$((failures + 1))
fi

rm -r "$tree"
mkdir "$tree"
if check >/dev/null; then
    echo 'a tree without sources passes'
    failures=$((failures + 1))
fi
exit $((failures > 0))
