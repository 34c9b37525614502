#!/usr/bin/env bash
# Compares a whole silent uninstallation, without the pauses that stopped daemons are given, with an administrator's shell script that
# does the same with launchctl, pkill and one rm -rf, each in simulated Macs of its own: alternately, several rounds, medians in
# milliseconds. "whole" is from start to end of the uninstaller, with authorization, blessings and the runtime package before the list,
# and the wait for the support helper, which leaves 2 seconds after its work, behind it; "steps" is from the client's last line before
# the list to the helper's line about the last item of the list. The ratio is that of the steps to the script.
#
# usage: compare-run.sh [BIN [FOLDER]...]
#   BIN: the folder of built programs (default: build/release/bin)
#   FOLDER: where simulated Macs are made (default: /dev/shm and /var/tmp)
#
# FILES="0 20000 200000" are the empty files that the product's folder holds besides its own 100 or so, a hundred in a folder; ROUNDS
# (default 3) is how often. On a machine that others use, PREFIX="chrt -r 1" (root) has the processors serve this before anything else.
set -euo pipefail

if [ "${1:-}" = --help ] || [ "${1:-}" = -h ]; then
    sed -n '2,/^set/p' "$0" | grep '^#' | cut -c3-
    exit
fi
bin=$(realpath "${1:-$(dirname "$0")/../build/release/bin}")
[ $# -eq 0 ] || shift
for program in macsim sentrel-inspect "Uninstall Sentrel.app/Contents/MacOS/Uninstall Sentrel"; do
    if [ ! -x "$bin/$program" ]; then
        echo "$0: $bin/$program is missing; build the preset 'release' first" >&2
        exit 1
    fi
done
[ $# -gt 0 ] || set -- /dev/shm /var/tmp
read -ra prefix <<<"${PREFIX:-}"
rounds=${ROUNDS:-3}
read -ra amounts <<<"${FILES:-0 20000 200000}"

# administrators_script: the steps of the list as a shell script.
administrators_script() {
    "$bin/sentrel-inspect" commands uninstall-all --json | python3 -c '
import json, shlex, sys
removals = []
for step in json.load(sys.stdin):
    kind = step["class"]
    if kind == "StopLaunchdJobCommand":
        domain = "system" if step["isDaemon"] else "gui/501"
        print("launchctl bootout", domain + "/" + step["launchdJob"]["label"])
    elif kind == "KillProcessCommand":
        print("pkill -9 -x", shlex.quote(step["process"][:15]))
    elif kind == "RemoveCommand":
        removals += [shlex.quote(item["path"]) for item in step["items"] if not item["removeIfEmpty"]]
print("rm -rf", " ".join(removals))'
}

# make_mac FOLDER FILES
make_mac() {
    "$bin/macsim" create "$1" --installed current --users alice:501
    cp -R "$bin/Uninstall Sentrel.app" "$1/Volumes/"
    administrators_script >"$1/tmp/script.sh"
    cat >"$1/tmp/timed.py" <<'END'
import os, subprocess, sys, time
LOG, BEGIN, END = "/var/log/system.log", b"found installed version", b"LaunchDaemons/com.norvik.UninstallerHelper.plist"
begin = time.monotonic()
run = subprocess.Popen(sys.argv[1:], stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
first = last = None
while run.poll() is None:
    time.sleep(0.002)
    log = open(LOG, "rb").read() if os.path.exists(LOG) else b""
    first = first or (BEGIN in log and time.monotonic())
    last = last or (END in log and time.monotonic())
end = time.monotonic()
with open("/tmp/time", "w") as out:
    print(round((end - begin) * 1000), round(((last or end) - (first or begin)) * 1000), file=out)
sys.exit(os.path.exists("/Library/Application Support/NORVIK"))
END
    python3 "$(dirname "$0")/fill_mac.py" "$1" "$2"
}

# measure MAC COMMAND...: the milliseconds that the command takes in the Mac.
measure() {
    local mac=$1
    shift
    sync -f "$mac"
    "${prefix[@]}" "$bin/macsim" run "$mac" --fault helper-pause=0 --wait 120 -- /usr/bin/python3 /tmp/timed.py "$@" >/dev/null 2>&1 || {
        echo "$0: something of the product is left: $*" >&2
        exit 1
    }
    cat "$mac/tmp/time"
}

median() {
    sort -n | awk '{ value[NR] = $1 } END { print value[int((NR + 1) / 2)] }'
}

for place in "$@"; do
    scratch=$(mktemp -d "$place/compare-run.XXXXXX")
    chmod 755 "$scratch"
    trap '"$bin/macsim" delete "$scratch/mac" 2>/dev/null || true; rm -rf "$scratch"' EXIT
    for files in "${amounts[@]}"; do
        : >"$scratch/ours"
        : >"$scratch/script"
        for ((round = 0; round < rounds; ++round)); do
            for side in ours script; do
                make_mac "$scratch/mac" "$files"
                if [ $side = ours ]; then
                    command=("/Volumes/Uninstall Sentrel.app/Contents/MacOS/Uninstall Sentrel" --silent)
                else
                    command=(sh /tmp/script.sh)
                fi
                measure "$scratch/mac" "${command[@]}" >>"$scratch/$side"
                "$bin/macsim" delete "$scratch/mac"
            done
        done
        whole=$(cut -d ' ' -f 1 "$scratch/ours" | median)
        steps=$(cut -d ' ' -f 2 "$scratch/ours" | median)
        script=$(cut -d ' ' -f 1 "$scratch/script" | median)
        awk -v place="$place" -v files="$files" -v whole="$whole" -v steps="$steps" -v script="$script" 'BEGIN {
            printf "%s, %d more files: whole %d, steps %d, script %d, ratio %.2f\n", place, files, whole, steps, script, steps / script }'
    done
    rm -rf "$scratch"
done
