#!/usr/bin/env bash
# The crash, contention, fault and whole-operation tests of the portable store, with real
# processes (native only). Builds zetsettings_stress and the tool in the given build folder
# (default: build) and runs them all; any violated invariant, and any run that outlives its
# bound, fails the script. The full-disk and key tests skip, saying why, where the machine lets
# them mount nothing or act as no other user.
#
#   scripts/stress.sh [build-dir]
#   STRESS_KILLS=250 STRESS_SECONDS=60 FAULT_ERRNOS=EIO,EACCES JOBS=2 scripts/stress.sh build
set -euo pipefail
cd "$(dirname "$0")/.."

build=${1:-build}
kills=${STRESS_KILLS:-250}
seconds=${STRESS_SECONDS:-60}
# EIO and EACCES take the two roads a failed call can open (an error, and a store opened read-only
# after a refused open); ENOSPC takes the first one again, with another code.
errnos=${FAULT_ERRNOS:-EIO,EACCES}
jobs=${JOBS:-$(nproc)}

cmake -S . -B "$build" -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build "$build" --target zetsettings_stress zetsettings_tool -j"$jobs"
stress="$build/tests/stress/zetsettings_stress"

# Outer bounds far above a normal run: the program bounds every wait of its own, these only
# catch the program itself hanging.
echo "== crash test: $kills kills"
timeout --kill-after=10 $((kills * 2 + 300)) "$stress" crash --kills "$kills"
echo "== contention test: $seconds s"
timeout --kill-after=10 $((seconds + 600)) "$stress" contention --seconds "$seconds"
echo "== fault test: the N-th file call fails with $errnos, once and from then on"
timeout --kill-after=10 600 "$stress" fault --errnos "$errnos"
echo "== whole operations: setFallbackSettings and reg import killed in the middle, $kills kills each"
timeout --kill-after=10 $((kills * 2 + 300)) "$stress" whole --kills "$kills" --tool "$build/tools/zetsettings"
echo "== full disk, a store folder that can't be made, a key that can't be read"
timeout --kill-after=10 120 "$stress" full-disk
timeout --kill-after=10 120 "$stress" unmade-store
timeout --kill-after=10 120 "$stress" unreadable-key
