#!/usr/bin/env bash
# first-run-test.sh PROJECT: scripts/first-run.sh with stand-ins for a Mac's tools: what it does in which order, what its report
# says when something fails, and that it leaves nothing behind.
# shellcheck disable=SC2016 # the bodies of stand-ins are expanded when they run
set -euo pipefail
script="$1/scripts/first-run.sh"
scratch=$(realpath "$(mktemp -d "${TMPDIR:-/tmp}/first-run-test.XXXXXX")")
trap 'rm -rf "$scratch"' EXIT
mkdir "$scratch/tools" "$scratch/temporary"

failures=0
fault() {
    echo "FAULT: $*" >&2
    failures=$((failures + 1))
}

# stand_in TOOL...: a tool that writes down how it is called and does what is read from standard input.
stand_in() {
    local tool body
    body=$(cat)
    for tool in "$@"; do
        printf '#!/usr/bin/env bash\nscratch=%q\nprintf "%%s" "${0##*/}" >>"$scratch/calls"\nprintf " %%s" "$@" >>"$scratch/calls"\necho >>"$scratch/calls"\nif [ -e "$scratch/failing" ] && grep -qF -- "$(cat "$scratch/failing")" <<<"${0##*/} $*"; then echo "it failed"; exit 1; fi\n%s\n' \
            "$scratch" "$body" >"$scratch/tools/$tool"
        chmod +x "$scratch/tools/$tool"
    done
}
stand_in clang codesign ctest git launchctl log ninja otool plutil screencapture </dev/null
stand_in ctest <<<'echo "100% tests passed, 0 tests failed out of 321"'
stand_in sw_vers <<<'echo 14.5'
stand_in lipo <<<'case "$*" in *"$(cat "$scratch/thin")"*-verify_arch*) exit 1 ;; -archs*) echo arm64 ;; esac'
# Rosetta is there or not.
stand_in arch <<<'[ -e "$scratch/rosetta" ] || exit 1; shift; if [ "$1" != /usr/bin/true ]; then exec "$@"; fi'
stand_in uname <<<'if [ "$1" = -s ]; then cat "$scratch/system"; else echo arm64; fi'
stand_in openssl <<<'cat >/dev/null; echo "subject=UID = X, CN = Apple Development: A (KEY0000000), OU = ABCDE12345, O = A"'
stand_in security <<<'if [ "$1" = find-identity ]; then cat "$scratch/certificates"; fi'
stand_in sudo <<<'if [ -x "$1" ]; then "$@"; fi'
# The window has nothing to show here; it is there as long as the script wants it, or has ended by then.
stand_in sleep <<<'until [ -e "$scratch/window" ]; do /bin/sleep 0.01; done
if [ -e "$scratch/window-ends" ]; then
    pid=$(cat "$scratch/window")
    while [ -e "/proc/$pid" ] && ! grep -q "^State:.Z" "/proc/$pid/status"; do /bin/sleep 0.01; done
fi'
stand_in cmake <<<'if [ "$1" != --build ]; then exit 0; fi
contents="$2/bin/Uninstall Sentrel.app/Contents"
mkdir -p "$contents/MacOS" "$contents/Frameworks" "$contents/Library/LaunchServices"
printf "<key>CFBundleIdentifier</key>\n<string>com.NORVIK.Uninstall</string>\n" >"$contents/Info.plist"
for helper in com.norvik.InstallerHelper com.norvik.SupportPrivilegedHelper; do
    printf "<key>%s</key>\n<string>requirement of %s</string>\n" $helper $helper >>"$contents/Info.plist"
    printf "<key>SMAuthorizedClients</key>\n<string>client of %s</string>\n" $helper >"$contents/Library/LaunchServices/$helper"
done
cp "$scratch/selftest" "$2/bin/sentrel-selftest"
cp "$scratch/inspect" "$2/bin/sentrel-inspect"
cp "$scratch/uninstaller" "$contents/MacOS/Uninstall Sentrel"'
program() {
    printf '#!/usr/bin/env bash\nscratch=%q\n%s\n' "$scratch" "$2" >"$scratch/$1"
    chmod +x "$scratch/$1"
}
program selftest 'printf "PASS  xpc.list\n\ngroup  PASS  FAIL  SKIP\nall       40     0     2\n"; ! [ -e "$scratch/selftest-fails" ]'
program inspect 'echo "inspect $*" >>"$scratch/calls"'
program uninstaller 'if [ "${1:-}" = --silent ]; then
    echo "[SNTM Installer] Uninstallation finished."
    exit 0
fi
echo $$ >"$scratch/new-window"
mv "$scratch/new-window" "$scratch/window"
if [ -e "$scratch/window-ends" ]; then exit 3; fi
exec /bin/sleep 600'

# run EXPECTED-STATUS ARGUMENT...: the script, and what always holds after it.
run() {
    local expected=$1 status=0
    shift
    rm -rf "$scratch/report" "$scratch/window"
    : >"$scratch/calls"
    PATH="$scratch/tools:$PATH" TMPDIR="$scratch/temporary" "$script" --report "$scratch/report" "$@" \
        >"$scratch/out" 2>"$scratch/err" || status=$?
    [ "$status" -eq "$expected" ] || fault "$* exits with $status: $(cat "$scratch/out" "$scratch/err")"
    [ -z "$(ls -A "$scratch/temporary")" ] || fault "$* leaves $(ls -A "$scratch/temporary")"
    if [ -e "$scratch/window" ] && kill -0 "$(cat "$scratch/window")" 2>/dev/null; then fault "$* leaves the window"; fi
}
# verdicts WORD...: those of the nine steps, in order.
verdicts() {
    diff <(printf '%s\n' "$@") <(grep -E '^(PASS|FAIL|SKIP)  [a-z]+ +.*\[[0-9]-[a-z]+\.log\]$' "$scratch/report/report.txt" | cut -c 1-4) >&2 ||
        fault "other verdicts: $(cat "$scratch/report/report.txt")"
}
says() {
    grep -qF -- "$1" "$scratch/report/report.txt" || fault "the report does not say \"$1\": $(cat "$scratch/report/report.txt")"
}
called() {
    grep -qF -- "$1" "$scratch/calls" || fault "not called: $1; but: $(cat "$scratch/calls")"
}
not_called() {
    if grep -qF -- "$1" "$scratch/calls"; then fault "called: $1"; fi
}
refused() {
    grep -qF -- "$1" "$scratch/err" || fault "expected \"$1\", got: $(cat "$scratch/err")"
    if [ -s "$scratch/calls" ] && grep -qv '^uname' "$scratch/calls"; then fault "something was done in spite of: $1"; fi
}

echo none >"$scratch/thin"
echo Darwin >"$scratch/system"
echo '  1) 01 "Apple Development: A (KEY0000000)"' >"$scratch/certificates"
echo '  2) 02 "Developer ID Application: NORVIK (ABCDE12345)"' >>"$scratch/certificates"
run 0
verdicts PASS PASS PASS PASS PASS PASS PASS SKIP SKIP
says "macOS 14.5, arm64, certificate: Developer ID"
says "PASS  build        for Intel and Apple silicon"
called "cmake --preset macos-universal"
called "Uninstall Sentrel -verify_arch x86_64 arm64"
says "100% tests passed"
says "40 passed, 0 failed, 2 skipped; with the hardened runtime, as a peer: 40 passed"
says "only with --erase-product"
says "===== 4-selftest.log"
says "PASS  xpc.list"
called "-D SENTREL_TEAM_ID=ABCDE12345"
not_called SENTREL_DEVELOPMENT_SIGNING
called "codesign --force --identifier com.norvik.InstallerHelper --timestamp=none --options runtime --sign Developer ID Application: NORVIK (ABCDE12345)"
called "codesign --force --identifier com.norvik.sentrel-inspect --timestamp=none --options runtime"
called "-R=requirement of com.norvik.SupportPrivilegedHelper"
called "-R=client of com.norvik.InstallerHelper"
not_called sudo

# On Apple silicon with Rosetta the checks run translated, too.
not_called "arch -x86_64 $scratch"
touch "$scratch/rosetta"
run 0
says "40 passed, 0 failed, 2 skipped; translated: 40 passed, 0 failed, 2 skipped; with the hardened runtime, as a peer: 40 passed"
rm "$scratch/rosetta"

# A program for one processor is noticed before anything is signed.
echo com.norvik.InstallerHelper >"$scratch/thin"
run 1
verdicts PASS FAIL PASS PASS PASS PASS PASS SKIP SKIP
says "com.norvik.InstallerHelper is not for both processors but for: arm64"
echo none >"$scratch/thin"

# A development certificate names its team in its subject, and the helpers are told to trust such.
echo '  1) 01 "Apple Development: A (KEY0000000)"' >"$scratch/certificates"
run 0
called "-D SENTREL_TEAM_ID=ABCDE12345 -D SENTREL_DEVELOPMENT_SIGNING=ON"
called "--sign Apple Development: A (KEY0000000)"

# Without a certificate: ad hoc, and nothing that needs a team.
: >"$scratch/certificates"
run 0
verdicts PASS PASS PASS PASS PASS SKIP PASS SKIP SKIP
called "codesign --force --identifier com.norvik.InstallerHelper --sign -"
says "ad hoc: this Mac has no certificate"

# What depends on a failed step is skipped; the rest goes on.
echo "cmake --build" >"$scratch/failing"
run 1
verdicts PASS FAIL SKIP SKIP SKIP SKIP SKIP SKIP SKIP
says "FAIL  build        it failed  [2-build.log]"
echo "ctest" >"$scratch/failing"
run 1
verdicts PASS PASS FAIL PASS PASS SKIP PASS SKIP SKIP
rm "$scratch/failing"
touch "$scratch/selftest-fails"
run 1
verdicts PASS PASS PASS FAIL PASS SKIP PASS SKIP SKIP
rm "$scratch/selftest-fails"
touch "$scratch/window-ends"
run 1
verdicts PASS PASS PASS PASS PASS SKIP FAIL SKIP SKIP
says "the program ended by itself, with status 3"
rm "$scratch/window-ends"

# Root is asked for only when the product may be erased, and only with the real package.
echo '  2) 02 "Developer ID Application: NORVIK (ABCDE12345)"' >"$scratch/certificates"
echo package >"$scratch/Runtime.pkg"
run 0 --erase-product --runtime-package "$scratch/Runtime.pkg"
verdicts PASS PASS PASS PASS PASS PASS PASS PASS PASS
called "-D SENTREL_RUNTIME_PACKAGE_FILE=$scratch/Runtime.pkg"
called "Uninstall Sentrel --silent"
called "inspect verify --wait 120"
called "sudo rm -f /Library/PrivilegedHelperTools/com.norvik.InstallerHelper /Library/LaunchDaemons/com.norvik.InstallerHelper.plist"
run 2 --erase-product
refused "--erase-product needs --runtime-package"
run 2 --runtime-package "$scratch/Absent.pkg"
refused "there is no package"
run 2 --quick
refused "unknown argument --quick"
echo Linux >"$scratch/system"
run 2
refused "this is not a Mac"
echo Darwin >"$scratch/system"
mkdir "$scratch/there"
run 2 --report "$scratch/there"
refused "is there already"

[ "$failures" -eq 0 ]
