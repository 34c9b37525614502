# shellcheck shell=bash
# make_sdk_root SDK ROOT: makes ROOT the root folder of a Mac as far as a compiler sees it, of links into the SDK. The SDK may be
# Apple's own (usr/include, usr/lib, System/Library/Frameworks) or a plain collection of its parts (include, lib, Frameworks).
# For what the SDK lacks, this folder has lists of the symbols in use that a Mac's libraries have.

check=${check:?}

# stub_library INSTALL_NAME OUTPUT: a text-based stub of a library with the symbols on standard input, one on each line. Calls that
# know 64-bit inode numbers have a name of their own on Intel only, where they came later than the others.
stub_library() {
    {
        printf -- "--- !tapi-tbd\ntbd-version: 4\ntargets: [ x86_64-macos, arm64-macos ]\ninstall-name: '%s'\nexports:\n" "$1"
        sed '/^#/d' | tee "$2.symbols" | stub_exports x86_64-macos
        sed 's/[$]INODE64$//' "$2.symbols" | stub_exports arm64-macos
        echo ...
    } >"$2"
    rm "$2.symbols"
}

# stub_exports TARGET: the symbols on standard input as those that a stub has for TARGET.
stub_exports() {
    printf "  - targets: [ %s ]\n    symbols: [\n" "$1"
    sed "s/.*/      '&',/"
    printf "    ]\n"
}

# architectures_in STUB: the processors of the Mac that the text-based stub STUB is for, one on each line.
architectures_in() {
    # Targets in the present form, lists of architectures in earlier ones.
    sed -n -e '/^targets:/,/\]/p' -e '/^archs:/,/\]/p' "$1" | grep -oE '\b(x86_64|arm64)(-macos\b|[ ,])' | sed 's/[-, ].*//' | sort -u
}

# architectures_of_root ROOT: the processors that both the runtime and Foundation have stubs for, Intel first.
architectures_of_root() {
    comm -12 <(architectures_in "$1/usr/lib/libobjc.tbd") \
        <(architectures_in "$1/System/Library/Frameworks/Foundation.framework/Foundation.tbd") | sort -r
}

# symbols_of LIBRARY...: the symbols that libraries of this system export, as a Mac spells them.
symbols_of() {
    "${llvm:?}/llvm-nm" --dynamic --defined-only --format=just-symbols "$@" | sed -e '/:$/d' -e '/^$/d' -e 's/@.*//' -e 's/^/_/' |
        LC_ALL=C sort -u
}

# link_missing FOLDER INTO: a link in INTO for everything in FOLDER that INTO lacks.
link_missing() {
    local item
    for item in "$1"/*; do
        [ -e "$2/${item##*/}" ] || ln -s "$item" "$2/${item##*/}"
    done
}

# add_framework ROOT NAME: the symbols of a framework that the SDK lacks.
add_framework() {
    local framework="$1/System/Library/Frameworks/$2.framework"
    [ -e "$framework" ] && return
    mkdir -p "$framework"
    stub_library "/System/Library/Frameworks/$2.framework/Versions/A/$2" "$framework/$2.tbd" <"$check/symbols/$2"
}

# add_inspect_libraries ROOT: what sentrel-inspect is built with, two header-only libraries, where Homebrew puts them.
add_inspect_libraries() {
    local local="$1/usr/local" library
    mkdir -p "$local/include" "$local/share/cmake"
    for library in CLI nlohmann; do
        [ -d "/usr/include/$library" ] || fail "/usr/include/$library is missing (run scripts/setup.sh)"
        ln -sfn "/usr/include/$library" "$local/include/$library"
    done
    ln -sfn /usr/share/cmake/CLI11 "$local/share/cmake/CLI11"
    ln -sfn /usr/share/cmake/nlohmann_json "$local/share/cmake/nlohmann_json"
}

make_sdk_root() {
    local sdk root=$2 headers libraries frameworks cxx more_symbols=()
    # The product is not let through with a call that only the tests make.
    if [ "${tests:-OFF}" = ON ]; then more_symbols=("$check/symbols/libSystem-tests"); fi
    [ -d "$1" ] || fail "there is no folder $1"
    sdk=$(realpath "$1")
    if [ -d "$sdk/System/Library/Frameworks" ]; then
        headers="$sdk/usr/include" libraries="$sdk/usr/lib" frameworks="$sdk/System/Library/Frameworks"
    else
        headers="$sdk/include" libraries="$sdk/lib" frameworks="$sdk/Frameworks"
    fi
    for part in "$headers/libproc.h" "$headers/c++/v1/__availability" "$libraries/libobjc.tbd" \
        "$frameworks/Foundation.framework/Headers/Foundation.h" "$frameworks/AppKit.framework/Headers/AppKit.h"; do
        [ -e "$part" ] || fail "$1 is no macOS SDK: it has no ${part#"$sdk/"}"
    done
    need ld64.lld-14 lld-14
    need llvm-nm-14 llvm-14

    rm -rf "$root"
    mkdir -p "$root/usr/lib" "$root/System/Library/Frameworks"
    ln -s "$headers" "$root/usr/include"
    link_missing "$libraries" "$root/usr/lib"
    link_missing "$frameworks" "$root/System/Library/Frameworks"
    [ -e "$root/usr/lib/libSystem.tbd" ] ||
        cat "$check/symbols/libSystem" "${more_symbols[@]}" | stub_library /usr/lib/libSystem.B.dylib "$root/usr/lib/libSystem.tbd"
    if [ ! -e "$root/usr/lib/libc++.tbd" ]; then
        # The same library, built for this system: the same symbols, but for the operating system's underscore.
        cxx=$(dirname "$llvm")/lib
        [ -e "$cxx/libc++.so.1" ] || fail "$cxx/libc++.so.1 is missing (Debian: apt-get install libc++1-14)"
        symbols_of "$cxx/libc++.so.1" "$cxx/libc++abi.so.1" | stub_library /usr/lib/libc++.1.dylib "$root/usr/lib/libc++.tbd"
    fi
    add_framework "$root" ServiceManagement
    add_framework "$root" SecurityFoundation
    add_inspect_libraries "$root"
}
