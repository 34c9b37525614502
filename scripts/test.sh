#!/usr/bin/env bash
# test.sh [PRESET]: builds everything and runs all tests; the last lines are CTest's summary (default: test, which compiles several
# sources at a time).
set -euo pipefail
cd "$(dirname "$0")/.."
preset="${1:-test}"

./scripts/build.sh "$preset"
./scripts/check-layers.sh
# The simulated Macs mostly wait, so more of them run at a time than there are cores.
exec ctest --preset "$preset" --parallel "$(($(nproc) * 4))" --output-on-failure --no-tests=error </dev/null
