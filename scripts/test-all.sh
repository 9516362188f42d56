#!/usr/bin/env bash
# Every test on a fresh Debian machine: install, then the stages named, or all of them in this
# order when none is named (CI runs them all):
#   native      the native suite (ctest)
#   wine        the same suite cross-built with MinGW-w64, run under Wine
#   sanitizers  the native suite under ASan/UBSan and under TSan
#   stress      the crash, contention and fault tests with real processes
#   fuzz        the fuzzers for a bounded time
#   install     a new user's path: fresh clone, main job then native tests, install, pkg-config
#   package     the Debian package: built, its contents listed and checked; as root installed,
#               provisioned, removed and purged (scripts/test-package.sh)
# Each stage builds in folders of its own with the options it needs set, so it runs the same
# after the main job or any other stage. Each prints one closing line "STAGE: N passed, N
# failed"; the last line adds them up, and any failure makes the exit status non-zero.
#
#   scripts/test-all.sh
#   scripts/test-all.sh native stress
set -uo pipefail
cd "$(dirname "$0")/.."

all_stages=(native wine sanitizers stress fuzz install package)
stages=("$@")
[ ${#stages[@]} -gt 0 ] || stages=("${all_stages[@]}")
for stage in "${stages[@]}"; do
  [[ " ${all_stages[*]} " == *" $stage "* ]] ||
    { echo "test-all: unknown stage '$stage' (one of: ${all_stages[*]})" >&2; exit 2; }
done

deps=()
[[ " ${stages[*]} " == *" wine "* || " ${stages[*]} " == *" fuzz "* ]] && deps=(--all)
scripts/install-deps.sh "${deps[@]}" || { echo "test-all: installing the packages failed" >&2; exit 1; }
jobs=$(nproc)

# The options every test build forces, whatever an earlier configure left in its cache.
test_options=(-DZETSETTINGS_BUILD_TESTS=ON -DZETSETTINGS_BUILD_TOOLS=ON -DZETSETTINGS_FUZZ=OFF)

stage_native() {
  cmake -S . -B build "${test_options[@]}" -DZETSETTINGS_SANITIZE= &&
    cmake --build build -j"$jobs" &&
    ctest --test-dir build --output-on-failure --no-tests=error -j"$jobs"
}
stage_wine() { scripts/test-wine.sh; }
stage_sanitizers() { scripts/test-sanitizers.sh; }
stage_stress() { scripts/stress.sh build; }
stage_fuzz() { scripts/fuzz.sh; }
stage_install() { scripts/test-install.sh; }
stage_package() { scripts/test-package.sh && echo "package: 1 passed, 0 failed"; }

# Counts from a stage's log: ctest's summaries, GoogleTest's totals, or the stage's own line.
count_from_log() {
  local stage=$1 log=$2
  python3 - "$stage" "$log" <<'PY'
import re, sys
stage, text = sys.argv[1], open(sys.argv[2], errors="replace").read()
passed = failed = 0
own = re.findall(rf"^{stage}: (\d+) passed, (\d+) failed$", text, re.M)
ctest = re.findall(r"^\d+% tests passed, (\d+) tests? failed out of (\d+)$", text, re.M)
gtest_passed = re.findall(r"^\[  PASSED  \] (\d+) tests?\.", text, re.M)
gtest_failed = re.findall(r"^\[  FAILED  \] (\d+) tests?, listed below", text, re.M)
if own:
    passed, failed = map(int, own[-1])
elif ctest:
    failed = sum(int(f) for f, _ in ctest)
    passed = sum(int(n) for _, n in ctest) - failed
else:
    passed = sum(map(int, gtest_passed))
    failed = sum(map(int, gtest_failed))
print(passed, failed)
PY
}

logs=$(mktemp -d /tmp/zetsettings-test-all-XXXXXX)
trap 'rm -rf "$logs"' EXIT
total_passed=0 total_failed=0 summary=()
for stage in "${stages[@]}"; do
  echo "== $stage"
  start=$SECONDS
  "stage_$stage" 2>&1 | tee "$logs/$stage.log"
  status=${PIPESTATUS[0]}
  read -r passed failed < <(count_from_log "$stage" "$logs/$stage.log")
  if [ "$status" -ne 0 ] && [ "$failed" -eq 0 ]; then
    echo "$stage: the stage failed (exit status $status) before its tests could count it"
    failed=1
  fi
  line="$stage: $passed passed, $failed failed"
  echo "$line"
  summary+=("$line ($((SECONDS - start)) s)")
  total_passed=$((total_passed + passed)) total_failed=$((total_failed + failed))
done

echo "== summary"
printf '%s\n' "${summary[@]}"
echo "all: $total_passed passed, $total_failed failed"
[ "$total_failed" -eq 0 ]
