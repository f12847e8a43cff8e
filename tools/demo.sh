#!/usr/bin/env bash
# Builds WixKorvalin.dll and the demo package, installs the demo under Wine, and
# prints what the actions did: the value the package recorded from CURRENTTIMEMS.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=${KORVALIN_BUILD:-$root/build}
"$root/tools/setup.sh"
cmake -S "$root" -B "$build" -G Ninja -DCMAKE_TOOLCHAIN_FILE="$root/cmake/i686-w64-mingw32.cmake" > /dev/null
cmake --build "$build" --target WixKorvalin korvalin_packages
echo "demo: built $build/WixKorvalin.dll and $build/packages/demo.msi"
"$root/tools/wine-host" "$root/tools/demo-install.sh" "$build"
