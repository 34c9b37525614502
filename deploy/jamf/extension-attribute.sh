#!/bin/sh
# extension-attribute.sh: an extension attribute of Jamf Pro (text). What is on the Mac of Sentrel, in one of these forms:
#
#   nothing | installed VERSION (BUILD) | installed | leftovers | restart needed | unknown: REASON
#
# Changes nothing. Smart groups: "installed" and "leftovers" for the policy, "restart needed" for a restart, "unknown" for somebody
# who looks; only "nothing" is proof.
set -u
PATH=/usr/bin:/bin:/usr/sbin:/sbin
LC_ALL=C
export PATH LC_ALL
inspect=/Library/SentrelRemoval/sentrel-inspect
tab=$(printf '\t')

# result TEXT: as XML, in one line.
result() {
    printf '<result>%s</result>\n' "$(printf '%s' "$1" | tr -c '[:print:]' '?' | sed -e 's/&/\&amp;/g' -e 's/</\&lt;/g' -e 's/>/\&gt;/g')"
    exit 0
}

[ -x "$inspect" ] || result 'unknown: the kit is not on this Mac'
facts=$("$inspect" scan --plain 2>/dev/null)
status=$?
case $status:$(printf '%s\n' "$facts" | sed -n "s/^verdict$tab//p") in
    0:nothing) result nothing ;;
    3:installed) result "installed$(printf '%s\n' "$facts" | sed -n "s/^version$tab\\(.*\\)$tab\\(.*\\)\$/ \\1 (\\2)/p")" ;;
    4:leftovers) result leftovers ;;
    5:restart) result 'restart needed' ;;
    1:unknown) result "unknown: $(printf '%s\n' "$facts" | sed -n "s/^could-not-look$tab//p" | head -n 1)" ;;
    *) result "unknown: sentrel-inspect ended with status $status" ;;
esac
