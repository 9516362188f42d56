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

cmake -S . -B "$build" -DCMAKE_BUILD_TYPE=RelWithDebInfo -DZETSETTINGS_BUILD_TESTS=ON >/dev/null
cmake --build "$build" --target zetsettings_stress zetsettings_tool -j"$jobs"
stress="$build/tests/stress/zetsettings_stress"

# Outer bounds far above a normal run: the program bounds every wait of its own, these only
# catch the program itself hanging. Every part runs; the last line counts them.
passed=0 failed=0
part() {
  local title=$1 bound=$2; shift 2
  echo "== $title"
  if timeout --kill-after=10 "$bound" "$stress" "$@"; then passed=$((passed + 1))
  else failed=$((failed + 1)); echo "== FAILED: $title" >&2; fi
}
part "crash test: $kills kills" $((kills * 2 + 300)) crash --kills "$kills"
part "contention test: $seconds s" $((seconds + 600)) contention --seconds "$seconds"
part "fault test: the N-th file call fails with $errnos, once and from then on" 600 fault --errnos "$errnos"
part "whole operations: setFallbackSettings and reg import killed in the middle, $kills kills each" \
  $((kills * 2 + 300)) whole --kills "$kills" --tool "$build/tools/zetsettings"
part "full disk" 120 full-disk
part "a store folder that can't be made" 120 unmade-store
part "a key that can't be read" 120 unreadable-key
echo "stress: $passed passed, $failed failed"
[ "$failed" -eq 0 ]
