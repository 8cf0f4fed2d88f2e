#!/usr/bin/env bash
# check_includes_selftest.sh: check_includes.sh passes a clean tree and finds each planted fault.
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
        printf 'refused but right: %s in %s\n%s\n' "$2" "$1" "$out"
        failures=$((failures + 1))
    fi
}

finds() { # PATH LINE
    plant "$1" "$2"
    if out=$(check); then
        printf 'not found: %s in %s\n' "$2" "$1"
        failures=$((failures + 1))
    elif [[ $out != "$1:2: "* && $out != "$1:1: "* ]]; then
        printf 'found, but not told where: %s in %s\n%s\n' "$2" "$1" "$out"
        failures=$((failures + 1))
    fi
    rm "$tree/$1"
}

accepts app/a.cpp '#include <vector>'
accepts folder/a.h '#include "app/AppDelegate.h"'
accepts compiler/a.cpp '#include "platform/corevideo/CoreVideo.h"'
accepts platform/media/movies/a.cpp '#include <libavcodec/avcodec.h>'
accepts platform/media/cameras/a_linux.cpp '#include <sys/inotify.h>'
accepts app/words.cpp '// #include <unistd.h>'

finds app/b.cpp '#include <unicode/coll.h>'
finds folder/b.cpp '#include <unistd.h>'
finds capture/b.h '#  include <gst/gst.h>'
finds preview/b.cpp '#include "platform/sim/Sim.h"'
finds compiler/b.cpp '#include "platform/media/movies/MovieWriter.h"'
finds infopanel/b.cpp '#include "platform/console/Console.h"'
finds app/b.cpp '#include "AppDelegate.h"'
finds app/b.cpp '#include "../platform/sim/Sim.h"'
finds app/b.cpp '#include "platform/appkit/../sim/Sim.h"'
finds app/b.cpp '#include CAMERA_HEADER'
finds app/b.cpp 'import <thread>;'
finds app/b_linux.cpp '#include <sys/inotify.h>'
finds platform/foundation/b.h '#include "app/AppDelegate.h"'
finds platform/appkit/b.h '#include "platform/sim/Sim.h"'
finds platform/sim/b.cpp '#include <unistd.h>'
finds platform/sim/b.cpp '#include "app/AppDelegate.h"'
finds platform/media/movies/b.cpp '#include <gst/gst.h>'
finds platform/media/cameras/b.cpp '#include <sys/inotify.h>'
finds platform/console/b.cpp '#include "commandline/main.h"'
finds tests/app/b.cpp '#include <png.h>'
finds elsewhere/b.cpp '#include <vector>'
finds b.cpp '#include <vector>'

rm -r "$tree"
mkdir "$tree"
if check >/dev/null; then
    echo 'a tree without sources passes'
    failures=$((failures + 1))
fi
exit $((failures > 0))
