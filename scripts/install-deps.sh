#!/usr/bin/env bash
# Installs the Debian 12 packages the project builds, tests and benchmarks with, when missing.
set -euo pipefail

packages=(
  cmake ninja-build g++ pkg-config
  qtbase5-dev libqt5sql5-sqlite libqt5sql5-odbc
  unixodbc unixodbc-dev libsqliteodbc sqlite3
  libbenchmark-dev libmuparser-dev libmuparserx-dev rapidjson-dev
  clang-14 libclang-rt-14-dev clang-format-14 python3
)

missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
[ ${#missing[@]} -eq 0 ] && exit 0

echo "Installing: ${missing[*]}"
sudo=""
[ "$(id -u)" -ne 0 ] && sudo="sudo"
$sudo apt-get update -qq
DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -qq --no-install-recommends "${missing[@]}"
