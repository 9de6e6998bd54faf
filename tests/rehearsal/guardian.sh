#!/usr/bin/env bash
# guardian.sh PROGRAM: whichever process of PROGRAM (GuardedDummies.cpp) is killed, nothing of it stays behind.
set -euo pipefail
program=$1
# ends STATUS WORDS KEEP SIGNAL PROCESS…: what PROGRAM answers and says to these signals; KEEP keeps its folder.
ends() {
  local folder guardian director first second said status=0 left
  exec 3< <(exec "$program" $3 2>&1)
  guardian=$!
  read -r folder director first second <&3
  local -A pid=([guardian]=$guardian [director]=$director [first]=$first [second]=$second)
  for ((i = 4; i < $#; i += 2)); do
    kill -"${!i}" "${pid[${@:i+1:1}]}"
  done
  said=$(cat <&3) # guardian and director write to it: its end is the end of both
  wait "$guardian" || status=$?
  left=$(grep -lszxF "GUARDED_FOLDER=$folder" /proc/[0-9]*/environ || true)
  [ ! -d "$folder" ] || left+=folder
  rm -rf "$folder"
  echo "${*:4}: exit $status, left: $left, said: $said"
  [ "$status" -eq "$1" ] && grep -qF "$2" <<<"$said" && [ "$left" = "${3:+folder}" ] || { echo FAILED; exit 1; }
}
ends 1 "first was killed (SIGKILL)" "" KILL first
ends 1 "second was killed (SIGKILL)" "" KILL second
ends 1 "the director was killed (SIGKILL)" "" KILL director
for keep in "" --keep; do
  ends 137 "the guardian (the outer velto-rehearse) was killed" "$keep" KILL guardian
done
ends 130 "" "" INT guardian
ends 143 "" "" TERM guardian
ends 129 "" "" HUP guardian
ends 1 "" "" STOP director INT guardian # one that does not react is killed
