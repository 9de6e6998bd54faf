#!/usr/bin/env bash
# Runs one provider's SDK against a local server: its name, then CPU microseconds a message for every round.
# run.sh gemini|openai PORT MESSAGES. Installs beside itself what is missing; code 77 and a line that says why
# where that cannot be.
set -euo pipefail
cd "$(dirname "$0")"
skip() {
  echo "skipped, the SDK: $1"
  exit 77
}
command -v node >/dev/null && command -v npm >/dev/null || skip 'no node or no npm here'
[ "$(node -p 'parseInt(process.versions.node)')" -ge 20 ] || skip "they need node 20, here is $(node --version)"
# npm writes the hidden file last.
if [ ! -e node_modules/.package-lock.json ] || [ package.json -nt node_modules/.package-lock.json ]; then
  timeout 120 npm install --ignore-scripts --no-audit --no-fund --no-package-lock --fetch-retries=0 >npm.log 2>&1 ||
    skip "npm cannot install them ($PWD/npm.log)"
fi
exec node "$1.mjs" "$2" "$3"
