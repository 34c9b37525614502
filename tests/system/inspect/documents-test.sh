#!/usr/bin/env bash
# documents-test.sh BUILD: what is installed with sentrel-inspect, read by those who will read it: manual pages by groff,
# completions by bash and zsh.
set -euo pipefail
build=$1
scratch=$(mktemp -d "${TMPDIR:-/tmp}/documents-test.XXXXXX")
trap 'rm -rf "$scratch"' EXIT
failures=0

# expect WHAT EXPECTED ACTUAL
expect() {
    if [ "$2" != "$3" ]; then
        printf 'FAULT: %s\nexpected: %s\nactual:   %s\n' "$1" "$2" "$3" >&2
        failures=$((failures + 1))
    fi
}

cmake --install "$build" --component inspect --prefix "$scratch/prefix" >"$scratch/install.log"
expect "what is installed" "bin/sentrel-inspect
share/bash-completion/completions/sentrel-inspect
share/man/man1/sentrel-inspect-catalogue.1
share/man/man1/sentrel-inspect-commands.1
share/man/man1/sentrel-inspect-decode.1
share/man/man1/sentrel-inspect-explain.1
share/man/man1/sentrel-inspect-find.1
share/man/man1/sentrel-inspect-plan.1
share/man/man1/sentrel-inspect-scan.1
share/man/man1/sentrel-inspect-verify.1
share/man/man1/sentrel-inspect.1
share/zsh/site-functions/_sentrel-inspect" "$(cd "$scratch/prefix" && find . -type f | sed 's,^\./,,' | LC_ALL=C sort)"
program="$scratch/prefix/bin/sentrel-inspect"
expect "the installed program" "$("$build/bin/sentrel-inspect" --version)" "$("$program" --version)"

# Every page is read without a complaint, and says what the help says.
for page in "$scratch/prefix/share/man/man1/"*.1; do
    text=$(MANWIDTH=200 groff -man -Tascii -ww -P-cbou -rLL=200n "$page" 2>&1)
    expect "complaints about ${page##*/}" "" "$(groff -man -Tascii -ww -z "$page" 2>&1)"
    name=$(basename "$page" .1)
    command=${name#sentrel-inspect}
    for section in NAME SYNOPSIS DESCRIPTION "EXIT STATUS" EXAMPLES; do
        expect "section $section in $name" 1 "$(grep -cx "$section" <<<"$text")"
    done
    # The program's own --version stands in no list of options.
    for option in $("$program" ${command:+"${command#-}"} --help | grep -o '^  --[a-z-]*' | grep -v version || true); do
        expect "$option in $name" 1 "$(grep -c "^ *$option" <<<"$text")"
    done
done
expect "the page of verify" "       --wait SECONDS
              waits that long at most until the uninstaller's helpers have finished" \
    "$(groff -man -Tascii -P-cbou -rLL=120n "$scratch/prefix/share/man/man1/sentrel-inspect-verify.1" | grep -A1 -e --wait | head -2)"

# completions WORD...: what bash offers for the last word.
completions() {
    bash --norc -c '. "$1"; shift; COMP_WORDS=("$@"); COMP_CWORD=$(($# - 1)); _sentrel_inspect; echo ${COMPREPLY[*]-}' \
        bash "$scratch/prefix/share/bash-completion/completions/sentrel-inspect" "$@"
}
expect "commands" "scan plan verify explain find commands decode catalogue --help --version" "$(completions sentrel-inspect "")"
expect "a command" "scan" "$(completions sentrel-inspect sc)"
expect "options of scan" "--removal-lines --root" "$(completions sentrel-inspect scan --r | tr ' ' '\n' | LC_ALL=C sort | xargs)"
expect "lists" "uninstall uninstall-all" "$(completions sentrel-inspect commands unin)"
expect "the value of an option" "" "$(completions sentrel-inspect commands uninstall --archive "")"
expect "after an option" "--json" "$(completions sentrel-inspect plan --all --j)"
shellcheck --shell=bash --exclude=SC2207 "$scratch/prefix/share/bash-completion/completions/sentrel-inspect" ||
    failures=$((failures + 1))

# In zsh, the two functions that do the work are replaced by some that show what they are asked to do.
offered() {
    zsh -fc 'compdef() {}; _arguments() { print -rl -- "$@" }; _describe() { print -rl -- "$1" "${(@P)2}" }
        words=("${@:2}"); CURRENT=$#words; . "$1"' zsh "$scratch/prefix/share/zsh/site-functions/_sentrel-inspect" "$@" |
        sed 's/: $/:(nothing)/'
}
expect "commands in zsh" "scan:Shows which parts of the product are on this Mac" "$(offered sentrel-inspect "" | grep '^scan:')"
expect "verify in zsh" "--json[JSON in place of text]
--root[looks at the files of a Mac in this folder, a mounted disk for instance; jobs, processes and loaded extensions are not looked at]:DIR:_files -/
--wait[waits that long at most until the uninstaller's helpers have finished]:SECONDS:(nothing)
--help[shows the help]" "$(offered sentrel-inspect verify "")"
expect "find in zsh" "1:WHAT:(nothing)" "$(offered sentrel-inspect find "" | tail -1)"
expect "lists in zsh" "1:LIST:(uninstall cleanup uninstall-all pre-install install post-install clean-install update over-install)" \
    "$(offered sentrel-inspect commands "" | tail -1)"

[ "$failures" -eq 0 ] || exit 1
echo "manual pages and completions are as they should be"
