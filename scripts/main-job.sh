#!/usr/bin/env bash
# The main job on a fresh Debian machine: install, build, and run a short scenario on the
# machine's default store (/var/lib/zetsettings). It builds in a folder of its own, build-main,
# with every option it relies on set, so the test command's folders never get in its way.
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/install-deps.sh
cmake -S . -B build-main -DZETSETTINGS_BUILD_TESTS=OFF -DZETSETTINGS_BUILD_BENCHMARKS=OFF \
  -DZETSETTINGS_BUILD_TOOLS=ON -DZETSETTINGS_FUZZ=OFF -DZETSETTINGS_SANITIZE=
cmake --build build-main -j"$(nproc)"
scripts/demo.sh build-main
