# bash completion of veltoctl
_veltoctl() {
  local word=${COMP_WORDS[COMP_CWORD]} before="${COMP_WORDS[*]:1:COMP_CWORD-1}" words
  case $before in
  # First, since a goal may hold any other word.
  *call* | *watch*) words="--goal --follow --hangup-on-interrupt --json --quiet" ;;
  *"key set"* | *"key remove"*) words="gemini openai" ;;
  *key*) words="set remove list" ;;
  *"history show"*) words=$(veltoctl history --quiet 2>/dev/null | grep -oE '^[0-9A-F]{8}') ;;
  *history*) words="show --last" ;;
  *transcript*) words="--follow --json --quiet" ;;
  *doctor*) words="--online --json --quiet" ;;
  *) words="ping status readiness call watch wait hangup transcript history providers doctor key
    --json --quiet --help --version" ;;
  esac
  mapfile -t COMPREPLY < <(compgen -W "$words" -- "$word")
}
complete -F _veltoctl veltoctl
