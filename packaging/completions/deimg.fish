# fish completion for deimg

set -l commands develop preview thumbnail info check version help
set -l pictures develop preview thumbnail
set -l batches $pictures check

complete -c deimg -n "not __fish_seen_subcommand_from $commands" -f
complete -c deimg -n "not __fish_seen_subcommand_from $commands" -l version -d 'Print the version'
complete -c deimg -s h -l help -d 'Print help'
complete -c deimg -n __fish_use_subcommand -a develop -d 'Develop raw files into pictures'
complete -c deimg -n __fish_use_subcommand -a preview -d 'Develop small pictures'
complete -c deimg -n __fish_use_subcommand -a thumbnail -d 'Develop thumbnails'
complete -c deimg -n __fish_use_subcommand -a info -d 'Print what raw files record'
complete -c deimg -n __fish_use_subcommand -a check -d 'Decode and develop, write nothing'
complete -c deimg -n __fish_use_subcommand -a version -d 'Print the version'
complete -c deimg -n __fish_use_subcommand -a help -d 'Print help on a command or on codes'

set -l batch "__fish_seen_subcommand_from $batches"
complete -c deimg -n "$batch" -s j -l jobs -x -d 'Files to work on at once'
complete -c deimg -n "$batch" -l threads -x -d 'Threads to develop each file on'
complete -c deimg -n "$batch" -l progress -x -a 'none bar json' -d 'What to show'

set -l picture "__fish_seen_subcommand_from $pictures"
complete -c deimg -n "$picture" -s o -l output -r -d 'File or directory to write to'
complete -c deimg -n "$picture" -l format -x -a 'png tiff jpeg ppm' -d 'Picture format'
complete -c deimg -n "$picture" -l quality -x -d 'JPEG quality, 1 to 100'
complete -c deimg -n "$picture" -l resolution -x -d 'Pixels per inch to record'
complete -c deimg -n "$picture" -l force -d 'Overwrite files that exist'
complete -c deimg -n "$picture" -l skip-existing -d 'Leave files that exist alone'
complete -c deimg -n "$picture" -l wb -x -a 'recorded preset: point: gains:' -d 'White balance'
complete -c deimg -n "$picture" -l exposure -x -d 'Stops to brighten or darken, -2 to 2'
complete -c deimg -n "$picture" -l tone -x -a '-1 0 1 recorded' -d 'Tone curve'
complete -c deimg -n "$picture" -l saturation -x -a '-1 0 1 recorded' -d 'Colour strength'
complete -c deimg -n "$picture" -l colour -x -a '-1 0 1 recorded' -d 'Colour balance'

set -l develop '__fish_seen_subcommand_from develop'
complete -c deimg -n "$develop" -l depth -x -a '8 16' -d 'Bits per sample'
complete -c deimg -n "$develop" -l processing-set -x -a '-1 0 1 quick recorded' -d 'Detail and sharpness'
complete -c deimg -n "$develop" -l plain -d 'Plain processing'
complete -c deimg -n "$develop" -l no-colour-median -d 'Leave out the colour median'
complete -c deimg -n "$develop" -l quick -d 'Quick settings'

complete -c deimg -n '__fish_seen_subcommand_from thumbnail' -l size -x -d 'Fit into N x N pixels'
complete -c deimg -n '__fish_seen_subcommand_from info' -l json -d 'Print JSON'
complete -c deimg -n '__fish_seen_subcommand_from help' -f -a "$commands codes"
