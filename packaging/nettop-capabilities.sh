#!/bin/sh
# Gives the traffic helper the file capabilities with which it sees the processes of all users.
# Usage: nettop-capabilities [PATH-OF-vostel-nettop]     (as root, after installation)
# Installed, it lies beside the helper and finds it by itself. To take them back: setcap -r PATH.
#
# cap_dac_read_search  list the descriptors of other users' processes, read the tracing folder
# cap_sys_ptrace       see which sockets these descriptors are
# cap_perfmon          tell whose a connection was that came and went between two readings
#
# The first two are needed together: with one of them alone it sees as much as with none. Not given:
# cap_sys_admin, with which it would also read the networks of containers; it is too wide for that.
# Without any capability the helper shows the user's own processes, and says so.
set -eu
helper=${1:-$(dirname "$0")/vostel-nettop}
[ -f "$helper" ] || { echo "nettop-capabilities: $helper is not there" >&2; exit 1; }
chown root:root "$helper"
chmod 0755 "$helper"
# Kernels before 5.8 have no cap_perfmon.
setcap cap_dac_read_search,cap_sys_ptrace,cap_perfmon+ep "$helper" 2>/dev/null ||
    setcap cap_dac_read_search,cap_sys_ptrace+ep "$helper"
