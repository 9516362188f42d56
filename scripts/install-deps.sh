#!/usr/bin/env bash
# Installs what building and testing zetsettings needs on Debian (run as root, or with sudo).
# Safe to run again: apt-get skips what is there.
set -euo pipefail

packages=(
  build-essential cmake pkg-config python3 git file adduser
  liblmdb-dev libsodium-dev libboost-dev
  libgtest-dev googletest libbenchmark-dev
)
if [ "${1:-}" = "--bench" ] || [ "${1:-}" = "--all" ]; then
  # scripts/bench.sh: the Wine build and run, and the plot of docs/performance.png.
  packages+=(g++-mingw-w64-x86-64 wine64 wine python3-matplotlib)
fi
if [ "${1:-}" = "--all" ]; then
  # The Windows build and its run under Wine, and the fuzzers.
  packages+=(g++-mingw-w64-x86-64 wine64 wine clang libclang-rt-14-dev)
fi

run_as_root() {
  if [ "$(id -u)" -eq 0 ]; then "$@"; else sudo "$@"; fi
}

missing=()
for package in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q "install ok installed" || missing+=("$package")
done
if [ ${#missing[@]} -gt 0 ]; then
  run_as_root apt-get update
  run_as_root env DEBIAN_FRONTEND=noninteractive apt-get install -y --no-install-recommends "${missing[@]}"
fi
