#!/usr/bin/env bash
# bundle.sh PROGRAMS: an application bundle that was moved starts where it is and has its drivers with it.
set -euo pipefail
work=$(mktemp -d)
velto=
trap 'kill $velto 2>/dev/null || true; wait; rm -rf "$work"' EXIT
fail() { echo "FAILED: $*"; cat "$log" 2>/dev/null; exit 1; }
make() { "$(dirname "$0")/../../mac/bundle" --built "$1" "$work/made" >/dev/null 2>"$work/said"; }

log=$work/said
make "$1" || fail "no bundle"
touch "$work/made/Velto.app/old"
make "$1" || fail "no second bundle"
[ ! -e "$work/made/Velto.app/old" ] || fail "the old bundle is still there"
mkdir "$work/moved here"
mv "$work/made/Velto.app" "$work/moved here"
mkdir "$work/made/Velto.app"
! make "$1" || fail "replaced a folder that is no bundle"
rmdir "$work/made/Velto.app"
! make "$work" || fail "a bundle without programs"
[ -z "$(ls -A "$work/made")" ] || fail "left something behind: $(ls -A "$work/made")"

mkdir -m 700 "$work/run"
log=$work/state/Velto/velto.log
cd /
env -i PATH="$PATH" HOME="$work" XDG_STATE_HOME="$work/state" XDG_RUNTIME_DIR="$work/run" \
  DBUS_SESSION_BUS_ADDRESS=disabled: PULSE_SERVER="unix:$work/none" \
  "$work/moved here/Velto.app/Contents/MacOS/velto" --headless &
velto=$!
until grep -q 'driver source' "$log" 2>/dev/null; do
  kill -0 "$velto" || fail "does not start"
  sleep 0.05
done
grep -qF "] driver source: $work/moved here/Velto.app/Contents/Resources/Drivers" "$log" || fail "has no drivers with it"
[ -e "$work/moved here/Velto.app/Contents/Resources/Drivers/VeltoHQ.driver/pulse.pa" ] || fail "no such driver"
