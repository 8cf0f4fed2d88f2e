#!/usr/bin/env bash
# tip_pictures_test.sh TOOL PROGRAM: the pictures of the tips and of the window can be made.
set -euo pipefail
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
mkdir "$folder/pictures" "$folder/temporary"
TMPDIR=$folder/temporary timeout 120 "$1" "$folder/pictures" "$2" >"$folder/log" 2>&1 || {
    cat "$folder/log"
    exit 1
}
for number in 1 2 3 4 5; do
    [ -s "$folder/pictures/tip$number.png" ] || {
        echo "tip$number.png was not taken"
        exit 1
    }
done
for look in light dark; do
    TMPDIR=$folder/temporary timeout 120 "$1" "$folder/pictures" "$2" $look >"$folder/log" 2>&1 || {
        cat "$folder/log"
        exit 1
    }
    [ -s "$folder/pictures/window-$look.png" ] || {
        echo "window-$look.png was not taken"
        exit 1
    }
done
[ ! -e "$folder/temporary/Time Lapse" ] || {
    echo "the folder of frames was left behind"
    exit 1
}
