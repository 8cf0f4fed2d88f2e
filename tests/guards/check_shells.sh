#!/usr/bin/env bash
# check_shells.sh ROOT: fails if a source of the program under ROOT starts a shell: names of files
# and cameras may hold any character. Programs are started by launchProgram, with a list of
# arguments.
set -eu
export LC_ALL=C
cd "$1"
calls='\b(system|popen|wordexp|execlp?|execle|execvp?e?|startDetached)\('
names='\bQProcess\b|"(/(usr/)?bin/)?(ba|da|z|k)?sh"'
status=0
found=$(grep -rnE --include='*.cpp' --include='*.h' "$calls|$names" \
    core platform backends frontends) || status=$?
if [ $status -gt 1 ]; then
    exit 1
fi
if [ -n "$found" ]; then
    printf 'a shell is started:\n%s\n' "$found"
    exit 1
fi
