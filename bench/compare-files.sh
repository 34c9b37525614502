#!/usr/bin/env bash
# Compares the product's file work with rm -rf, cp -a and chown -R -h on the same tree, and with the fewest calls that two
# threads could do it with: alternately, several rounds, medians of elapsed and of processor time and their ratios. Works in
# scratch folders of its own, which it removes.
#
# usage: compare-files.sh [--table NAME]... [BIN [FOLDER]...]
#   NAME: tree (an installed product), folder (all in one folder), cold (a tree, removed with empty caches; needs root and
#         a disk), small (1 to 500 files), large (10,000 and 1,000,000 files, with peak memory); default: tree and folder
#   BIN: the folder of built programs (default: build/release/bin)
#   FOLDER: where scratch folders are made (default: /dev/shm and /var/tmp)
#
# ROUNDS and FILES change how often and how much. On a machine that others use, PREFIX="chrt -f 10" (root) has the
# processors serve the measured program before anything else.
set -euo pipefail

usage() {
    sed -n '2,/^set/p' "$0" | grep '^#' | cut -c3-
    exit "$1"
}

tables=()
while [ $# -gt 0 ] && [[ "$1" = -* ]]; do
    case "$1" in
        --table)
            [ $# -gt 1 ] || usage 2
            tables+=("$2")
            shift 2
            ;;
        --help | -h) usage 0 ;;
        *) usage 2 >&2 ;;
    esac
done
[ ${#tables[@]} -gt 0 ] || tables=(tree folder)
bin=${1:-$(dirname "$0")/../build/release/bin}
[ $# -eq 0 ] || shift
for program in FileTool LimitTool; do
    if [ ! -x "$bin/$program" ]; then
        echo "$0: $bin/$program is missing; build the preset 'release' first" >&2
        exit 1
    fi
done
[ $# -gt 0 ] || set -- /dev/shm /var/tmp

exec python3 "$(dirname "$0")/compare_files.py" "$(realpath "$bin")" "$(IFS=,; echo "${tables[*]}")" "$@"
