# shellcheck shell=sh disable=SC2154
# What the lines that install and remove drivers are made of, run by /bin/sh as root. Set before: $drivers, $pulse
# and $pipewire, the folders that this is about, $runtime, where users have their runtime folders, and $lock.
#
# A bundle may come from a folder that its user can write to, or that only its user can read. So it is read with the
# user's rights, and nothing in it is executed: what root takes over is two files for sound servers to read.
exec 2>&1
# One line at a time, whichever user's: in a file that nobody but root can open, and so hold.
umask 077
exec 9>"$lock"
flock -w 60 9 || { echo "the drivers are being changed by somebody else"; exit 1; }
umask 022

user=${PKEXEC_UID:-$(id -u)}
# In a folder that was made here, for velto_tidy to know.
mark=.made-by-velto
# A driver's files have less than 1 KiB.
longest=65536

velto_as_user() { # COMMAND …
    if [ "$user" = "$(id -u)" ]; then
        "$@" 9>&-
    else
        setpriv --reuid "$user" --regid "$(id -g "$user")" --init-groups "$@" 9>&-
    fi
}

velto_make_folder() { # FOLDER
    [ -d "${1:-/}" ] && return
    velto_make_folder "${1%/*}" && mkdir -- "$1" || return
    touch -- "$1/$mark" || { rmdir -- "$1"; return 1; }
}

velto_copy() ( # BUNDLE PLACE
    next=${2%/*}/.next
    rm -rf -- "$next"
    velto_make_folder "${2%/*}" && mkdir -- "$next" && velto_take "$1/pulse.pa" "$next/pulse.pa" &&
        velto_take "$1/pipewire.conf" "$next/pipewire.conf" && rm -rf -- "$2" && mv -T -- "$next" "$2" && return
    rm -rf -- "$next"
    return 1
)

# What reads for the user holds a pipe and no file of root's: the user could take that over and write to it later.
velto_take() ( # FILE PLACE
    # The last two names: the folders above may be called anything, and a log is text.
    folder=${1%/*}
    name=${folder##*/}/${1##*/}
    if ! text=$(velto_as_user timeout --foreground 20 head -c $((longest + 1)) -- "$1" && echo .); then
        echo "not to be read: $name"
        return 1
    fi
    text=${text%.}
    if [ -z "$text" ] || [ ${#text} -gt "$longest" ]; then
        echo "empty, or too long for a driver: $name"
        return 1
    fi
    printf %s "$text" >"$2"
)

velto_publish() ( # PLACE
    [ -d "$1" ] || { velto_tidy; return 1; }
    name=${1##*/}
    name=${name%.driver}
    velto_put "$1/pulse.pa" "$pulse/$name.pa" && velto_put "$1/pipewire.conf" "$pipewire/$name.conf" && return
    velto_remove "$1"
    echo "not installed: $name"
    return 1
)

# In one step: a server that starts meanwhile finds all or nothing.
velto_put() { # FILE PLACE
    velto_make_folder "${2%/*}" && cp -- "$1" "$2.next" && mv -f -T -- "$2.next" "$2" && return
    rm -f -- "$2.next"
    return 1
}

velto_remove() ( # PLACE
    name=${1##*/}
    name=${name%.driver}
    # With what is left of an installation that was ended half-way.
    rm -f -- "$pulse/$name.pa" "$pulse/$name.pa.next" "$pipewire/$name.conf" "$pipewire/$name.conf.next"
    # What servers still read is still installed.
    [ -f "$pulse/$name.pa" ] || [ -f "$pipewire/$name.conf" ] || rm -rf -- "$1" "${1%/*}/.next"
    velto_tidy
)

# When the last driver has gone: the folders that were made for them go too, unless others have put something there.
velto_tidy() {
    for file in "$pulse"/Velto*.pa "$pipewire"/Velto*.conf; do
        [ ! -e "$file" ] || return 0
    done
    for folder in "$drivers" "$pulse" "$pipewire"; do
        velto_remove_empty "$folder"
    done
    for folder in "$drivers" "$pulse" "$pipewire"; do
        velto_unmark "$folder"
    done
}

velto_remove_empty() { # FOLDER, then its parents
    [ -n "$1" ] || return 0
    if [ -d "$1" ]; then
        [ -e "$1/$mark" ] && [ "$(ls -A -- "$1")" = "$mark" ] || return 0
        rm -f -- "$1/$mark" && rmdir -- "$1" || return
    fi
    velto_remove_empty "${1%/*}"
}

velto_unmark() { # FOLDER and its parents
    [ -n "$1" ] || return 0
    [ ! -e "$1/$mark" ] || rm -f -- "$1/$mark"
    velto_unmark "${1%/*}"
}

velto_restart_sound() (
    flock -u 9
    [ -d "$runtime/$user" ] || return 0
    home=$(getent passwd "$user" | cut -d: -f6)
    cd / && velto_as_user env -i PATH="$PATH" HOME="$home" XDG_RUNTIME_DIR="$runtime/$user" \
        sh -c "$restart_as_user" </dev/null
)

# All of it with the user's rights: nothing that a user can write is believed by root.
restart_as_user=$(cat <<'end'
units=
if [ -S "$XDG_RUNTIME_DIR/systemd/private" ]; then
    for unit in pipewire wireplumber pipewire-media-session pipewire-pulse pulseaudio; do
        ! systemctl --user --quiet is-active "$unit.service" || units="$units $unit.service"
    done
    # Together, so that systemd puts them in their order.
    [ -z "$units" ] || timeout 60 systemctl --user restart $units || echo "not restarted:$units"
fi
case $units in
*pipewire.service*) ;;
*)
    lock=$XDG_RUNTIME_DIR/pipewire-0.lock
    if [ -e "$lock" ] && ! flock -n "$lock" true; then
        echo "PipeWire runs outside of systemd: it reads the drivers when it is started again"
    fi
    ;;
esac
case $units in
*pulseaudio.service*) ;;
*)
    # Started by a program or a script: again, in the environment of the one that ends; also when Velto, and with it
    # this line, ends in between.
    if command -v pulseaudio >/dev/null && pulseaudio --check 2>/dev/null; then
        again='pulseaudio --kill
            tries=0
            while pulseaudio --check 2>/dev/null && [ $tries -lt 50 ]; do sleep 0.1; tries=$((tries + 1)); done
            if pulseaudio --check 2>/dev/null; then
                echo "PulseAudio does not end: it reads the drivers when it is started again"
            else
                pulseaudio --start
            fi'
        xargs -0 -a "/proc/$(cat "$XDG_RUNTIME_DIR/pulse/pid")/environ" \
            sh -c 'exec env -i "$@" setsid sh -c "$0"' "$again"
    fi
    ;;
esac
end
)
