# Sourced by test.sh and demo.sh: the two builds, one tree each.
#   x64  64-bit Windows code, which Wine runs natively on any x86-64 Linux
#   x86  32-bit Windows code, run natively where this machine can run 32-bit code and
#        inside the emulated machine where it cannot (tools/wine-host decides)
# KORVALIN_LANES picks some of them, in order (default "x64 x86": the quick one first).
lanes=${KORVALIN_LANES:-x64 x86}

lane_build() {  # lane_build x64|x86: the lane's build tree
    case "$1" in
    x64) echo "${KORVALIN_BUILD_X64:-$root/build-x64}" ;;
    x86) echo "${KORVALIN_BUILD:-$root/build}" ;;
    *) echo "unknown lane $1 (x64 or x86)" >&2; return 1 ;;
    esac
}

lane_toolchain() {
    case "$1" in
    x64) echo "$root/cmake/x86_64-w64-mingw32.cmake" ;;
    x86) echo "$root/cmake/i686-w64-mingw32.cmake" ;;
    esac
}

# Runs a command where the lane's Windows programs run: 64-bit code right here,
# 32-bit code through tools/wine-host.
lane_host() {
    local lane=$1
    shift
    if [ "$lane" = x64 ]; then "$@"; else "$root/tools/wine-host" "$@"; fi
}

lane_configure() {
    cmake -S "$root" -B "$(lane_build "$1")" -G Ninja -DCMAKE_TOOLCHAIN_FILE="$(lane_toolchain "$1")" > /dev/null
}
