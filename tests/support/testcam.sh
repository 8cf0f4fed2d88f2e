#!/bin/bash
# testcam.sh start|stop|wait|freeze|thaw [NAME]: a PipeWire camera called NAME (one word, "Testcam" by default),
# for use inside with_pipewire.sh. "start" returns when the camera is listed, "stop" when it is gone,
# as if it were unplugged. TESTCAM_SOURCE and TESTCAM_CAPS change the picture:
#
#     TESTCAM_SOURCE='videotestsrc is-live=true pattern=red' testcam.sh start Redcam
#
# GStreamer's provider stops for good when its last reader leaves. A real camera does not, so the
# provider is restarted then; for some tenths of a second the camera is not listed. "wait" returns
# when it is listed again. Use it between two programs that read the camera.
set -u

verb=${1:-}
name=${2:-Testcam}
node=$(printf %s "$name" | tr '[:upper:]' '[:lower:]' | tr -c '[:alnum:]' '_')
pidFile=${XDG_RUNTIME_DIR:?run this inside with_pipewire.sh}/testcam-$node.pid
log=$XDG_RUNTIME_DIR/testcam-$node.log
source=${TESTCAM_SOURCE:-videotestsrc is-live=true}
caps=${TESTCAM_CAPS:-video/x-raw,format=I420,width=1280,height=720,framerate=30/1}

case $name in
    *[!A-Za-z0-9_-]*|"")
        echo "testcam.sh: the name '$name' is not one plain word" >&2
        exit 2
        ;;
esac

isListed() {
    pw-cli ls Node 2>/dev/null | grep -q "node.name = \"$node\""
}

# waitUntil COMMAND...: at most ten seconds.
waitUntil() {
    local attempt
    for ((attempt = 0; attempt < 200; ++attempt)); do
        if "$@"; then
            return 0
        fi
        sleep 0.05
    done
    return 1
}

isNotListed() {
    ! isListed
}

# Reads PipeWire's events until the provider's node or the link of a reader is removed.
awaitDeparture() {
    local line id="" kind="" ours="" removed=no
    declare -A links=()
    while IFS= read -r line; do
        case $line in
            added:*|changed:*) removed=no ;;
            removed:*) removed=yes ;;
            *"	id: "*)
                id=${line##*id: }
                if [ $removed = yes ] && { [ "$id" = "$ours" ] || [ -n "${links[$id]:-}" ]; }; then
                    return
                fi
                ;;
            *"	type: PipeWire:Interface:"*) kind=${line##*Interface:} ;;
            *"	output-node-id: $ours"*)
                if [ -n "$ours" ]; then
                    links[$id]=1
                fi
                ;;
            *"node.name = \"$node\""*)
                case $kind in
                    Node*) ours=$id ;;
                esac
                ;;
        esac
    done
}

superviseProvider() {
    while [ -S "$XDG_RUNTIME_DIR/pipewire-0" ]; do
        # shellcheck disable=SC2086 # the source is a list of words
        gst-launch-1.0 -q $source ! "$caps" ! pipewiresink mode=provide \
            "stream-properties=props,media.class=Video/Source,node.name=$node,node.description=$name" &
        local provider=$!
        exec {events}< <(exec stdbuf -oL pw-mon -N 2>/dev/null)
        local monitor=$!
        awaitDeparture <&"$events"
        exec {events}<&-
        kill -KILL "$provider" "$monitor" 2>/dev/null
        wait "$provider" "$monitor" 2>/dev/null
    done
}

case $verb in
    start)
        if [ -e "$pidFile" ]; then
            "$0" stop "$name"
        fi
        setsid "$0" supervise "$name" </dev/null >"$log" 2>&1 &
        echo $! >"$pidFile"
        if ! waitUntil isListed; then
            echo "testcam.sh: $name did not come up" >&2
            cat "$log" >&2
            exit 1
        fi
        ;;
    wait)
        # A provider that has just lost its reader may still be listed for a moment.
        sleep 0.2
        if ! waitUntil isListed; then
            echo "testcam.sh: $name is not there" >&2
            exit 1
        fi
        ;;
    stop)
        if [ -e "$pidFile" ]; then
            kill -KILL -- "-$(cat "$pidFile")" 2>/dev/null
            rm -f "$pidFile"
        fi
        if ! waitUntil isNotListed; then
            echo "testcam.sh: $name is still there" >&2
            exit 1
        fi
        ;;
    freeze)
        kill -STOP -- "-$(cat "$pidFile")"
        ;;
    thaw)
        kill -CONT -- "-$(cat "$pidFile")"
        ;;
    supervise)
        superviseProvider
        ;;
    *)
        echo "usage: testcam.sh start|stop|wait|freeze|thaw [NAME]" >&2
        exit 2
        ;;
esac
