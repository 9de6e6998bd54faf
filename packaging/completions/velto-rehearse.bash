_velto_rehearse() {
  local word=${COMP_WORDS[COMP_CWORD]} choices
  case ${COMP_WORDS[COMP_CWORD - 1]} in
  --scenario)
    mapfile -t COMPREPLY < <(compgen -W "$(velto-rehearse --list 2>/dev/null | cut -d: -f1)" -- "$word"
      compgen -f -- "$word")
    return ;;
  --scenarios) mapfile -t COMPREPLY < <(compgen -d -- "$word"); return ;;
  --wire) mapfile -t COMPREPLY < <(compgen -f -- "$word"); return ;;
  --provider) choices="gemini openai" ;;
  --keys) choices="gemini openai both" ;;
  --sound) choices="pulseaudio pipewire" ;;
  --cut) choices="uplink loop" ;;
  *) choices="--scenario --scenarios --list --provider --keys --wire --record --tap --mute --windows --wait --kill
       --sound --cut --keep --json --help" ;;
  esac
  mapfile -t COMPREPLY < <(compgen -W "$choices" -- "$word")
}
complete -F _velto_rehearse velto-rehearse
