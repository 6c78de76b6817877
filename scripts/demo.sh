#!/usr/bin/env bash
# Builds the library and tovutil (installing missing Debian packages first) and runs the demo.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/install-deps.sh
cmake -S . -B build -G Ninja -DCMAKE_BUILD_TYPE=Release -DTOV_BUILD_TESTS=OFF >/dev/null
cmake --build build --target tovutil
exec build/tools/tovutil/tovutil demo "$@"
