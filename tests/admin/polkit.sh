#!/usr/bin/env bash
# polkit.sh TEST HELPER POLICY: runs TEST on this machine with a system bus and a polkit of its own, in name spaces that
# nobody else sees. Velto's helper is installed there, known to polkit, and lies a second time in a place that polkit
# does not know; the folders for drivers are empty. Exit 77 where there can be no such machine.
set -euo pipefail
if [ "${1:-}" != --inside ]; then
  for program in /usr/lib/polkit-1/polkitd /usr/bin/pkexec /usr/bin/dbus-daemon; do
    [ -x "$program" ] || { echo "skipped: no $program"; exit 77; }
  done
  apart=(unshare --mount --pid --fork --kill-child --mount-proc --propagation private)
  [ "$(id -u)" -eq 0 ] && "${apart[@]}" mount -t tmpfs tmpfs /run 2>/dev/null ||
    { echo "skipped: name spaces are not to be had"; exit 77; }
  exec "${apart[@]}" "$0" --inside "$@"
fi
shift
actions=/usr/share/polkit-1/actions
generic=$(cat $actions/org.freedesktop.policykit.policy)
for folder in /run $actions /opt /usr/local/share; do mount -t tmpfs -o mode=755 tmpfs $folder; done
cp -a /etc /run
rm -rf /run/etc/pulse /run/etc/pipewire /run/etc/polkit-1
mount --bind /run/etc /etc
echo "$generic" >$actions/org.freedesktop.policykit.policy
cp "$3" $actions/org.velto.Velto.policy
install -D "$2" /opt/velto/libexec/velto-admin-helper
install -D "$2" /opt/velto/build/velto-admin-helper
mkdir -p /run/dbus /etc/polkit-1/rules.d
echo "polkit.addAdminRule(function() { return ['unix-user:root']; });" >/etc/polkit-1/rules.d/10-test.rules
export PATH=/usr/sbin:/usr/bin:/sbin:/bin
dbus-daemon --system --nofork --nopidfile 2>/opt/bus.err &
until [ -S /run/dbus/system_bus_socket ]; do sleep 0.02; done
/usr/lib/polkit-1/polkitd --no-debug 2>/opt/polkit.err &
until dbus-send --system --print-reply --dest=org.freedesktop.DBus / org.freedesktop.DBus.GetNameOwner \
  string:org.freedesktop.PolicyKit1 >/dev/null 2>&1; do sleep 0.02; done
"$1" || { status=$?; cat /opt/*.err; exit $status; }
