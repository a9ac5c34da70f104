#!/usr/bin/env bash
# Compiles every arm and arm64 board of the Linux 6.1 sources that uses a
# CoreSight component into CACHE/dtb, once: later runs (and the other build
# legs given the same CACHE) find CACHE/boards.txt and return at once.
# Usage: kernel-dtbs.sh CACHE [TARBALL]
set -euo pipefail
cache=$1
tarball=${2:-/usr/src/linux-source-6.1.tar.xz}
mkdir -p "$cache"
exec 9>"$cache/.lock"
flock 9
[ -s "$cache/boards.txt" ] && exit 0

for tool in dtc cpp flock; do
  command -v "$tool" >/dev/null || { echo "kernel-dtbs: $tool is not installed" >&2; exit 1; }
done
[ -r "$tarball" ] || { echo "kernel-dtbs: $tarball is missing (apt-get install linux-source-6.1)" >&2; exit 1; }

src="$cache/linux"
if [ ! -d "$src/include/dt-bindings" ]; then
  rm -rf "$src" && mkdir -p "$src"
  tar -xJf "$tarball" -C "$src" --strip-components=1 --wildcards \
    '*/arch/arm/boot/dts/*' '*/arch/arm64/boot/dts/*' '*/include/dt-bindings/*' '*/include/uapi/linux/input-event-codes.h' '*/scripts/dtc/include-prefixes/*'
fi

# A board uses CoreSight when its .dts, or a file it includes, names a
# component: follow the include graph (by file name) from those files.
cd "$src"
dirs=(arch/arm/boot/dts arch/arm64/boot/dts)
names=$(awk 'NR == FNR { tagged[$1] = 1; next }
             { n = split($1, a, "/"); m = split($2, b, "/"); from[++k] = a[n]; to[k] = b[m] }
             END { do { grew = 0
                        for (i = 1; i <= k; i++) if (tagged[to[i]] && !tagged[from[i]]) { tagged[from[i]] = 1; grew = 1 }
                      } while (grew)
                   for (f in tagged) if (f ~ /[.]dts$/) print f }' \
        <(grep -rlE '"arm,coresight-' "${dirs[@]}" | xargs -n1 basename) \
        <(grep -rHoE '^\s*(#include|/include/)\s*[<"][^">]+[">]' "${dirs[@]}" |
          sed -E 's|^([^:]*):.*[<"]([^">]+)[">]$|\1 \2|'))

compile() {
  local dts=$1 out=$2
  mkdir -p "$(dirname "$out")"
  cpp -nostdinc -I"$(dirname "$dts")" -Iscripts/dtc/include-prefixes -Iinclude -undef -D__DTS__ \
      -x assembler-with-cpp -o "$out.pre" "$dts" &&
  dtc -q -I dts -O dtb -b 0 -i "$(dirname "$dts")" -i scripts/dtc/include-prefixes -o "$out" "$out.pre" &&
  rm -f "$out.pre"
}
export -f compile
rm -rf "$cache/dtb"
find "${dirs[@]}" -name '*.dts' | sort | grep -F -f <(sed 's|^|/|' <<<"$names") |
  while read -r dts; do
    rel=${dts#arch/}; rel=${rel/\/boot\/dts/}
    printf '%s\0%s\0' "$dts" "$cache/dtb/${rel%.dts}.dtb"
  done | xargs -0 -n2 -P"$(nproc)" bash -c 'compile "$0" "$1" || echo "kernel-dtbs: $0 does not compile" >&2'
# Only boards whose compiled tree still holds a component count.
(cd "$cache/dtb" && grep -lr --include='*.dtb' -a 'arm,coresight-' . | sed 's|^[.]/||' | sort) > "$cache/boards.tmp"
mv "$cache/boards.tmp" "$cache/boards.txt"
