#!/usr/bin/env bash
# Checks that dependencies point down only, that code for one system stays below src/Platform, that the window toolkit stays
# in its own folder, and that the unit tests mirror the rooms.
set -euo pipefail
cd "$(dirname "$0")/../src"
failures=0

# forbid WHERE PATTERN WHY [GREP-OPTION...]: no line below WHERE (files or folders) may match PATTERN.
forbid() {
    local where=$1 pattern=$2 why=$3 found
    shift 3
    # shellcheck disable=SC2086 # several places, some as patterns
    if found=$(grep -rnE --include='*.cpp' --include='*.h' --include='*.mm' --include='*.m' --include='*.in' "$@" \
        "$pattern" $where); then
        report "$why" "$found"
    fi
}

# report WHY FOUND
report() {
    printf '%s\n%s\n' "$1:" "$2" >&2
    failures=$((failures + 1))
}

# looks_up ROOM ROOMS WHY: the room includes nothing of the rooms above it.
looks_up() {
    forbid "$1" "#(include|import) \"($2)/" "$3"
}

above="Uninstaller InstallCommon SwiftUtils NorvikCommon Helpers Base"
# The window's code for one system lies in its folders Cocoa/ and GNUstep/; the build chooses.
forbid "$above ../tools" '__APPLE__|__linux__|_WIN32|__GNUstep__|\bGNUSTEP\b|TARGET_OS_' 'A system is named above the seam'
forbid "$above" '#(include|import) [<"]Platform/(Linux|Darwin|Posix)/' "An adapter's header is named above the seam"
forbid "$above" '#(include|import) [<"]Platform/Foundation/' "Foundation is named above the seam" --exclude-dir=AppKit
forbid "$above Platform/Posix Platform/Darwin Platform/*.h" '#(include|import) <(filesystem|semaphore|latch|barrier|stop_token|memory_resource)>' 'Not on macOS 10.13'
forbid "$above" '#(include|import) <((sys|linux|mach)/|(unistd|fcntl|pwd|dirent|spawn|poll|signal|dlfcn)\.h>)' \
    'A system header is named above the seam' --exclude-dir=Cocoa --exclude-dir=GNUstep

looks_up Base 'Platform|NorvikCommon|SwiftUtils|InstallCommon|Helpers|Uninstaller' 'Base looks up'
looks_up 'Base/*.h Base/*.cpp' 'Base/Archive' 'Base knows its archive room'
looks_up Platform 'NorvikCommon|SwiftUtils|InstallCommon|Helpers|Uninstaller' 'Platform looks up'
looks_up NorvikCommon 'SwiftUtils|InstallCommon|Helpers|Uninstaller' 'NorvikCommon looks up'
looks_up SwiftUtils 'InstallCommon|Helpers|Uninstaller' 'SwiftUtils looks up'
looks_up InstallCommon 'Helpers|Uninstaller' 'InstallCommon looks up'
looks_up Helpers Uninstaller 'A helper knows the uninstaller'
looks_up Uninstaller Helpers 'The uninstaller knows a helper'
looks_up Platform/Darwin Platform/Linux 'The macOS side knows the Linux side'
looks_up Platform/Linux Platform/Darwin 'The Linux side knows the macOS side'
looks_up Platform/Posix 'Platform/(Linux|Darwin|Foundation)' 'What both systems do alike knows one of them'
looks_up Platform/Linux 'Platform/Foundation' 'The Linux side knows Foundation'
looks_up Platform/Foundation 'Platform/(Linux|Darwin|Posix)' 'What the macOS side and the window share knows an adapter'
for interface in Platform/*.h; do
    looks_up "$interface" 'Platform/(Linux|Darwin|Foundation|Posix)' 'A port knows an adapter'
done

# The window toolkit is known to src/Uninstaller/AppKit alone, and that folder to nobody: the program loads it. Objective-C, and
# Apple's other headers, are there, on the macOS side of the ports, and in Platform/Foundation, which both use.
elsewhere() {
    find . -type f \( -name '*.h' -o -name '*.cpp' -o -name '*.m' -o -name '*.mm' \) ! -path './Uninstaller/AppKit/*' "$@" -print0
}
# forbid_elsewhere PATTERN WHY [FIND-OPTION...]
forbid_elsewhere() {
    local pattern=$1 why=$2 found
    shift 2
    found=$(elsewhere "$@" | xargs -0 grep -nE "$pattern" || true)
    [ -z "$found" ] || report "$why" "$found"
}
forbid_elsewhere '#(include|import) (<(AppKit|Cocoa|X11|GNUstepGUI)/|"Uninstaller/AppKit/)' \
    'The window toolkit is named outside its folder'
forbid_elsewhere '#(include|import) <(Foundation|CoreFoundation|Security|IOKit|ServiceManagement|xpc|dispatch|objc)/' \
    "A header of Apple's is named outside its folders" ! -path './Platform/Darwin/*' ! -path './Platform/Foundation/*'
forbid_elsewhere '' 'Objective-C outside its folders' ! -path './Platform/Darwin/*' ! -path './Platform/Foundation/*' -name '*.m*'

# A room's tests stand below tests/unit where the room stands below src/ or beside it; one ending tells a test's file.
while IFS= read -r folder; do
    [ -d "$folder" ] || [ -d "../$folder" ] || report 'A folder of unit tests is named after no room' "tests/unit/$folder"
done < <(cd ../tests/unit && find . -mindepth 1 -type d ! -name random ! -name golden ! -name fixtures)
found=$(find ../tests -name '*Tests.cpp' -o -name '*Tests.mm')
[ -z "$found" ] || report 'A test is named ...Tests instead of ...Test' "$found"

[ "$failures" -eq 0 ] || exit 1
