# fish completion for vostel

set -l commands snapshot status export import

complete -c vostel -f
complete -c vostel -l help -d 'Print a summary'

complete -c vostel -n "not __fish_seen_subcommand_from $commands" -l version -d 'Print the version'
complete -c vostel -n "not __fish_seen_subcommand_from $commands" -l bar -x -a 'auto dock tray offscreen' -d 'Where the items are shown'
complete -c vostel -n "not __fish_seen_subcommand_from $commands" -l image -r -F -d 'The picture that the off-screen bar keeps up to date'

complete -c vostel -n __fish_use_subcommand -a snapshot -d 'Write the bar, the items and their popovers as PNG files'
complete -c vostel -n __fish_use_subcommand -a status -d 'Print every item\'s current values'
complete -c vostel -n __fish_use_subcommand -a export -d 'Write all settings into a file'
complete -c vostel -n __fish_use_subcommand -a import -d 'Replace all settings by those in a file'

complete -c vostel -n '__fish_seen_subcommand_from snapshot' -l out -x -a '(__fish_complete_directories)' -d 'The folder to write into'
complete -c vostel -n '__fish_seen_subcommand_from snapshot' -l module -x -a 'network cpu memory gpu combined' -d 'Only this item'
complete -c vostel -n '__fish_seen_subcommand_from snapshot' -l scale -x -a '1 1.25 1.5 2 3 4' -d 'Device pixels for each point'
complete -c vostel -n '__fish_seen_subcommand_from snapshot' -l appearance -x -a 'dark light' -d 'Dark or light, instead of both'
complete -c vostel -n '__fish_seen_subcommand_from snapshot' -l after -x -a '3.5 60' -d 'Seconds to gather values first'

complete -c vostel -n '__fish_seen_subcommand_from status' -l json -d 'As one JSON object'

complete -c vostel -n '__fish_seen_subcommand_from export' -F
complete -c vostel -n '__fish_seen_subcommand_from import' -F
complete -c vostel -n '__fish_seen_subcommand_from import' -l yes -d 'Do not ask'
