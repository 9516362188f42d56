#!/usr/bin/env bash
# The path a new user takes: a fresh clone of this checkout, the main job and then the native
# tests in that one clone; an install to a temporary prefix whose tool runs with nothing on the
# library path; a one-file program built with pkg-config alone that stores and reads a value.
# Prints one closing line, "install: N passed, N failed".
#
#   scripts/test-install.sh
set -uo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)

work=$(mktemp -d /tmp/zetsettings-install-XXXXXX)
trap 'rm -rf "$work"' EXIT
# The clone's tests run its tool as other users, who must reach its programs and library.
chmod 755 "$work"
clone="$work/clone" prefix="$work/prefix"

passed=0 failed=0
check() {
  local name=$1; shift
  echo "== check: $name"
  if "$@"; then passed=$((passed + 1)); echo "== ok: $name"
  else failed=$((failed + 1)); echo "== FAILED: $name" >&2; fi
}

fresh_clone() { git clone -q "$root" "$clone"; }
main_job_then_native() { (cd "$clone" && scripts/main-job.sh && scripts/test-all.sh native); }
install_to_prefix() { cmake --install "$clone/build-main" --prefix "$prefix" >/dev/null; }

# The installed tool, with no library path: a value set and read back on a store of its own.
installed_tool_runs() {
  local tool="$prefix/bin/zetsettings" got
  env -u LD_LIBRARY_PATH ZET_REGISTRY_DIR="$work/store-tool" "$tool" base set-int Newcomer 42 &&
    got=$(env -u LD_LIBRARY_PATH ZET_REGISTRY_DIR="$work/store-tool" "$tool" base get-int Newcomer --default 0) &&
    echo "$got" | grep -qx '42'
}

pkg_config_program_runs() {
  local flags
  flags=$(PKG_CONFIG_PATH="$prefix/lib/pkgconfig" pkg-config --cflags --libs zetsettings) || return 1
  # shellcheck disable=SC2086  # the flags are words
  g++ -std=c++17 -o "$work/consumer" "$root/tests/install/pkgconfig_consumer.cpp" $flags || return 1
  env -u LD_LIBRARY_PATH ZET_REGISTRY_DIR="$work/store-consumer" "$work/consumer"
}

check "a fresh clone of the checkout" fresh_clone
check "the main job, then the native tests, in that clone" main_job_then_native
check "an install to a temporary prefix" install_to_prefix
check "the installed tool runs with nothing on the library path" installed_tool_runs
check "a program built with pkg-config stores and reads a value" pkg_config_program_runs

echo "install: $passed passed, $failed failed"
[ "$failed" -eq 0 ]
