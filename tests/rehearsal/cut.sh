#!/usr/bin/env bash
# cut.sh PROGRAM WIRE SIDE: a rehearsal with that wire cut must fail and say which side heard nothing.
set -u
output=$("$1" --scenario callee-hangs-up --cut "$2" 2>&1)
status=$?
printf '%s\n' "$output"
[ "$status" -eq 1 ] || { echo "exit $status instead of 1"; exit 1; }
grep -q "the $3 heard nothing" <<<"$output" || { echo "does not say that the $3 heard nothing"; exit 1; }
