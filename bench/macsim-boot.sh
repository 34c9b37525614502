#!/usr/bin/env bash
# macsim-boot.sh [TIMES]: measures how long it takes to make a simulated Mac with every generation of the product and to boot and
# shut it down with all its processes; the median of each in milliseconds (default: 5 times).
set -euo pipefail
cd "$(dirname "$0")/.."
macsim="$PWD/build/release/bin/macsim"
times="${1:-5}"

folder="$(mktemp -d "${TMPDIR:-/tmp}/sentrel-boot.XXXXXX")"
trap '"$macsim" delete "$folder/Mac" >/dev/null 2>&1 || true; rm -rf "$folder"' EXIT

microseconds() { echo $((${EPOCHREALTIME/[.,]/})); }
median() { sort -n "$1" | sed -n "$((times / 2 + 1))p"; }

for ((i = 0; i < times; i++)); do
    start=$(microseconds)
    "$macsim" create "$folder/Mac" --installed all --without-uninstaller --running all >/dev/null
    made=$(microseconds)
    "$macsim" run "$folder/Mac" -- true
    ended=$(microseconds)
    echo $((made - start)) >>"$folder/create"
    echo $((ended - made)) >>"$folder/run"
    "$macsim" delete "$folder/Mac" >/dev/null
done
awk -v create="$(median "$folder/create")" -v run="$(median "$folder/run")" \
    'BEGIN { printf "create %.0f ms, boot and shut down %.0f ms\n", create / 1000, run / 1000 }'
