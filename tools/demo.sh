#!/usr/bin/env bash
# Builds WixKorvalin.dll and the demo packages, installs them under Wine, and prints
# what the actions did: SetProperties, SetDomain, SetEncaseKorvalinFlag and
# SetApplicationSize (see tools/demo-install.sh).
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=${KORVALIN_BUILD:-$root/build}
"$root/tools/setup.sh"
cmake -S "$root" -B "$build" -G Ninja -DCMAKE_TOOLCHAIN_FILE="$root/cmake/i686-w64-mingw32.cmake" > /dev/null
cmake --build "$build" --target WixKorvalin korvalin_packages
echo "demo: built $build/WixKorvalin.dll, $build/packages/demo.msi and demo-earlier.msi"
"$root/tools/wine-host" "$root/tools/demo-install.sh" "$build"
