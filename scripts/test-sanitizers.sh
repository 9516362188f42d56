#!/usr/bin/env bash
# The native test suite under AddressSanitizer with UndefinedBehaviorSanitizer, then under
# ThreadSanitizer, each in a build folder of its own. Any report fails the run.
#
#   scripts/test-sanitizers.sh            # both
#   scripts/test-sanitizers.sh thread     # one of: address, thread
set -euo pipefail
cd "$(dirname "$0")/.."

jobs=$(nproc)
if [ $# -gt 0 ]; then kinds=("$@"); else kinds=(address thread); fi

export ASAN_OPTIONS=detect_leaks=1:abort_on_error=1:detect_stack_use_after_return=1
export UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1
export TSAN_OPTIONS=halt_on_error=1:second_deadlock_stack=1

status=0
for kind in "${kinds[@]}"; do
  case "$kind" in
    address) sanitize=address,undefined build=build-asan ;;
    thread) sanitize=thread build=build-tsan ;;
    *) echo "test-sanitizers: unknown kind '$kind' (address or thread)" >&2; exit 2 ;;
  esac
  echo "== $sanitize"
  cmake -S . -B "$build" -DCMAKE_BUILD_TYPE=RelWithDebInfo -DZETSETTINGS_SANITIZE="$sanitize" \
    -DZETSETTINGS_BUILD_BENCHMARKS=OFF -DZETSETTINGS_BUILD_TESTS=ON -DZETSETTINGS_FUZZ=OFF >/dev/null
  cmake --build "$build" -j"$jobs"
  # Both kinds run whatever the first one finds.
  ctest --test-dir "$build" --output-on-failure --no-tests=error -j"$jobs" || status=1
done
exit $status
