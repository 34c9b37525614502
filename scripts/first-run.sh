#!/usr/bin/env bash
# The first ten minutes on a Mac: builds, tests, asks the system, signs, shows the window, and writes down what happened.
#
#   first-run.sh [--report DIR] [--runtime-package FILE --erase-product]
#
#   --report DIR             where report.txt and the logs go (default: first-run-report in the current folder; must not exist)
#   --erase-product          also blesses the helpers and uninstalls, as root: only on a Mac that can be erased
#   --runtime-package FILE   the runtime support package to build in; --erase-product needs the real one
#
# Each step is PASS, FAIL or SKIP, with the reason and the place of its log. Without --erase-product nothing is changed but the
# report, and no rights are needed. Exit status: 0 nothing failed, 1 something failed, 2 the command line is wrong.
#
# The signature is made with the best certificate of this Mac: Developer ID, or else a development certificate; without any, ad hoc.
set -euo pipefail
# The shell of a fresh Mac is bash 3.2.
project=$(cd "$(dirname "$0")/.." && pwd)
helpers="com.norvik.InstallerHelper com.norvik.SupportPrivilegedHelper"

refuse() {
    echo "first-run.sh: $*" >&2
    exit 2
}

report=first-run-report
package=""
erase=false
while [ $# -gt 0 ]; do
    case "$1" in
        --erase-product) erase=true ;;
        --report | --runtime-package)
            if [ $# -lt 2 ] || [ -z "$2" ]; then refuse "$1 needs a value"; fi
            if [ "$1" = --report ]; then report=$2; else package=$2; fi
            shift
            ;;
        *) refuse "unknown argument $1; see the head of this script" ;;
    esac
    shift
done
[ ! -e "$report" ] || refuse "$report is there already; move it away, or choose another place with --report"
if [ -n "$package" ] && [ ! -f "$package" ]; then refuse "there is no package $package"; fi
if $erase && [ -z "$package" ]; then
    refuse "--erase-product needs --runtime-package: without it the support helper would install files of text into /usr/local/lib/swift"
fi
[ "$(uname -s)" = Darwin ] || refuse "this is not a Mac"

mkdir -p "$report"
report=$(cd "$report" && pwd)
if [ -n "$package" ]; then package=$(cd "$(dirname "$package")" && pwd)/$(basename "$package"); fi
scratch=$(mktemp -d "${TMPDIR:-/tmp}/sentrel-first-run.XXXXXX")
window=""
end() {
    if [ -n "$window" ]; then kill "$window" 2>/dev/null || true; fi
    rm -rf "$scratch"
}
trap end EXIT

build="$scratch/build"
app="$build/bin/Uninstall Sentrel.app"
contents="$app/Contents"
program="$contents/MacOS/Uninstall Sentrel"
identity="-"
identity_kind="none"
team=""
built=false
signed=false

# because TEXT: the reason that the step's line gives.
because() {
    echo "$*" >"$scratch/reason"
}

# skip TEXT: what a step ends with that cannot be done. Status 3 is the sign.
skip() {
    because "$*"
    return 3
}

# string_after KEY FILE: the first <string> after <key>KEY</key> in FILE, a property list or a program that carries one.
string_after() {
    LC_ALL=C sed -n "/<key>$1<\/key>/,\$p" "$2" | LC_ALL=C sed -n 's/.*<string>\(.*\)<\/string>.*/\1/p' | head -n 1
}

failures=0
number=0
# step NAME FUNCTION: runs it, keeps what it says in a log, and writes its line.
step() {
    local name=$1 log status=0 verdict reason
    number=$((number + 1))
    log="$report/$number-$name.log"
    rm -f "$scratch/reason"
    "$2" >"$log" 2>&1 || status=$?
    case $status in
        0) verdict=PASS ;;
        3) verdict=SKIP ;;
        *)
            verdict=FAIL
            failures=$((failures + 1))
            ;;
    esac
    if [ -f "$scratch/reason" ]; then
        reason=$(cat "$scratch/reason")
    elif [ "$verdict" = FAIL ]; then
        reason=$(tail -n 1 "$log")
    else
        reason=""
    fi
    printf '%s  %-12s %s  [%s]\n' "$verdict" "$name" "$reason" "${log##*/}" | tee -a "$report/report.txt"
}

# The certificate decides which team is built in, so it is looked for before the build.
find_identity() {
    local certificates
    security find-identity -v -p codesigning >"$scratch/certificates" || return 0
    certificates=$(sed -n 's/.*"\(.*\)".*/\1/p' "$scratch/certificates")
    identity=$(printf '%s\n' "$certificates" | sed -n '/^Developer ID Application: /p' | head -n 1)
    identity_kind="Developer ID"
    if [ -z "$identity" ]; then
        identity=$(printf '%s\n' "$certificates" | sed -n -e '/^Apple Development: /p' -e '/^Mac Developer: /p' | head -n 1)
        identity_kind="development"
    fi
    if [ -z "$identity" ]; then
        identity="-"
        identity_kind="none"
        return 0
    fi
    # The brackets of a development certificate's name do not hold its team.
    team=$(security find-certificate -c "$identity" -p | openssl x509 -noout -subject |
        sed -n 's/.*OU *= *\([A-Z0-9]\{10\}\).*/\1/p')
}

check_tools() {
    local tool missing=""
    sw_vers
    uname -m
    for tool in cmake ninja ctest codesign security clang lipo plutil otool openssl; do
        command -v "$tool" || missing="$missing $tool"
    done
    if [ -n "$missing" ]; then
        because "missing:$missing; xcode-select --install, brew install cmake ninja nlohmann-json cli11"
        return 1
    fi
    cmake --version
    clang --version
    git -C "$project" log -1 --format='commit %H' || true
    find_identity
    echo "certificate: $identity ($identity_kind), team ${team:-none}"
    because "macOS $(sw_vers -productVersion), $(uname -m), certificate: $identity_kind"
}

build_everything() {
    local arguments
    arguments=(--preset macos-universal -B "$build")
    if [ -n "$team" ]; then arguments+=(-D "SENTREL_TEAM_ID=$team"); fi
    if [ "$identity_kind" = development ]; then arguments+=(-D SENTREL_DEVELOPMENT_SIGNING=ON); fi
    if [ -n "$package" ]; then arguments+=(-D "SENTREL_RUNTIME_PACKAGE_FILE=$package"); fi
    (cd "$project" && cmake "${arguments[@]}") && cmake --build "$build" || return 1
    built=true
    check_architectures
}

# On a Mac with the other processor nobody would miss a program that lacks it before it is needed.
check_architectures() {
    local part
    for part in "$program" "$contents/Frameworks/UninstallerWindow.dylib" "$contents/Helpers/sentrel-inspect" \
        "$contents/Library/LaunchServices/"* "$build/bin/sentrel-selftest"; do
        lipo "$part" -verify_arch x86_64 arm64 || {
            because "$part is not for both processors but for: $(lipo -archs "$part")"
            return 1
        }
    done
    because "for Intel and Apple silicon"
}

run_tests() {
    $built || { skip "the build failed" || return; }
    # Added now, so that a test that does not compile costs this step only.
    (cd "$project" && cmake --preset macos-universal -B "$build" -D SENTREL_TESTS=ON) && cmake --build "$build" || return 1
    local status=0
    ctest --test-dir "$build" --output-on-failure -j 4 >"$scratch/tests" 2>&1 || status=$?
    cat "$scratch/tests"
    because "$(grep 'tests passed' "$scratch/tests" || echo 'no summary')"
    return "$status"
}

# First as it was built: the hardened runtime would not let it load the window's library. On Apple silicon with Rosetta a second
# time, translated, as the window runs there. Then signed with the hardened runtime, which is what the checks of a peer are about;
# ad hoc will do for that.
run_selftest() {
    $built || { skip "the build failed" || return; }
    local selftest="$build/bin/sentrel-selftest" status=0
    "$selftest" >"$scratch/selftest" || status=$?
    cat "$scratch/selftest"
    local seen
    seen=$(totals "$scratch/selftest")
    because "$seen"
    [ "$status" -eq 0 ] || return "$status"
    if [ "$(uname -m)" = arm64 ] && arch -x86_64 /usr/bin/true; then
        arch -x86_64 "$selftest" >"$scratch/translated" || status=$?
        cat "$scratch/translated"
        seen="$seen; translated: $(totals "$scratch/translated")"
        because "$seen"
        [ "$status" -eq 0 ] || return "$status"
    fi
    codesign --force --options runtime --sign - "$selftest" || return 1
    "$selftest" peer >"$scratch/peer" || status=$?
    cat "$scratch/peer"
    because "$seen; with the hardened runtime, as a peer: $(totals "$scratch/peer")"
    return "$status"
}

# totals FILE: what the last line of its table says.
totals() {
    sed -n 's/^all *\([0-9]*\) *\([0-9]*\) *\([0-9]*\)$/\1 passed, \2 failed, \3 skipped/p' "$1"
}

# sign IDENTIFIER PATH [OPTION...]. Without a team the hardened runtime would not let the program load its own library.
sign() {
    local identifier=$1 path=$2
    shift 2
    if [ "$identity" != - ]; then set -- --timestamp=none --options runtime "$@"; fi
    codesign --force --identifier "$identifier" "$@" --sign "$identity" "$path"
}

sign_everything() {
    $built || { skip "the build failed" || return; }
    local helper
    sign com.norvik.UninstallerWindow "$contents/Frameworks/UninstallerWindow.dylib" || return 1
    sign com.norvik.sentrel-inspect "$contents/Helpers/sentrel-inspect" || return 1
    for helper in $helpers; do
        sign "$helper" "$contents/Library/LaunchServices/$helper" || return 1
    done
    sign "$(string_after CFBundleIdentifier "$contents/Info.plist")" "$app" \
        --entitlements "$project/resources/Uninstaller.entitlements" || return 1
    codesign --verify --strict --deep --verbose=2 "$app" || return 1
    signed=true
    if [ "$identity" = - ]; then because "ad hoc: this Mac has no certificate"; else because "$identity"; fi
}

# What launchd asks before it blesses a helper, and a helper before it serves the application.
ask_requirements() {
    $signed || { skip "nothing is signed" || return; }
    local helper
    plutil -lint "$contents/Info.plist" || return 1
    for helper in $helpers; do
        otool -P "$contents/Library/LaunchServices/$helper" || return 1
    done
    if [ "$identity" = - ]; then
        skip "the requirements name a team; ad hoc signatures have none"
        return
    fi
    for helper in $helpers; do
        codesign --verify --strict "-R=$(string_after "$helper" "$contents/Info.plist")" \
            "$contents/Library/LaunchServices/$helper" || return 1
        codesign --verify --strict "-R=$(string_after SMAuthorizedClients "$contents/Library/LaunchServices/$helper")" "$app" || return 1
    done
}

# The program itself, with nothing pressed: it stays until it is ended.
show_window() {
    $signed || { skip "nothing is signed" || return; }
    "$program" &
    window=$!
    sleep 5
    screencapture -x "$report/window.png" || echo "no picture of the screen"
    if ! kill -0 "$window"; then
        wait "$window"
        because "the program ended by itself, with status $?"
        window=""
        return 1
    fi
    kill "$window"
    wait "$window" 2>/dev/null || true
    window=""
    because "shown for 5 seconds; compare window.png with docs/images/window-ready.png"
}

# What was there before stays: only a helper that this run has brought is taken away again.
note_helpers() {
    local helper
    for helper in $helpers; do
        if [ ! -e "/Library/PrivilegedHelperTools/$helper" ]; then echo "$helper"; fi
    done >"$scratch/new-helpers"
}

remove_new_helpers() {
    local helper
    while read -r helper; do
        sudo launchctl bootout "system/$helper" 2>/dev/null || true
        sudo rm -f "/Library/PrivilegedHelperTools/$helper" "/Library/LaunchDaemons/$helper.plist"
    done <"$scratch/new-helpers"
}

uninstall() {
    $erase || { skip "only with --erase-product" || return; }
    $signed || { skip "nothing is signed" || return; }
    if [ "$identity" = - ]; then
        skip "no helper can be blessed without a certificate"
        return
    fi
    note_helpers
    sudo "$program" --silent 2>&1 | tee "$scratch/run"
    launchctl print system/com.norvik.InstallerHelper || true
    log show --last 5m --style compact --predicate 'process == "smd" OR process BEGINSWITH "com.norvik."' || true
    because "$(tail -n 1 "$scratch/run")"
    grep -q 'Uninstallation finished\.$' "$scratch/run"
}

verify_nothing_left() {
    $erase || { skip "only with --erase-product" || return; }
    $built || { skip "the build failed" || return; }
    local status=0
    "$build/bin/sentrel-inspect" verify --wait 120 || status=$?
    if [ -f "$scratch/new-helpers" ]; then remove_new_helpers; fi
    because "exit status $status"
    return "$status"
}

echo "Uninstall Sentrel, first run, $(date -u '+%Y-%m-%d %H:%M') UTC" | tee "$report/report.txt"
step tools check_tools
step build build_everything
step tests run_tests
step selftest run_selftest
step signing sign_everything
step requirements ask_requirements
step window show_window
step uninstall uninstall
step verify verify_nothing_left

# One file to send: the lines above, and behind them what stands in the logs.
for log in "$report"/*.log; do
    printf '\n===== %s\n' "${log##*/}"
    cat "$log"
done >"$scratch/logs"
cat "$scratch/logs" >>"$report/report.txt"
echo "The report: $report/report.txt (it names this Mac's folders and certificate)"
[ "$failures" -eq 0 ]
