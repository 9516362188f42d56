#!/usr/bin/env bash
# The crash and contention tests of the portable store, with real processes (native only).
# Builds zetsettings_stress in the given build folder (default: build) and runs both; any
# violated invariant, and any run that outlives its bound, fails the script.
#
#   scripts/stress.sh [build-dir]
#   STRESS_KILLS=250 STRESS_SECONDS=60 JOBS=2 scripts/stress.sh build
set -euo pipefail
cd "$(dirname "$0")/.."

build=${1:-build}
kills=${STRESS_KILLS:-250}
seconds=${STRESS_SECONDS:-60}
jobs=${JOBS:-$(nproc)}

cmake -S . -B "$build" -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build "$build" --target zetsettings_stress -j"$jobs"
stress="$build/tests/stress/zetsettings_stress"

# Outer bounds far above a normal run: the program bounds every wait of its own, these only
# catch the program itself hanging.
echo "== crash test: $kills kills"
timeout --kill-after=10 $((kills * 2 + 300)) "$stress" crash --kills "$kills"
echo "== contention test: $seconds s"
timeout --kill-after=10 $((seconds + 600)) "$stress" contention --seconds "$seconds"
