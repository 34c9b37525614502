#!/usr/bin/env bash
# torture.sh [MINUTES [SEED]]: does everything to the helpers that tests under CTest leave to chance, for about MINUTES
# (30), and prints a table of rounds and losses. With enough minutes every row does as many rounds as it
# wants; with fewer it prints how many it did. The same SEED gives the same moments. Exit status 1: something was lost.
# docs/reliability.md says what each row promises.
set -euo pipefail
cd "$(dirname "$0")/.."

minutes="${1:-30}"
seed="${2:-$((RANDOM * 32768 + RANDOM))}"
if [[ ! "$minutes" =~ ^[1-9][0-9]*$ || ! "$seed" =~ ^[0-9]+$ || $# -gt 2 ]]; then
    echo "usage: torture.sh [MINUTES [SEED]]" >&2
    exit 2
fi

./scripts/setup.sh
mkdir -p build
if ! { cmake --preset release && cmake --build --preset release --target torture; } >build/torture.log 2>&1; then
    grep -E -A12 'error|FAILED' build/torture.log | head -n 80 >&2 || true
    echo "torture.sh: the build failed; everything it said is in build/torture.log" >&2
    exit 1
fi
bin="$PWD/build/release/torture"
scratch="$(mktemp -d "${TMPDIR:-/tmp}/sentrel-torture.XXXXXX")"
chmod 755 "$scratch"
# Races are won in memory.
shared="$(mktemp -d /dev/shm/sentrel-torture.XXXXXX)"
mkdir "$scratch/macs"
chmod 755 "$scratch/macs"

# An ordinary user is root among user ids of their own, as in macsim.
as_root=()
[ "$(id -u)" -eq 0 ] || as_root=(unshare --user --map-root-user --map-auto --)

lines=()
clean_up() {
    for line in "${lines[@]}"; do
        kill -TERM -- "-$line" 2>/dev/null || true
    done
    for mac in "$scratch"/macs/*/mac; do
        [ ! -d "$mac" ] || "$PWD/build/release/bin/macsim" delete "$mac" >/dev/null 2>&1 || true
    done
    "${as_root[@]}" rm -rf -- "$scratch" "$shared"
}
trap clean_up EXIT
trap 'exit 130' INT TERM

# Rows, one a line: name, rounds wanted, share of its line's time, lanes (simulated Macs at a time). The rows of one line
# run one after another; those of the second mostly wait.
busy_rows="commands 75 10 3
moments 1000 50 5
race-removal 10000 5 1
race-ownership 10000 5 1
race-copy 10000 5 1
race-way 60000 10 1"
waiting_rows="refused 144 15 8
blessings 40 15 6
peers 1000 20 3
folders 120 25 3
two 20 8 2
ten 10 12 1"

# swap-race counts rounds only; in small portions it keeps to a time too.
race() { # KIND ROUNDS SECONDS
    local kind="$1" wanted="$2" end=$((SECONDS + $3)) count=0 swaps=0 losses=0 portion=250 rounds swapped lost
    while [ "$count" -lt "$wanted" ] && [ "$SECONDS" -lt "$end" ]; do
        # KIND: N rounds, N swaps, N losses
        if ! read -r _ rounds _ swapped _ lost _ < <("$bin/swap-race" "$kind" "$portion" "$shared"); then
            losses=$((losses + 1))
            echo "LOST: swap-race $kind $portion ended without a result" >&2
            break
        fi
        count=$((count + rounds)) swaps=$((swaps + swapped)) losses=$((losses + lost))
    done
    printf 'links swapped, %s\t%d\t%d\t%d\tswaps %d\n' "$kind" "$count" "$wanted" "$losses" "$swaps"
}

# Does the rows on standard input in the time that is left, each with its share of it.
do_line() { # NUMBER
    local number="$1" end=$((SECONDS + minutes * 60)) shares=0 name rounds share lanes rows
    mapfile -t rows
    for row in "${rows[@]}"; do
        read -r name rounds share lanes <<<"$row"
        shares=$((shares + share))
    done
    for row in "${rows[@]}"; do
        read -r name rounds share lanes <<<"$row"
        local left=$((end - SECONDS))
        local time=$((left > 0 ? left * share / shares : 1))
        shares=$((shares - share))
        number=$((number + 1))
        if [[ "$name" = race-* ]]; then
            race "${name#race-}" "$rounds" "$time"
        else
            "$bin/torture-rows" "$name" "$rounds" "$time" "$lanes" "$seed" || true
        fi >"$scratch/$number.row"
    done
}

echo "torture.sh: $minutes minutes, seed $seed"
export TMPDIR="$scratch/macs" bin scratch shared minutes seed
export -f race do_line
start=$SECONDS
# Each line has its own process group, so that all of it can be ended.
setsid "${as_root[@]}" bash -c 'do_line 10' <<<"$busy_rows" &
lines+=($!)
setsid "${as_root[@]}" bash -c 'do_line 20' <<<"$waiting_rows" &
lines+=($!)
wait "${lines[@]}" || true
lines=()

# A row that never ended has no file or an empty one.
wanted=$(($(wc -l <<<"$busy_rows") + $(wc -l <<<"$waiting_rows")))
ended=$(cat "$scratch"/*.row | wc -l)
losses=$(awk -F '\t' '{ sum += $4 } END { print sum + 0 }' "$scratch"/*.row)
printf '\n%-40s %15s %8s  %s\n' "" "done / wanted" "losses" "of these"
awk -F '\t' '{ printf "%-40s %15s %8d  %s\n", $1, $2 " / " $3, $4, $5 }' "$scratch"/*.row
printf '\n%d rows of %d ended, %d losses, %d minutes, seed %s\n' \
    "$ended" "$wanted" "$losses" $(((SECONDS - start) / 60)) "$seed"
[ "$losses" -eq 0 ] && [ "$ended" -eq "$wanted" ]
