#!/usr/bin/env bash
# Line coverage of the native test suite: builds with gcc --coverage in build-coverage/, runs the
# suite, and prints gcovr's summary for the library (its tests, benchmarks and fuzz targets left
# out) and for the tool (its tests left out). Installs gcovr (Debian) if it is missing.
#
#   scripts/coverage.sh
set -euo pipefail
cd "$(dirname "$0")/.."

run_as_root() {
  if [ "$(id -u)" -eq 0 ]; then "$@"; else sudo "$@"; fi
}
if ! command -v gcovr >/dev/null; then
  run_as_root apt-get update
  run_as_root env DEBIAN_FRONTEND=noninteractive apt-get install -y --no-install-recommends gcovr
fi

jobs=$(nproc)
build=build-coverage
cmake -S . -B "$build" -DCMAKE_BUILD_TYPE=Debug -DCMAKE_C_COMPILER=gcc -DCMAKE_CXX_COMPILER=g++ \
  -DCMAKE_C_FLAGS=--coverage -DCMAKE_CXX_FLAGS=--coverage \
  -DCMAKE_EXE_LINKER_FLAGS=--coverage -DCMAKE_SHARED_LINKER_FLAGS=--coverage \
  -DZETSETTINGS_BUILD_BENCHMARKS=OFF -DZETSETTINGS_BUILD_TESTS=ON -DZETSETTINGS_FUZZ=OFF >/dev/null
cmake --build "$build" -j"$jobs"

# Counts from an earlier run would add up with this one's.
find "$build" -name '*.gcda' -delete
ctest --test-dir "$build" --output-on-failure --no-tests=error -j"$jobs"

# The build folder as a search path, not as --object-directory: gcovr then runs gcov in each
# folder above a data file, and finds the one that the compiler ran in (a compiler cache with a
# base directory leaves source names relative to it).
# The line-by-line reports go into the build folder (never --txt /dev/null: gcovr replaces the
# file it writes, and as root that would be the device).
summary() {
  gcovr -j "$jobs" --root . --filter "$1/" --exclude '.*/tests/.*' --exclude '.*/fuzz/.*' --exclude 'bench/.*' \
    --print-summary --txt "$build/coverage-${1//\//-}.txt" "$build"
}
echo "== src/zetsettings"
summary src/zetsettings
echo "== tools"
summary tools
