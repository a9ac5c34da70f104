#!/usr/bin/env bash
# Builds from scratch and runs the whole test suite three times: a plain build in
# build/, an AddressSanitizer + UndefinedBehaviorSanitizer build in build-asan/
# (leaks included) and a 32-bit x86 build in build-i386/ (under qemu-i386 where
# the kernel cannot run 32-bit programs); then runs each fuzz target briefly in
# build-fuzz/. The plain leg imports every CoreSight board of Linux 6.1, the
# others a handful.
set -euo pipefail
cd "$(dirname "$0")/.."
# The kernel sources give the device trees that the import check reads.
bash scripts/install-deps.sh linux-source-6.1
# Compiled once, by the first leg, for all of them.
kernel_dtbs="$PWD/build/kernel-dtbs"

run_leg() {
  local dir=$1; shift
  echo "== $dir: configure, build, test"
  cmake -S . -B "$dir" -DCMAKE_BUILD_TYPE=Release "$@"
  cmake --build "$dir" -j"$(nproc)"
  ctest --test-dir "$dir" --output-on-failure -j"$(nproc)" --timeout 300
}

run_leg build -DDEVID_KERNEL_DTB_CACHE="$kernel_dtbs"
# The sanitizer runtime intercepts dlopen, which hides the run path of the
# library that asks; there the sibling libraries are found through LD_LIBRARY_PATH.
LD_LIBRARY_PATH="$PWD/build-asan/lib${LD_LIBRARY_PATH:+:$LD_LIBRARY_PATH}" \
ASAN_OPTIONS=detect_leaks=1:abort_on_error=0 UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1 \
  run_leg build-asan -DDEVID_SANITIZE=ON -DDEVID_BUILD_BENCH=OFF \
    -DDEVID_KERNEL_DTB_CACHE="$kernel_dtbs" -DDEVID_KERNEL_BOARDS=8

# The debugger host is 32-bit x86, so the suite runs there as well: natively
# where the kernel runs 32-bit programs, else under qemu-i386 emulation. A
# mirror without the i386 packages, or a machine that can run 32-bit programs
# neither way, skips this leg with the reason, not the run.
if ! bash scripts/install-i386-deps.sh; then
  echo "== build-i386: skipped, the i386 packages (g++-multilib, libgtest-dev:i386, libgmock-dev:i386, libpugixml-dev:i386, libfdt1:i386) could not be installed"
elif ! how=$(bash scripts/i386-support.sh start); then
  echo "== build-i386: skipped, this machine cannot run 32-bit x86 programs: $how"
else
  trap 'bash scripts/i386-support.sh stop' EXIT
  echo "== build-i386: 32-bit programs run $how"
  bench=ON
  dpkg-query -W -f='${Status}' libbenchmark-dev:i386 2>/dev/null | grep -q "install ok installed" || bench=OFF
  run_leg build-i386 -DCMAKE_TOOLCHAIN_FILE="$PWD/cmake/i386.cmake" -DDEVID_BUILD_BENCH=$bench \
    -DDEVID_KERNEL_DTB_CACHE="$kernel_dtbs" -DDEVID_KERNEL_BOARDS=8
fi

# Every file reader is fuzzed for a short while (Clang's libFuzzer); any crash,
# leak, hang or broken rule fails the run.
if command -v clang++ >/dev/null 2>&1; then
  echo "== build-fuzz: each fuzz target for 30 seconds"
  bash fuzz/run-all 30
else
  echo "== build-fuzz: skipped, clang++ is not installed"
fi
echo "== all tests passed"
