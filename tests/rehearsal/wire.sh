#!/usr/bin/env bash
# wire.sh PROGRAM PROVIDER [BY]: rehearses the appointment, by way of that program, and compares what the application sent
# in its session with wire/PROVIDER.txt. "wire.sh --session FILE" prints what is compared of a file that --wire wrote.
set -u
# Key checks are left out, counts are "N", and sound between the two messages of a turn counts as sound after them.
session() {
  awk 'BEGIN { RS = "" } /\nUpgrade: websocket\n/ { print $0 "\n"; getline; print }' "$1" |
    sed -E 's/^text x[0-9]+ /text xN /' |
    awk '/^text xN / && previous ~ /"conversation.item.create"/ { next } { print; previous = $0 }'
}
[ "$1" != --session ] || { session "$2"; exit; }
wire=$(mktemp)
trap 'rm -f "$wire"' EXIT
${3:+"$3"} "$1" --scenario appointment --provider "$2" --wire "$wire" || exit 1
diff -u "$(dirname "$0")/wire/$2.txt" <(session "$wire")
