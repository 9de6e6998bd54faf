#!/usr/bin/env bash
# fails.sh WORDS PROGRAM ARGUMENT…: the rehearsal must fail with exit 1 and say these words.
set -u
output=$("${@:2}" 2>&1)
status=$?
printf '%s\n' "$output"
[ "$status" -eq 1 ] || { echo "exit $status instead of 1"; exit 1; }
grep -qF "$1" <<<"$output" || { echo "does not say: $1"; exit 1; }
