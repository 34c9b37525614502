#!/usr/bin/env bash
# Checks that dependencies point down only, and that what is one system's stays below src/Platform.
set -euo pipefail
cd "$(dirname "$0")/../src"
failures=0

# forbid WHERE PATTERN WHY: no line below WHERE (files or folders) may match PATTERN.
forbid() {
    local found
    if found=$(grep -rnE --include='*.cpp' --include='*.h' --include='*.mm' --include='*.m' --include='*.in' "$2" $1); then
        printf '%s\n%s\n' "$3:" "$found" >&2
        failures=$((failures + 1))
    fi
}

above="Uninstaller InstallCommon SwiftUtils NorvikCommon Helpers Base"
forbid "$above" '__APPLE__|__linux__|_WIN32' 'A system is named above the seam'
forbid "$above" '#include [<"]Platform/(Linux|Darwin|Posix)/' "An adapter's header is named above the seam"
forbid "$above" '#include <(filesystem|semaphore|latch|barrier|stop_token)>' 'Not on macOS 10.13'
forbid "$above" '#include <(sys|linux|mach)/|#include <(unistd|fcntl|pwd|dirent|spawn|poll|signal)\.h>' \
    'A system header is named above the seam'
forbid 'Base' '#include "(Platform|NorvikCommon|SwiftUtils|InstallCommon|Helpers|Uninstaller)/' 'Base looks up'
forbid 'Platform' '#include "(NorvikCommon|SwiftUtils|InstallCommon|Helpers|Uninstaller)/' 'Platform looks up'
forbid 'NorvikCommon' '#include "(SwiftUtils|InstallCommon|Helpers|Uninstaller)/' 'NorvikCommon looks up'
forbid 'SwiftUtils' '#include "(InstallCommon|Helpers|Uninstaller)/' 'SwiftUtils looks up'
forbid 'InstallCommon' '#include "(Helpers|Uninstaller)/' 'InstallCommon looks up'
forbid 'Helpers' '#include "Uninstaller/' 'A helper knows the uninstaller'
forbid 'Uninstaller' '#include "Helpers/' 'The uninstaller knows a helper'

[ "$failures" -eq 0 ] || exit 1
