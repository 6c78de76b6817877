#!/usr/bin/env bash
# Builds the benchmarks in Release and runs them, printing each figure beside its peer's, measured
# in the same run, as a ratio (ours / peer; below 1.0 means faster than the peer).
#   scripts/bench.sh [bench_name...]   (default: every bench_* program)
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/install-deps.sh
dir=build-bench
cmake -S . -B "$dir" -G Ninja -DCMAKE_BUILD_TYPE=Release -DTOV_BUILD_BENCH=ON -DTOV_BUILD_TESTS=OFF \
  -DTOV_BUILD_TOOLS=OFF >/dev/null
names=("$@")
if [ ${#names[@]} -eq 0 ]; then
  mapfile -t names < <(find bench -maxdepth 1 -name 'bench_*.cpp' -printf '%f\n' | sed 's/\.cpp$//' | sort)
fi
cmake --build "$dir" --target "${names[@]}"
for n in "${names[@]}"; do
  echo "=== $n"
  "$dir/bench/$n" --benchmark_format=json --benchmark_out="$dir/$n.json" \
    --benchmark_out_format=json ${TOV_BENCH_ARGS:-} >/dev/null
  python3 bench/ratios.py "$dir/$n.json"
done
