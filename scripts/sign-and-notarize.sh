#!/usr/bin/env bash
# Signs "Uninstall Sentrel.app" from the inside out with the hardened runtime, checks the signatures against the requirements
# that the application and its helpers state about each other, has Apple notarize it, staples the ticket and makes the archive to
# publish. Runs on a Mac; with --dry-run it prints the commands in order, on any system.
#
#   sign-and-notarize.sh --identity NAME [--keychain-profile NAME] [--app PATH] [--output ZIP] [--dry-run]
#
#   --identity             certificate for applications, by its name: "Developer ID Application: NORVIK (TEAM)"
#   --keychain-profile     the name given to "xcrun notarytool store-credentials"; without it nothing is sent to Apple
#   --app                  default: build/macos-universal/bin/Uninstall Sentrel.app
#   --output               default: beside the application, "Uninstall Sentrel.zip"
#
# The runtime package is signed before the build, which gives its SHA-256 to the support helper; see docs/macos.md.
set -euo pipefail
# The shell of a fresh Mac is bash 3.2.
project=$(cd "$(dirname "$0")/.." && pwd)
helpers="com.norvik.InstallerHelper com.norvik.SupportPrivilegedHelper"

fail() {
    echo "sign-and-notarize.sh: $*" >&2
    exit 1
}

identity=""
profile=""
app="$project/build/macos-universal/bin/Uninstall Sentrel.app"
output=""
dry_run=false
while [ $# -gt 0 ]; do
    case "$1" in
        --dry-run) dry_run=true ;;
        --identity | --keychain-profile | --app | --output)
            if [ $# -lt 2 ] || [ -z "$2" ]; then fail "$1 needs a value"; fi
            case "$1" in
                --identity) identity=$2 ;;
                --keychain-profile) profile=$2 ;;
                --app) app=${2%/} ;;
                --output) output=$2 ;;
            esac
            shift
            ;;
        *) fail "unknown argument $1; see the head of this script" ;;
    esac
    shift
done
output=${output:-"${app%.app}.zip"}
contents="$app/Contents"
package="$contents/Resources/SwiftRuntimeForCommandLineTools.pkg"

# sha256 FILE
sha256() {
    if command -v shasum >/dev/null; then shasum -a 256 "$1"; else sha256sum "$1"; fi | cut -d ' ' -f 1
}

# run COMMAND ARGUMENT...: runs it, or prints it as the shell would read it.
run() {
    if $dry_run; then
        printf '%q' "$1"
        shift
        printf ' %q' "$@"
        echo
    else
        "$@"
    fi
}

# string_after KEY FILE: the first <string> after <key>KEY</key> in FILE, a property list or a program that carries one.
string_after() {
    LC_ALL=C sed -n "/<key>$1<\/key>/,\$p" "$2" | LC_ALL=C sed -n 's/.*<string>\(.*\)<\/string>.*/\1/p' | head -n 1
}

# team_of NAME: the team in the brackets at the end of a certificate's name.
team_of() {
    printf '%s\n' "$1" | sed -n 's/.*(\([A-Z0-9]\{10\}\))$/\1/p'
}

check_arguments() {
    [ -n "$identity" ] || fail "--identity is missing; \"security find-identity -v -p codesigning\" lists what this Mac has"
    [ -d "$app" ] || fail "there is no application at $app; build it first (cmake --build --preset macos-universal)"
    for part in "$contents/Info.plist" "$contents/MacOS/Uninstall Sentrel" "$contents/Frameworks/UninstallerWindow.dylib" \
        "$contents/Helpers/sentrel-inspect" "$package"; do
        [ -f "$part" ] || fail "the application is not whole: $part is missing"
    done
    for helper in $helpers; do
        [ -f "$contents/Library/LaunchServices/$helper" ] || fail "the application is not whole: the helper $helper is missing"
    done
    LC_ALL=C grep -aqF "$(sha256 "$package")" "$contents/Library/LaunchServices/com.norvik.SupportPrivilegedHelper" ||
        fail "$package is not the package that the support helper was built for, which would refuse it; build again with the signed package"
}

# The build names a team; another team's signature would satisfy nobody, and the first to notice would be the customer.
check_team() {
    local team built
    team=$(team_of "$identity")
    [ -n "$team" ] || fail "the identity \"$identity\" does not end with its team in brackets; give the certificate's full name"
    for file in "$contents/Info.plist" "$contents/Library/LaunchServices/"*; do
        built=$(LC_ALL=C sed -n 's/.*<string>.*subject\.OU\] = "\([^"]*\)".*/\1/p' "$file" | sort -u | tr '\n' ' ')
        [ -n "$built" ] || fail "$file states no requirement"
        [ "$built" = "$team " ] ||
            fail "$file was built for team ${built% }, the identity is of team $team; configure with -DSENTREL_TEAM_ID=$team"
    done
}

# has_certificate NAME. Not by "grep -q": it may stop reading before "security" has ended, which would count as a failure.
has_certificate() {
    local certificates
    certificates=$(security find-identity -v -p codesigning) || return 1
    case $certificates in
        *"\"$1\""*) ;;
        *) return 1 ;;
    esac
}

check_tools() {
    local tool
    for tool in codesign lipo pkgutil security ditto xcrun spctl; do
        command -v "$tool" >/dev/null || fail "$tool is missing; this needs a Mac with Apple's command line tools (xcode-select --install)"
    done
    has_certificate "$identity" ||
        fail "this Mac has no valid certificate \"$identity\" with its key"
}

# A helper or library for fewer processors than the application is for would be missing only on some Macs.
check_architectures() {
    local architectures part
    architectures=$(lipo -archs "$contents/MacOS/Uninstall Sentrel") || fail "lipo cannot read $contents/MacOS/Uninstall Sentrel"
    for part in "$contents/Frameworks/UninstallerWindow.dylib" "$contents/Helpers/sentrel-inspect" "$contents/Library/LaunchServices/"*; do
        # shellcheck disable=SC2086 # one argument for each
        lipo "$part" -verify_arch $architectures ||
            fail "$part is not built for all of: $architectures; build everything with one preset"
    done
}

# sign IDENTIFIER PATH [OPTION...]
sign() {
    local identifier=$1 path=$2
    shift 2
    run codesign --force --timestamp --options runtime --identifier "$identifier" "$@" --sign "$identity" "$path"
}

# A signature covers the contents, so the innermost comes first and the application last.
sign_everything() {
    sign com.norvik.UninstallerWindow "$contents/Frameworks/UninstallerWindow.dylib"
    sign com.norvik.sentrel-inspect "$contents/Helpers/sentrel-inspect"
    for helper in $helpers; do
        sign "$helper" "$contents/Library/LaunchServices/$helper"
    done
    sign "$(string_after CFBundleIdentifier "$contents/Info.plist")" "$app" --entitlements "$project/resources/Uninstaller.entitlements"
}

# The same questions that the system asks before it blesses a helper, and the helper before it serves the application.
verify_everything() {
    run codesign --verify --strict --deep --verbose=2 "$app"
    for helper in $helpers; do
        run codesign --verify --strict "-R=$(string_after "$helper" "$contents/Info.plist")" "$contents/Library/LaunchServices/$helper"
        run codesign --verify --strict "-R=$(string_after SMAuthorizedClients "$contents/Library/LaunchServices/$helper")" "$app"
    done
}

notarize() {
    run ditto -c -k --keepParent "$app" "$output"
    run xcrun notarytool submit "$output" --keychain-profile "$profile" --wait
    run xcrun stapler staple "$app"
    run xcrun stapler validate "$app"
    run spctl --assess --type execute --verbose "$app"
}

check_arguments
check_team
if ! $dry_run; then
    check_tools
    check_architectures
fi
# Apple notarizes no application with an unsigned package in it.
[ -z "$profile" ] || run pkgutil --check-signature "$package"
sign_everything
verify_everything
if [ -n "$profile" ]; then
    notarize
    # Once more, with the ticket inside.
    run rm "$output"
fi
run ditto -c -k --keepParent "$app" "$output"
$dry_run || echo "$output"
