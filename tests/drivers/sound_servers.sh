#!/usr/bin/env bash
# sound_servers.sh TOOL: once the drivers are installed, PulseAudio and PipeWire as Debian configures them publish
# the devices at their start, side by side; once they are removed, nothing is left of them. All of it happens in
# name spaces, where this computer's files and servers are out of reach. Exit 77 where there can be none.
set -euo pipefail
if [ "${1:-}" != --inside ]; then
  for program in pulseaudio pipewire wireplumber pipewire-pulse dbus-daemon; do
    command -v "$program" >/dev/null || { echo "skipped: no $program"; exit 77; }
  done
  apart=(unshare --mount --pid --fork --kill-child --mount-proc --propagation private)
  [ "$(id -u)" -eq 0 ] || apart+=(--user --map-root-user)
  "${apart[@]}" mount -t tmpfs tmpfs /run 2>/dev/null || { echo "skipped: name spaces are not to be had"; exit 77; }
  exec "${apart[@]}" "$0" --inside "$@"
fi
shift

# A computer of our own: its configuration, a folder of drivers with an awkward name, somebody who uses it.
mount -t tmpfs tmpfs /run
drivers="/run/app's \$(touch pwned) folder"
mkdir -p /run/systemd/{seats,sessions,users,machines} "$drivers" /run/home
cp -R /etc /run 2>/dev/null || true
mount --bind /run/etc /etc
mount -t tmpfs tmpfs /usr/local/share
cp -R "$(dirname "$0")/../../drivers/." "$drivers"
cp "$1" /run/tool
# The sound card, and the home of whom an unprivileged user is in here.
for folder in /dev/snd /root; do [ ! -d "$folder" ] || mount -t tmpfs tmpfs "$folder"; done
become=()
PKEXEC_UID=0
if setpriv --reuid nobody --regid nogroup --clear-groups true 2>/dev/null; then
  PKEXEC_UID=$(id -u nobody)
  become=(setpriv --reuid nobody --regid nogroup --clear-groups)
fi
runtime=/run/user/$PKEXEC_UID
config=/run/home/.config/pipewire/pipewire.conf.d
mkdir -p "$config" /run/home/.config/pulse /etc/pulse/default.pa.d /run/user
mkdir -m 700 "$runtime"
# Loudspeaker and microphone as hardware would have them, below the priority of which nothing becomes the default.
cat >/etc/pulse/default.pa.d/zz-hardware.pa <<'end'
load-module module-null-sink sink_name=speaker sink_properties='device.description="Speaker" device.class="sound"'
load-module module-remap-source source_name=microphone master=speaker.monitor source_properties='device.description="Microphone" device.class="sound"'
end
cat >"$config/hardware.conf" <<'end'
context.objects = [
  { factory = adapter args = { factory.name = support.null-audio-sink node.name = speaker node.description = Speaker
    media.class = Audio/Sink audio.position = [ FL FR ] priority.session = 1000 object.linger = true } }
  { factory = adapter args = { factory.name = support.null-audio-sink node.name = microphone
    node.description = Microphone media.class = Audio/Source/Virtual audio.position = [ FL FR ]
    priority.session = 1000 object.linger = true } }
]
end
echo 'exit-idle-time = -1' >/run/home/.config/pulse/daemon.conf
chown -R "$PKEXEC_UID" /run/home "$runtime"

as_administrator=(env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin PKEXEC_UID="$PKEXEC_UID" /bin/sh -c)
as_user=("${become[@]}" env -i PATH="$PATH" HOME=/run/home XDG_RUNTIME_DIR="$runtime")
fail() { echo "FAILED: $*"; tail -n 20 /run/home/*.log; exit 1; }

# With pipewire-pulse beside PulseAudio, which has the usual address.
tool() { # pulse|pipewire-pulse WORD …
  "${as_user[@]}" PULSE_SERVER="unix:$runtime/$1/native" /run/tool "${@:2}"
}
start_pulseaudio() {
  "${as_user[@]}" pulseaudio --start --log-target=file:/run/home/pulseaudio.log
}
stop_pulseaudio() {
  "${as_user[@]}" pulseaudio --kill
  while "${as_user[@]}" pulseaudio --check 2>/dev/null; do sleep 0.02; done
}
start_pipewire() {
  "${as_user[@]}" pipewire >/run/home/pipewire.log 2>&1 &
  pipewire=($!)
  until [ -S "$runtime/pipewire-0" ]; do sleep 0.02; done
  "${as_user[@]}" DBUS_SESSION_BUS_ADDRESS="unix:path=$runtime/bus" wireplumber >/run/home/wireplumber.log 2>&1 &
  pipewire+=($!)
  "${as_user[@]}" PULSE_RUNTIME_PATH="$runtime/pipewire-pulse" pipewire-pulse >/run/home/pipewire-pulse.log 2>&1 &
  pipewire+=($!)
}
stop_pipewire() {
  kill "${pipewire[@]}"
  wait "${pipewire[@]}" || true
}
shows() { # SERVER DEVICES: before ten seconds are over
  local until=$((SECONDS + 10))
  until [ "$(tool "$1" devices 2>&1)" = "$2" ]; do
    [ "$SECONDS" -lt "$until" ] || { tool "$1" devices || true; fail "$1 does not show the devices: $2"; }
    sleep 0.05
  done
  echo "$1 shows what it should"
}
hears() { # SERVER OUTPUT INPUT: a tone of amplitude 12000
  local rms peak
  read -r rms peak < <(tool "$1" hear "$2" "$3")
  echo "$1: from $2 to $3 level $rms, peak $peak"
  # A machine that is too busy for a moment leaves a gap, whose edge is louder than the tone for some samples.
  if [ "$rms" -lt 4000 ] || [ "$rms" -gt 7000 ] || [ "$peak" -lt 11000 ]; then fail "not as it was played"; fi
}

hardware="Microphone: 2 in, 0 out
Speaker: 0 in, 2 out
default Microphone, Speaker"
all="Microphone: 2 in, 0 out
Speaker: 0 in, 2 out
VeltoHQ 2ch: 2 in, 2 out
VeltoLoop 2ch: 2 in, 2 out
VeltoVoice 2ch Feed: 0 in, 2 out
VeltoVoice 2ch Mic: 2 in, 0 out
default Microphone, Speaker"

"${as_user[@]}" dbus-daemon --session --nofork --nopidfile --address="unix:path=$runtime/bus" &
cd /
start_pulseaudio
start_pipewire
shows pulse "$hardware"
shows pipewire-pulse "$hardware"

# PulseAudio, which no systemd has started, is started again by the line itself; PipeWire says that it is not.
said=$("${as_administrator[@]}" "$(/run/tool install "$drivers")") || fail "not installed: $said"
grep -q 'PipeWire runs outside of systemd' <<<"$said" || fail "does not say that PipeWire goes on as it was: $said"
shows pulse "$all"
shows pipewire-pulse "$hardware"
stop_pipewire
start_pipewire
shows pipewire-pulse "$all"
for server in pulse pipewire-pulse; do
  hears $server "VeltoVoice 2ch Feed" "VeltoVoice 2ch Mic"
  hears $server "VeltoLoop 2ch" "VeltoLoop 2ch"
  hears $server "VeltoHQ 2ch" "VeltoHQ 2ch"
done

# What the drivers stand on is broken: the servers start all the same, and read what comes after.
broken=(/usr/lib/pulse-*/modules/module-remap-source.so /usr/lib/*/pipewire-0.3/libpipewire-module-loopback.so)
for module in "${broken[@]}"; do mount --bind /dev/null "$module"; done
stop_pulseaudio
start_pulseaudio
stop_pipewire
start_pipewire
shows pulse "Speaker: 0 in, 2 out
VeltoHQ 2ch: 0 in, 2 out
VeltoLoop 2ch: 0 in, 2 out
VeltoVoice 2ch Feed: 0 in, 2 out
default , Speaker"
shows pipewire-pulse "$hardware"
for module in "${broken[@]}"; do umount "$module"; done

# A removal that is ended while PulseAudio is down: the server comes back all the same.
server=$(cat "$runtime/pulse/pid")
setsid "${as_administrator[@]}" "$(/run/tool uninstall)" >/dev/null &
removal=$!
while [ -d "/proc/$server" ]; do sleep 0.002; done
kill -- "-$removal" || true
shows pulse "$hardware"
"${as_administrator[@]}" "$(/run/tool uninstall)"
stop_pipewire
start_pipewire
shows pulse "$hardware"
shows pipewire-pulse "$hardware"
[ ! -e /pwned ] || fail "a folder's name was run"
