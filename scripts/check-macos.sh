#!/usr/bin/env bash
# Compiles the whole macOS side on another system and reports every diagnostic; one error or warning makes it fail.
#
#   check-macos.sh              type-checks every source of the macOS build with clang, against GNUstep's Foundation and AppKit
#                               headers and the declarations of Apple's other calls in tests/conformance/macos-check/include
#   check-macos.sh --sdk DIR    compiles the same sources for macOS 10.13 on Intel and macOS 11.0 on Apple silicon against the macOS
#                               SDK in DIR, links the programs and assembles the application; without DIR, the SDK that
#                               SENTREL_MACOS_SDK names. Of an SDK with stubs for one processor only, that one is checked
#
#   --build DIR                 the folder to build in (default: build/check-macos, build/check-macos-sdk)
#   --also FILE                 one extra source to compile with the others
#   --tests                     with --sdk: the tests that a Mac runs, too
#
# The sources are those of the build itself: CMake is configured as on a Mac. How to get an SDK: docs/macos.md.
set -euo pipefail
project=$(cd "$(dirname "$0")/.." && pwd)
check="$project/tests/conformance/macos-check"

fail() {
    echo "check-macos.sh: $*" >&2
    exit 2
}

# need COMMAND PACKAGE: the command is there, else the package of Debian 12 that has it is named.
need() {
    command -v "$1" >/dev/null || fail "$1 is missing (Debian: apt-get install $2)"
}

sdk=""
with_sdk=false
build=""
also=""
tests=OFF
while [ $# -gt 0 ]; do
    case "$1" in
        --sdk)
            with_sdk=true
            if [ $# -gt 1 ] && [ "${2#-}" = "$2" ]; then
                sdk=$2
                shift
            else
                sdk=${SENTREL_MACOS_SDK:-}
            fi
            ;;
        --build | --also)
            [ $# -gt 1 ] || fail "$1 needs a value"
            if [ "$1" = --build ]; then build=$2; else also=$(realpath "$2"); fi
            shift
            ;;
        --tests) tests=ON ;;
        *) fail "unknown argument $1; see the head of this script" ;;
    esac
    shift
done

need clang++-14 clang-14
need ninja ninja-build
need cmake cmake
llvm=$(dirname "$(readlink -f "$(command -v clang++-14)")")

arguments=(--fresh -G Ninja --toolchain "$check/toolchain.cmake" -DSENTREL_BENCHMARKS=OFF
    "-DSENTREL_CHECK_LLVM=$llvm")
if $with_sdk; then
    [ -n "$sdk" ] || fail "--sdk needs the folder of a macOS SDK (or set SENTREL_MACOS_SDK)"
    # shellcheck source=tests/conformance/macos-check/sdk-root.sh
    . "$check/sdk-root.sh"
    build=${build:-"$project/build/check-macos-sdk"}
    mkdir -p "$build"
    build=$(realpath "$build")
    make_sdk_root "$sdk" "$build/root"
    mapfile -t architectures < <(architectures_of_root "$build/root")
    [ "${#architectures[@]}" -gt 0 ] || fail "$sdk has stubs for no Mac's processor"
    googletest=/usr/src/googletest
    [ "$tests" = OFF ] || [ -e "$googletest/CMakeLists.txt" ] || fail "GoogleTest's sources are missing (Debian: apt-get install googletest)"
    # By this name clang calls what joins the objects of several processors.
    need llvm-lipo-14 llvm-14
    mkdir -p "$build/tools"
    ln -sfn "$llvm/llvm-lipo" "$build/tools/lipo"
    PATH="$build/tools:$PATH"
    arguments+=("-DCMAKE_OSX_ARCHITECTURES=$(IFS=';' && echo "${architectures[*]}")")
    arguments+=("-DSENTREL_CHECK_ROOT=$build/root" -DSENTREL_INSPECT=ON -DCMAKE_BUILD_TYPE=RelWithDebInfo
        "-DSENTREL_TESTS=$tests" "-DFETCHCONTENT_SOURCE_DIR_GTEST=$googletest")
else
    [ -e /usr/include/GNUstep/AppKit/AppKit.h ] ||
        fail "GNUstep's headers are missing (Debian: apt-get install libgnustep-gui-dev)"
    build=${build:-"$project/build/check-macos"}
    mkdir -p "$build"
    build=$(realpath "$build")
    # The runtime's headers lie in GCC's own folder, with much that is not for clang.
    runtime=$(gcc -print-file-name=include)/objc
    [ -e "$runtime/objc.h" ] || fail "GCC's Objective-C runtime is missing (Debian: apt-get install gobjc)"
    mkdir -p "$build/runtime"
    ln -sfn "$runtime" "$build/runtime/objc"
    # Not -D__APPLE__: the sources need no such test, and GNUstep's headers would take this system for a Mac.
    arguments+=(-DSENTREL_CHECK_ROOT= -DSENTREL_INSPECT=ON -DSENTREL_TESTS=OFF -DCMAKE_OSX_DEPLOYMENT_TARGET= -DCMAKE_OSX_ARCHITECTURES=
        "-DSENTREL_CHECK_FLAGS=-isystem \"$check/include\" -isystem \"$build/runtime\" -isystem /usr/include/GNUstep -fblocks"
        "-DSENTREL_CHECK_OBJC_FLAGS=-fobjc-exceptions -fconstant-string-class=NSConstantString")
fi
cat >"$build/also.cmake" <<END
if(NOT "$also" STREQUAL "")
    add_library(Also OBJECT "$also")
    set_target_properties(Also PROPERTIES CXX_STANDARD 20 OBJCXX_STANDARD 20)
    target_link_libraries(Also PRIVATE sentrel_options)
endif()
END
arguments+=("-DCMAKE_PROJECT_INCLUDE=$build/also.cmake")

log="$build/check.log"
if ! cmake -S "$project" -B "$build/tree" "${arguments[@]}" >"$log" 2>&1; then
    cat "$log" >&2
    fail "the macOS build could not be configured"
fi
objects=()
mapfile -t objects < <(ninja -C "$build/tree" -t targets all | sed -n 's/^\(.*\.o\): .*_COMPILER__.*/\1/p')
[ "${#objects[@]}" -gt 0 ] || fail "the macOS build compiles nothing"
targets=("${objects[@]}")
$with_sdk && targets+=(all)

# -k 0: everything is reported, not only the first fault.
status=0
ninja -C "$build/tree" -k 0 "${targets[@]}" >"$log" 2>&1 || status=1
diagnostics=$(grep -cE '(error|warning): ' "$log") || true
if [ "$status" -ne 0 ] || [ "$diagnostics" -ne 0 ]; then
    # Without the progress and the commands themselves.
    grep -vE '^(ninja: |\[[0-9]+/[0-9]+\] |(: && |[^ ]*ccache )?/.*/clang)' "$log" >&2 || true
    echo "check-macos.sh: $diagnostics diagnostics in ${#objects[@]} sources" >&2
    exit 1
fi
if $with_sdk; then
    "$check/check-programs.sh" "$build/tree/bin" "$llvm" "${architectures[@]}"
    echo "${#objects[@]} sources compiled and linked for ${architectures[*]} without a diagnostic."
    for architecture in x86_64 arm64; do
        [[ " ${architectures[*]} " == *" $architecture "* ]] ||
            echo "Not checked: $architecture, for which the SDK has no stubs."
    done
else
    echo "${#objects[@]} sources of the macOS build type-checked without a diagnostic."
fi
