#!/bin/sh
# remove-sentrel.sh: takes Sentrel off a Mac and proves it. Looks first, runs the uninstaller only where something is installed, waits
# for its helper, looks again, and takes away what is only left over. See --help and docs/deploy.md.
#
# For sh on macOS 10.13 and later (bash 3.2 and zsh's sh included): no arrays, no local variables, no tool that a fresh Mac lacks.
# Runs as root on Macs whose users are no administrators, so it follows no link and runs no program that such a user may have put there.
set -u
umask 077
PATH=/usr/bin:/bin:/usr/sbin:/sbin
LC_ALL=C
export PATH LC_ALL
unset CDPATH ENV BASH_ENV IFS
tab=$(printf '\t')
name='Uninstall Sentrel'

usage() {
    cat <<'END'
Usage: remove-sentrel.sh [--plan] [--log FILE] [--time-limit SECONDS] [--inspect FILE] [--uninstaller APP]

Takes Sentrel off this Mac and prints one line of JSON. Needs root, except for --plan.

  --plan                only says what would be done; changes nothing
  --log FILE            writes what happens to FILE as well; its folder must be root's alone, or FILE new in one like /tmp
  --time-limit SECONDS  for everything together; 600 unless given
  --inspect FILE        the program sentrel-inspect; else it is looked for beside this script, in
                        /Library/SentrelRemoval and in /usr/local/bin
  --uninstaller APP     "Uninstall Sentrel.app"; else it is looked for beside this script, in
                        /Library/SentrelRemoval, in the product and in /Applications
  --help                this text

Exit status:
   0  removed, or nothing was there; with --plan: nothing stands in the way
   1  not everything could be looked at, or the script was interrupted
   2  the command line makes no sense
  10  something is left
  11  only a restart is missing
  12  the installed version is newer than the uninstaller
  13  no rights: not root, or no authorization
  14  the uninstaller or its helper still runs after the time limit
  15  the uninstaller is missing
END
}

# printable TEXT: for one line of a message.
printable() {
    printf '%s' "$1" | tr -c '[:print:]' '?'
}

misuse() {
    printf 'remove-sentrel.sh: %s\n' "$(printable "$1")" >&2
    exit 2
}

now() {
    date +%s
}

# seconds_left: until the time limit, never less than 0.
seconds_left() {
    left_now=$((deadline - $(now)))
    [ "$left_now" -gt 0 ] || left_now=0
    echo "$left_now"
}

log() {
    printf '%s %s\n' "$(date -u '+%Y-%m-%dT%H:%M:%SZ')" "$1" >&3
}

# --- What may be trusted

# only_root_changes PATH: whether nobody but root can change what is at PATH, an absolute path, or on the way there. Administrators
# count as root, which they can become. Links count as changeable, except for those that a Mac has at the top (/tmp, /var, /etc).
only_root_changes() {
    trusted=$1
    while :; do
        if [ -L "$trusted" ]; then
            [ "$(dirname "$trusted")" = / ] || return 1
        else
            [ -n "$(find "$trusted" -prune -user 0 ! -perm -0002 \( ! -perm -0020 -o -group 0 -o -group 80 \) -print 2>/dev/null)" ] ||
                return 1
        fi
        [ "$trusted" != / ] || return 0
        trusted=$(dirname "$trusted")
    done
}

# Where a link in somebody's folder leads is theirs to say, so a log goes only where nobody can plant one: into a folder of root's, or
# as a new file into one like /tmp, where nobody can take it away again.
open_log() {
    case $log_file in
        '') exec 3>/dev/null && return ;;
        */ | . | .. | */. | */..) misuse "--log: \"$log_file\" is not the name of a file" ;;
    esac
    log_folder=$(dirname "$log_file")
    real_folder=$(cd -P -- "$log_folder" 2>/dev/null && pwd -P) || misuse "--log: there is no folder for \"$log_file\""
    if only_root_changes "$log_folder" && only_root_changes "$real_folder"; then
        if [ -L "$log_file" ] || { [ -e "$log_file" ] && [ ! -f "$log_file" ]; }; then
            misuse "--log: \"$log_file\" is not a regular file"
        fi
        (: >>"$log_file") 2>/dev/null || misuse "--log: \"$log_file\" cannot be written"
    elif [ -n "$(find "$real_folder" -prune -user 0 -perm -1000 -print 2>/dev/null)" ] &&
        only_root_changes "$(dirname "$log_folder")" && only_root_changes "$(dirname "$real_folder")"; then
        if [ -e "$log_file" ] || [ -L "$log_file" ] || ! (set -C && : >"$log_file") 2>/dev/null; then
            misuse "--log: \"$log_file\" must be a new file, because others can write to its folder"
        fi
    else
        misuse "--log: \"$log_folder\" can be changed by others than root"
    fi
    exec 3>>"$log_file"
}

# found_program FOLDER FILE: prints FILE below FOLDER if it is a program and only root can change it.
found_program() {
    found_folder=$(cd -P -- "$1" 2>/dev/null && pwd -P) || return 1
    found=${found_folder%/}/$2
    [ -f "$found" ] && [ ! -L "$found" ] && [ -x "$found" ] && only_root_changes "$found" || return 1
    printf '%s\n' "$found"
}

find_inspect() {
    if [ -n "$inspect" ]; then
        [ -f "$inspect" ] && [ -x "$inspect" ]
        return
    fi
    for folder in "$own_folder" /Library/SentrelRemoval /usr/local/bin; do
        inspect=$(found_program "$folder" sentrel-inspect) && return
    done
    return 1
}

# Sets `uninstaller` to the program. In a bundle that was found, everything must be root's alone: the helpers lie there, too.
find_uninstaller() {
    if [ -n "$uninstaller" ]; then
        [ ! -d "$uninstaller" ] || uninstaller=${uninstaller%/}/Contents/MacOS/$name
        [ -f "$uninstaller" ] && [ -x "$uninstaller" ]
        return
    fi
    for folder in "$own_folder" /Library/SentrelRemoval /Applications/Sentrel.app/Contents/Applications /Applications; do
        if uninstaller=$(found_program "$folder" "$name.app/Contents/MacOS/$name") &&
            [ -z "$(find "${uninstaller%/Contents/MacOS/*}" \( ! -user 0 -o -perm -0002 ! -type l \) -print 2>&1)" ]; then
            return
        fi
    done
    uninstaller=''
    return 1
}

# --- Looking

# look: sets `verdict` and `facts`. A status that does not fit what was written is no answer.
look() {
    facts=$("$inspect" scan --plain 2>&3 3>&- </dev/null)
    look_status=$?
    verdict=$(fact verdict)
    case $verdict:$look_status in
        nothing:0 | installed:3 | leftovers:4 | restart:5) ;;
        unknown:1) ;;
        *)
            verdict=unknown
            facts="could-not-look${tab}sentrel-inspect ended with status $look_status"
            ;;
    esac
    log "looked: $verdict"
    printf '%s\n' "$facts" | sed 's/^/  /' >&3
}

# fact KEY: the rest of each line of that key.
fact() {
    printf '%s\n' "$facts" | sed -n "s/^$1$tab//p"
}

# What makes a difference between two looks: no process ids.
lasting_facts() {
    printf '%s\n' "$facts" | sed -n -e "/^item$tab/p" -e "/^extension$tab/p" -e "s/^\\(job${tab}[^$tab]*\\)$tab.*/\\1/p"
}

helper_runs() {
    [ "$(fact helper)" = running ]
}

# --- Uninstalling

# wait_for PROCESS: until it has ended; kills it at the time limit, and then fails. Asleep in between, so that signals are noticed.
wait_for() {
    while kill -0 "$1" 2>/dev/null; do
        if [ "$(seconds_left)" -eq 0 ]; then
            kill -9 "$1" 2>/dev/null
            wait "$1" 2>/dev/null
            return 1
        fi
        sleep 1
    done
    wait "$1" 2>/dev/null
    return 0
}

# run_uninstaller: one attempt. Its exit status says nothing, so the Mac is looked at again when its helper has finished, too.
run_uninstaller() {
    attempts=$((attempts + 1))
    log "attempt $attempts: $uninstaller --silent"
    "$uninstaller" --silent </dev/null >"$scratch/words" 2>&1 3>&- &
    child=$!
    wait_for "$child" || timed_out=true
    child=''
    sed 's/^/  /' "$scratch/words" >&3
    log 'waiting for the helper'
    "$inspect" verify --wait "$(seconds_left)" </dev/null >/dev/null 2>&1 3>&- &
    child=$!
    wait "$child"
    child=''
    look
}

said() {
    [ -n "$scratch" ] && grep -q "$1" "$scratch/words"
}

# outcome_of_attempt: why the product is still installed, as an exit status.
outcome_of_attempt() {
    if $timed_out || helper_runs; then
        echo 14
    elif said 'Antivirus cannot be uninstalled'; then
        echo 12
    elif said 'Helper authorization and blessing failed' && ! said 'SMJobBless error'; then
        echo 13
    else
        echo 10
    fi
}

# A second attempt helps after a helper that died and against a refusal of launchd's that has passed; it cannot help where the version,
# the rights or the time are missing.
uninstall() {
    run_uninstaller
    while [ "$verdict" = installed ] && [ "$attempts" -lt 2 ] && [ "$(outcome_of_attempt)" -eq 10 ] && [ "$(seconds_left)" -gt 0 ]; do
        run_uninstaller
    done
}

# --- Cleaning

# safe_path PATH: whether it is one of the product's places. What sentrel-inspect names is one; nothing else is ever removed.
safe_path() {
    case $1 in
        *[!A-Za-z0-9./\ _-]* | */../* | */.. | */./* | */. | *//* | */) return 1 ;;
    esac
    case $1 in
        /Applications/Sentrel.app | /Applications/Norvik | /Applications/NORVIK | /Applications/Norvik/* | /Applications/NORVIK/*) ;;
        '/Library/Application Support/NORVIK' | '/Library/Application Support/NORVIK/'*) ;;
        '/Library/Application Support/Norvik' | '/Library/Application Support/Norvik/'*) ;;
        /Library/Extensions/FileAccessFilter.kext | /Users/Shared/Norvik) ;;
        '/Library/Services/Scan with Sentrel.workflow' | '/Library/Services/Scan with NORVIK Antivirus.workflow') ;;
        /Library/LaunchAgents/com.norvik.*/* | /Library/LaunchDaemons/com.norvik.*/* | /Library/PrivilegedHelperTools/com.norvik.*/*)
            return 1
            ;;
        /Library/LaunchAgents/com.norvik.*.plist | /Library/LaunchDaemons/com.norvik.*.plist) ;;
        /Library/PrivilegedHelperTools/com.norvik.*) ;;
        *) return 1 ;;
    esac
}

# safe_target TEXT PREFIX: whether it is PREFIX, "com.norvik." and a plain name.
safe_target() {
    case ${1#"$2"} in
        "$1" | *[!A-Za-z0-9.]*) return 1 ;;
        com.norvik.?*) return 0 ;;
    esac
    return 1
}

# safe_job TARGET: system/LABEL, or gui/USER/LABEL.
safe_job() {
    safe_target "$1" system/ && return
    job_user=${1#gui/}
    job_user=${job_user%%/*}
    case $job_user in
        '' | *[!0-9]*) return 1 ;;
    esac
    safe_target "$1" "gui/$job_user/"
}

lower_case() {
    tr '[:upper:]' '[:lower:]'
}

# remove FLAGS PATH: from within its folder. Somebody may have put a link on the way there since the look. The folder that has been
# entered stays the same, and the kernel knows its path, in the case that the disk has; the shell's own pwd only remembers one.
remove() {
    remove_folder=$(dirname "$2")
    [ -e "$remove_folder" ] || [ -L "$remove_folder" ] || return 0
    (
        cd -P "$remove_folder" &&
            [ "$(/bin/pwd -P | lower_case)" = "$(printf '%s\n' "$remove_folder" | lower_case)" ] &&
            rm "$1" "./$(basename "$2")"
    )
}

# take_away KIND TARGET: one leftover. Fails when it is not one of the product's, or does not go.
take_away() {
    case $1 in
        job) safe_job "$2" && launchctl bootout "$2" ;;
        process)
            case $2 in
                '' | *[!0-9]* | 0 | 1) return 1 ;;
            esac
            kill -9 "$2"
            ;;
        extension) safe_target "$2" '' && command -v kextunload >/dev/null && kextunload -b "$2" ;;
        folder) safe_path "$2" && remove -rf "$2" ;;
        file | link | item) safe_path "$2" && remove -f "$2" ;;
        *) return 1 ;;
    esac
}

# take_all_away: prints the kind and the target of each leftover that went, a line each.
take_all_away() {
    fact leftover | while IFS=$tab read -r kind target; do
        if take_away "$kind" "$target" >&3 2>&3 </dev/null; then
            log "removed: $kind $target"
            printf '%s %s\n' "$kind" "$target"
        else
            log "not removed: $kind $target"
        fi
    done
}

# await_killed TAKEN: until the processes among what was taken away are gone; a busy Mac takes a moment to end what was killed.
await_killed() {
    tries=10
    for pid in $(printf '%s\n' "$1" | sed -n 's/^process //p'); do
        while [ "$tries" -gt 0 ] && [ "$(seconds_left)" -gt 0 ] && kill -0 "$pid" 2>/dev/null; do
            tries=$((tries - 1))
            sleep 1
        done
    done
}

# Whoever installs or uninstalls right now needs what would be called a leftover.
somebody_is_at_work() {
    # ps shows the whole path on a Mac, elsewhere the first 15 letters of the name.
    helper_runs || [ -n "$(ps -A -o comm= | sed -n -e '/Uninstall Sentr/p' -e '/Install Sentrel/p')" ]
}

# clean: takes leftovers away, as long as that makes a difference. launchd takes a moment to forget a job, hence the second pass.
clean() {
    pass=0
    while [ "$pass" -lt 3 ]; do
        pass=$((pass + 1))
        case $verdict in
            leftovers | restart) ;;
            *) return ;;
        esac
        while somebody_is_at_work; do
            if [ "$(seconds_left)" -eq 0 ]; then
                timed_out=true
                return
            fi
            sleep 1
            look
        done
        taken=$(take_all_away)
        gone=$(printf '%s' "$taken" | grep -c '')
        cleaned=$((cleaned + gone))
        await_killed "$taken"
        # Also when nothing could be taken away: it may have gone by itself.
        look
        [ "$gone" -gt 0 ] || return
    done
}

# --- The result

# in_json TEXT: as a JSON string.
in_json() {
    printf '"%s"' "$(printable "$1" | sed 's/[\\"]/\\&/g')"
}

version_text() {
    fact version | sed "s/^\\(.*\\)$tab\\(.*\\)\$/\\1 (\\2)/"
}

# finish STATUS RESULT MESSAGE: prints the line and ends.
finish() {
    trap '' HUP INT TERM
    left=$(printf '%s\n' "$facts" | grep -Ec "^(item|job|process|extension)$tab")
    line="{\"formatVersion\":1,\"result\":\"$2\",\"exitStatus\":$1,\"plan\":$plan,\"changed\":$changed"
    line="$line,\"restart\":$restart,\"before\":\"$before\",\"after\":\"$verdict\",\"version\":$version"
    line="$line,\"attempts\":$attempts,\"cleaned\":$cleaned,\"left\":$left,\"seconds\":$(($(now) - started))"
    line="$line,\"message\":$(in_json "$3")}"
    printf '%s\n' "$line"
    log "$line"
    exit "$1"
}

# shellcheck disable=SC2317 # a trap
cleanup() {
    [ -z "$scratch" ] || rm -rf "$scratch"
}

# shellcheck disable=SC2317 # a trap
interrupted() {
    [ -z "$child" ] || kill -9 "$child" 2>/dev/null
    finish 1 interrupted 'The script was interrupted.'
}

# finish_with_look: the result of the last look.
finish_with_look() {
    if [ "$cleaned" -gt 0 ] || [ "$before_facts" != "$(lasting_facts)" ]; then changed=true; fi
    case $verdict in
        nothing)
            [ "$before" != nothing ] || finish 0 nothing 'Nothing of Sentrel is on this Mac.'
            finish 0 removed 'Sentrel was removed.'
            ;;
        restart)
            restart=true
            finish 11 restart 'A restart takes away what is left.'
            ;;
        unknown) finish 1 unknown "Not everything could be looked at: $(fact could-not-look | head -n 1)" ;;
        leftovers) finish_with_leftovers ;;
        *) finish_installed ;;
    esac
}

finish_with_leftovers() {
    if $timed_out || helper_runs; then
        finish 14 running 'An uninstaller, an installer or the helper still runs after the time limit.'
    fi
    finish 10 leftovers "Sentrel is not installed, but something of it is left: $(fact leftover | head -n 1 | tr "$tab" ' ')"
}

finish_installed() {
    case $(outcome_of_attempt) in
        12) finish 12 newer 'The installed version is newer than the uninstaller.' ;;
        13) finish 13 no-rights 'The uninstaller got no authorization.' ;;
        14) finish 14 running 'The uninstaller or its helper still runs after the time limit.' ;;
    esac
    reason='the helper did not go through its list'
    if said 'SMJobBless error'; then
        reason='launchd refused to install a helper'
    elif said 'Failed to install Swift runtime support'; then
        reason='the runtime support package could not be installed'
    fi
    finish 10 leftovers "Sentrel is still installed: $reason."
}

# finish_plan: what a run would do, or why it would not.
finish_plan() {
    case $verdict in
        installed | leftovers) changed=true ;;
        restart) ! fact leftover | grep -q "^job$tab" || changed=true ;;
    esac
    case $verdict in
        installed) finish 0 planned 'Sentrel would be uninstalled.' ;;
        leftovers) finish 0 planned 'What is left of Sentrel would be removed.' ;;
        *) finish_with_look ;;
    esac
}

# --- The road

log_file=''
inspect=''
uninstaller=''
time_limit=600
plan=false
while [ $# -gt 0 ]; do
    case $1 in
        --help)
            usage
            exit 0
            ;;
        --plan) plan=true ;;
        --log | --inspect | --uninstaller | --time-limit)
            [ -n "${2-}" ] || misuse "$1 needs a value"
            case $2 in
                /*) value=$2 ;;
                *) value=$PWD/$2 ;;
            esac
            case $1 in
                --log) log_file=$value ;;
                --inspect) inspect=$value ;;
                --uninstaller) uninstaller=$value ;;
                --time-limit)
                    time_limit=$2
                    case $time_limit in
                        0* | *[!0-9]* | ??????*) misuse "--time-limit: \"$2\" is not a number of seconds from 1 to 99999" ;;
                    esac
                    ;;
            esac
            shift
            ;;
        *) misuse "unknown argument \"$1\"; see --help" ;;
    esac
    shift
done
! $plan || [ -z "$log_file" ] || misuse '--plan changes nothing and writes no --log'

started=$(now)
deadline=$((started + time_limit))
own_folder=$(dirname -- "$0")
facts=''
verdict=unknown
before=unknown
version=null
attempts=0
cleaned=0
changed=false
restart=false
timed_out=false
scratch=''
child=''
exec 3>/dev/null
if [ "$(id -u)" -ne 0 ] && ! $plan; then
    finish 13 no-rights 'This needs root.'
fi
open_log
trap cleanup EXIT
trap interrupted HUP INT TERM
find_inspect || finish 1 unknown 'sentrel-inspect is missing, or others than root can change it.'
look
before=$verdict
before_facts=$(lasting_facts)
[ -z "$(version_text)" ] || version=$(in_json "$(version_text)")

if [ "$verdict" = installed ]; then
    [ "$(fact uninstaller)" != 'refuses: newer version installed' ] ||
        finish 12 newer 'The installed version is newer than the uninstaller.'
    find_uninstaller || finish 15 no-uninstaller "\"$name.app\" is missing, or others than root can change it."
fi
! $plan || finish_plan
if [ "$verdict" = installed ]; then
    scratch=$(mktemp -d /tmp/remove-sentrel.XXXXXX) || finish 1 unknown 'There is no room in /tmp.'
    uninstall
fi
clean
finish_with_look
