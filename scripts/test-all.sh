#!/usr/bin/env bash
# Every test on a fresh Debian machine: install, then the native suite, the same suite
# cross-built with MinGW-w64 under Wine, the native suite again under the sanitizers, the
# crash, contention and fault tests, and the fuzzers for a bounded time.
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

echo "== sanitizers"
scripts/test-sanitizers.sh

echo "== crash and contention"
scripts/stress.sh build

echo "== fuzzing"
scripts/fuzz.sh
