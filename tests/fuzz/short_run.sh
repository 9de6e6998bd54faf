#!/usr/bin/env bash
# Runs one fuzz target over its corpus with a fixed seed and a fixed number of inputs.
# short_run.sh BUILD SOURCES CORPUS RUNS
set -euo pipefail
build=$1 sources=$2 corpus=$3 runs=$4
target=$build/bin/fuzz_$corpus
if [ ! -x "$target" ]; then
  echo "skipped: $target is not built (./test builds it; or cmake --preset fuzz && cmake --build --preset fuzz)"
  exit 77
fi
if ! ninja -C "$build" -n "fuzz_$corpus" | grep -q 'no work to do'; then
  echo "skipped: $target is older than its sources (cmake --build --preset fuzz)"
  exit 77
fi
# libFuzzer adds what it finds interesting to the corpus, so it gets a copy; what crashes it is kept.
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
cp "$sources/corpus/$corpus"/* "$scratch"
mkdir -p "$build/findings"
options=(
  -seed=1 "-runs=$runs"
  -use_cmp=0         # what a comparison saw may be an address, which differs from run to run
  -error_exitcode=1  # a crash would end with 77, which stands for "skipped" here
  "-dict=$sources/$corpus.dict" "-artifact_prefix=$build/findings/$corpus-")
"$target" "${options[@]}" "$scratch"
