# fish completion for orvane
complete -c orvane -f
complete -c orvane -s h -l help -d 'Print the options'
complete -c orvane -l version -d 'Print the version'
complete -c orvane -l input -r -F -d 'Sound file as device (repeatable)'
complete -c orvane -l temperaments -r -F -d 'File of temperaments'
