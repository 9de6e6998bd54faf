#!/usr/bin/env bash
# Takes the pictures of the phone for the documentation again: docs/phone/*.png, light and dark, at 200 %.
set -euo pipefail
cd "$(dirname "$(readlink -f "$0")")/.."
. packaging/setup.sh
ensure_packages
build dev velto-phone-shots
"$build_folder/bin/velto-phone-shots" docs/phone
