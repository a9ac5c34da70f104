#!/usr/bin/env bash
# Builds the devid tool and runs it on the bundled example board and database.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/install-deps.sh
cmake -S . -B build -DCMAKE_BUILD_TYPE=Release >/dev/null
cmake --build build -j"$(nproc)" --target devid_cli
example=(--db examples/db --board examples/board)
echo "\$ build/bin/devid identify ${example[*]}"
build/bin/devid identify "${example[@]}"
echo
echo "\$ build/bin/devid routes ${example[*]}"
build/bin/devid routes "${example[@]}"
