#!/usr/bin/env bash
# The Wine half of the demo (run where Wine can run 32-bit programs): installs the
# demo package quietly, shows what SetProperties handed over, and uninstalls it.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=$1
prefix=$build/wineprefix
"$root/tools/wine-prefix" start "$prefix"
export WINEPREFIX=$prefix
package="Z:$(echo "$build/packages/demo.msi" | tr / '\\')"
before=$(date +%s%3N)
"$root/tools/wine-run" msiexec /i "$package" /qn /l*v "$package.log" && rc=0 || rc=$?
echo "demo: msiexec /i demo.msi /qn exited with $rc"
value=$("$root/tools/wine-run" reg query 'HKCU\Software\WixKorvalinDemo' /v CURRENTTIMEMS 2>/dev/null \
        | tr -d '\r' | awk '/CURRENTTIMEMS/ {print $3}')
if [ -n "$value" ]; then
    echo "demo: SetProperties set CURRENTTIMEMS = $value ($(date -u -d "@$((value / 1000))" '+%Y-%m-%d %H:%M:%S UTC'));"
    echo "demo: the install started at $before"
else
    echo "demo: the package recorded no CURRENTTIMEMS: the action did not run" >&2
    rc=1
fi
"$root/tools/wine-run" msiexec /x "$package" /qn > /dev/null 2>&1 || true
"$root/tools/wine-prefix" stop "$prefix"
exit $rc
