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
    local found
    found=$(appstreamcli validate --pedantic --no-net --no-color "$1") || fail "$found"
    ! grep '^ *[EWIP]: ' <<<"$found" || fail "there are findings"
    grep -q '<screenshot type="default">' "$1" || fail "there is no screenshot"
}

# flatpakManifestIsValid MANIFEST METAINFO: the tool reports unknown properties on standard error.
flatpakManifestIsValid() {
    needs flatpak-builder
    local found id
    found=$(flatpak-builder --show-manifest "$1" 2>&1 >/dev/null) || fail "$found"
    [ -z "$found" ] || fail "$found"
    id=$(sed -n 's/.*<id>\(.*\)<.*/\1/p' "$2")
    grep -q "\"id\": \"$id\"" "$1" || fail "the manifest does not have the identifier $id"
    [ "$(basename "$1")" = "$id.json" ] || fail "the manifest has another name"
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

# manualHasTheHelp MANUAL HELP: each command and its description are the same in both.
manualHasTheHelp() {
    needs groff
    local manual
    manual=$(groff -t -man -Tascii -P-cbou -rLL=2000n -rHY=0 "$1" | tr -s ' \n' ' ')
    contains() {
        [[ $manual == *"$(tr -s ' \n' ' ' <<<"$1" | sed 's/^ //; s/ $//')"* ]] ||
            fail "the manual does not say: $1"
    }
    contains "SYNOPSIS $(sed -nE '/^  vistrane/,/^      [^ ]/{/^      [^ ]/d;p}' "$2")"
    contains "$(sed -nE '/^  vistrane capture/,/^  vistrane demo/{/^      [^ ]/p}' "$2")"
    contains "$(sed -n '/^--demo-camera/,$p' "$2")"
    [ "$(grep -c '^      [^ ]' "$2")" -gt 10 ] || fail "the help has no descriptions"
    local line
    while IFS= read -r line; do
        contains "$line"
    done < <(grep '^      [^ ]' "$2")
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

# unitCaptures UNIT PROGRAM: the unit's command, with values as its configuration may have them,
# captures from the demo camera until the unit's signal ends it as the unit expects.
unitCaptures() {
    local word command=() status=0
    work=$(mktemp -d)
    trap 'rm -rf "$work"' EXIT
    export HOME=$work FOLDER="$work/my garden" DEVICE='Demo Camera' INTERVAL=1s OPTIONS=--demo-camera
    read -ra command <<<"$(sed -n 's/^ExecStart=vistrane //p' "$1")"
    [ ${#command[@]} -gt 0 ] || fail "the unit has no command"
    for word in "${!command[@]}"; do
        if [[ ${command[word]} =~ ^\$\{([A-Z]+)\}$ ]]; then
            command[word]=${!BASH_REMATCH[1]}
        elif [[ ${command[word]} =~ ^\$([A-Z]+)$ ]]; then
            command[word]=${!BASH_REMATCH[1]}
        fi
    done
    timeout 20 "$2" "${command[@]}" >/dev/null 2>&1 || true
    [ ! -e "$FOLDER" ] || fail "it makes the folder, which may be a disk that is not mounted"
    mkdir "$FOLDER"
    mkfifo "$work/output"
    # A background command of a script ignores SIGINT, which a command of systemd does not.
    env --default-signal=INT "$2" "${command[@]}" >"$work/output" &
    local program=$!
    exec 7<"$work/output"
    read -r <&7 && read -r <&7 || fail "it captures nothing"
    kill -s "$(sed -n 's/^KillSignal=SIG//p' "$1")" "$program"
    wait "$program" || status=$?
    [ "$status" = "$(sed -n 's/^SuccessExitStatus=//p' "$1")" ] || fail "it ended with $status"
    [ "$(find "$FOLDER" -name '*.png' | wc -l)" -ge 2 ] || fail "there are no frames"
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
    local size icon
    for size in 16 22 24 32 48 64 128 256 512; do
        icon=share/icons/hicolor/${size}x$size/apps/vistrane.png
        # The width and the height of a PNG file.
        [ "$(od -An -j16 -N8 -tx1 "$prefix/$icon" | tr -d ' ')" = "$(printf '%08x%08x' $size $size)" ] ||
            fail "$icon is missing or of another size"
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
