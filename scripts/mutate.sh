#!/usr/bin/env bash
# mutate.sh [OPTION...] [ROOM|FILE...]: changes one operator, constant, text, condition or statement at a time, runs the tests of
# its room and shows the changes that none of them notices, and the score per room. Works on a copy in build/mutate; the tests of
# a mutant run in a sandbox, because mutants may remove anything. "mutate.sh --help" shows the options.
set -euo pipefail
cd "$(dirname "$0")/.."
for program in bwrap cmake ninja; do
    if ! command -v "$program" >/dev/null; then
        echo "mutate.sh: $program is missing; scripts/setup.sh installs what the project needs." >&2
        exit 1
    fi
done
export PYTHONDONTWRITEBYTECODE=1
export CCACHE_SLOPPINESS="${CCACHE_SLOPPINESS:+$CCACHE_SLOPPINESS,}pch_defines,time_macros"
exec python3 scripts/mutate/mutate.py "$@"
