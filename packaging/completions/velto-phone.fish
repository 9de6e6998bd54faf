complete -c velto-phone -f
complete -c velto-phone -l version -d 'Print the version'
complete -c velto-phone -l help -d 'Print the options'
