#!/usr/bin/env bash
# Builds from scratch and runs the whole test suite twice: a plain build in
# build/ and an AddressSanitizer + UndefinedBehaviorSanitizer build in build-asan/.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/install-deps.sh

run_leg() {
  local dir=$1; shift
  echo "== $dir: configure, build, test"
  cmake -S . -B "$dir" -DCMAKE_BUILD_TYPE=Release "$@"
  cmake --build "$dir" -j"$(nproc)"
  ctest --test-dir "$dir" --output-on-failure -j"$(nproc)" --timeout 300
}

run_leg build
# The sanitizer runtime intercepts dlopen, which hides the run path of the
# library that asks; there the sibling libraries are found through LD_LIBRARY_PATH.
LD_LIBRARY_PATH="$PWD/build-asan/lib${LD_LIBRARY_PATH:+:$LD_LIBRARY_PATH}" \
ASAN_OPTIONS=detect_leaks=1:abort_on_error=0 UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1 \
  run_leg build-asan -DDEVID_SANITIZE=ON -DDEVID_BUILD_BENCH=OFF
echo "== all tests passed"
