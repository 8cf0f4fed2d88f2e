#!/usr/bin/env bash
# window_pictures_test.sh TOOL PROGRAM: pictures can be taken.
set -euo pipefail
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
mkdir "$folder/pictures" "$folder/temporary"

# take PICTURES NAME...: takes these pictures and expects the files NAME.png.
take() {
    TMPDIR=$folder/temporary timeout 120 "$tool" "$folder/pictures" "$program" "$1" \
        >"$folder/log" 2>&1 || {
        cat "$folder/log"
        exit 1
    }
    for name in "${@:2}"; do
        [ -s "$folder/pictures/$name.png" ] || {
            echo "$name.png was not taken"
            exit 1
        }
    done
}

tool=$1
program=$2
take tips tip1 tip2 tip3 tip4 tip5
take dark window-dark
take review-double review-double-1 review-double-2 review-double-3 review-double-4
take review-small-first review-small-first-1 review-small-first-2 review-small-first-3
[ ! -e "$folder/temporary/Time Lapse" ] || {
    echo "the folder of frames was left behind"
    exit 1
}
