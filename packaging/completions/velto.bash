complete -W "--headless --version --help" velto
