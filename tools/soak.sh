#!/usr/bin/env bash
# The whole simulation, a year of 1000 tasks at a time, from fresh seeds until Ctrl-C or the first
# violation. SEED=n begins there.
#
#   tools/soak.sh BUILD_DIRECTORY
set -euo pipefail
program="${1:?which build directory}/bin/nox_simulation_test"
seed="${SEED:-$(od -An -N4 -tu4 /dev/urandom | tr -d ' ')}"

trap 'echo; echo "stopped"; exit 0' INT TERM
while "$program" --seed "$seed" --tasks 1000 --days 365; do
  seed=$((seed + 1))
done
exit 1
