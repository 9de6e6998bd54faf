#!/usr/bin/env bash
# second-shell.sh PROGRAM ARGUMENT…: a rehearsal whose call veltoctl places and follows from a second shell, after the
# doctor has looked. The exit status is the rehearsal's, or 1 when veltoctl was wrong.
set -u
failed=0
fail() { echo "FAILED: $*"; failed=1; }
exec 3< <("$@" --wait 2>&1)
rehearsal=$!
environment='' call=''
while [ -z "$call" ] && read -r line <&3; do
  echo "$line"
  case $line in
    ". "*) environment=${line#. } ;;
    "veltoctl call "*) call=${line%% | *} ;;
  esac
done
[ -n "$call" ] || { echo "FAILED: the call was not offered"; exit 1; }
. "$environment"

# A look changes nothing, and finds everything there.
state() { find "$HOME" "$XDG_CONFIG_HOME" "$XDG_DATA_HOME" -printf '%p %m %T@\n' | sort; }
before=$(state)
veltoctl doctor || fail "doctor: exit $? where everything is there"
diff <(echo "$before") <(state) || fail "doctor changed something"
coloured() { env "$@" TERM=xterm script -qec "veltoctl doctor" /dev/null | grep -q $'\e\[3'; }
coloured -u NO_COLOR && ! coloured NO_COLOR=1 || fail "doctor: colours"

# What stands still is not known after four seconds.
velto=$(sed -n 's/.*app launched pid=\([0-9]*\).*/\1/p' "$XDG_STATE_HOME/Velto/velto.log")
kill -STOP "$velto"
veltoctl doctor --json >"$TMPDIR/found"
found=$?
kill -CONT "$velto"
[ $found -eq 2 ] || fail "doctor: exit $found where Velto stands still"
[ "$(jq -r 'select(.result == "unknown").check' "$TMPDIR/found")" = $'application\nacceptance' ] ||
  fail "doctor: $(cat "$TMPDIR/found")"

# A key that is taken away is gone for the application, too.
veltoctl key remove gemini || fail "key remove: exit $?"
[ "$(veltoctl key list --json)" = '{"gemini":false,"openai":true}' ] || fail "key list"
until grep -q 'keys: gemini=none/false openai=present/true' "$XDG_STATE_HOME/Velto/velto.log"; do
  [ $((tries = ${tries:-0} + 1)) -lt 200 ] || { fail "the application did not read its keys again"; break; }
  sleep 0.05
done

# Each line of the transcript is one JSON line, between the states and the outcome.
followed=$TMPDIR/followed
eval "$call" | jq --unbuffered -c . >"$followed"
exits="${PIPESTATUS[*]}"
text=$(cat "$followed")
rest=$(cat <&3)
echo "$rest"
wait "$rehearsal" || failed=$?
[ "$exits" = "0 0" ] || fail "exits $exits of the call and of jq"
[ "$(jq -r '.state // .outcome // empty' <<<"$text" | tr '\n' ' ')" = "dialing warming live ended ended " ] ||
  fail "states: $text"
[ "$(tail -n 1 <<<"$text")" = '{"outcome":"ended"}' ] || fail "no outcome at the end"
diff <(sed -n '/^Record$/,/^$/{/^  .*: /s/^  //p}' <<<"$rest") <(jq -r '.line // empty' <<<"$text") ||
  fail "the lines are not the record's"
exit $failed
