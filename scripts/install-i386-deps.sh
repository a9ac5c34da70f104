#!/usr/bin/env bash
# Installs what the 32-bit x86 build needs on an x86_64 Debian machine: the
# multilib compilers and the i386 -dev packages (the benchmark ones optional).
# libfdt has no i386 -dev package beside the 64-bit one; its headers serve
# both, and the 32-bit link takes the runtime library.
# Exit status 0 when the 32-bit build can go ahead.
set -uo pipefail
required=(g++-multilib libgtest-dev:i386 libgmock-dev:i386 libpugixml-dev:i386 libfdt1:i386)
optional=(libbenchmark-dev:i386 libspdlog-dev:i386)

missing() {
  local p
  for p in "$@"; do
    dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || echo "$p"
  done
}

command -v dpkg >/dev/null 2>&1 || exit 1
mapfile -t todo < <(missing "${required[@]}" "${optional[@]}")
[ ${#todo[@]} -gt 0 ] || exit 0

echo "installing: ${todo[*]}"
sudo_cmd=""
[ "$(id -u)" -eq 0 ] || sudo_cmd="sudo"
export DEBIAN_FRONTEND=noninteractive
dpkg --print-foreign-architectures | grep -qx i386 || $sudo_cmd dpkg --add-architecture i386 || exit 1
# A mirror that fails part of the update need not stop the install: the
# package lists at hand may still carry everything.
$sudo_cmd apt-get update || true
$sudo_cmd apt-get install -y --no-install-recommends "${todo[@]}" ||
  { mapfile -t todo < <(missing "${required[@]}")
    [ ${#todo[@]} -eq 0 ] || $sudo_cmd apt-get install -y --no-install-recommends "${todo[@]}"; }
[ -z "$(missing "${required[@]}")" ]
