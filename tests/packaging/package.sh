#!/usr/bin/env bash
# package.sh BUILD VERSION: the Debian package as the tools for it see it, moved elsewhere, and removed.
set -euo pipefail
sources=$(readlink -f "$(dirname "$0")/../..")
work=$(mktemp -d)
velto=
trap 'kill $velto 2>/dev/null || true; wait; rm -rf "$work"' EXIT
fail() { echo "FAILED: $*"; exit 1; }
missing=
have() { command -v "$1" >/dev/null || { missing+=" $1"; false; }; }
have dpkg-shlibdeps || { echo "no dpkg-shlibdeps"; exit 77; }

cpack --config "$1/CPackConfig.cmake" -G DEB -B "$work" >"$work/said" 2>&1 || { cat "$work/said"; fail "no package"; }
package=$(echo "$work"/velto_"$2"_*.deb)
grep -q "^velto ($2) " "$sources/packaging/debian/changelog" || fail "the changelog is of another version"
! have lintian || lintian --allow-root --fail-on error,warning "$package" || fail lintian

at="$work/moved here"
dpkg-deb -x "$package" "$at"
share=$at/usr/share
! have desktop-file-validate || desktop-file-validate "$share"/applications/*.desktop || fail "a desktop file"
! have appstreamcli || appstreamcli validate --no-net "$share"/metainfo/*.xml || fail metainfo
if have man; then
  for page in "$share"/man/man?/*.gz; do
    LC_ALL=C.UTF-8 MANROFFSEQ='' MANWIDTH=80 man --warnings -E UTF-8 -l -Tutf8 -Z "$page" 2>&1 >/dev/null | tee "$work/said"
    [ ! -s "$work/said" ] || fail "$page"
  done
fi
# parses SHELL OPTION FILE…: where there is such a shell.
parses() {
  ! command -v "$1" >/dev/null || for file in "${@:3}"; do "$1" "$2" "$file" || fail "$file"; done
}
parses bash -n "$share"/bash-completion/completions/*
parses zsh -n "$share"/zsh/vendor-completions/*
parses fish --no-execute "$share"/fish/vendor_completions.d/*
if have systemd-analyze; then
  # The programs where they are here; the pages that it names are not installed.
  mkdir -m 700 "$work/run"
  sed -E "s,^(Exec(Start|Stop)=-?)(velto[a-z]*),\1$work/programs/\3,; /^Documentation/d" \
    "$at/usr/lib/systemd/user/velto.service" >"$work/velto.service"
  ln -s "$at/usr/bin" "$work/programs"
  XDG_RUNTIME_DIR=$work/run systemd-analyze --user verify "$work/velto.service" >"$work/said" 2>&1 &&
    ! grep 'velto\.service' "$work/said" || { cat "$work/said"; fail "the unit"; }
fi

# Where it lies does not matter: scenarios, drivers and programs are found.
"$at/usr/bin/velto-rehearse" --list | grep '^appointment: ' >/dev/null || fail "no scenarios"
PATH=$work "$at/usr/bin/velto-rehearse" >"$work/said" 2>&1 && fail "a rehearsal without programs"
grep -q 'apt install xvfb dbus-daemon .*pulseaudio' "$work/said" || { cat "$work/said"; fail "does not say what is missing"; }
log=$work/state/Velto/velto.log
env -i PATH="$PATH" HOME="$work" XDG_STATE_HOME="$work/state" XDG_RUNTIME_DIR="$work/run" \
  DBUS_SESSION_BUS_ADDRESS=disabled: PULSE_SERVER="unix:$work/none" "$at/usr/bin/velto" --headless &
velto=$!
until grep -q 'driver source' "$log" 2>/dev/null; do
  kill -0 "$velto" || fail "does not start"
  sleep 0.05
done
grep -qF "] driver source: $share/velto/Drivers" "$log" || { cat "$log"; fail "has no drivers with it"; }

# Removal, in a root folder: what was installed goes, what somebody made of it stays, an upgrade touches nothing.
dpkg-deb -e "$package" "$work/control"
root=$work/root
mkdir -p "$root/etc/pulse/default.pa.d" "$root/etc/pipewire" "$root/run"
touch "$root/etc/pipewire/theirs.conf" "$root/etc/pulse/default.pa.d/theirs.pa"
before=$(cd "$root" && find . | sort)
for name in VeltoHQ VeltoLoop VeltoVoice; do
  install -Dm 644 -t "$root/usr/local/share/velto/drivers/$name.driver" "$share/velto/Drivers/$name.driver"/*
  install -Dm 644 "$share/velto/Drivers/$name.driver/pulse.pa" "$root/etc/pulse/default.pa.d/$name.pa"
  install -Dm 644 "$share/velto/Drivers/$name.driver/pipewire.conf" "$root/etc/pipewire/pipewire.conf.d/$name.conf"
done
touch "$root"/{etc/pipewire/pipewire.conf.d,usr,usr/local,usr/local/share,usr/local/share/velto,usr/local/share/velto/drivers}/.made-by-velto
changed=$root/etc/pipewire/pipewire.conf.d/VeltoLoop.conf
echo '# mine' >>"$changed"
installed=$(cd "$root" && find . | sort)
DPKG_ROOT=$root "$work/control/prerm" upgrade "$2.1"
DPKG_ROOT=$root "$work/control/postrm" upgrade "$2.1"
[ "$(cd "$root" && find . | sort)" = "$installed" ] || fail "an upgrade removed something"
DPKG_ROOT=$root "$work/control/prerm" remove >"$work/said"
DPKG_ROOT=$root "$work/control/postrm" remove >>"$work/said"
grep -qF "$changed was changed" "$work/said" && grep -q '^# mine' "$changed" || { cat "$work/said"; fail "a changed file"; }
rm "$changed"
rmdir "$root/etc/pipewire/pipewire.conf.d"
[ "$(cd "$root" && find . | sort)" = "$before" ] || { diff <(echo "$before") <(cd "$root" && find . | sort); fail "removal"; }
DPKG_ROOT=$root "$work/control/postrm" purge | grep '~/.local/share/org.velto.Velto' >/dev/null || fail "purge does not say what stays"

[ -z "$missing" ] || { echo "not looked at, for lack of:$missing"; exit 77; }
