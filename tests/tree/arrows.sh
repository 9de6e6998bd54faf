#!/usr/bin/env bash
# Holds the rooms' order: an include that points upward, or at a backend from outside a composition root, fails.
set -u
cd "$(dirname "$0")/../.."
status=0
# forbid FOLDER PATTERN: no source below FOLDER includes a header that matches PATTERN.
forbid() {
  local found
  found=$(grep -rnE "^#include [\"<]($2)" "$1" --include='*.h' --include='*.cpp') || return 0
  printf 'not allowed below %s:\n%s\n' "$1" "$found"
  status=1
}
forbid VeltoPlatform 'VeltoShared/|VeltoApp/|veltoctl/|rehearsal/|tests/'
forbid VeltoShared 'VeltoApp/|VeltoPlatform/(linux|simulated)/|veltoctl/|rehearsal/|tests/|Q[A-Z]'
forbid VeltoApp 'veltoctl/|rehearsal/|tests/|VeltoPlatform/simulated/'
backends=$(grep -rlE '^#include "VeltoPlatform/linux/' VeltoApp --include='*.h' --include='*.cpp' | grep -v '^VeltoApp/main.cpp$')
if [ -n "$backends" ]; then
  printf 'names a backend outside the composition root: %s\n' "$backends"
  status=1
fi
exit $status
