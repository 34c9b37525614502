#!/usr/bin/env bash
# scripts-test.sh: what scripts/setup.sh and scripts/progress.sh promise.
set -euo pipefail
cd "$(dirname "$0")/../scripts"

# expect WHAT EXPECTED ACTUAL
expect() {
    [ "$2" = "$3" ] || {
        printf '%s:\nexpected: %q\nactual:   %q\n' "$1" "$2" "$3" >&2
        exit 1
    }
}

lines='-- Configuring done
[7/180] Building CXX object src/Base/CMakeFiles/Base.dir/URL.cpp.o
warning: [1/2] in the middle of a line
[73/180] Building CXX object simulator/CMakeFiles/macsim.dir/macsim/Users.cpp.o
[100%] Unpacking cmake
'
shown='[  7/180] src/Base/URL.cpp
[ 73/180] simulator/macsim/Users.cpp
[100%] Unpacking cmake'
expect "each line when none has to wait" "$shown" \
    "$(printf '%s' "$lines" | SENTREL_PROGRESS_INTERVAL=0 ./progress.sh 2>&1)"
expect "nothing before the interval is over" "" "$(printf '%s' "$lines" | SENTREL_PROGRESS_INTERVAL=1000 ./progress.sh 2>&1)"
expect "nothing on standard output" "" "$(printf '%s' "$lines" | SENTREL_PROGRESS_INTERVAL=0 ./progress.sh 2>/dev/null)"

wipe=$'\r\e[K'
on_terminal="$(printf '%s' "$lines" | script --quiet --return --command "COLUMNS=20 ./progress.sh </dev/fd/9" /dev/null 9<&0 </dev/null)"
expect "one line on a terminal, wiped at the end" \
    "${wipe}[  7/180] src/Base/${wipe}[ 73/180] simulator${wipe}[100%] Unpacking cm${wipe}" "$on_terminal"

run="$(./setup.sh --list run | sort)"
expect "what the demo needs is part of what developing needs" "" "$(comm -23 <(echo "$run") <(./setup.sh --list | sort))"
expect "the demo needs neither window nor tests" "" "$(grep -E 'gnustep|gtest|chromium|xvfb|clang' <<<"$run" || true)"
status=0
./setup.sh rnu 2>/dev/null || status=$?
expect "a list that does not exist is refused" 2 "$status"
