#!/usr/bin/env bash
# Takes the pictures for the documentation again, light and dark, at 200 %: docs/windows/*.png of the application,
# docs/phone/*.png of the phone.
set -euo pipefail
cd "$(dirname "$(readlink -f "$0")")/.."
. packaging/setup.sh
ensure_packages test
build dev velto-shots velto-phone-shots
"$build_folder/bin/velto-shots" docs/windows
"$build_folder/bin/velto-phone-shots" docs/phone
