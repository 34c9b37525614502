#!/usr/bin/env bash
# demo.sh: builds, makes a simulated Mac with the current product and every earlier generation, uninstalls it silently and
# shows what was there, what the system log says meanwhile, and what is left.
# demo.sh --window: the same with the uninstaller's window on the display; without a display, writes what the window looks
# like to build/screenshots instead.
set -euo pipefail
cd "$(dirname "$0")/.."

case "${1:-}" in
    "") window=no ;;
    --window) window=yes ;;
    *)
        echo "usage: demo.sh [--window]" >&2
        exit 2
        ;;
esac

./scripts/build.sh release
bin="$PWD/build/release/bin"
uninstaller="/Applications/Sentrel.app/Contents/Applications/Uninstall Sentrel.app/Contents/MacOS/Uninstall Sentrel"

if [ "$window" = yes ] && [ -z "${DISPLAY:-}" ]; then
    echo "There is no display (DISPLAY is not set). Running the window unseen and writing screenshots instead..."
    rm -rf build/screenshots
    if ! ctest --preset release --parallel "$(($(nproc) * 4))" --no-tests=error -R '^WindowedUninstallation' \
        </dev/null >build/screenshots.log 2>&1; then
        tail -n 40 build/screenshots.log >&2
        echo "demo.sh: the window did not do what it should; everything that was seen is in build/screenshots.log" >&2
        exit 1
    fi
    echo "What a user sees:"
    ls build/screenshots/*.png
    exit 0
fi

mac="$(mktemp -d "${TMPDIR:-/tmp}/sentrel-demo.XXXXXX")/Mac"
follower=
trap '[ -z "$follower" ] || kill "$follower" 2>/dev/null || true; "$bin/macsim" delete "$mac" >/dev/null 2>&1 || true; rmdir "$(dirname "$mac")" 2>/dev/null || true' EXIT

heading() { printf '\n\033[1m%s\033[0m\n' "$*"; }
[ -t 1 ] || heading() { printf '\n== %s\n' "$*"; }

heading "A Mac with the current product, every earlier generation and three users"
"$bin/macsim" create "$mac" --installed all --users alice:501,bob:502,carol:503 --running "Sentrel,View Logs,NORVIK Antivirus"
"$bin/macsim" run "$mac" -- true
"$bin/macsim" state "$mac"

if [ "$window" = yes ]; then
    heading "Uninstall Sentrel (the administrator is alice, her password is alice)"
    run=(--as alice --display host -- "$uninstaller")
else
    heading "Uninstall Sentrel --silent"
    run=(-- "$uninstaller" --silent)
fi
"$bin/macsim" log "$mac" --follow &
follower=$!
start=$EPOCHREALTIME
"$bin/macsim" run "$mac" "${run[@]}"
end=$EPOCHREALTIME
sleep 0.3
kill "$follower" 2>/dev/null || true
wait "$follower" 2>/dev/null || true
follower=

heading "What is left"
"$bin/macsim" state "$mac"
if [ "$window" = no ]; then
    tenths=$(((${end/[.,]/} - ${start/[.,]/}) / 100000))
    printf '\nBoot, uninstallation and shutdown took %d.%d s, most of it the pause of 5 s after each daemon that was stopped.\n' \
        $((tenths / 10)) $((tenths % 10))
fi
