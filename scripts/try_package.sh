#!/usr/bin/env bash
# Tries a Debian package in a clean Debian 12: scripts/try_package.sh PACKAGE
#
# scripts/package --try calls this. Requires root. In a new system that has nothing but what Debian
# requires and systemd, which would leave files of its own, it installs the package, captures from the
# demo camera, compiles, opens the window on a virtual display, and removes the package; then nothing
# may be left but the user's files. Prints a line for each step. The picture of the window and the
# output of the tools are in build/try/.
set -euo pipefail
export LC_ALL=C.UTF-8
root=$(dirname "$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")")
results=$root/build/try
log=$results/log

fail() {
    echo "try: $*" >&2
    tail -n 30 "$log" >&2
    echo "try: the whole log is in $log" >&2
    exit 1
}

if [ "${2-}" != --inside ]; then
    [ "$(id -u)" = 0 ] || { echo 'try: needs root, for a system of its own' >&2 && exit 1; }
    mkdir -p "$results"
    : >"$log"
    work=$(mktemp -d)
    chmod 755 "$work"
    trap 'rm -rf --one-file-system "$work"' EXIT
    # Mounts and processes end with the namespaces.
    unshare --mount --pid --fork --kill-child -- "$0" "$(readlink -f "$1")" --inside "$work"
    exit
fi
package=$1
system=$3/system

step() {
    printf '%s ... ' "$1" | tee -a "$log"
}
done_() {
    echo "${1:-ok}" | tee -a "$log"
}
# inside COMMAND...: runs a command as root of the new system; asUser, as its user.
inside() {
    chroot "$system" env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin LC_ALL=C.UTF-8 \
        DEBIAN_FRONTEND=noninteractive "$@" </dev/null
}
asUser() {
    inside setpriv --reuid=photographer --regid=photographer --init-groups env -C "$home" \
        HOME="$home" XDG_RUNTIME_DIR="$home" "$@"
}
apt() {
    inside apt-get -y --no-install-recommends "$@" >>"$log" 2>&1
}
# Everything but what apt and dpkg themselves keep, and caches that the system makes anew.
files() {
    (cd "$system" && find . -xdev \( -path ./tmp -o -path ./run -o -path ./var/lib/dpkg -o \
        -path ./var/lib/apt -o -path ./var/cache -o -path ./var/log -o -path ".$home" \) -prune -o \
        -print | sort)
}
packages() {
    # shellcheck disable=SC2016
    inside dpkg-query -W -f '${Package} ${db:Status-Abbrev}\n'
}
home=/home/photographer
project=$home/frames

step 'A clean Debian 12'
apt-config dump | grep -E '^Acquire::' | grep -v '""' >"$3/apt.conf"
mmdebstrap --variant=minbase --include=systemd,dbus-user-session --aptopt="$3/apt.conf" \
    bookworm "$system" >>"$log" 2>&1 || fail 'no system'
mount -t proc proc "$system/proc"
mount --rbind /dev "$system/dev"
printf '#!/bin/sh\nexit 101\n' >"$system/usr/sbin/policy-rc.d"
chmod +x "$system/usr/sbin/policy-rc.d"
cp /etc/resolv.conf /etc/hosts "$system/etc/"
inside useradd --create-home photographer
apt update || fail 'no package lists'
files >"$3/files.before"
packages >"$3/packages.before"
done_ "$(wc -l <"$3/packages.before") packages"

step 'Install'
cp "$package" "$system/tmp/vistrane.deb"
apt install /tmp/vistrane.deb || fail 'it cannot be installed'
packages >"$3/packages.with"
done_ "$(wc -l <"$3/packages.with") packages"

step 'Start'
version=$(asUser vistrane --version 2>>"$log") || fail 'it does not start'
cameras=$(asUser vistrane devices --demo-camera 2>>"$log") || fail 'it lists no cameras'
[ "$cameras" = 'Demo Camera' ] || fail "the cameras are: $cameras"
done_ "$version"

step 'Capture'
frames=$(asUser vistrane capture "$project" --create --demo-camera --device 'Demo Camera' \
    --interval 1 --count 5 2>>"$log") || fail 'it does not capture'
[ "$(wc -l <<<"$frames")" = 5 ] || fail "the frames are: $frames"
done_ '5 frames'

step 'Compile'
asUser vistrane compile "$project" --json >"$3/movie.json" 2>>"$log" || fail 'it makes no movie'
movie=$(sed 's/.*"path": *"\([^"]*\)".*/\1/' "$3/movie.json")
facts=$(ffprobe -v error -show_entries stream=codec_name,width,height,nb_frames -of csv=p=0 \
    "$system$movie" 2>>"$log") || fail 'another program cannot read the movie'
[ "$facts" = h264,1280,720,5 ] || fail "the movie is $facts"
done_ "$facts"

step 'Window'
mount --bind "$(mktemp -d)" /tmp/.X11-unix 2>/dev/null || mkdir -p /tmp/.X11-unix
mkdir -p "$system/tmp/.X11-unix"
mount --bind /tmp/.X11-unix "$system/tmp/.X11-unix"
exec 8>"$3/display"
Xvfb -displayfd 8 -screen 0 1440x900x24 >>"$log" 2>&1 8>&8 &
for _ in {1..100}; do
    [ ! -s "$3/display" ] || break
    sleep 0.1
done
display=:$(cat "$3/display")
[ "$display" != : ] || fail 'there is no virtual display'
# shellcheck disable=SC2016
asUser env DISPLAY="$display" sh -c 'echo $$ >/tmp/window && exec vistrane "$0" --demo-camera' \
    "$project" >>"$log" 2>&1 &
window=$!
titles() {
    xwininfo -display "$display" -root -tree 2>>"$log" | grep -c '"Vistrane' || true
}
for _ in {1..300}; do
    [ "$(titles)" = 0 ] || break
    sleep 0.1
done
[ "$(titles)" != 0 ] || fail 'there is no window'
sleep 3 # for the picture only
ffmpeg -v error -y -f x11grab -video_size 1440x900 -i "$display" -frames:v 1 "$results/window.png" \
    >>"$log" 2>&1 || fail 'no picture of the window'
kill -TERM "$(cat "$system/tmp/window")"
status=0
wait "$window" || status=$?
[ "$status" = 143 ] || fail "the window ended with status $status"
[ -s "$system$home/.config/vistrane/settings" ] || fail 'the settings were not saved'
done_ "build/try/window.png"

step 'Remove'
(cd "$system$home" && find . -type f | sort) >"$3/user.before"
apt purge vistrane || fail 'it cannot be removed'
apt autoremove --purge || fail 'its dependencies cannot be removed'
(cd "$system$home" && find . -type f | sort) | diff "$3/user.before" - >>"$log" ||
    fail 'files of the user are gone'
packages | diff "$3/packages.before" - >>"$log" || fail 'packages are left'
files | diff "$3/files.before" - >"$results/left" || fail "left behind: $(cat "$results/left")"
done_ "no trace but the user's $(wc -l <"$3/user.before") files"
