#!/usr/bin/env bash
# The main job on a fresh Debian machine: install, build, and run a short scenario on the
# machine's default store (/var/lib/zetsettings).
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/install-deps.sh
cmake -S . -B build -DZETSETTINGS_BUILD_TESTS=OFF -DZETSETTINGS_BUILD_BENCHMARKS=OFF
cmake --build build -j"$(nproc)"
scripts/demo.sh build
