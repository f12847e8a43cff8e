#!/usr/bin/env bash
# The Wine half of the demo, for one lane: demo-install.sh BUILD x86|x64 (run where
# Wine can run that lane's programs). Sets EnCase's "CheckKorvalin" flag to 1 in the
# 32-bit registry view, installs version 1 of the demo product per machine and then
# version 2 (demo.msi, with the actions) per user, shows what each action did, and
# uninstalls both. Exits with 1 when an action visibly failed.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=$1
lane=${2:-x86}
# The package has the DLL's bitness, and its uninstall entry lies in that view.
if [ "$lane" = x64 ]; then bits=64; else bits=32; fi
prefix=$build/wineprefix
"$root/tools/wine-prefix" start "$prefix"
export WINEPREFIX=$prefix
wine() { "$root/tools/wine-run" "$@"; }
windows() { echo "Z:$(echo "$1" | tr / '\\')"; }
# The data of one registry value, or nothing when it is missing.
value() {
    { wine reg query "$1" /v "$2" ${3:-} 2>/dev/null || true; } | tr -d '\r' | awk -v n="$2" '$1 == n {print $3}'
}
fail() { echo "demo ($lane): $*" >&2; rc=1; }

earlier=$(windows "$build/packages/demo-earlier.msi")
package=$(windows "$build/packages/demo.msi")
encase='HKLM\Software\Guidance Software\EnCase'
madeEncase=no
wine reg query 'HKLM\Software\Guidance Software' /reg:32 > /dev/null 2>&1 || madeEncase=yes
oldFlag=$(value "$encase" CheckKorvalin /reg:32)
wine reg add "$encase" /v CheckKorvalin /t REG_DWORD /d 1 /f /reg:32 > /dev/null
echo "demo ($lane): set $encase\\CheckKorvalin = 1 (32-bit view)"

rc=0
if wine msiexec /i "$earlier" /qn /l*v "$earlier.log"; then
    echo "demo ($lane): installed WixKorvalin Demo 1.0.0 (demo-earlier.msi) per machine"
else
    fail "msiexec /i demo-earlier.msi exited with $?"
fi
before=$(date +%s%3N)
wine msiexec /i "$package" /qn /l*v "$package.log" && installed=0 || installed=$?
echo "demo ($lane): msiexec /i demo.msi /qn (2.0.0, per user) exited with $installed"
[ "$installed" = 0 ] || rc=1

record='HKCU\Software\WixKorvalinDemo'
time=$(value "$record" CURRENTTIMEMS)
if [ -n "$time" ]; then
    echo "demo ($lane): SetProperties: CURRENTTIMEMS = $time ($(date -u -d "@$((time / 1000))" '+%Y-%m-%d %H:%M:%S UTC'));" \
         "the install started at $before"
else
    fail "SetProperties: the package recorded no CURRENTTIMEMS: the action did not run"
fi

allUsers=$(value "$record" ALLUSERS)
disabled=$(value "$record" AllUsersDisabled)
echo "demo ($lane): SetDomain, with 1.0.0 registered per machine: ALLUSERS = \"$allUsers\", AllUsersDisabled = \"$disabled\""
[ "$allUsers" = 1 ] && [ "$disabled" = yes ] || fail "SetDomain: expected ALLUSERS = \"1\" and AllUsersDisabled = \"yes\""

flag=$(value "$encase" CheckKorvalin /reg:32)
echo "demo ($lane): SetEncaseKorvalinFlag: CheckKorvalin 0x1 -> $flag"
[ "$flag" = 0x0 ] || fail "SetEncaseKorvalinFlag: the flag should be 0x0"

product=$(value "$record" ProductCode)
entry="HKLM\\Software\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\$product"
size=$(value "$entry" EstimatedSize /reg:$bits)
echo "demo ($lane): SetApplicationSize: ApplicationSize 2048 -> EstimatedSize = ${size:-nothing}${size:+ ($((size)))} in $entry ($bits-bit view)"
[ "$size" = 0x800 ] || fail "SetApplicationSize: EstimatedSize should be 0x800"

wine msiexec /x "$package" /qn > /dev/null 2>&1 || true
wine msiexec /x "$earlier" /qn > /dev/null 2>&1 || true
# The flag as it was before the demo.
if [ $madeEncase = yes ]; then
    wine reg delete 'HKLM\Software\Guidance Software' /f /reg:32 > /dev/null 2>&1 || true
elif [ -n "$oldFlag" ]; then
    wine reg add "$encase" /v CheckKorvalin /t REG_DWORD /d $((oldFlag)) /f /reg:32 > /dev/null
else
    wine reg delete "$encase" /v CheckKorvalin /f /reg:32 > /dev/null 2>&1 || true
fi
"$root/tools/wine-prefix" stop "$prefix"
exit $rc
