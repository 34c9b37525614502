#!/usr/bin/env bash
# demo.sh [--log]: builds, makes a simulated Mac with the current product and every earlier generation, uninstalls it silently
# and tells what was there, each step as it happens, and what is left. With --log, the system log as it is written in place of
# the steps.
# demo.sh --window [--log]: the same with the uninstaller's window on the display; without a display, writes what the window
# looks like to build/screenshots instead.
set -euo pipefail
cd "$(dirname "$0")/.."

window=no
raw=no
for argument in "$@"; do
    case "$argument" in
        --window) window=yes ;;
        --log) raw=yes ;;
        *)
            echo "usage: demo.sh [--window] [--log]" >&2
            exit 2
            ;;
    esac
done

# The window, and the tests that look at it, need more than the rest.
preset=demo
[ "$window" = no ] || preset="test"
./scripts/build.sh "$preset"
bin="$PWD/build/$preset/bin"
uninstaller="/Applications/Sentrel.app/Contents/Applications/Uninstall Sentrel.app/Contents/MacOS/Uninstall Sentrel"

if [ "$window" = yes ] && [ -z "${DISPLAY:-}" ]; then
    echo "There is no display (DISPLAY is not set). Running the window unseen and writing screenshots instead..."
    rm -rf build/screenshots
    if ! ctest --preset test --parallel "$(($(nproc) * 4))" --no-tests=error -R '^WindowedUninstallation' \
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
run=
trap '[ -z "$run" ] || kill "$run" 2>/dev/null || true; "$bin/macsim" delete "$mac" >/dev/null 2>&1 || true; rmdir "$(dirname "$mac")" 2>/dev/null || true' EXIT

heading() { printf '\n\033[1m%s\033[0m\n' "$*"; }
[ -t 1 ] || heading() { printf '\n== %s\n' "$*"; }

# tell: standard input is the system log.
if [ "$raw" = yes ]; then
    tell() { cat; }
else
    tell() {
        echo "(✓ done, – was not there, ✗ failed)"
        "$bin/sentrel-inspect" explain --follow
    }
fi

heading "A Mac with the current product, every earlier generation and three users"
"$bin/macsim" create "$mac" --installed all --users alice:501,bob:502,carol:503 --running "Sentrel,View Logs,NORVIK Antivirus"
cp "$bin/sentrel-inspect" "$mac/usr/local/bin"
"$bin/macsim" run "$mac" -- /usr/local/bin/sentrel-inspect scan >build/demo-scan.txt || [ $? -eq 3 ]
# Up to the first table, and how long each of them is.
awk '/^$/ { exit } { print }' build/demo-scan.txt
awk '/^[A-Z]/ { title = $0 } /^  / && !/^  kind/ { lines[title]++ }
    END { for (title in lines) printf "%6d  %s\n", lines[title], title }' build/demo-scan.txt | sort -rn
echo "Everything that sentrel-inspect scan found: build/demo-scan.txt"

if [ "$window" = yes ]; then
    heading "Uninstall Sentrel (the administrator is alice, her password is alice)"
    command=(--as alice --display host -- "$uninstaller")
else
    heading "Uninstall Sentrel --silent"
    # In one boot: a restart removes items that the uninstaller has to remove.
    # shellcheck disable=SC2016 # the simulated Mac's shell expands it
    command=(-- /bin/sh -c '"$1" --silent 2>/dev/null; sentrel-inspect verify >/tmp/verify.txt' sh "$uninstaller")
fi
started=$SECONDS
"$bin/macsim" run "$mac" "${command[@]}" &
run=$!
tail --lines=+1 --follow --pid="$run" "$mac/var/log/system.log" | tell
status=0
wait "$run" || status=$?
run=
"$bin/macsim" log "$mac" >build/demo-system.log
"$bin/sentrel-inspect" explain build/demo-system.log --html build/demo-report.html >/dev/null

heading "What is left (sentrel-inspect verify)"
if [ "$window" = yes ]; then
    status=0
    "$bin/macsim" run "$mac" -- /usr/local/bin/sentrel-inspect verify || status=$?
else
    cat "$mac/tmp/verify.txt"
    printf '\nThat took %d s, most of it the pause of 5 s after each daemon that was stopped.\n' $((SECONDS - started))
fi
echo "The system log:       build/demo-system.log"
echo "The report of it all: build/demo-report.html"
exit "$status"
