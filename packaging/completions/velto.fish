complete -c velto -f
complete -c velto -l headless -d 'Run without windows'
complete -c velto -l version -d 'Print the version'
complete -c velto -l help -d 'Print the options'
