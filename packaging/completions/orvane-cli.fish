# fish completion for orvane-cli
set -l commands devices listen analyze temperaments
complete -c orvane-cli -f

complete -c orvane-cli -n "not __fish_seen_subcommand_from $commands" -a devices -d 'List the input devices'
complete -c orvane-cli -n "not __fish_seen_subcommand_from $commands" -a listen -d 'Tune live'
complete -c orvane-cli -n "not __fish_seen_subcommand_from $commands" -a analyze -d 'Read recordings to their end'
complete -c orvane-cli -n "not __fish_seen_subcommand_from $commands" -a temperaments -d 'List the temperaments'
complete -c orvane-cli -n "not __fish_seen_subcommand_from $commands" -l version -d 'Print the version'

complete -c orvane-cli -s h -l help -d 'Print the options'
complete -c orvane-cli -l reference-pitch -x -d 'Pitch of A4, 349 to 499.9'
complete -c orvane-cli -l temperament -x -a '(orvane-cli temperaments 2>/dev/null | string match -rv "^ ")' -d 'Temperament'
complete -c orvane-cli -l tonic -x -a 'C C# Db D D# Eb E F F# Gb G G# Ab A A# Bb B' -d 'Tonic of the temperament'
complete -c orvane-cli -l transpose -x -d 'Semitones, -11 to +11'
complete -c orvane-cli -l temperaments -r -F -d 'File of temperaments'

complete -c orvane-cli -n "__fish_seen_subcommand_from $commands" -l json -d 'One JSON object a line'
complete -c orvane-cli -n "__fish_seen_subcommand_from listen analyze" -l csv -d 'Comma-separated values'
complete -c orvane-cli -n "__fish_seen_subcommand_from devices listen" -l input -r -F -d 'Sound file as device (repeatable)'
complete -c orvane-cli -n "__fish_seen_subcommand_from listen" -l device -x -a '(orvane-cli devices 2>/dev/null)' -d 'Input device'
complete -c orvane-cli -n "__fish_seen_subcommand_from listen" -l seconds -x -d 'End after so many seconds'
complete -c orvane-cli -n "__fish_seen_subcommand_from analyze" -F
complete -c orvane-cli -n "__fish_seen_subcommand_from analyze" -l summary -d 'Median, spread and drift at the end'
complete -c orvane-cli -n "__fish_seen_subcommand_from analyze" -l plot -r -F -d 'Draw cents over time'
complete -c orvane-cli -n "__fish_seen_subcommand_from analyze" -l callback-frames -x -d 'Frames fed at a time'
complete -c orvane-cli -n "__fish_seen_subcommand_from temperaments" -l import -r -F -d 'Scala scale files to read'
complete -c orvane-cli -n "__fish_seen_subcommand_from temperaments; and __fish_contains_opt import" -F
complete -c orvane-cli -n "__fish_seen_subcommand_from temperaments" -l export -x -a '(orvane-cli temperaments 2>/dev/null | string match -rv "^ ")' -d 'Temperament to write as a Scala file'
