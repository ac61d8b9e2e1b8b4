# bash completion for orvane-cli

# _orvane_cli_names WORD: offers those of the lines on standard input that begin with what is typed
# of them, quotes or not, quoted so that spaces stay inside.
_orvane_cli_names() {
  local typed=$1 name
  typed=${typed#[\'\"]}
  typed=${typed//\\/}
  while IFS= read -r name; do
    if [[ ${name,,} == "${typed,,}"* ]]; then
      COMPREPLY+=("$(printf '%q' "$name")")
    fi
  done
}

_orvane_cli() {
  local program=${COMP_WORDS[0]} word=${COMP_WORDS[COMP_CWORD]} before k command=
  # Bash takes the = of --option=value for a word of its own.
  [[ $word == = ]] && word=
  before=${COMP_WORDS[COMP_CWORD - 1]}
  [[ $before == = ]] && before=${COMP_WORDS[COMP_CWORD - 2]}
  for ((k = 1; k < COMP_CWORD; ++k)); do
    case ${COMP_WORDS[k]} in
      devices | listen | analyze | temperaments)
        command=${COMP_WORDS[k]}
        break
        ;;
    esac
  done
  COMPREPLY=()
  case $before in
    --input | --temperaments | --import | --plot)
      compopt -o filenames -o default 2>/dev/null
      return
      ;;
    --temperament | --export)
      _orvane_cli_names "$word" < <("$program" temperaments 2>/dev/null | grep -v '^ ')
      return
      ;;
    --device)
      _orvane_cli_names "$word" < <("$program" devices 2>/dev/null)
      return
      ;;
    --tonic)
      mapfile -t COMPREPLY < <(compgen -W 'C C# Db D D# Eb E F F# Gb G G# Ab A A# Bb B' -- "$word")
      return
      ;;
    --reference-pitch | --transpose | --seconds | --callback-frames) return ;;
  esac

  if [[ $word != -* && ($command == analyze || " ${COMP_WORDS[*]} " == *' --import '*) ]]; then
    compopt -o filenames -o default 2>/dev/null
    return
  fi
  local words='-h --help --reference-pitch --temperament --tonic --transpose --temperaments'
  case $command in
    devices) words+=' --json --input' ;;
    listen) words+=' --device --input --seconds --json --csv' ;;
    analyze) words+=' --json --csv --summary --plot --callback-frames' ;;
    temperaments) words+=' --json --import --export' ;;
    *) words+=' --version devices listen analyze temperaments' ;;
  esac
  mapfile -t COMPREPLY < <(compgen -W "$words" -- "$word")
}
complete -F _orvane_cli orvane-cli
