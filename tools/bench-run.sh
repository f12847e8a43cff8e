#!/usr/bin/env bash
# The Wine half of tools/bench.sh, for one build tree: bench-run.sh BUILD (run where
# Wine runs that tree's programs). Runs every benchmark in the tree's prefix and
# prints their lines.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=$1
"$root/tools/wine-prefix" start "$build/wineprefix" > /dev/null
export WINEPREFIX=$build/wineprefix
for bench in text_layer_bench io_layer_bench log_bench ini_bench exception_bench symbols/exception_bench action_bench; do
    [ -f "$build/$bench.exe" ] || continue
    arguments=()
    # The platform's INI reader takes minutes for 10,000 keys when emulated: time it on
    # the first 500 and scale (the line says so).
    # Each action's registry calls likewise: 40 calls a sample instead of 2,000.
    if [ -n "${KORVALIN_EMULATED:-}" ]; then
        case "$bench" in
        ini_bench) arguments=(500) ;;
        action_bench) arguments=(40) ;;
        esac
    fi
    "$root/tools/wine-run" "$build/$bench.exe" "${arguments[@]}" || echo "bench-run: $bench failed with $?" >&2
done
"$root/tools/wine-prefix" stop "$build/wineprefix"
