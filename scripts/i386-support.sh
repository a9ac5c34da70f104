#!/usr/bin/env bash
# Makes this machine run 32-bit x86 programs for the i386 test leg.
#   i386-support.sh start   prints how they run: "natively" or "under qemu-i386
#                           emulation"; exit status 1, with the reason, when
#                           they cannot run at all
#   i386-support.sh stop    undoes what start registered or mounted
# Where the kernel has no 32-bit support, qemu-i386 (Debian's qemu-user) is
# registered with binfmt_misc, so that programs the tests start run too.
# DEVID_I386_EMULATE=1 asks for emulation even where the kernel needs none.
set -uo pipefail
state=${TMPDIR:-/tmp}/devid-i386-support.state
entry=devid-i386
binfmt=/proc/sys/fs/binfmt_misc

sudo_cmd=""
[ "$(id -u)" -eq 0 ] || sudo_cmd="sudo"

# Builds and runs a tiny 32-bit program: the one test that tells.
runs_32bit() {
  local dir status
  dir=$(mktemp -d)
  printf 'int main(void) { return sizeof(void*) == 4 ? 0 : 1; }\n' > "$dir/probe.c"
  gcc -m32 "$dir/probe.c" -o "$dir/probe" 2>/dev/null && "$dir/probe" 2>/dev/null
  status=$?
  rm -rf "$dir"
  return $status
}

register_qemu() {
  if ! command -v qemu-i386 >/dev/null 2>&1; then
    DEBIAN_FRONTEND=noninteractive $sudo_cmd apt-get install -y --no-install-recommends qemu-user >/dev/null 2>&1 ||
      { echo "qemu-i386 could not be installed (Debian package qemu-user)"; return 1; }
  fi
  if [ ! -e "$binfmt/register" ]; then
    $sudo_cmd mount -t binfmt_misc binfmt_misc "$binfmt" 2>/dev/null ||
      { echo "binfmt_misc cannot be mounted here"; return 1; }
    echo mounted >> "$state"
  fi
  if [ ! -e "$binfmt/$entry" ]; then
    # ELF, 32-bit, little endian, executable or shared object, machine 386.
    printf '%s' ":$entry:M::\\x7fELF\\x01\\x01\\x01\\x00\\x00\\x00\\x00\\x00\\x00\\x00\\x00\\x00\\x02\\x00\\x03\\x00:\\xff\\xff\\xff\\xff\\xff\\xfe\\xfe\\x00\\xff\\xff\\xff\\xff\\xff\\xff\\xff\\xff\\xfe\\xff\\xff\\xff:$(command -v qemu-i386):" |
      $sudo_cmd tee "$binfmt/register" >/dev/null 2>&1 ||
      { echo "qemu-i386 cannot be registered with binfmt_misc"; return 1; }
    echo registered >> "$state"
  fi
}

case ${1:-} in
  start)
    : > "$state"
    if [ "${DEVID_I386_EMULATE:-0}" != 1 ] && runs_32bit; then
      echo "natively"
      exit 0
    fi
    register_qemu || exit 1
    if runs_32bit; then
      echo "under qemu-i386 emulation"
      exit 0
    fi
    echo "32-bit programs do not run even under qemu-i386"
    "$0" stop
    exit 1
    ;;
  stop)
    [ -f "$state" ] || exit 0
    if grep -qx registered "$state" && [ -e "$binfmt/$entry" ]; then
      echo -1 | $sudo_cmd tee "$binfmt/$entry" >/dev/null
    fi
    grep -qx mounted "$state" && $sudo_cmd umount "$binfmt"
    rm -f "$state"
    ;;
  *)
    echo "usage: $0 start|stop" >&2
    exit 2
    ;;
esac
