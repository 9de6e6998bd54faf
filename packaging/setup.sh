# Shell functions shared by ./run, ./test and ./measure: packages and builds. To be sourced from the top folder.

installed() { dpkg-query -W -f='${Status}' "$1" 2>/dev/null | grep -q 'install ok installed'; }

# ensure_packages [TAG]: installs what this machine lacks of the untagged lines of packaging/packages.txt, and of
# those marked [TAG].
ensure_packages() {
  local wanted missing=() package
  # Never a bracket to apt-get, which takes it for a pattern that matches nearly every package there is.
  wanted=$(awk -v tag="[${1:-}]" '{ sub(/#.*/, ""); take = NF == 1; for (i = 2; i <= NF; i++) take = take || $i == tag }
    take { print $1 }' packaging/packages.txt)
  for package in $wanted; do
    installed "$package" || missing+=("$package")
  done
  [ ${#missing[@]} -eq 0 ] && return 0
  local as_root=()
  if [ "$(id -u)" -ne 0 ]; then
    if ! command -v sudo >/dev/null; then
      echo "Missing packages, and no right to install them. As root: apt-get install ${missing[*]}" >&2
      return 1
    fi
    as_root=(sudo)
  fi
  echo "Installing: ${missing[*]}" >&2
  local install=("${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y -q --no-install-recommends --no-remove "${missing[@]}")
  # The package lists may be missing or old on a fresh machine: refresh them when the first try fails.
  if ! "${install[@]}" >/dev/null 2>&1; then
    "${as_root[@]}" apt-get update -q >&2
    "${install[@]}" >&2 || {
      echo "These packages could not be installed: ${missing[*]}. None is removed for them (pulseaudio and" \
        "pipewire-audio exclude each other); what needs them can run in a container or a virtual machine." >&2
      return 1
    }
  fi
  keep_sound_server "${missing[@]}"
}

# keep_sound_server PACKAGE …: of those that were just installed, a second sound server does not start with the
# next log-in in place of the user's. What we need of it we start ourselves.
keep_sound_server() {
  local units=() package
  for package in "$@"; do
    case $package in
      pipewire | pipewire-pulse) units+=("$package.socket" "$package.service") ;;
      wireplumber) units+=(wireplumber.service) ;;
      pulseaudio)
        installed pipewire-pulse && [[ " $* " != *" pipewire-pulse "* ]] && units+=(pulseaudio.socket pulseaudio.service) ;;
    esac
  done
  [ ${#units[@]} -eq 0 ] || ! command -v systemctl >/dev/null ||
    "${as_root[@]}" systemctl --global disable "${units[@]}" >/dev/null 2>&1 || true
}

# build PRESET [TARGET …]: configures and builds; sets build_folder.
build() {
  local preset=$1
  shift
  build_folder=$PWD/build/$preset
  if ! mkdir -p "$build_folder" 2>/dev/null || [ ! -w "$build_folder" ] ||
     { [ -e "$build_folder/build.ninja" ] && [ ! -w "$build_folder/build.ninja" ]; }; then
    # Somebody else's checkout: build it in a place of our own.
    build_folder=${XDG_CACHE_HOME:-$HOME/.cache}/velto/$(printf %s "$PWD" | cksum | cut -d' ' -f1)/$preset
    mkdir -p "$build_folder"
  fi
  if [ ! -e "$build_folder/build.ninja" ]; then
    cmake --preset "$preset" -B "$build_folder" >"$build_folder/configure.log" 2>&1 ||
      { cat "$build_folder/configure.log" >&2; return 1; }
  fi
  local targets=()
  [ $# -eq 0 ] || targets=(--target "$@")
  ninja -C "$build_folder" -n "${@:-all}" 2>/dev/null | grep -q 'no work to do' ||
    cmake --build "$build_folder" "${targets[@]}" >&2
}
