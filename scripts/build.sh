#!/usr/bin/env bash
# build.sh [PRESET]: sets the machine up if need be, then configures and builds a preset (default: release). One line says how
# far it is; everything else goes to build/PRESET.log.
set -euo pipefail
cd "$(dirname "$0")/.."
preset="${1:-release}"

if [ "$preset" = demo ]; then
    ./scripts/setup.sh run
else
    ./scripts/setup.sh develop
fi
mkdir -p build
log="build/$preset.log"
started=$SECONDS
echo "Building (preset $preset)..." >&2
build() {
    cmake --preset "$preset" && NINJA_STATUS='[%f/%t] ' cmake --build --preset "$preset"
}
if ! { build 2>&1 | tee "$log" | ./scripts/progress.sh; }; then
    grep -E -A12 'error|FAILED' "$log" | head -n 80 >&2 || true
    echo "build.sh: the build failed; everything it said is in $log" >&2
    exit 1
fi
echo "Built in $((SECONDS - started)) s; everything the build said is in $log" >&2
