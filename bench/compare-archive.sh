#!/bin/sh
# Archives and unarchives the 75 commands of one uninstallation with this project's coders and with GNUstep's, in one
# run on one machine, and prints the ratios of the processor's time.
#
#   bench/compare-archive.sh [BIN]      BIN: the folder of built programs (default: build/release/bin)
set -eu

bin=${1:-$(dirname "$0")/../build/release/bin}
for program in ArchiveBenchmark gnustep-archive; do
    if [ ! -x "$bin/$program" ]; then
        echo "$0: $bin/$program is missing; build the preset 'release' first" >&2
        exit 1
    fi
done

scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

"$bin/ArchiveBenchmark" "--write_archive=$scratch/list"
"$bin/gnustep-archive" bench "$scratch/list" 30 > "$scratch/gnustep"
# The best of several runs on both sides.
"$bin/ArchiveBenchmark" --benchmark_format=csv --benchmark_repetitions=10 --benchmark_min_time=0.05 \
    > "$scratch/ours" 2> "$scratch/messages"

awk -F '[ ,]' -v list="$(wc -c < "$scratch/list")" '
    FNR == NR { theirs[$1] = $2 / 1000; next }
    { gsub(/"/, "", $1) }
    $1 == "encode" || $1 == "decode" { if (!($1 in ours) || $4 < ours[$1]) ours[$1] = $4 }
    END {
        printf "75 commands, %d bytes     microseconds\n", list
        for (i = split("encode decode", verbs, " "); i > 0; --i) {
            verb = verbs[i]
            if (!(ours[verb] > 0) || !(theirs[verb] > 0)) { print "no figure for " verb > "/dev/stderr"; exit 1 }
            printf "%s: ours %.1f, GNUstep %.1f, ratio %.1f\n", verb, ours[verb], theirs[verb], theirs[verb] / ours[verb]
        }
    }' "$scratch/gnustep" "$scratch/ours"
