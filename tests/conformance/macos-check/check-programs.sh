#!/usr/bin/env bash
# check-programs.sh BIN LLVM: checks the programs that were linked for the Mac in the folder BIN, with the tools in LLVM: made for
# macOS 10.13, needing nothing but the system's libraries, and the helpers with both property lists inside.
set -euo pipefail
bin=$1
llvm=$2
contents="$bin/Uninstall Sentrel.app/Contents"
helpers=("$contents/Library/LaunchServices/com.norvik.InstallerHelper"
    "$contents/Library/LaunchServices/com.norvik.SupportPrivilegedHelper")
failures=0

fault() {
    echo "check-macos.sh: $*" >&2
    failures=$((failures + 1))
}

# headers FILE. Whoever reads it reads all of it: a broken pipe would count as a failure.
headers() {
    "$llvm/llvm-objdump" --macho --private-headers "$1"
}

# minimum_system FILE
minimum_system() {
    headers "$1" | awk '/LC_VERSION_MIN_MACOSX|LC_BUILD_VERSION/ { inside = 1 }
        inside && ($1 == "version" || $1 == "minos") { print $2; inside = 0 }'
}

# has_section FILE SEGMENT SECTION
has_section() {
    headers "$1" | awk -v segment="$2" -v section="$3" '$1 == "sectname" { name = $2 }
        $1 == "segname" && name == section && $2 == segment { found = 1 } END { exit !found }'
}

for program in "$bin/sentrel-inspect" "$bin/sentrel-selftest" "$contents/Helpers/sentrel-inspect" "$contents/MacOS/Uninstall Sentrel" \
    "$contents/Frameworks/UninstallerWindow.dylib" "${helpers[@]}"; do
    if [ ! -f "$program" ]; then
        fault "$program was not built"
        continue
    fi
    minimum=$(minimum_system "$program")
    [ "$minimum" = 10.13 ] || fault "$program is made for macOS ${minimum:-(none)}, not 10.13"
    needs_system=false
    while read -r library; do
        case "$library" in
            /usr/lib/libSystem.B.dylib) needs_system=true ;;
            /usr/lib/* | /System/Library/*) ;;
            *) fault "$program needs $library, which a Mac does not have" ;;
        esac
    done < <("$llvm/llvm-objdump" --macho --dylibs-used "$program" | sed -n 's/^\t\([^ ]*\) .*/\1/p')
    # Every program of a Mac does: without it, the list was not read.
    $needs_system || fault "$program does not need the system's library"
done
for helper in "${helpers[@]}"; do
    for section in __info_plist __launchd_plist; do
        has_section "$helper" __TEXT "$section" || fault "$helper has no section __TEXT,$section"
    done
done
[ -f "$contents/Info.plist" ] || fault "the application has no Info.plist"
[ -f "$contents/Resources/SwiftRuntimeForCommandLineTools.pkg" ] || fault "the application has no runtime package"
[ "$failures" -eq 0 ]
