# fish completion for vistrane

function __vistrane_cameras
    if contains -- --demo-camera (commandline -opc)
        vistrane devices --demo-camera 2>/dev/null
    else
        vistrane devices 2>/dev/null
    end
end

complete -c vistrane -f -a '(__fish_complete_directories)'
complete -c vistrane -n __fish_use_subcommand -a devices -d 'Print the names of the cameras'
complete -c vistrane -n __fish_use_subcommand -a frames -d "Print the paths of a folder's frames"
complete -c vistrane -n __fish_use_subcommand -a compile -d "Make a movie of a folder's frames"
complete -c vistrane -n __fish_use_subcommand -a capture -d 'Save a still after every interval'
complete -c vistrane -n __fish_use_subcommand -a demo -d 'Make a movie of the demo camera'
complete -c vistrane -n __fish_use_subcommand -a help -d 'Print how a command is used'
complete -c vistrane -n __fish_use_subcommand -s V -l version -d 'Print the version'
complete -c vistrane -s h -l help -d 'Print the usage'
complete -c vistrane -n '__fish_seen_subcommand_from help' -a 'devices frames compile capture demo'
complete -c vistrane -n "not __fish_seen_subcommand_from frames compile demo help" -l demo-camera \
    -d 'Offer the demo camera'
complete -c vistrane -n '__fish_seen_subcommand_from frames' -l null -d 'End paths with a NUL byte'
complete -c vistrane -n '__fish_seen_subcommand_from devices frames compile' -l json \
    -d 'Print a JSON document'
complete -c vistrane -n '__fish_seen_subcommand_from devices frames compile capture demo' \
    -l quiet -d 'Say nothing but warnings'
complete -c vistrane -n '__fish_seen_subcommand_from devices frames compile capture demo' \
    -l verbose -d 'Add the log lines'
complete -c vistrane -n '__fish_seen_subcommand_from capture' -l device -x \
    -a '(__vistrane_cameras)' -d 'The camera'
complete -c vistrane -n '__fish_seen_subcommand_from capture' -l interval -x \
    -d 'Time between stills: 90s, 10m, H:M:S'
complete -c vistrane -n '__fish_seen_subcommand_from capture' -l create -d 'Make the folder'
complete -c vistrane -n '__fish_seen_subcommand_from capture' -l count -x -d 'Number of frames'
complete -c vistrane -n '__fish_seen_subcommand_from capture' -l duration -x \
    -d 'Stop after that time'
complete -c vistrane -n '__fish_seen_subcommand_from capture' -l until -x \
    -d 'Stop at that time of day, or date and time'
complete -c vistrane -n '__fish_seen_subcommand_from capture' -l compile \
    -d 'Make a movie at the end'
complete -c vistrane -n '__fish_seen_subcommand_from compile capture' -l fps -x \
    -d 'Frames per second, 1 to 60'
complete -c vistrane -n '__fish_seen_subcommand_from compile capture' -l x264-preset -x \
    -a 'ultrafast superfast veryfast faster fast medium slow slower veryslow placebo' \
    -d 'Preset of the encoder'
complete -c vistrane -n '__fish_seen_subcommand_from compile capture' -l crf -x \
    -d 'Constant rate factor, 0 to 51'
complete -c vistrane -n '__fish_seen_subcommand_from compile capture demo' -l output -r -F \
    -d 'The movie file'
complete -c vistrane -n '__fish_seen_subcommand_from compile capture demo' -l force \
    -d 'Replace an existing file'
