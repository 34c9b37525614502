#!/usr/bin/env bash
# check-programs.sh BIN LLVM ARCHITECTURE...: checks the programs that were linked for the Mac in the folder BIN, with the tools in
# LLVM: made for exactly these processors and the earliest macOS of each, needing nothing but the system's libraries, and the
# helpers with both property lists inside.
set -euo pipefail
bin=$1
llvm=$2
shift 2
architectures=("$@")
contents="$bin/Uninstall Sentrel.app/Contents"
helpers=("$contents/Library/LaunchServices/com.norvik.InstallerHelper"
    "$contents/Library/LaunchServices/com.norvik.SupportPrivilegedHelper")
failures=0

fault() {
    echo "check-macos.sh: $*" >&2
    failures=$((failures + 1))
}

# headers ARCHITECTURE FILE. Whoever reads it reads all of it: a broken pipe would count as a failure.
headers() {
    "$llvm/llvm-objdump" --macho --arch="$1" --private-headers "$2"
}

# minimum_system ARCHITECTURE FILE
minimum_system() {
    headers "$1" "$2" | awk '/LC_VERSION_MIN_MACOSX|LC_BUILD_VERSION/ { inside = 1 }
        inside && ($1 == "version" || $1 == "minos") { print $2; inside = 0 }'
}

# has_section ARCHITECTURE FILE SEGMENT SECTION
has_section() {
    headers "$1" "$2" | awk -v segment="$3" -v section="$4" '$1 == "sectname" { name = $2 }
        $1 == "segname" && name == section && $2 == segment { found = 1 } END { exit !found }'
}

# check_part ARCHITECTURE PROGRAM: what PROGRAM has for one processor.
check_part() {
    local architecture=$1 program=$2 expected=10.13 minimum library needs_system=false
    # The first one for Apple silicon.
    if [ "$architecture" = arm64 ]; then expected=11.0; fi
    minimum=$(minimum_system "$architecture" "$program")
    [ "$minimum" = "$expected" ] || fault "$program is made for macOS ${minimum:-(none)} on $architecture, not $expected"
    while read -r library; do
        case "$library" in
            /usr/lib/libSystem.B.dylib) needs_system=true ;;
            /usr/lib/* | /System/Library/*) ;;
            *) fault "$program needs $library, which a Mac does not have" ;;
        esac
    done < <("$llvm/llvm-objdump" --macho --arch="$architecture" --dylibs-used "$program" | sed -n 's/^\t\([^ ]*\) .*/\1/p')
    # Every program of a Mac does: without it, the list was not read.
    $needs_system || fault "$program does not need the system's library on $architecture"
}

sorted() {
    tr ' ' '\n' | sed '/^$/d' | sort | tr '\n' ' '
}

for program in "$bin/sentrel-inspect" "$bin/sentrel-selftest" "$contents/Helpers/sentrel-inspect" "$contents/MacOS/Uninstall Sentrel" \
    "$contents/Frameworks/UninstallerWindow.dylib" "${helpers[@]}"; do
    if [ ! -f "$program" ]; then
        fault "$program was not built"
        continue
    fi
    built=$("$llvm/llvm-lipo" -archs "$program" | sorted)
    if [ "$built" != "$(echo "${architectures[@]}" | sorted)" ]; then
        fault "$program is built for ${built}instead of ${architectures[*]}"
        continue
    fi
    for architecture in "${architectures[@]}"; do
        check_part "$architecture" "$program"
    done
done
for helper in "${helpers[@]}"; do
    for architecture in "${architectures[@]}"; do
        for section in __info_plist __launchd_plist; do
            has_section "$architecture" "$helper" __TEXT "$section" || fault "$helper has no section __TEXT,$section on $architecture"
        done
    done
done
[ -f "$contents/Info.plist" ] || fault "the application has no Info.plist"
# Intel first, where the product's own frameworks can be loaded.
prefers=$(sed -n '/<key>LSArchitecturePriority</,/<\/array>/s/.*<string>\(.*\)<\/string>.*/\1/p' "$contents/Info.plist" | tr '\n' ' ')
[ "$prefers" = "${architectures[*]} " ] || fault "the Info.plist prefers ${prefers:-nothing}, not ${architectures[*]}"
for architecture in "${architectures[@]}"; do
    grep -q "<key>$architecture</key>" "$contents/Info.plist" || fault "the Info.plist names no earliest macOS for $architecture"
done
[ -f "$contents/Resources/SwiftRuntimeForCommandLineTools.pkg" ] || fault "the application has no runtime package"
[ "$failures" -eq 0 ]
