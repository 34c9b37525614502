#!/usr/bin/env bash
# sanitize.sh [PRESET...]: builds the unit tests with sanitizers and runs them (default: asan, then tsan).
set -euo pipefail
cd "$(dirname "$0")/.."
[ $# -gt 0 ] || set -- asan tsan

./scripts/setup.sh
for preset in "$@"; do
    mkdir -p build
    if ! { cmake --preset "$preset" && cmake --build --preset "$preset" --target unit_tests; } >"build/$preset.log" 2>&1; then
        tail -n 60 "build/$preset.log" >&2
        exit 1
    fi
    ctest --preset "$preset" --label-regex '^unit$' --parallel "$(nproc)" --no-tests=error </dev/null
done
