#!/usr/bin/env bash
# How the application starts: with windows it is one for each desktop, and it says in a sentence why it cannot
# start. Run in a session bus of its own: launch.sh VELTO
set -u
velto=$1
home=$(mktemp -d)
trap 'kill $(jobs -p) 2>/dev/null; wait; rm -rf "$home"' EXIT
export HOME=$home XDG_RUNTIME_DIR=$home QT_QPA_PLATFORM=offscreen QT_QUICK_BACKEND=software
unset XDG_CONFIG_HOME XDG_DATA_HOME XDG_STATE_HOME XDG_CACHE_HOME DISPLAY WAYLAND_DISPLAY
status=0

# expect CODE WORDS COMMAND…: the command ends with this code and, on standard error, says these words.
expect() {
  local code=$1 words=$2 said got
  shift 2
  said=$(timeout 20 "$@" 2>&1 >/dev/null)
  got=$?
  if [ $got != "$code" ] || [[ $said != *"$words"* ]]; then
    printf '%s: ended with %s and said: %s\n' "$*" "$got" "$said"
    status=1
  fi
}
# start COMMAND…: in the background, until it listens.
start() {
  rm -f "$home"/.local/state/Velto/velto.log
  "$@" >/dev/null 2>&1 &
  for _ in $(seq 200); do
    grep -qs 'control: listening' "$home"/.local/state/Velto/velto.log && return
    sleep 0.05
  done
  echo "does not start: $*"
  status=1
}

expect 1 'cannot open a display (velto --headless needs none): could not connect' \
  env QT_QPA_PLATFORM=xcb DISPLAY=:nowhere "$velto"
start "$velto"
expect 0 '' "$velto"
expect 1 'running already' env DBUS_SESSION_BUS_ADDRESS=unix:path=/nowhere "$velto"
kill -STOP %%
expect 1 'running and does not answer' "$velto"
kill -CONT %%
kill %%
wait %% 2>/dev/null
start env QT_QPA_PLATFORM=nothing "$velto" --headless
expect 1 'running already' "$velto"
expect 1 'running already' "$velto" --headless
exit $status
