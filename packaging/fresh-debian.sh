# Shell functions for trying things in a fresh Debian 12. To be sourced by a bash script that begins with
#   if [ "${1:-}" != --inside ]; then try_inside ARGUMENTS; exit $tried; fi
#   make_root
top=$(readlink -f "$(dirname "${BASH_SOURCE[0]}")/..")
say() { printf '\n== %s\n' "$*"; }
fail() { echo "FAILED: $*" >&2; exit 1; }

# try_inside ARGUMENT …: calls the script again as "--inside FOLDER ARGUMENT …"; sets tried to its exit status.
try_inside() {
  work=$(mktemp -d /tmp/velto-fresh-XXXXXX)
  # Everything runs in name spaces, which end with the first process in them: no mount and no process is left, and
  # nothing that is removed here can be a mount.
  trap 'rm -rf --one-file-system "$work"' EXIT
  tried=0
  unshare --mount --pid --uts --ipc --fork --kill-child --propagation private "$0" --inside "$work" "$@" || tried=$?
}

in_root() { chroot "$root" /usr/bin/env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin LC_ALL=C.UTF-8 DEBIAN_FRONTEND=noninteractive "$@"; }
install() { in_root apt-get install -y -q --no-install-recommends "$@" >"$work/apt.log" 2>&1 || { cat "$work/apt.log"; fail "apt-get install $*"; }; }
# Somebody of the root's own, "caller".
as_caller() { in_root setpriv --reuid 1234 --regid 1234 --clear-groups env HOME=/home/caller USER=caller "$@"; }
# At no display, in a session with a bus and a runtime folder.
as_user() { as_caller XDG_RUNTIME_DIR=/run/user/1234 sh -c 'cd; exec dbus-run-session -- sh -c "$0"' "$1"; }

# Makes the root folder of a Debian with nothing but what every Debian has; sets work and root.
make_root() {
  local mirror=${VELTO_MIRROR:-http://deb.debian.org/debian}
  say "a fresh Debian 12"
  debootstrap --variant=minbase bookworm "$root" "$mirror" >"$work/debootstrap.log" 2>&1 || { tail "$work/debootstrap.log"; fail debootstrap; }
  rm -f "$root/etc/apt/sources.list"
  cp -a /etc/apt/. "$root/etc/apt/"
  cp --dereference /etc/resolv.conf "$root/etc/resolv.conf"
  printf '#!/bin/sh\nexit 101\n' >"$root/usr/sbin/policy-rc.d"
  chmod 755 "$root/usr/sbin/policy-rc.d"
  mountpoint -q "$root/proc" || mount -t proc proc "$root/proc"
  mount -t devtmpfs devtmpfs "$root/dev"
  mkdir -p "$root/dev/shm" "$root/dev/pts"
  mount -t devpts -o newinstance,ptmxmode=0666 devpts "$root/dev/pts"
  mount -t tmpfs -o mode=1777 tmpfs "$root/dev/shm"
  in_root apt-get update -q >"$work/apt.log" 2>&1 || { cat "$work/apt.log"; fail "apt-get update"; }
  in_root useradd --uid 1234 --create-home --shell /bin/bash caller
  in_root install -d -m 700 -o 1234 -g 1234 /run/user /run/user/1234
  chmod 755 "$root/run/user"
}

if [ "${1:-}" = --inside ]; then
  work=$2
  root=$work/root
fi
