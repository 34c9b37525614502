#!/usr/bin/env bash
# progress.sh: shows on standard error how far something is whose output is its standard input. Lines that begin with [N/M] or
# [N%] count. On a terminal they take turns on one line, which is wiped at the end; elsewhere the latest one is printed every
# 10 s (SENTREL_PROGRESS_INTERVAL).
set -euo pipefail

interval="${SENTREL_PROGRESS_INTERVAL:-10}"
terminal=no
columns=80
if [ -t 2 ]; then
    terminal=yes
    columns=${COLUMNS:-$(stty size <&2 | cut -d ' ' -f 2)}
    [ "$columns" -ge 20 ] || columns=80
fi
latest=""
printed=""
next=$((SECONDS + interval))

# The current step, in few words: "[ 73/180] src/Base/URL.cpp".
shorten() {
    local text=$1 count=""
    if [[ $text =~ ^(\[[0-9/%\ ]+\])\ *(.*)$ ]]; then
        count=${BASH_REMATCH[1]}
        text=${BASH_REMATCH[2]}
    fi
    if [[ $count =~ ^\[([0-9]+)/([0-9]+)\]$ ]]; then
        printf -v count '[%*d/%d]' "${#BASH_REMATCH[2]}" "${BASH_REMATCH[1]}" "${BASH_REMATCH[2]}"
    fi
    if [[ $text =~ ^Building\ [A-Z]+\ object\ (.*)CMakeFiles/[^/]+\.dir/(.*)\.o$ ]]; then
        text=${BASH_REMATCH[1]}${BASH_REMATCH[2]//__/..}
    fi
    latest="$count $text"
}

show() {
    if [ "$terminal" = yes ]; then
        printf '\r\033[K%s' "${latest:0:$((columns - 1))}" >&2
    elif [ "$SECONDS" -ge "$next" ] && [ "$latest" != "$printed" ]; then
        printf '%s\n' "$latest" >&2
        printed=$latest
        next=$((SECONDS + interval))
    fi
}

begun=""
while true; do
    status=0
    IFS= read -r -t 1 line || status=$?
    if [ "$status" -gt 128 ]; then
        # The time is over; an incomplete line is kept.
        begun+=$line
        [ -z "$latest" ] || show
        continue
    fi
    line=$begun$line
    begun=""
    if [[ $line =~ ^\[[0-9]+(/[0-9]+|%)\] ]]; then
        shorten "$line"
        show
    fi
    [ "$status" -eq 0 ] || break
done
[ "$terminal" = no ] || printf '\r\033[K' >&2
