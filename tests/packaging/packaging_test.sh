#!/usr/bin/env bash
# packaging_test.sh CHECK ARGUMENT...: runs one check of the packaging. Exit status 77: its tool is
# not installed.
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

# desktopActionsAgree ENTRY SOURCE: the desktop offers the other applications of the program's menus,
# in their order and with their addresses.
desktopActionsAgree() {
    local rows
    rows=$(sed -n 's/^ *{"\(.*\)", "\(.*\)"}.*/\1 \2/p' "$2")
    [ -n "$rows" ] || fail "the source has no applications"
    diff <(sed -n '/^Name=Vistrane$/d; s/^Name=//p; s/^Exec=xdg-open //p' "$1" | paste -d ' ' - -) \
        <(cat <<<"$rows") || fail "the actions differ"
    [ "$(sed -n 's/^Actions=//p' "$1")" = "$(cut -d ' ' -f 1 <<<"$rows" | tr '\n' ';')" ] ||
        fail "the list of actions differs"
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

# optionsIn, commandsIn: print the long options and the commands in standard input, one per line,
# without duplicates.
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

# completionsAgree FOLDER PROGRAM: the shells know the options of the help, and no others.
completionsAgree() {
    local help shell
    help=$("$2" --help | optionsIn)
    for shell in vistrane.bash _vistrane; do
        diff <(grep -v '^#' "$1/$shell" | optionsIn) <(printf '%s\n' "$help") ||
            fail "$shell has other options"
    done
    diff <(sed -n 's/.* -l \([a-z0-9-]*\) .*/--\1/p; s/.* -l \([a-z0-9-]*\)$/--\1/p' \
        "$1/vistrane.fish" | sort -u) <(printf '%s\n' "$help") ||
        fail "vistrane.fish has other options"
}

# bashCompletes FILE PROGRAM: completes some lines.
bashCompletes() {
    local program=$2
    # shellcheck source=/dev/null
    . "$1"
    expectCompleted() { # EXPECTED WORD...
        COMP_WORDS=("${@:2}")
        COMP_CWORD=$((${#COMP_WORDS[@]} - 1))
        COMPREPLY=()
        _vistrane || true
        [ "${COMPREPLY[*]}" = "$1" ] ||
            fail "completed '${*:2}' as '${COMPREPLY[*]}' instead of '$1'"
    }
    cd "$(mktemp -d)" || fail "no folder"
    mkdir folder
    expectCompleted 'compile' "$program" comp
    expectCompleted 'capture' "$program" help ca
    expectCompleted '--create --count --compile --crf' "$program" capture folder --c
    expectCompleted 'folder' "$program" compile fo
    expectCompleted 'Demo\ Camera' "$program" capture folder --demo-camera --device ''
    expectCompleted 'Demo\ Camera' "$program" capture folder --demo-camera --device 'Demo\ C'
    expectCompleted '' "$program" capture folder --demo-camera --device X
    expectCompleted 'veryfast veryslow' "$program" compile folder --x264-preset very
}

# Skips shortcuts with Alt, which are visible in the window.
manualNamesEveryKey() {
    local keys key
    keys=$(sed -n '/name="shortcut"/,/<\/property>/s/.*<string>\(.*\)<\/string>.*/\1/p' "$2" | grep -v '^Alt')
    [ -n "$keys" ] || fail "the window has no keys"
    while read -r key; do
        grep -q "^${key//+/[+]}"$'\t' "$1" || fail "the manual does not name $key"
    done <<<"$keys"
    [ "$(grep -c $'^[^.]*\t' "$1")" = "$(wc -l <<<"$keys")" ] || fail "the manual names more keys"
}

# install CMAKE BUILD: installs into the folder $prefix. $module is the encoder module in it, and
# $work a folder for the check.
install() {
    work=$(mktemp -d)
    trap 'rm -rf "$work"' EXIT
    prefix=$work/prefix
    "$1" --install "$2" --prefix "$prefix" >"$work/log" || fail "$(cat "$work/log")"
    module=$(find "$prefix" -path '*/vistrane/vistrane-encoder-*.so')
    [ -s "$module" ] || fail "the encoder module is not installed"
}

installIsComplete() {
    local file
    install "$@"
    for file in bin/vistrane share/applications/vistrane.desktop \
        share/metainfo/com.example.vistrane.metainfo.xml \
        share/icons/hicolor/scalable/apps/vistrane.svg share/man/man1/vistrane.1 \
        share/bash-completion/completions/vistrane share/zsh/site-functions/_vistrane \
        share/fish/vendor_completions.d/vistrane.fish lib/systemd/user/vistrane-capture@.service \
        share/doc/vistrane/LICENSE; do
        [ -s "$prefix/$file" ] || fail "$file is not installed"
    done
    "$prefix/bin/vistrane" --version >/dev/null || fail "the installed program does not run"
    # The entries must name the installed files.
    grep -qx 'Exec=vistrane %f' "$prefix/share/applications/vistrane.desktop" ||
        fail "the desktop entry starts another program"
    grep -qx 'Icon=vistrane' "$prefix/share/applications/vistrane.desktop" ||
        fail "the desktop entry has another icon"
    grep -q '<launchable type="desktop-id">vistrane.desktop<' \
        "$prefix/share/metainfo/com.example.vistrane.metainfo.xml" ||
        fail "the metainfo names another desktop entry"
    if grep -rIl '@[A-Z_]*@' "$prefix/share"; then
        fail "a placeholder was not replaced"
    fi
}

# The installed program makes a movie of two frames.
compiles() {
    HOME=$work "$prefix/bin/vistrane" compile "$work/frames" >"$work/log" 2>&1
}

refusesModuleThatIs() {
    ! compiles || fail "a movie is made although the module is $1"
    grep -qF "The movie cannot be made: the H.264 encoder cannot be loaded ($module: " "$work/log" ||
        fail "a module that is $1 is not named: $(cat "$work/log")"
    [ "$(ls -A "$work/frames")" = $'a.png\nb.png' ] || fail "something was left behind"
}

# installedProgramMakesMovies CMAKE BUILD FRAME
installedProgramMakesMovies() {
    install "$1" "$2"
    mkdir "$work/frames"
    cp "$3" "$work/frames/a.png"
    cp "$3" "$work/frames/b.png"
    mv "$prefix" "$work/moved"
    module=$work/moved${module#"$prefix"}
    prefix=$work/moved
    compiles || fail "the moved program makes no movie: $(cat "$work/log")"
    rm "$work"/frames/*.mov
    echo 'not a library' >"$module"
    refusesModuleThatIs broken
    rm "$module"
    refusesModuleThatIs missing
}

everyLibraryIsSeen() {
    needs dpkg-shlibdeps
    local found name
    install "$@"
    mkdir -p "$work/debian/vistrane/DEBIAN"
    printf 'Source: vistrane\n\nPackage: vistrane\nArchitecture: any\n' >"$work/debian/control"
    mv "$prefix" "$work/debian/vistrane/usr"
    cd "$work"
    module=debian/vistrane/usr${module#"$prefix"}
    found=$(dpkg-shlibdeps -O debian/vistrane/usr/bin/vistrane "$module" 2>&1) || fail "$found"
    [[ $found != *warning* ]] || fail "$found"
    for name in libavcodec libavutil libgstreamer libicu libisal libpng libqt6widgets; do
        [[ $found == *$name* ]] || fail "$name is not among the dependencies: $found"
    done
}

"$@"
