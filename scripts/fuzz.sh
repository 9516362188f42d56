#!/usr/bin/env bash
# Builds the libFuzzer targets with clang (AddressSanitizer and UndefinedBehaviorSanitizer on)
# and runs each for a bounded time. Exits non-zero on any finding, leaving the input under
# the build folder's artifacts/. Once a finding is fixed, its input goes into the target's
# regressions/ folder, which every fuzz run and the ordinary test run replay.
#
#   scripts/fuzz.sh            # about a minute and a half in all
#   ZET_FUZZ_SECONDS=600 scripts/fuzz.sh
set -euo pipefail

root=$(cd "$(dirname "$0")/.." && pwd)
build=${ZET_FUZZ_BUILD_DIR:-$root/build-fuzz}
total_seconds=${ZET_FUZZ_SECONDS:-90}

# name, target, folder of seeds and regressions below the source tree
targets=(
  "serial zetsettings_serial_fuzz src/zetsettings/serial/fuzz"
  "casebitmap zetsettings_casebitmap_fuzz src/zetsettings/store/fuzz/casebitmap"
  "ndis zetsettings_ndis_fuzz src/zetsettings/store/fuzz/ndis"
  "caption zetsettings_caption_fuzz src/zetsettings/params/fuzz"
  "regfile zetsettings_regfile_fuzz tools/zetsettings/regfile/fuzz"
)

CC=clang CXX=clang++ cmake -S "$root" -B "$build" -DCMAKE_BUILD_TYPE=RelWithDebInfo \
  -DZETSETTINGS_FUZZ=ON -DZETSETTINGS_BUILD_TESTS=OFF -DZETSETTINGS_BUILD_BENCHMARKS=OFF \
  -DZETSETTINGS_BUILD_TOOLS=OFF >/dev/null
for entry in "${targets[@]}"; do
  read -r _ target _ <<<"$entry"
  cmake --build "$build" --target "$target" -j "$(nproc)"
done

per_target=$(( total_seconds / ${#targets[@]} ))
(( per_target > 0 )) || per_target=1
export ASAN_OPTIONS=${ASAN_OPTIONS:-detect_leaks=1:abort_on_error=1:allocator_may_return_null=0}
export UBSAN_OPTIONS=${UBSAN_OPTIONS:-print_stacktrace=1:halt_on_error=1}

passed=0 failed=0
for entry in "${targets[@]}"; do
  read -r name target folder <<<"$entry"
  binary=$(find "$build" -type f -name "$target" -perm -u+x | head -n 1)
  work="$build/corpus/$name"
  artifacts="$build/artifacts/$name/"
  rm -rf "$artifacts"  # what an earlier run found is judged by that run
  mkdir -p "$work" "$artifacts" "$root/$folder/regressions"
  echo "== $name: ${per_target}s"
  # The first folder takes what the run finds; seeds and regressions are only read.
  if ! "$binary" -max_total_time="$per_target" -timeout=10 -rss_limit_mb=2048 -max_len=8192 \
      -print_final_stats=1 -artifact_prefix="$artifacts" \
      "$work" "$root/$folder/seeds" "$root/$folder/regressions"; then
    echo "== $name: FINDING, input in $artifacts" >&2
    failed=$((failed + 1))
  elif compgen -G "$artifacts*" >/dev/null; then
    echo "== $name: FINDING, input in $artifacts" >&2
    failed=$((failed + 1))
  else
    passed=$((passed + 1))
  fi
done
echo "fuzz: $passed passed, $failed failed"
[ "$failed" -eq 0 ]
