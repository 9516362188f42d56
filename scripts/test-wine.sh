#!/usr/bin/env bash
# Cross-builds the library and its test suite with MinGW-w64 and runs the suite under Wine, in
# a fresh Wine prefix, against Wine's own registry, mutexes and data protection.
set -euo pipefail
cd "$(dirname "$0")/.."

cmake -S . -B build-mingw -DCMAKE_TOOLCHAIN_FILE=cmake/toolchains/mingw-w64-x86_64.cmake \
  -DZETSETTINGS_BUILD_TOOLS=OFF -DZETSETTINGS_BUILD_BENCHMARKS=OFF -DZETSETTINGS_BUILD_TESTS=ON
cmake --build build-mingw -j"$(nproc)"

prefix=$(mktemp -d /tmp/zetsettings-wine-XXXXXX)
trap 'wineserver -k >/dev/null 2>&1 || true; rm -rf "$prefix"' EXIT
export WINEPREFIX="$prefix/prefix" WINEDEBUG=-all WINEDLLOVERRIDES="mscoree,mshtml="
wine wineboot -i >/dev/null 2>&1
wine build-mingw/tests/zetsettings_tests.exe "$@"
