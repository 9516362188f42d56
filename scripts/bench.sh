#!/usr/bin/env bash
# Measures every operation of the library on the portable registry (native build) and on Wine's
# registry (MinGW build run under Wine), and writes docs/performance.md and docs/performance.png.
#
#   scripts/bench.sh            full run (about a quarter of an hour)
#   scripts/bench.sh --quick    short runs, for trying the script
#
# Needs the benchmark extras of scripts/install-deps.sh (--bench). Google Benchmark for MinGW
# has no binary package: its Debian source package is fetched and cross-built once into the
# MinGW build folder.
set -euo pipefail
cd "$(dirname "$0")/.."

quick=0
[ "${1:-}" = "--quick" ] && quick=1

native_dir=${ZET_BENCH_NATIVE_DIR:-build-bench}
mingw_dir=${ZET_BENCH_MINGW_DIR:-build-bench-mingw}
jobs=${ZET_BENCH_JOBS:-$(nproc)}
results=$native_dir/bench-results
mkdir -p "$results"

# Taken before anything is built, so that it says how busy the machine was to begin with.
load_at_start=$(cut -d' ' -f1-3 /proc/loadavg)

# Under Wine a call takes hundreds of microseconds and a decryption milliseconds: the long run
# there is shorter, so that the whole stays within a quarter of an hour.
if [ $quick -eq 1 ]; then
  repetitions=3; min_time=0.02; memory_operations=100000; wine_memory_operations=2000
else
  repetitions=5; min_time=0.1; memory_operations=1000000; wine_memory_operations=20000
fi

gbench_source() {
  local cache=$mingw_dir/gbench-src
  if [ ! -f "$cache/benchmark.orig.tar.gz" ]; then
    mkdir -p "$cache/lists/partial"
    printf 'Types: deb-src\nURIs: http://deb.debian.org/debian\nSuites: bookworm\nComponents: main\nSigned-By: /usr/share/keyrings/debian-archive-keyring.gpg\n' \
      >"$cache/src.sources"
    local apt_opts=(-o "Dir::Etc::SourceList=$PWD/$cache/src.sources" -o Dir::Etc::SourceParts=/dev/null
      -o "Dir::State::Lists=$PWD/$cache/lists")
    apt-get "${apt_opts[@]}" update >/dev/null
    (cd "$cache" && apt-get "${apt_opts[@]}" source --download-only benchmark >/dev/null)
    mv "$cache"/benchmark_*.orig.tar.gz "$cache/benchmark.orig.tar.gz"
  fi
  echo "$cache/benchmark.orig.tar.gz"
}

build_mingw_gbench() {
  local prefix=$mingw_dir/gbench-install
  [ -f "$prefix/lib/cmake/benchmark/benchmarkConfig.cmake" ] && return
  local tarball work
  tarball=$(gbench_source)
  work=$mingw_dir/gbench-build
  rm -rf "$work" && mkdir -p "$work/src"
  tar -xzf "$tarball" -C "$work/src" --strip-components=1
  cmake -S "$work/src" -B "$work/build" -DCMAKE_BUILD_TYPE=Release \
    -DCMAKE_TOOLCHAIN_FILE="$PWD/cmake/toolchains/mingw-w64-x86_64.cmake" \
    -DBENCHMARK_ENABLE_TESTING=OFF -DBENCHMARK_ENABLE_WERROR=OFF -DBENCHMARK_ENABLE_GTEST_TESTS=OFF \
    -DBENCHMARK_ENABLE_INSTALL=ON -DCMAKE_INSTALL_PREFIX="$PWD/$prefix" >/dev/null
  cmake --build "$work/build" -j"$jobs" >/dev/null
  cmake --install "$work/build" >/dev/null
}

echo "== building (native: $native_dir, MinGW: $mingw_dir)"
cmake -S . -B "$native_dir" -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build "$native_dir" -j"$jobs" --target zetsettings_bench zetsettings_floor >/dev/null
build_mingw_gbench
cmake -S . -B "$mingw_dir" -DCMAKE_TOOLCHAIN_FILE=cmake/toolchains/mingw-w64-x86_64.cmake \
  -DCMAKE_BUILD_TYPE=RelWithDebInfo -DZETSETTINGS_BUILD_TOOLS=OFF -DZETSETTINGS_BUILD_TESTS=OFF \
  -Dbenchmark_DIR="$PWD/$mingw_dir/gbench-install/lib/cmake/benchmark" >/dev/null
cmake --build "$mingw_dir" -j"$jobs" --target zetsettings_bench >/dev/null

if [ $quick -eq 1 ]; then
  suite='^(op/[^/]+/n:(1|100)/|MemoryGrowth|BM_FallbackDatabase_rewrite/records:(100|1000)/)'
  floors='^floor/[^/]+/n:(1|100)/'
else
  suite='^(op/|MemoryGrowth|BM_FallbackDatabase_rewrite/)'; floors='^floor/'
fi
common=(--benchmark_repetitions=$repetitions --benchmark_min_time=$min_time
  --benchmark_report_aggregates_only=true --benchmark_out_format=json)
export ZET_BENCH_MEMORY_OPS=$memory_operations

echo "== native: the suite on the portable registry"
"$native_dir/bench/zetsettings_bench" --benchmark_filter="$suite" --benchmark_out="$results/native.json" "${common[@]}"
echo "== native: the LMDB floors"
"$native_dir/bench/zetsettings_floor" --benchmark_filter="$floors" --benchmark_out="$results/floor.json" "${common[@]}"

echo "== Wine: the suite on Wine's registry"
rm -f "$results/wine.json"
prefix=$(mktemp -d /tmp/zetsettings-bench-wine-XXXXXX)
trap 'wineserver -k >/dev/null 2>&1 || true; rm -rf "$prefix"' EXIT
(
  export WINEPREFIX="$prefix/prefix" WINEDEBUG=-all WINEDLLOVERRIDES="mscoree,mshtml="
  export ZET_BENCH_MEMORY_OPS=$wine_memory_operations
  wine wineboot -i >/dev/null 2>&1
  wine "$mingw_dir/bench/zetsettings_bench.exe" --benchmark_filter="$suite" \
    --benchmark_out="Z:$PWD/$results/wine.json" "${common[@]}"
  wineserver -w
) || echo "the Wine run failed: the report will say so"

python3 - "$results/machine.json" "$load_at_start" "$quick" <<'PY'
import json, platform, re, subprocess, sys, time, os
def run(*command):
    try:
        return subprocess.run(command, capture_output=True, text=True).stdout.strip()
    except OSError:
        return "unknown"
cpu = re.search(r"Model name:\s*(.*)", run("lscpu"))
json.dump({
    "date": time.strftime("%Y-%m-%d %H:%M UTC", time.gmtime()),
    "cpu": cpu.group(1) if cpu else "unknown",
    "cores": os.cpu_count(),
    "kernel": platform.release(),
    "load_at_start": sys.argv[2] + " (1, 5, 15 min)",
    "wine": run("wine", "--version"),
    "mode": "quick (3 repetitions, short runs, no 10,000-entry stores)" if sys.argv[3] == "1"
            else "full (5 repetitions)",
    **({"note": os.environ["ZET_BENCH_NOTE"]} if os.environ.get("ZET_BENCH_NOTE") else {}),
}, open(sys.argv[1], "w"), indent=1)
PY
# Debian's python3-matplotlib belongs to the system's interpreter, which a python3 earlier on
# the PATH (pyenv, a virtualenv) may not be.
plotting_python=python3
[ -x /usr/bin/python3 ] && plotting_python=/usr/bin/python3
"$plotting_python" scripts/bench_report.py "$results/native.json" "$results/floor.json" "$results/wine.json" \
  "$results/machine.json" docs/performance.md docs/performance.png
echo "== wrote docs/performance.md and docs/performance.png"
