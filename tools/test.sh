#!/usr/bin/env bash
# The whole test suite, from a fresh machine: installs what is missing, builds, and
# runs every test under Wine (inside the emulated machine where this host cannot run
# 32-bit code; see tools/wine-host). Extra arguments go to ctest, e.g. -R session.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=${KORVALIN_BUILD:-$root/build}
start=$(date +%s)
"$root/tools/setup.sh"
cmake -S "$root" -B "$build" -G Ninja -DCMAKE_TOOLCHAIN_FILE="$root/cmake/i686-w64-mingw32.cmake" > /dev/null
cmake --build "$build"
echo "test.sh: set-up and build took $(( $(date +%s) - start )) s"
cd "$build"
status=0
# Under a virtual display, so that message boxes really appear and tests can close them.
"$root/tools/wine-host" xvfb-run -a ctest --output-on-failure --timeout 1500 "$@" || status=$?
echo "test.sh: finished after $(( $(date +%s) - start )) s with status $status"
exit $status
