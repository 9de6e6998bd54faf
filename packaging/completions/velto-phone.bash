complete -W "--version --help" velto-phone
