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
forbid VeltoPlatform 'VeltoShared/|VeltoApp/|VeltoPhone/|veltoctl/|rehearsal/|tests/|Q[A-Z]'
forbid VeltoShared 'VeltoApp/|VeltoPhone/|VeltoPlatform/(linux|simulated)/|veltoctl/|rehearsal/|tests/|Q[A-Z]'
forbid VeltoApp 'veltoctl/|VeltoPhone/|rehearsal/|tests/|VeltoPlatform/simulated/'
for room in admin app control history session state main.cpp; do
  forbid "VeltoApp/$room" 'Q[A-Z]'
done
forbid veltoctl 'VeltoApp/(app|session|state|views|admin)/|VeltoPhone/|VeltoPlatform/simulated/|rehearsal/|tests/|Q[A-Z]'
forbid VeltoQt 'Velto(App|Phone|Platform|Shared)/|veltoctl/|rehearsal/|tests/'
forbid VeltoPhone 'VeltoApp/|veltoctl/|tests/|VeltoPlatform/(linux|simulated)/'
forbid velto-admin-helper 'VeltoShared/|VeltoApp/|VeltoPhone/|VeltoPlatform/simulated/|veltoctl/|rehearsal/|tests/|boost/|Q[A-Z]'
forbid VeltoPhone/line 'Q[A-Z]|VeltoPhone/(app|model|views)/'
forbid rehearsal 'VeltoPhone/|Q[A-Z]'
backends=$(grep -rlE '^#include "VeltoPlatform/linux/' VeltoApp veltoctl --include='*.h' --include='*.cpp' |
  grep -vE '^(VeltoApp/main|veltoctl/main|veltoctl/LocalMain)\.cpp$')
if [ -n "$backends" ]; then
  printf 'names a backend outside the composition root: %s\n' "$backends"
  status=1
fi
exit $status
