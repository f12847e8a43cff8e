#!/usr/bin/env bash
# Installs everything the build, the demo and the tests need on a Debian 12 machine:
# the i686 and x86-64 mingw-w64 cross compilers, CMake and Ninja, GoogleTest's sources, Wine with its
# 32-bit modules (wow64 mode), wixl to build installer packages, and Xvfb for message boxes.
# Safe to run again: each step is skipped when its result is already there.
set -euo pipefail

SUDO=""
if [ "$(id -u)" != 0 ]; then SUDO=sudo; fi

need=()
for pkg in g++-mingw-w64-i686 g++-mingw-w64-x86-64 mingw-w64-tools cmake ninja-build googletest wine64 wixl xvfb xauth; do
    dpkg-query -W -f='${Status}' "$pkg" 2>/dev/null | grep -q "install ok installed" || need+=("$pkg")
done
if [ ${#need[@]} -gt 0 ]; then
    echo "setup: installing ${need[*]}"
    $SUDO apt-get update -qq || true
    DEBIAN_FRONTEND=noninteractive $SUDO apt-get install -y -qq --no-install-recommends "${need[@]}"
fi

# Wine's 32-bit PE modules. wine32:i386 does not install beside wine64 (its dependencies'
# versions differ), so the modules are taken out of libwine:i386 by hand.
WOW=/usr/lib/x86_64-linux-gnu/wine/i386-windows
if [ ! -f "$WOW/kernel32.dll" ]; then
    echo "setup: installing Wine's 32-bit modules"
    if ! dpkg --print-foreign-architectures | grep -qx i386; then
        $SUDO dpkg --add-architecture i386
    fi
    # One secondary index may fail with a size mismatch; the one we need is still read.
    $SUDO apt-get update -qq || true
    scratch=$(mktemp -d)
    (cd "$scratch" && apt-get download -qq libwine:i386)
    dpkg -x "$scratch"/libwine_*_i386.deb "$scratch/x"
    $SUDO mkdir -p "$WOW"
    $SUDO cp -a "$scratch/x/usr/lib/i386-linux-gnu/wine/i386-windows/." "$WOW/"
    rm -rf "$scratch"
fi
# Where this machine cannot run 32-bit code, Wine runs inside an emulated machine.
"$(dirname "$0")/wine-host" --prepare
echo "setup: done"
