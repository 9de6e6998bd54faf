#!/usr/bin/env bash
# texts.sh PROGRAM: the man page and each shell's completion name every command and option that --help names.
set -u
packaging=$(dirname "$0")/../../packaging
status=0
words() { "$1" "${@:2}" --help | grep -oE '^  (-h,)?(--)?[a-z][a-z-]+ ' | tr -d ' ' | sed 's/^-h,//'; }
commands=$(words "$1" | grep -v '^-')
[ -n "$commands" ] || { echo "no commands in --help"; exit 1; }
all=$(words "$1"; for command in $commands key\ set history\ show; do words "$1" $command; done)
for word in $(sort -u <<<"$all"); do
  for text in man/veltoctl.1 completions/{veltoctl.bash,_veltoctl,veltoctl.fish}; do
    pattern=$word
    [[ $text != man/* ]] || pattern=${word/#--/-}
    [[ $text != *.fish ]] || pattern=${word/#--/-l }
    grep -qwF -e "$pattern" "$packaging/$text" || { echo "$text does not name $word"; status=1; }
  done
done
exit $status
