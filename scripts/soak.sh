#!/usr/bin/env bash
# soak.sh [TIMES]: runs the whole test suite again and again while every core is kept busy by something else (default: 20 times).
# Builds first. Prints one row for each run as it ends; the exit status is 1 when a test failed in any of them, and what failed
# stands in build/soak/RUN.log.
set -euo pipefail
cd "$(dirname "$0")/.."
times="${1:-20}"
if ! [[ $times =~ ^[1-9][0-9]*$ ]]; then
    echo "soak.sh: TIMES is a number from 1, not \"$times\"" >&2
    exit 2
fi
preset=release
logs="$PWD/build/soak"

./scripts/build.sh "$preset"
rm -rf "$logs"
mkdir -p "$logs"

busy=()
for ((core = 0; core < $(nproc); core++)); do
    (while :; do :; done) &
    busy+=($!)
done
trap 'kill "${busy[@]}" 2>/dev/null || true; wait "${busy[@]}" 2>/dev/null || true' EXIT
trap 'exit 130' INT TERM

printf '%4s  %6s  %6s  %8s  %s\n' run tests failed seconds "what failed"
failures=0
for ((run = 1; run <= times; run++)); do
    log="$logs/$run.log"
    start=$SECONDS
    status=0
    ctest --preset "$preset" --parallel "$(($(nproc) * 8))" --output-on-failure --no-tests=error </dev/null >"$log" 2>&1 || status=$?
    summary="$(sed -nE 's/^[0-9]+% tests passed, ([0-9]+) tests? failed out of ([0-9]+)$/\1 \2/p' "$log")"
    read -r failed tests <<<"${summary:-? ?}"
    names="$(sed -nE '/^The following tests FAILED:/,$ s/^[[:space:]]+[0-9]+ - ([^ ]+) .*/\1/p' "$log" | paste -sd ' ')"
    [ "$status" = 0 ] || failures=$((failures + 1))
    printf '%4d  %6s  %6s  %8d  %s\n' "$run" "$tests" "$failed" "$((SECONDS - start))" "$names"
done
echo "$times runs, $failures with a failure; $(nproc) cores kept busy meanwhile"
[ "$failures" = 0 ]
