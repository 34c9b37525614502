#!/usr/bin/env bash
# signing-test.sh PROJECT APP TEAM: scripts/sign-and-notarize.sh on the application that was built here: the exact commands in
# their order, the same from stand-ins for Apple's tools in a real run, and what it refuses.
set -euo pipefail
script="$1/scripts/sign-and-notarize.sh"
team=$3
scratch=$(realpath "$(mktemp -d "${TMPDIR:-/tmp}/signing-test.XXXXXX")")
trap 'rm -rf "$scratch"' EXIT
app="$scratch/Uninstall Sentrel.app"
cp -R "$2" "$app"
identity="Developer ID Application: NORVIK ($team)"
package="$app/Contents/Resources/SwiftRuntimeForCommandLineTools.pkg"
signed_by_us="anchor apple generic and certificate 1[field.1.2.840.113635.100.6.2.6] exists"
signed_by_us+=" and certificate leaf[field.1.2.840.113635.100.6.1.13] exists and certificate leaf[subject.OU] = \"$team\""

failures=0
fault() {
    echo "FAULT: $*" >&2
    failures=$((failures + 1))
}

# The expected commands, one argument to a line, each command ended by an empty line.
command_lines() {
    printf '%s\n' "$@" ""
}
sign_lines() {
    local identifier=$1 path=$2
    shift 2
    command_lines codesign --force --timestamp --options runtime --identifier "$identifier" "$@" --sign "$identity" "$path"
}
expected_signing() {
    if [ "${1:-}" = whole ]; then
        command_lines pkgutil --check-signature "$package"
    fi
    sign_lines com.norvik.UninstallerWindow "$app/Contents/Frameworks/UninstallerWindow.dylib"
    sign_lines com.norvik.sentrel-inspect "$app/Contents/Helpers/sentrel-inspect"
    sign_lines com.norvik.InstallerHelper "$app/Contents/Library/LaunchServices/com.norvik.InstallerHelper"
    sign_lines com.norvik.SupportPrivilegedHelper "$app/Contents/Library/LaunchServices/com.norvik.SupportPrivilegedHelper"
    sign_lines com.NORVIK.Uninstall-NORVIK-Antivirus "$app" --entitlements "${script%/scripts/*}/resources/Uninstaller.entitlements"
}
expected() {
    expected_signing "${1:-}"
    command_lines codesign --verify --strict --deep --verbose=2 "$app"
    local helper
    for helper in com.norvik.InstallerHelper com.norvik.SupportPrivilegedHelper; do
        command_lines codesign --verify --strict "-R=identifier \"$helper\" and $signed_by_us" \
            "$app/Contents/Library/LaunchServices/$helper"
        command_lines codesign --verify --strict \
            "-R=identifier \"com.NORVIK.Uninstall-NORVIK-Antivirus\" and $signed_by_us and info[CFBundleVersion] >= \"640\"" "$app"
    done
    if [ "${1:-}" = whole ]; then
        command_lines ditto -c -k --keepParent "$app" "$scratch/Uninstall Sentrel.zip"
        command_lines xcrun notarytool submit "$scratch/Uninstall Sentrel.zip" --keychain-profile notary --wait
        command_lines xcrun stapler staple "$app"
        command_lines xcrun stapler validate "$app"
        command_lines spctl --assess --type execute --verbose "$app"
        command_lines rm "$scratch/Uninstall Sentrel.zip"
    fi
    command_lines ditto -c -k --keepParent "$app" "$scratch/Uninstall Sentrel.zip"
}

# compare WHAT: the two lists in the scratch folder.
compare() {
    diff -u "$scratch/expected" "$scratch/actual" >&2 || fault "$1: the commands differ"
}

# What is printed is read back as the shell would.
dry_run() {
    "$script" --dry-run --app "$app" --identity "$identity" "$@" >"$scratch/printed"
    while IFS= read -r line; do
        eval "command_lines $line"
    done <"$scratch/printed" >"$scratch/actual"
}
expected whole >"$scratch/expected"
dry_run --keychain-profile notary
compare "dry run"
expected >"$scratch/expected"
dry_run
compare "dry run without notarization"

# Stand-ins that write down how they are called. "security" lists the certificates; the file "failing" names the call that fails.
mkdir "$scratch/tools"
cat >"$scratch/tools/stand-in" <<END
#!/usr/bin/env bash
printf '%s\n' "\${0##*/}" "\$@" "" >>"$scratch/actual"
if [ -e "$scratch/failing" ] && grep -qF -- "\$(cat "$scratch/failing")" <<<"\${0##*/} \$*"; then exit 1; fi
END
chmod +x "$scratch/tools/stand-in"
for tool in codesign pkgutil ditto xcrun spctl mv rm; do
    ln -s stand-in "$scratch/tools/$tool"
done
printf '#!/usr/bin/env bash\ncat "%s/certificates"\n' "$scratch" >"$scratch/tools/security"
# lipo says which processors a file is for: both, but for the file that "thin" names.
cat >"$scratch/tools/lipo" <<END
#!/usr/bin/env bash
if [ "\$1" = -archs ]; then echo x86_64 arm64; exit; fi
[ "\${*:2}" = "-verify_arch x86_64 arm64" ] && ! grep -qF -- "\$(cat "$scratch/thin")" <<<"\$1"
END
chmod +x "$scratch/tools/security" "$scratch/tools/lipo"
echo none >"$scratch/thin"
# More of them than a pipe holds: whoever stops reading at the first that fits breaks it.
{
    printf '  1) 0123 "%s"\n' "$identity"
    seq -f '  %g) 89AB "Apple Development: Somebody (OTHER00000)"' 3 3000
} >"$scratch/certificates"
real_run() {
    : >"$scratch/actual"
    PATH="$scratch/tools:$PATH" "$script" --app "$app" "$@" >"$scratch/printed" 2>"$scratch/errors"
}
expected whole >"$scratch/expected"
real_run --identity "$identity" --keychain-profile notary ||
    fault "the real run failed: $(cat "$scratch/errors")"
compare "real run"

echo "codesign --verify" >"$scratch/failing"
expected_signing >"$scratch/expected"
command_lines codesign --verify --strict --deep --verbose=2 "$app" >>"$scratch/expected"
real_run --identity "$identity" && fault "a signature that does not hold was accepted"
compare "stops at the first failure"

echo "pkgutil --check-signature" >"$scratch/failing"
command_lines pkgutil --check-signature "$package" >"$scratch/expected"
real_run --identity "$identity" --keychain-profile notary && fault "an unsigned package was accepted for notarization"
compare "stops at an unsigned package"
rm "$scratch/failing"

# refused WORDS ARGUMENT...: the script fails before it does anything, and says WORDS.
refused() {
    local words=$1
    shift
    real_run "$@" && fault "not refused: $*"
    [ -s "$scratch/actual" ] && fault "something was done in spite of: $words"
    grep -qF -- "$words" "$scratch/errors" || fault "expected \"$words\", got: $(cat "$scratch/errors")"
}
refused "--identity is missing"
refused "--identity needs a value" --identity
refused "unknown argument --sign" --sign
refused "there is no application" --identity "$identity" --app "$scratch/Other.app"
refused "does not end with its team" --identity "0123456789ABCDEF0123456789ABCDEF01234567"
refused "was built for team $team, the identity is of team OTHER00000" --identity "Developer ID Application: Other (OTHER00000)"
refused "unknown argument --installer-identity" --identity "$identity" --installer-identity "Developer ID Installer: NORVIK ($team)"
cp "$package" "$scratch/package"
echo >>"$package"
refused "is not the package that the support helper was built for" --identity "$identity"
cp "$scratch/package" "$package"
echo com.norvik.SupportPrivilegedHelper >"$scratch/thin"
refused "com.norvik.SupportPrivilegedHelper is not built for all of: x86_64 arm64" --identity "$identity"
echo none >"$scratch/thin"
: >"$scratch/certificates"
refused "no valid certificate \"$identity\"" --identity "$identity"
rm "$scratch/tools/codesign"
refused "codesign is missing" --identity "$identity"
command rm -f "$app/Contents/Library/LaunchServices/com.norvik.InstallerHelper"
refused "the helper com.norvik.InstallerHelper is missing" --identity "$identity"
command rm -f "$app/Contents/Helpers/sentrel-inspect"
refused "sentrel-inspect is missing" --identity "$identity"

[ "$failures" -eq 0 ]
