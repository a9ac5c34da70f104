#!/usr/bin/env bash
# Builds the devid tool and runs it on the bundled example board and database.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/install-deps.sh
cmake -S . -B build -DCMAKE_BUILD_TYPE=Release >/dev/null
cmake --build build -j"$(nproc)" --target devid_cli
build/bin/devid --version
