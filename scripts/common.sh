# shellcheck shell=bash disable=SC2154
# Functions that run, test and bench/run share. Before sourcing it, set root to the folder of the
# tree and log to the file for the output of the tools.

say() {
    printf '%s: %s\n' "${0##*/}" "$*" >&2
}

# fail MESSAGE [LINES]: prints the message and the last lines of the log, and ends the script.
fail() {
    say "$1"
    if [ -s "$log" ]; then
        tail -n "${2:-40}" "$log" >&2
        say "the whole log is in $log"
    fi
    exit 1
}

# lockBuild, unlockBuild: make concurrent calls install and build one after the other. The lock ends
# with the process at the latest.
lockBuild() {
    if ! { mkdir -p "$root/build" && exec 9>>"$root/build/lock"; } 2>/dev/null; then
        say "cannot write to $root/build: remove it, or make $(id -un) its owner"
        exit 1
    fi
    flock 9
}

unlockBuild() {
    exec 9>&-
}

startLog() {
    : >"$log"
}

# packagesOf LIST...: prints the names in the lists, one per line.
packagesOf() {
    sed -e 's/#.*//' -e '/^[[:space:]]*$/d' "$@"
}

# missingPackages LIST...: prints the names in the lists that are not installed.
missingPackages() {
    local wanted
    mapfile -t wanted < <(packagesOf "$@")
    dpkg-query -W -f '${Package} ${db:Status-Status}\n' "${wanted[@]}" 2>/dev/null |
        awk -v wanted="${wanted[*]}" '
            $2 == "installed" { installed[$1] = 1 }
            END {
                count = split(wanted, names, " ")
                for (i = 1; i <= count; i++)
                    if (!(names[i] in installed)) print names[i]
            }'
}

# installPackages LIST...: installs the missing packages, without recommended ones. Does nothing
# without apt-get; the build will then report what is missing.
installPackages() {
    local missing become=()
    command -v dpkg-query >/dev/null && command -v apt-get >/dev/null || return 0
    mapfile -t missing < <(missingPackages "$@")
    [ ${#missing[@]} -gt 0 ] || return 0

    if [ "$(id -u)" -ne 0 ]; then
        if ! command -v sudo >/dev/null; then
            say "these packages are missing, and installing them requires root:"
            printf '  %s\n' "${missing[@]}" >&2
            say "as root: apt-get update && apt-get install --no-install-recommends ${missing[*]}"
            exit 1
        fi
        become=(sudo)
    fi
    say "installing ${#missing[@]} packages (log: $log)"
    local apt=("${become[@]}" env DEBIAN_FRONTEND=noninteractive apt-get -o DPkg::Lock::Timeout=600)
    "${apt[@]}" update >>"$log" 2>&1 9>&- ||
        fail "could not fetch the package lists; missing: ${missing[*]}"
    "${apt[@]}" install -y --no-install-recommends "${missing[@]}" >>"$log" 2>&1 9>&- </dev/null ||
        fail "could not install: ${missing[*]}"
}

# useCompilerCache: uses ccache, if it is installed. The results do not depend on the path of the
# tree, so that another tree with the same contents can use them.
compilerCache=()
useCompilerCache() {
    command -v ccache >/dev/null || return 0
    export CCACHE_BASEDIR=$root CCACHE_NOHASHDIR=1
    export CCACHE_SLOPPINESS=pch_defines,time_macros,include_file_mtime,include_file_ctime
    # Only by the contents of all headers: preprocessed, two headers that differ in comments are the
    # same, but GCC compares a precompiled header with the files that it was made of.
    export CCACHE_DEPEND=1
    compilerCache=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
}

# configure PRESET OPTION...: configures build/PRESET, from scratch if the tree has been moved.
configure() {
    local preset=$1 cache="$root/build/$1/CMakeCache.txt" fresh=()
    shift
    if [ -f "$cache" ] && ! grep -qxF "CMAKE_HOME_DIRECTORY:INTERNAL=$root" "$cache"; then
        fresh=(--fresh)
    fi
    (cd "$root" && cmake "${fresh[@]}" --preset "$preset" "${compilerCache[@]}" "$@") >>"$log" 2>&1 9>&-
}

# build PRESET TARGET...: builds. Uses the launcher, if there is one, because test programs are run
# to list their tests.
launcher=()
build() {
    local preset=$1
    shift
    "${launcher[@]}" ninja -C "$root/build/$preset" "$@" >>"$log" 2>&1 9>&-
}
