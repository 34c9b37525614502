#!/usr/bin/env bash
# selftest-test.sh PROGRAM: sentrel-selftest as it runs here. Each check passes over a transport that keeps to the rules, and
# fails over one that breaks the rule that it is about.
set -euo pipefail
program=$1
scratch=$(mktemp -d "${TMPDIR:-/tmp}/selftest-test.XXXXXX")
trap 'rm -rf "$scratch"' EXIT
mkdir "$scratch/temporary" "$scratch/places"
echo "GNUSTEP_USER_DEFAULTS_DIR=$scratch/defaults" >"$scratch/GNUstep.conf"
export TEMP="$scratch/temporary" GNUSTEP_CONFIG_FILE="$scratch/GNUstep.conf" TMPDIR="$scratch/places"

failures=0
fault() {
    echo "FAULT: $*" >&2
    failures=$((failures + 1))
}

# run FAULT EXPECTED-STATUS ARGUMENT...: its output in $scratch/out.
run() {
    local fault=$1 expected=$2 status=0
    shift 2
    SELFTEST_FAULT=$fault "$program" "$@" >"$scratch/out" 2>"$scratch/err" || status=$?
    [ "$status" -eq "$expected" ] || fault "$* with the fault \"$fault\" exits with $status, not $expected: $(cat "$scratch/out" "$scratch/err")"
}
# says PATTERN: a line of the output matches.
says() {
    grep -qE -- "$1" "$scratch/out" || fault "no line matches $1: $(cat "$scratch/out")"
}
# fails_with FAULT CHECK...: exactly these of the chosen checks fail.
fails_with() {
    local broken=$1
    shift
    run "$broken" 1 "$@"
    diff <(printf '%s\n' "$@") <(sed -n 's/^FAIL  \([^ ]*\).*/\1/p' "$scratch/out") >&2 ||
        fault "with the fault \"$broken\" other checks fail: $(cat "$scratch/out")"
}

# The two that this system answers otherwise than a Mac, with their reasons; everything else passes.
run "" 1
diff - <(grep -E '^(FAIL|SKIP)' "$scratch/out" | tr -s ' ') <<'END' >&2 || fault "other lines than expected: $(cat "$scratch/out")"
FAIL runtime.second-names the runtime does not find InstallCommon.CopyCommand
SKIP runtime.protocol-types the runtime does not tell the types of a protocol
END
says '^PASS  xpc.list +75 commands, [0-9]+ bytes alike$'
says '^PASS  refusal.text-as-command +(client: invalid, )?service: refused: .*it is not an object of a coded class, '
says '^all +[0-9]+ +1 +1$'
[ "$(ls -A "$scratch/places")" = "" ] || fault "something is left in the scratch folder: $(ls -A "$scratch/places")"

run "" 0 xpc.list
fails_with change xpc.list
fails_with mix xpc.reports
fails_with mute xpc.reply-with-error
fails_with deaf xpc.reply-that-never-comes
fails_with admit refusal.foreign-class refusal.base-class refusal.record-as-command refusal.text-as-command \
    refusal.misshapen-command refusal.stranger-behind-75

run "" 0 --list
says '^xpc.list$'
run "" 2 xpc.lists
run "" 2 --quick
run "" 0 --help
says '^usage: sentrel-selftest'

# A check whose process is ended, or ends without an answer, fails and says so.
run "crash" 1 xpc.list
says '^FAIL  xpc.list +its process was ended by signal 6; its last words: .*SELFTEST_FAULT'

[ "$failures" -eq 0 ]
