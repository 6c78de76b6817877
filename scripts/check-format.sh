#!/usr/bin/env bash
# Fails when a C++ file differs from what .clang-format makes of it.
set -euo pipefail
cd "$(dirname "$0")/.."
cf=$(command -v clang-format-14 || command -v clang-format)
bad=0
while IFS= read -r f; do
  if ! "$cf" --dry-run -Werror "$f" >/dev/null 2>&1; then
    echo "not formatted: $f"
    bad=1
  fi
done < <(git ls-files '*.cpp' '*.h')
exit $bad
