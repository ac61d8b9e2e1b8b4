# bash completion for orvane
_orvane() {
  local word=${COMP_WORDS[COMP_CWORD]} before=
  # Bash takes the = of --option=value for a word of its own.
  [[ $word == = ]] && word=
  before=${COMP_WORDS[COMP_CWORD - 1]}
  [[ $before == = ]] && before=${COMP_WORDS[COMP_CWORD - 2]}
  COMPREPLY=()
  case $before in
    --input | --temperaments) compopt -o filenames -o default 2>/dev/null ;;
    *)
      mapfile -t COMPREPLY < <(
        compgen -W '-h --help --version --input --temperaments' -- "$word"
      )
      ;;
  esac
}
complete -F _orvane orvane
