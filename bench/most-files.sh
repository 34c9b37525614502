#!/usr/bin/env bash
# Tries how many files silent mode removes within its 60 s: one whole silent uninstallation, with the pauses that stopped daemons are
# given, in a simulated Mac of each size. A line a run: how many empty files lie in the product's folder besides its own 100 or so,
# the uninstaller's last line, its exit status and the seconds it took.
#
# usage: most-files.sh FOLDER FILES...
#   FOLDER: where simulated Macs are made, for instance /dev/shm or /var/tmp; it needs an inode for each file
#
# BIN is the folder of built programs (default: build/release/bin). COLD=1 empties the system's caches before each run (root). On a machine
# that others use, PREFIX="chrt -r 1" (root) has the processors serve this before anything else.
set -euo pipefail

usage() {
    sed -n '2,/^set/p' "$0" | grep '^#' | cut -c3-
    exit "$1"
}

case "${1:-}" in
    --help | -h) usage 0 ;;
esac
[ $# -gt 1 ] || usage 2 >&2
bin=$(realpath "${BIN:-$(dirname "$0")/../build/release/bin}")
if [ ! -x "$bin/macsim" ]; then
    echo "$0: $bin/macsim is missing; build the preset 'release' first" >&2
    exit 1
fi
read -ra prefix <<<"${PREFIX:-}"
scratch=$(mktemp -d "$1/most-files.XXXXXX")
chmod 755 "$scratch"
trap '"$bin/macsim" delete "$scratch/mac" 2>/dev/null || true; rm -rf "$scratch"' EXIT
shift

for files in "$@"; do
    "$bin/macsim" create "$scratch/mac" --installed current --users alice:501
    cp -R "$bin/Uninstall Sentrel.app" "$scratch/mac/Volumes/"
    python3 "$(dirname "$0")/fill_mac.py" "$scratch/mac" "$files"
    sync -f "$scratch"
    [ "${COLD:-}" != 1 ] || echo 3 >/proc/sys/vm/drop_caches
    status=0
    begin=$(date +%s%N)
    "${prefix[@]}" "$bin/macsim" run "$scratch/mac" --wait 600 -- \
        "/Volumes/Uninstall Sentrel.app/Contents/MacOS/Uninstall Sentrel" --silent >"$scratch/out" 2>&1 || status=$?
    seconds=$((($(date +%s%N) - begin) / 100000000))
    echo "$files files: \"$(tail -n 1 "$scratch/out")\", exit status $status, $((seconds / 10)).$((seconds % 10)) s"
    "$bin/macsim" delete "$scratch/mac"
done
