#!/bin/bash
# with_pipewire.sh COMMAND [ARGUMENT...]: runs COMMAND with a PipeWire of its own: a fresh
# XDG_RUNTIME_DIR, a session bus, pipewire and wireplumber, none of which sees this machine's
# devices. Cameras are started with testcam.sh. Exits with COMMAND's status, or with 77 when a tool
# is not installed. Leaves no process and no file behind.
set -u

for tool in dbus-run-session pipewire wireplumber pw-cli pw-mon gst-launch-1.0 setpriv setsid \
            stdbuf; do
    if ! command -v "$tool" >/dev/null; then
        echo "with_pipewire.sh: $tool is not installed" >&2
        exit 77
    fi
done
if [ $# -eq 0 ]; then
    echo "usage: with_pipewire.sh COMMAND [ARGUMENT...]" >&2
    exit 2
fi

if [ "${WITH_PIPEWIRE_STAGE:-}" != inside ]; then
    directory=$(mktemp -d "${TMPDIR:-/tmp}/pipewire.XXXXXX") || exit 1
    chmod 700 "$directory"
    trap 'rm -rf "$directory"' EXIT
    # Filters the session bus' own warnings, about a limit that a container may not raise.
    XDG_RUNTIME_DIR=$directory WITH_PIPEWIRE_STAGE=inside \
        dbus-run-session -- "$0" "$@" \
        2> >(grep -v --line-buffered '^dbus-daemon\[' >&2)
    status=$?
    exit $status
fi
unset WITH_PIPEWIRE_STAGE PIPEWIRE_REMOTE PIPEWIRE_RUNTIME_DIR

# Tests find only the cameras that they start, and leave sound cards alone.
configuration=$XDG_RUNTIME_DIR/configuration
mkdir -p "$configuration/wireplumber/main.lua.d" "$configuration/wireplumber/bluetooth.lua.d" \
         "$configuration/wireplumber/wireplumber.conf.d"
cat >"$configuration/wireplumber/main.lua.d/51-no-devices.lua" <<'LUA'
alsa_monitor.enabled = false
v4l2_monitor.enabled = false
libcamera_monitor.enabled = false
LUA
echo 'bluez_monitor.enabled = false' \
    >"$configuration/wireplumber/bluetooth.lua.d/51-no-devices.lua"
cat >"$configuration/wireplumber/wireplumber.conf.d/51-no-devices.conf" <<'CONF'
wireplumber.profiles = {
  main = {
    hardware.audio = disabled
    hardware.bluetooth = disabled
    hardware.video-capture = disabled
  }
}
CONF

stopEverything() {
    trap - EXIT
    local file
    for file in "$XDG_RUNTIME_DIR"/testcam-*.pid; do
        if [ -e "$file" ]; then
            kill -KILL -- "-$(cat "$file")" 2>/dev/null
        fi
    done
    kill -KILL "${sessionManager:-}" "${daemon:-}" 2>/dev/null
    wait "${sessionManager:-}" "${daemon:-}" 2>/dev/null
}
trap stopEverything EXIT
trap 'exit 130' INT
trap 'exit 143' TERM HUP

# waitUntilReady PROCESS COMMAND...: waits until COMMAND succeeds, at most ten seconds.
waitUntilReady() {
    local process=$1 attempt
    shift
    for ((attempt = 0; attempt < 200; ++attempt)); do
        if "$@"; then
            return
        fi
        kill -0 "$process" 2>/dev/null || break
        sleep 0.05
    done
    echo "with_pipewire.sh: PipeWire did not get ready" >&2
    cat "$XDG_RUNTIME_DIR"/*.log >&2
    exit 1
}

answers() {
    pw-cli info 0 >/dev/null 2>&1
}

# The session manager creates its metadata last, before its scripts run.
isManaged() {
    pw-cli ls Metadata 2>/dev/null | grep -q '"default"'
}

# keep PROGRAM: runs it again whenever it ends, as a desktop does. Its number is in PROGRAM.pid. The
# death signals end it when this script is killed.
keep() {
    exec setpriv --pdeathsig KILL bash -c '
        while :; do
            setpriv --pdeathsig KILL bash -c '\''echo $$ >"$XDG_RUNTIME_DIR/$0.pid"; exec "$0"'\'' "$0"
            sleep 0.1
        done' "$1" >"$XDG_RUNTIME_DIR/$1.log" 2>&1
}

keep pipewire &
daemon=$!
waitUntilReady $daemon answers
XDG_CONFIG_HOME=$configuration XDG_STATE_HOME=$XDG_RUNTIME_DIR/state keep wireplumber &
sessionManager=$!
waitUntilReady $sessionManager isManaged

"$@" &
command=$!
trap 'kill -TERM $command 2>/dev/null; exit 130' INT
trap 'kill -TERM $command 2>/dev/null; exit 143' TERM HUP
wait $command
exit $?
