#!/usr/bin/env bash
# packaging_test.sh CHECK ARGUMENT...: one check of what is installed beside the program. 77 says
# that the tool for it is not there.
set -euo pipefail
export LC_ALL=C.UTF-8

needs() {
    command -v "$1" >/dev/null || {
        echo "$1 is not installed"
        exit 77
    }
}

fail() {
    echo "$*" >&2
    exit 1
}

desktopEntryIsValid() {
    needs desktop-file-validate
    local found
    found=$(desktop-file-validate "$1" 2>&1) || fail "$found"
    [ -z "$found" ] || fail "$found"
}

metainfoIsValid() {
    needs appstreamcli
    appstreamcli validate --no-net --no-color "$1"
}

manualIsWellFormed() {
    needs groff
    local found
    found=$(groff -t -man -Tutf8 -ww -z "$1" 2>&1)
    [ -z "$found" ] || fail "$found"
}

# Long options and commands, one a line, each once.
optionsIn() {
    grep -oE -- '--[a-z][a-z0-9-]+' | sort -u
}

commandsIn() {
    grep -oE -- '(^|[^a-z])vistrane [a-z]+' | grep -oE '[a-z]+$' | sort -u
}

manualAndHelpAgree() {
    needs groff
    local manual help
    manual=$(groff -t -man -Tascii -P-cbou -rLL=300n "$1")
    help=$("$2" --help)
    [ -n "$(optionsIn <<<"$help")" ] || fail "the help names no option"
    diff <(optionsIn <<<"$manual") <(optionsIn <<<"$help") || fail "the options differ"
    [ -n "$(commandsIn <<<"$help")" ] || fail "the help names no command"
    diff <(sed -n '/^SYNOPSIS/,/^DESCRIPTION/p' <<<"$manual" | commandsIn) \
        <(sed -n '/^Usage/,$p' <<<"$help" | commandsIn) || fail "the commands differ"
}

# Mnemonics, with Alt, are seen in the window itself.
manualNamesEveryKey() {
    local keys key
    keys=$(sed -n '/name="shortcut"/,/<\/property>/s/.*<string>\(.*\)<\/string>.*/\1/p' "$2" | grep -v '^Alt')
    [ -n "$keys" ] || fail "the window has no keys"
    while read -r key; do
        grep -q "^${key//+/[+]}"$'\t' "$1" || fail "the manual does not name $key"
    done <<<"$keys"
    [ "$(grep -c $'^[^.]*\t' "$1")" = "$(wc -l <<<"$keys")" ] || fail "the manual names more keys"
}

installIsComplete() {
    local cmake=$1 build=$2 file
    prefix=$(mktemp -d) # not local: for the trap
    trap 'rm -rf "$prefix"' EXIT
    "$cmake" --install "$build" --prefix "$prefix" >"$prefix/log" || fail "$(cat "$prefix/log")"
    for file in bin/vistrane share/applications/vistrane.desktop \
        share/metainfo/com.example.vistrane.metainfo.xml \
        share/icons/hicolor/scalable/apps/vistrane.svg share/man/man1/vistrane.1; do
        [ -s "$prefix/$file" ] || fail "$file is not installed"
    done
    "$prefix/bin/vistrane" --version >/dev/null || fail "the installed program does not run"
    # What the entries name must be among what was installed.
    grep -qx 'Exec=vistrane %f' "$prefix/share/applications/vistrane.desktop" ||
        fail "the desktop entry starts something else"
    grep -qx 'Icon=vistrane' "$prefix/share/applications/vistrane.desktop" ||
        fail "the desktop entry has another icon"
    grep -q '<launchable type="desktop-id">vistrane.desktop<' \
        "$prefix/share/metainfo/com.example.vistrane.metainfo.xml" ||
        fail "the metainfo names another desktop entry"
    if grep -rIl '@[A-Z_]*@' "$prefix/share"; then
        fail "something was left to be filled in"
    fi
}

"$@"
