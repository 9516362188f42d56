#!/usr/bin/env bash
# Every test on a fresh Debian machine: install, then the native suite, the same suite
# cross-built with MinGW-w64 under Wine, and the fuzzers for a bounded time.
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/install-deps.sh --all
jobs=$(nproc)

echo "== native build and tests"
cmake -S . -B build
cmake --build build -j"$jobs"
ctest --test-dir build --output-on-failure -j"$jobs"

echo "== Windows build, tests under Wine"
scripts/test-wine.sh

if [ -x scripts/fuzz.sh ]; then
  echo "== fuzzing"
  scripts/fuzz.sh
fi
