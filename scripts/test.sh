#!/usr/bin/env bash
# Builds everything with its tests and runs them all.
#   TOV_BUILD_DIR   build folder (default build-tests)
#   TOV_SANITIZE    address,undefined or thread (default: none)
#   TOV_TEST_ARGS   extra ctest arguments, e.g. "-L log"
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/install-deps.sh
dir=${TOV_BUILD_DIR:-build-tests}
cmake -S . -B "$dir" -G Ninja -DCMAKE_BUILD_TYPE=${TOV_BUILD_TYPE:-RelWithDebInfo} \
  -DTOV_SANITIZE="${TOV_SANITIZE:-}" -DTOV_WERROR=ON >/dev/null
cmake --build "$dir"
cd "$dir"
# shellcheck disable=SC2086
ctest --output-on-failure -j "$(nproc)" ${TOV_TEST_ARGS:-}
