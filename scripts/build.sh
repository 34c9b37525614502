#!/usr/bin/env bash
# build.sh [PRESET]: sets the machine up if need be, then configures and builds a preset (default: release).
set -euo pipefail
cd "$(dirname "$0")/.."
preset="${1:-release}"

./scripts/setup.sh
mkdir -p build
log="build/$preset.log"
if ! { cmake --preset "$preset" && cmake --build --preset "$preset"; } >"$log" 2>&1; then
    grep -E -A12 'error|FAILED' "$log" | head -n 80 >&2 || true
    echo "build.sh: the build failed; everything it said is in $log" >&2
    exit 1
fi
