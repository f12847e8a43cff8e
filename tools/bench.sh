#!/usr/bin/env bash
# Builds and runs every benchmark in each lane (tools/lanes.sh; KORVALIN_LANES=x64 for
# one) and prints one table: the path measured, its anchor (measured in the same run),
# the ratio (ours / anchor; for rates in records or lines per second, as it stands),
# and the lane with whether it ran natively or inside the emulated machine. Each
# ratio is the median of interleaved samples (bench/BenchClock.h).
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
. "$root/tools/lanes.sh"
"$root/tools/setup.sh" > /dev/null
lines=$(mktemp)
trap 'rm -f "$lines"' EXIT
for lane in $lanes; do
    build=$(lane_build "$lane")
    lane_configure "$lane"
    cmake --build "$build" > /dev/null
    echo "bench.sh: running the $lane lane's benchmarks" >&2
    lane_host "$lane" "$root/tools/bench-run.sh" "$build" | tee -a "$lines" >&2
done
echo
printf '%-46s | %-42s | %9s | %s\n' "path" "anchor" "ratio" "lane"
printf '%s\n' "----------------------------------------------+--------------------------------------------+-----------+-------------"
awk -F' [|] ' 'NF >= 5 && $4 ~ /ratio/ {
    sub(/ +$/, "", $1); sub(/ +$/, "", $3); ratio = $4; sub(/ratio +/, "", ratio)
    printf "%-46s | %-42s | %9s | %s\n", $1, $3, ratio, $5 }' "$lines"
