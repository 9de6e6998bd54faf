#!/usr/bin/env bash
# readiness.sh PROGRAMS: what "veltoctl readiness" says follows what the computer has, line by line, and back. In
# name spaces of its own, where drivers can be put in their place; exit 77 where there can be none.
set -euo pipefail
if [ "${1:-}" != --inside ]; then
  apart=(unshare --mount --pid --fork --kill-child --mount-proc --propagation private)
  [ "$(id -u)" -eq 0 ] || apart+=(--user --map-root-user)
  "${apart[@]}" mount -t tmpfs tmpfs /usr/local/share 2>/dev/null ||
    { echo "skipped: name spaces are not to be had"; exit 77; }
  exec "${apart[@]}" "$0" --inside "$@"
fi
programs=$2
drivers=$(readlink -f "$(dirname "$0")/../../drivers")
mount -t tmpfs tmpfs /usr/local/share
home=$(mktemp -d)
trap 'rm -rf "$home"' EXIT
mkdir -m 700 "$home/run"
export HOME=$home XDG_RUNTIME_DIR=$home/run XDG_DATA_HOME=$home/data XDG_STATE_HOME=$home/state \
  XDG_CONFIG_HOME=$home/config PULSE_SERVER=unix:$home/run/sound GSETTINGS_BACKEND=memory \
  DBUS_SESSION_BUS_ADDRESS=unix:path=$home/run/bus DBUS_SYSTEM_BUS_ADDRESS=disabled:
unset DISPLAY WAYLAND_DISPLAY AT_SPI_BUS_ADDRESS

# is ACCESSIBILITY MICROPHONE DRIVER: before ten seconds are over
is() {
  local said until=$((SECONDS + 10))
  while :; do
    said=$("$programs/veltoctl" readiness --json 2>/dev/null |
      sed -E 's/.*"accessibility":([a-z]+),"microphone":([a-z]+),"driver":([a-z]+).*/\1 \2 \3/') || true
    [ "$said" != "$*" ] || break
    if [ "$SECONDS" -ge "$until" ]; then
      echo "FAILED: $said instead of $*"
      "$programs/veltoctl" readiness --json || true
      tail -n 20 "$home"/state/Velto/velto.log
      exit 1
    fi
    sleep 0.05
  done
  echo "accessibility, microphone, driver: $*"
}
because() { grep -qF "readiness: $1" "$home/state/Velto/velto.log" || { echo "FAILED: the log does not say: $1"; exit 1; }; }
switch() {
  dbus-send --session --print-reply --dest=org.a11y.Bus /org/a11y/bus org.freedesktop.DBus.Properties.Set \
    string:org.a11y.Status string:IsEnabled "variant:boolean:$1" >/dev/null
}

dbus-daemon --session --nofork --nopidfile --address="$DBUS_SESSION_BUS_ADDRESS" 2>/dev/null &
"$programs/velto" --headless &
is false false false
because "accessibility: "
because "microphone: no sound server"
because "audio driver: not installed: VeltoLoop and VeltoVoice"

/usr/libexec/at-spi-bus-launcher --launch-immediately 2>/dev/null &
until switch true 2>/dev/null; do sleep 0.05; done
is true false false

cat >"$home/sound.pa" <<'end'
load-module module-null-sink sink_name=speaker
load-module module-remap-source source_name=microphone master=speaker.monitor source_properties='device.description="Microphone"'
end
echo "load-module module-native-protocol-unix auth-anonymous=1 socket=$home/run/sound" >>"$home/sound.pa"
pulseaudio -n -F "$home/sound.pa" --daemonize=no --use-pid-file=no --exit-idle-time=-1 2>/dev/null &
sound=$!
is true true false

mkdir -p /usr/local/share/velto/drivers
cp -R "$drivers/VeltoVoice.driver" /usr/local/share/velto/drivers
is true true false
because "audio driver: not installed: VeltoLoop"
cp -R "$drivers/VeltoLoop.driver" /usr/local/share/velto/drivers
is true true true
because "audio driver: installed, but the sound server does not show the devices"

rm -r /usr/local/share/velto/drivers/VeltoVoice.driver
is true true false
kill "$sound"
is true false false
switch false
is false false false
