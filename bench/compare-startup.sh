#!/usr/bin/env bash
# Measures what the window costs a silent run: the start of "Uninstall Sentrel --silent" in a simulated Mac as it is, with the
# window's library loaded on demand, against the same program with that library linked (preloaded). In one run, alternating;
# the median of each in milliseconds. No authorization is granted there, so every run ends at its first step.
set -euo pipefail
cd "$(dirname "$0")/.."
bin="$PWD/build/release/bin"
runs="${1:-60}"

mac="$(mktemp -d "${TMPDIR:-/tmp}/sentrel-startup.XXXXXX")/Mac"
trap '"$bin/macsim" delete "$mac" >/dev/null 2>&1 || true; rmdir "$(dirname "$mac")" 2>/dev/null || true' EXIT
"$bin/macsim" create "$mac" --installed current

# shellcheck disable=SC2016 # what the shell inside expands
"$bin/macsim" run "$mac" --fault authorization -- /bin/bash -c '
    app="/Applications/Sentrel.app/Contents/Applications/Uninstall Sentrel.app/Contents"
    # LD_PRELOAD takes a space for the end of a path.
    cp "$app/Frameworks/UninstallerWindow.dylib" /tmp/window.so
    timed() {
        local start=$EPOCHREALTIME
        "$@" >/dev/null 2>&1
        local end=$EPOCHREALTIME
        echo $((${end/[.,]/} - ${start/[.,]/}))
    }
    median() { sort -n | sed -n "$(($1 / 2 + 1))p"; }
    for ((i = 0; i < $1; i++)); do
        timed "$app/MacOS/Uninstall Sentrel" --silent >>/tmp/demand
        timed env LD_PRELOAD=/tmp/window.so "$app/MacOS/Uninstall Sentrel" --silent >>/tmp/linked
        timed env true >>/tmp/env
    done
    demand=$(median $1 </tmp/demand) linked=$(median $1 </tmp/linked) env=$(median $1 </tmp/env)
    awk -v d=$demand -v l=$((linked - env)) "BEGIN {
        printf \"on demand %.1f ms, linked %.1f ms, ratio %.2f\n\", d / 1000, l / 1000, d / l }"
' bash "$runs"
