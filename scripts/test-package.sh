#!/usr/bin/env bash
# Builds the Debian package from a build of its own and lists its contents. As root, also
# installs it into this machine, checks that /var/lib/zetsettings was provisioned for the
# group zetsettings, and removes it again, checking that the store and key stay. Where this
# machine has a store already, that part runs in a mount namespace of its own with an empty
# /var/lib (dpkg's database bound in), so the machine's store is never touched.
#   scripts/test-package.sh [BUILD_DIR]      (default: build-package)
set -euo pipefail
cd "$(dirname "$0")/.."
build=${1:-build-package}

if [ "${ZET_PACKAGE_STAGE:-}" = private-var-lib ]; then
  hold=$(mktemp -d)
  mount --bind /var/lib/dpkg "$hold"
  mount -t tmpfs zetsettings-var-lib /var/lib
  mkdir /var/lib/dpkg
  mount --move "$hold" /var/lib/dpkg
  rmdir "$hold"
  ZET_PACKAGE_STAGE=install exec "$0" "$build"
fi

if [ "${ZET_PACKAGE_STAGE:-}" != install ]; then
  cmake -S . -B "$build" -DCMAKE_BUILD_TYPE=RelWithDebInfo -DZETSETTINGS_BUILD_TESTS=OFF \
    -DZETSETTINGS_BUILD_BENCHMARKS=OFF >/dev/null
  cmake --build "$build" -j"${JOBS:-2}"
  (cd "$build" && cpack -G DEB >/dev/null)
fi
package=$(ls -t "$build"/zetsettings_*.deb | head -1)
echo "== $package"
dpkg-deb -f "$package"
dpkg-deb -c "$package"

contents=$(dpkg-deb -c "$package")
for expected in ./usr/bin/zetsettings ./usr/include/zetsettings/ZETSettings.h \
  zetsettingsConfig.cmake libzetsettings.so; do
  grep -q -- "$expected" <<<"$contents" || { echo "FAIL: the package lacks $expected"; exit 1; }
done
grep -q -- "pkgconfig/zetsettings.pc" <<<"$contents" || { echo "FAIL: the package lacks zetsettings.pc"; exit 1; }

if [ "$(id -u)" != 0 ]; then
  echo "SKIP: installing the package needs root"
  exit 0
fi
if dpkg -s zetsettings >/dev/null 2>&1; then
  echo "SKIP: a zetsettings package is installed on this machine already; not touching it"
  exit 0
fi
if [ -e /var/lib/zetsettings ] || [ -e /var/lib/zetsettings.key ]; then
  if [ -z "${ZET_PACKAGE_STAGE:-}" ] && unshare --mount true 2>/dev/null; then
    echo "== /var/lib/zetsettings is there already: installing with a private /var/lib"
    ZET_PACKAGE_STAGE=private-var-lib exec unshare --mount --propagation private "$0" "$build"
  fi
  echo "SKIP: /var/lib/zetsettings is there already; not touching it"
  exit 0
fi

cleanup() {
  dpkg -P zetsettings >/dev/null 2>&1 || true
  rm -rf /var/lib/zetsettings /var/lib/zetsettings.key
  if [ -n "${made_group:-}" ]; then delgroup --quiet zetsettings 2>/dev/null || groupdel zetsettings || true; fi
}
getent group zetsettings >/dev/null || made_group=1
trap cleanup EXIT

dpkg -i "$package"
check() { [ "$(stat -c '%U:%G %a' "$1")" = "$2" ] || { echo "FAIL: $1 is $(stat -c '%U:%G %a' "$1"), not $2"; exit 1; }; }
check /var/lib/zetsettings "root:zetsettings 2770"
check /var/lib/zetsettings/data.mdb "root:zetsettings 660"
check /var/lib/zetsettings/mutex-zetPreferredNetMutex.lock "root:zetsettings 660"
check /var/lib/zetsettings.key "root:zetsettings 640"
env -u ZET_REGISTRY_DIR zetsettings store info
env -u ZET_REGISTRY_DIR zetsettings login set --user admin --password secret --enabled --keep-password
env -u ZET_REGISTRY_DIR zetsettings login show --secret | grep -q secret
for how in -r -P; do
  dpkg "$how" zetsettings
  [ -f /var/lib/zetsettings/data.mdb ] && [ -f /var/lib/zetsettings.key ] \
    || { echo "FAIL: dpkg $how took the store or its key"; exit 1; }
done
echo "OK: installed, provisioned, removed and purged; the store and key stayed"
