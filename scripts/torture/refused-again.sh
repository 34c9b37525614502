#!/bin/bash
# Starts a refused uninstaller again and again, each time around the moment at which the helpers of the run before leave
# (they do so after 2 seconds without work), and counts what was lost.
#
#   scripts/torture/refused-again.sh [STARTS] [FOLDER]
#
# STARTS is 144 unless given; FOLDER is the build's (build/release). The pauses go from 1.9 to 2.1 seconds in steps of 10
# milliseconds, over and over. Prints one line; exit status 1 when anything was lost.

set -euo pipefail

root=$(cd "$(dirname "$0")/../.." && pwd)
starts=${1:-144}
build=${2:-$root/build/release}
scratch=$(mktemp -d)
chmod 755 "$scratch"
trap '"$build/bin/macsim" delete "$scratch/Mac" >/dev/null 2>&1 || true; rm -rf -- "$scratch"' EXIT

"$build/bin/macsim" create "$scratch/Mac" --empty --without-uninstaller
mkdir -p "$scratch/Mac/Users/Shared"
cp -R "$build/bin/Uninstall Sentrel.app" "$scratch/Mac/Users/Shared/"

# Runs in the Mac: one line for each start, "in-time" or "hung".
loop='
program="/Users/Shared/Uninstall Sentrel.app/Contents/MacOS/Uninstall Sentrel"
for start in $(seq 1 "$1"); do
    if timeout -s KILL 20 "$program" --silent; then echo in-time; else echo hung; fi
    sleep "$(printf "%d.%03d" $(((1900 + start % 21 * 10) / 1000)) $(((1900 + start % 21 * 10) % 1000)))"
done'
"$build/bin/macsim" run "$scratch/Mac" -- /bin/bash -c "$loop" loop "$starts" >"$scratch/ends" 2>&1 || true

log="$scratch/Mac/var/log/system.log"
count() { grep -c -- "$1" "$2" || true; }
refused=$(count 'Uninstall Sentrel\[.*Antivirus cannot be uninstalled$' "$log")
hung=$(count '^hung$' "$scratch/ends")
blessings=$(count 'Uninstall Sentrel\[.*SMJobBless error: ' "$log")
packages=$(count 'Failed to install Swift runtime support' "$log")
echo "$starts starts: $refused refused as they should be, $blessings blessings failed," \
    "$packages connections broken, $hung hung for 20 seconds"
[ "$refused" -eq "$starts" ]
