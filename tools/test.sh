#!/usr/bin/env bash
# The whole test suite, from a fresh machine: installs what is missing, builds both
# DLLs, and runs every test under Wine in each lane (tools/lanes.sh): the 64-bit lane
# natively, the 32-bit lane natively or inside the emulated machine where this host
# cannot run 32-bit code (tools/wine-host).
#
#   ./tools/test.sh                 both lanes
#   ./tools/test.sh --lane x64      one lane alone (x64 is the quick loop)
#   ./tools/test.sh -R session      extra arguments go to ctest
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
if [ "${1:-}" = --lane ]; then
    KORVALIN_LANES=$2
    shift 2
fi
. "$root/tools/lanes.sh"
start=$(date +%s)
"$root/tools/setup.sh"
for lane in $lanes; do
    lane_configure "$lane"
    cmake --build "$(lane_build "$lane")"
done
echo "test.sh: set-up and build took $(( $(date +%s) - start )) s"
status=0
for lane in $lanes; do
    lane_start=$(date +%s)
    lane_status=0
    # Under a virtual display, so that message boxes really appear and tests can close them.
    (cd "$(lane_build "$lane")" &&
        lane_host "$lane" xvfb-run -a ctest --output-on-failure --timeout 1500 "$@") || lane_status=$?
    echo "test.sh: lane $lane finished after $(( $(date +%s) - lane_start )) s with status $lane_status"
    [ "$lane_status" = 0 ] || status=$lane_status
done
echo "test.sh: finished after $(( $(date +%s) - start )) s with status $status"
exit $status
