#!/usr/bin/env bash
# Builds WixKorvalin.dll and the demo packages in each lane (tools/lanes.sh: the 64-bit
# DLL in a 64-bit package, the 32-bit DLL in a 32-bit one), installs them under Wine,
# and prints what the actions did: SetProperties, SetDomain, SetEncaseKorvalinFlag and
# SetApplicationSize (see tools/demo-install.sh). KORVALIN_LANES=x64 shows one lane.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
. "$root/tools/lanes.sh"
"$root/tools/setup.sh"
status=0
for lane in $lanes; do
    build=$(lane_build "$lane")
    lane_configure "$lane"
    cmake --build "$build" --target WixKorvalin korvalin_packages
    echo "demo ($lane): built $build/WixKorvalin.dll, $build/packages/demo.msi and demo-earlier.msi"
    lane_host "$lane" "$root/tools/demo-install.sh" "$build" "$lane" || status=$?
done
exit $status
