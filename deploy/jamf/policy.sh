#!/bin/sh
# policy.sh: a script for a policy of Jamf Pro. Runs remove-sentrel.sh of the kit that a package has put on the Mac, and passes on its
# line of JSON and its exit status; anything but 0 makes the policy fail, with the reason in its log.
#
# Jamf gives $1 to $3 (mount point, computer, user). What the policy may give, empty for the usual:
#   $4  "plan" to change nothing and only say what would be done
#   $5  time limit in seconds
#   $6  log file; its folder must be root's alone (/var/log/remove-sentrel.log)
#   $7  folder of the kit, /Library/SentrelRemoval
set -u

mode=${4-}
time_limit=${5-}
log=${6-}
script=${7:-/Library/SentrelRemoval}/remove-sentrel.sh

set --
case $mode in
    '') ;;
    plan)
        set -- --plan
        log=''
        ;;
    *)
        echo 'policy.sh: parameter 4 is "plan" or empty' >&2
        exit 2
        ;;
esac
# Some old shells take an empty "$@" for an unset variable.
[ -z "$time_limit" ] || set -- ${1+"$@"} --time-limit "$time_limit"
[ -z "$log" ] || set -- ${1+"$@"} --log "$log"
if [ ! -x "$script" ]; then
    echo "policy.sh: there is no $script; install the kit's package first" >&2
    exit 1
fi
exec "$script" ${1+"$@"}
