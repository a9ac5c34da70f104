#!/usr/bin/env bash
# Installs the Debian packages the build, the tests and the tools need, when
# missing, and any further packages named as arguments.
set -euo pipefail
packages=(cmake make g++ pkg-config libgtest-dev libgmock-dev libbenchmark-dev
          libpugixml-dev libcli11-dev nlohmann-json3-dev libspdlog-dev clang libclang-rt-14-dev graphviz openocd
          libfdt-dev device-tree-compiler "$@")
missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
if [ ${#missing[@]} -gt 0 ]; then
  echo "installing: ${missing[*]}"
  sudo_cmd=""
  [ "$(id -u)" -eq 0 ] || sudo_cmd="sudo"
  export DEBIAN_FRONTEND=noninteractive
  $sudo_cmd apt-get install -y --no-install-recommends "${missing[@]}" \
    || { $sudo_cmd apt-get update && $sudo_cmd apt-get install -y --no-install-recommends "${missing[@]}"; }
fi
