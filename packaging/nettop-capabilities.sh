#!/bin/sh
# Gives the traffic helper the file capabilities with which it sees the processes of all users.
# Usage: nettop-capabilities [--group=NAME | --off] [PATH-OF-vostel-nettop]    (as root, after installation)
# Installed, it lies beside the helper and finds it by itself.
#
# --group=NAME  only members of the group may run the helper; without it every user may
# --off         takes capabilities and group back
#
# cap_dac_read_search  list the descriptors of other users' processes, read the tracing folder
# cap_sys_ptrace       see which sockets these descriptors are
# cap_perfmon          tell whose a connection was that came and went between two readings
#
# The first two are needed together: with one of them alone it sees as much as with none. Not given:
# cap_sys_admin, with which it would also read the networks of containers; it is too wide for that.
# Without any capability the helper shows the user's own processes, and says so.
set -eu
fail() { echo "nettop-capabilities: $*" >&2; exit 1; }
group=root mode=0755 off=
case "${1-}" in
    --group=*)
        group=${1#--group=} mode=0750
        # A number would be taken for an id, whether or not there is such a group.
        case "$group" in '' | *[!0-9]*) ;; *) fail "--group takes a name, not a number" ;; esac
        getent group -- "$group" >/dev/null || fail "there is no group '$group'"
        shift ;;
    --off) off=yes; shift ;;
    -*) fail "unknown option $1 (known: --group=NAME, --off)" ;;
esac
[ $# -le 1 ] || fail "unexpected: $2"
helper=${1:-$(dirname "$0")/vostel-nettop}
[ -f "$helper" ] || fail "$helper is not there"
PATH=$PATH:/usr/sbin:/sbin
command -v setcap >/dev/null || fail "setcap is missing (Debian: libcap2-bin)"

# Without capabilities while owner and mode change: nobody else gets to run it with them meanwhile.
[ -z "$(getcap "$helper")" ] || setcap -r "$helper"
chown "root:$group" "$helper"
chmod "$mode" "$helper"
[ -z "$off" ] || exit 0
# Kernels before 5.8 have no cap_perfmon.
setcap cap_dac_read_search,cap_sys_ptrace,cap_perfmon+ep "$helper" 2>/dev/null ||
    setcap cap_dac_read_search,cap_sys_ptrace+ep "$helper"
