#!/usr/bin/env bash
# Builds the libFuzzer targets with clang and runs each one over its committed corpus.
#   scripts/fuzz.sh [--seconds N] [target...]   (default 20 s each, every target)
set -euo pipefail
cd "$(dirname "$0")/.."
seconds=20
if [ "${1:-}" = "--seconds" ]; then seconds=$2; shift 2; fi
dir=build-fuzz
CC=clang-14 CXX=clang++-14 cmake -S . -B "$dir" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
  -DTOV_BUILD_FUZZ=ON -DTOV_BUILD_TESTS=OFF -DTOV_BUILD_TOOLS=OFF >/dev/null
targets=("$@")
if [ ${#targets[@]} -eq 0 ]; then
  mapfile -t targets < <(find fuzz -mindepth 1 -maxdepth 1 -type d -name 'corpus_*' -printf '%f\n' | sed 's/^corpus_//' | sort)
fi
[ ${#targets[@]} -eq 0 ] && { echo "no fuzz targets"; exit 0; }
cmake --build "$dir" --target "${targets[@]/#/fuzz_}"
for t in "${targets[@]}"; do
  echo "--- fuzz_$t for ${seconds}s"
  scratch=$(mktemp -d)
  # New inputs go to a scratch folder; the committed corpus is only read.
  "$dir/fuzz/fuzz_$t" -max_total_time="$seconds" -timeout=10 -rss_limit_mb=4096 \
    -artifact_prefix="$scratch/" "$scratch" "fuzz/corpus_$t" 2>&1 | tail -n 3
  if ls "$scratch"/crash-* "$scratch"/leak-* "$scratch"/timeout-* >/dev/null 2>&1; then
    echo "fuzz_$t found a failing input:"; ls "$scratch"; exit 1
  fi
  rm -rf "$scratch"
done
