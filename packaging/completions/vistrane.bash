# bash completion for vistrane

_vistrane_cameras() {
    local name
    while IFS= read -r name; do
        [[ $name == "$2"* ]] && COMPREPLY+=("$(printf %q "$name")")
    done < <("$1" devices "${@:3}" 2>/dev/null)
}

_vistrane() {
    local program=${COMP_WORDS[0]} word=${COMP_WORDS[COMP_CWORD]}
    local before=${COMP_WORDS[COMP_CWORD - 1]} command=
    [ "$COMP_CWORD" -gt 1 ] && command=${COMP_WORDS[1]}
    COMPREPLY=()

    case $before in
    --device)
        # The word as typed, without quotes and backslashes.
        local typed=${word//[\"\'\\]/} demo=()
        [[ " ${COMP_WORDS[*]} " == *' --demo-camera '* ]] && demo=(--demo-camera)
        _vistrane_cameras "$program" "$typed" "${demo[@]}"
        return
        ;;
    --x264-preset)
        mapfile -t COMPREPLY < <(compgen -W 'ultrafast superfast veryfast faster fast medium slow
            slower veryslow placebo' -- "$word")
        return
        ;;
    --output)
        compopt -o filenames 2>/dev/null
        mapfile -t COMPREPLY < <(compgen -f -- "$word")
        return
        ;;
    --interval | --count | --duration | --until | --fps | --crf)
        return
        ;;
    esac

    local options=
    case $command in
    devices) options='--json --demo-camera --quiet --verbose --help' ;;
    frames) options='--null --json --quiet --verbose --help' ;;
    compile) options='--fps --x264-preset --crf --output --force --json --quiet --verbose --help' ;;
    capture)
        options='--device --interval --create --count --duration --until --compile --fps
            --x264-preset --crf --output --force --demo-camera --quiet --verbose --help'
        ;;
    demo) options='--output --force --quiet --verbose --help' ;;
    help) options='devices frames compile capture demo' ;;
    '') options='devices frames compile capture demo help --demo-camera --help --version' ;;
    *) options='--demo-camera --help' ;;
    esac
    if [[ $command == help || $word == -* || -z $command ]]; then
        mapfile -t COMPREPLY < <(compgen -W "$options" -- "$word")
    fi
    if [[ $command != help && $command != devices && $word != -* ]]; then
        compopt -o filenames 2>/dev/null
        local folder
        while IFS= read -r folder; do
            COMPREPLY+=("$folder")
        done < <(compgen -d -- "$word")
    fi
}

complete -F _vistrane vistrane
