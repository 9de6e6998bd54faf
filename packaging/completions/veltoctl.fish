complete -c veltoctl -f
complete -c veltoctl -n __fish_use_subcommand -a 'ping status readiness call watch wait hangup transcript history providers doctor key'
complete -c veltoctl -l json
complete -c veltoctl -l quiet
complete -c veltoctl -l help
complete -c veltoctl -l version
complete -c veltoctl -n '__fish_seen_subcommand_from call watch' -l goal -x
complete -c veltoctl -n '__fish_seen_subcommand_from call watch transcript' -l follow
complete -c veltoctl -n '__fish_seen_subcommand_from call watch' -l hangup-on-interrupt
complete -c veltoctl -n '__fish_seen_subcommand_from doctor' -l online
complete -c veltoctl -n '__fish_seen_subcommand_from history' -l last -x
complete -c veltoctl -n '__fish_seen_subcommand_from history' -a "show (veltoctl history --quiet 2>/dev/null | string match -r '^[0-9A-F]{8}')"
complete -c veltoctl -n '__fish_seen_subcommand_from key; and not __fish_seen_subcommand_from set remove list' -a 'set remove list'
complete -c veltoctl -n '__fish_seen_subcommand_from set remove' -a 'gemini openai'
