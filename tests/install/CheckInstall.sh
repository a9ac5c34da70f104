#!/usr/bin/env bash
# Installs the build into a scratch prefix, builds the client against the
# installed tree through find_package and through pkg-config, and runs both
# copies on the installed example database and board.
# Usage: CheckInstall.sh <build dir> <client source dir> <C++ compiler> <flags> [toolchain file]
set -euo pipefail
build=$1 client=$2 cxx=$3 flags=$4 toolchain=${5:-}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
prefix=$work/prefix

cmake --install "$build" --prefix "$prefix" >/dev/null
library=$(find "$prefix" -name libdevid.so -print -quit)
[ -n "$library" ] || { echo "no libdevid.so installed"; exit 1; }
libdir=$(dirname "$library")
soname=$(readelf -d "$library" | sed -n 's/.*(SONAME).*\[\(.*\)\]/\1/p')
[ -e "$libdir/$soname" ] || { echo "SONAME '$soname' is not installed"; exit 1; }

echo "== find_package"
cmake -S "$client" -B "$work/cmake-client" -DCMAKE_BUILD_TYPE=Release \
  -DCMAKE_PREFIX_PATH="$prefix" -DCMAKE_CXX_COMPILER="$cxx" -DCMAKE_CXX_FLAGS="$flags" \
  -DCMAKE_EXE_LINKER_FLAGS="$flags" ${toolchain:+-DCMAKE_TOOLCHAIN_FILE="$toolchain"} >/dev/null
cmake --build "$work/cmake-client" >/dev/null

echo "== pkg-config"
export PKG_CONFIG_PATH=$libdir/pkgconfig
# Most 32-bit programs build with 64-bit file offsets, so a second copy does.
for offsets in "" -D_FILE_OFFSET_BITS=64; do
  # shellcheck disable=SC2046,SC2086  # flag lists split into words on purpose
  "$cxx" -std=c++17 $flags $offsets $(pkg-config --cflags devid) "$client/InstalledClient.cpp" \
    -o "$work/pc-client${offsets:+-lfs}" $(pkg-config --libs devid) -Wl,-rpath,"$(pkg-config --variable=libdir devid)"
done

# The sanitizer runtime hides libdevid's run path from dlopen, so that build
# names the installed folder; every other build finds it without help.
if [ -n "${LD_LIBRARY_PATH:-}" ]; then
  export LD_LIBRARY_PATH=$libdir
fi
export HOME=$work/home TRACE_XMLDB_DEVICES=$prefix/share/devid/examples/db \
       COMMON_VEXIF=$prefix/share/devid/examples/board
mkdir -p "$HOME"
expected="routes 7, first talon0 -> K_ETB
TDF: TDF file extension must be .tdf.
0x1F = 31
position 4"
status=0
for program in "$work/cmake-client/installed_client" "$work/pc-client" "$work/pc-client-lfs"; do
  actual=$("$program" 2>&1) || true
  if [ "$actual" != "$expected" ]; then
    printf '%s printed:\n%s\nexpected:\n%s\n' "$program" "$actual" "$expected"
    status=1
  fi
done
echo "== installed devid tool"
"$prefix/bin/devid" --json procs >/dev/null || { echo "installed devid failed"; status=1; }
exit $status
