#!/usr/bin/env bash
# Builds the devid tool and runs it on the bundled example board and database,
# directly and through OpenOCD autoprobing the simulated scan chain.
set -euo pipefail
cd "$(dirname "$0")/.."
bash scripts/install-deps.sh
cmake -S . -B build -DCMAKE_BUILD_TYPE=Release >/dev/null
cmake --build build -j"$(nproc)" --target devid_cli devid_jtagsim
example=(--db examples/db --board examples/board)
echo "\$ build/bin/devid identify ${example[*]}"
build/bin/devid identify "${example[@]}"
echo
echo "\$ build/bin/devid routes ${example[*]}"
build/bin/devid routes "${example[@]}"

# The same board through OpenOCD: devid-jtagsim serves its scan chain to
# OpenOCD's remote_bitbang adapter; both stop when this script ends.
pids=()
trap 'for pid in "${pids[@]}"; do kill "$pid" 2>/dev/null || true; done; wait' EXIT
exec 3< <(build/bin/devid-jtagsim examples/board)
pids+=($!)
read -r -t 30 banner <&3
sim_port=${banner##*:}
# A loopback port that nobody answers on is free enough for OpenOCD's Tcl server.
for tcl_port in $(shuf -i 20000-60000 -n 50); do
  (exec 4<>"/dev/tcp/127.0.0.1/$tcl_port") 2>/dev/null || break
done
openocd -c "adapter driver remote_bitbang; remote_bitbang host 127.0.0.1; remote_bitbang port $sim_port;
            transport select jtag; tcl_port $tcl_port; gdb_port disabled; telnet_port disabled; init" \
  >build/openocd-example.log 2>&1 &
pids+=($!)
for _ in $(seq 100); do
  (exec 4<>"/dev/tcp/127.0.0.1/$tcl_port") 2>/dev/null && break
  sleep 0.1
done
echo
echo "\$ build/bin/devid identify --db examples/db --openocd 127.0.0.1:$tcl_port"
build/bin/devid identify --db examples/db --openocd "127.0.0.1:$tcl_port"
echo
echo "\$ build/bin/devid identify ${example[*]} --openocd 127.0.0.1:$tcl_port"
build/bin/devid identify "${example[@]}" --openocd "127.0.0.1:$tcl_port"
