#!/usr/bin/env bash
# lint.sh: the checks that need no test. One line a step; every finding is shown, and any finding makes the exit status 1.
#
#   lint.sh                    formatting, shell scripts and layers of everything; clang-tidy on changes since the merge base
#                              with main (on main itself: since the commit before), including uncommitted ones
#   lint.sh --base REVISION    clang-tidy on changes since REVISION
#   lint.sh --all              clang-tidy on every source; takes long
#   lint.sh --at-most N        clang-tidy on no more than N sources; the line says how many are left out
set -euo pipefail
cd "$(dirname "$0")/.."
build=build/release
log=build/lint.log

fail() {
    echo "lint.sh: $*" >&2
    exit 2
}

all=false
base=""
at_most=""
while [ $# -gt 0 ]; do
    case "$1" in
        --all) all=true ;;
        --base | --at-most)
            [ $# -gt 1 ] || fail "$1 needs a value"
            if [ "$1" = --base ]; then base=$2; else at_most=$2; fi
            shift
            ;;
        *) fail "unknown argument $1; see the head of this script" ;;
    esac
    shift
done
[ -z "$base" ] || git rev-parse --quiet --verify "$base^{commit}" >/dev/null || fail "there is no revision $base"
for tool in clang-format clang-tidy shellcheck yamllint python3 node; do
    command -v "$tool" >/dev/null || fail "$tool is missing; run scripts/setup.sh"
done
mkdir -p build
failures=0

# step NAME WHAT COMMAND ARGUMENT...: runs one check, whose output is its findings.
step() {
    local name=$1 what=$2 status=0
    shift 2
    "$@" >"$log" 2>&1 || status=$?
    if [ "$status" -eq 0 ]; then
        echo "$name: $what, no finding"
    else
        echo "$name: $what, findings:"
        cat "$log"
        failures=$((failures + 1))
    fi
}

# files PATTERN...: existing files that git tracks or would add.
files() {
    local file
    git ls-files --cached --others --exclude-standard -- "$@" | sort -u | while IFS= read -r file; do
        [ ! -f "$file" ] || printf '%s\n' "$file"
    done
}

# Scripts are known by their names or by their first lines.
shell_scripts() {
    local file first
    files | while IFS= read -r file; do
        first=""
        IFS= read -r first 2>/dev/null <"$file" || true
        if [[ $file == *.sh || $first =~ ^\#!.*[/\ ](ba|da)?sh(\ |$) ]]; then printf '%s\n' "$file"; fi
    done 2>/dev/null
}

formatting() {
    printf '%s\0' "${sources[@]}" | xargs -0 -n 50 -P "$(nproc)" clang-format --dry-run -Werror
}

# The commit that the work at hand started from: where the branch left main or, on main, the commit before. Nothing in a clone
# that has no other commit.
starting_point() {
    local main start=""
    for main in origin/main main; do
        start=$(git merge-base HEAD "$main" 2>/dev/null) || continue
        [ "$start" = "$(git rev-parse HEAD)" ] || break
        start=""
    done
    [ -n "$start" ] || start=$(git rev-parse --quiet --verify 'HEAD^' 2>/dev/null) || true
    printf '%s' "$start"
}

tidy() {
    local arguments=(--build "$build") changed=()
    [ -z "$at_most" ] || arguments+=(--at-most "$at_most")
    if $all; then
        arguments+=(--all)
    else
        base=${base:-$(starting_point)}
        if [ -z "$base" ]; then
            # A clone of one commit. Another one deeper may be had; without it there is nothing to compare with.
            git fetch --quiet --deepen=1 >/dev/null 2>&1 </dev/null || true
            base=$(starting_point)
        fi
        if [ -z "$base" ]; then
            echo "clang-tidy: left out, this clone has no earlier commit to compare with; --all checks every source"
            return
        fi
        mapfile -t changed < <({ git diff --name-only --diff-filter=d "$base" --; git ls-files --others --exclude-standard; } |
            sort -u | grep -E '\.(cpp|h)$')
        if [ "${#changed[@]}" -eq 0 ]; then
            echo "clang-tidy: no changed sources"
            return
        fi
    fi
    # clang-tidy reads the compile commands and the headers that the build makes.
    if ! { cmake --preset release && cmake --build --preset release --target generated_headers; } >"$log" 2>&1; then
        cat "$log" >&2
        fail "the build could not be configured"
    fi
    python3 scripts/tidy.py "${arguments[@]}" -- "${changed[@]}" || failures=$((failures + 1))
}

mapfile -t sources < <(files '*.cpp' '*.h' '*.mm' '*.m')
mapfile -t scripts < <(shell_scripts)
step clang-format "${#sources[@]} files" formatting
step shellcheck "${#scripts[@]} scripts" shellcheck --external-sources "${scripts[@]}"
mapfile -t documents < <(files '*.yml' '*.yaml')
step yamllint "${#documents[@]} files" yamllint --strict "${documents[@]}"
mapfile -t workflows < <(files '.github/workflows/*.yml' '.github/workflows/*.yaml')
step workflows "${#workflows[@]} files" ./scripts/workflows.sh "${workflows[@]}"
step check-layers "src and tools" ./scripts/check-layers.sh
step architecture "the picture of the rooms" python3 -B scripts/architecture.py --check
step check-docs "what the documents name" python3 -B scripts/check-docs.py
tidy
[ "$failures" -eq 0 ]
