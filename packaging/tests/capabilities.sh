#!/bin/bash
# nettop-capabilities and the package's scripts that keep its choice, on a copy of the helper: what is given,
# to whom, and what is refused. Every line that is printed is a fault, but for the last; status 1 if any.
# Changing owners and capabilities needs root (and libcap2-bin); anybody else checks what is refused.
# Usage: capabilities.sh VOSTEL-NETTOP PACKAGING-FOLDER
nettop=$1 packaging=$2
checks=0 faults=0
check() { checks=$((checks + 1)); "${@:2}" || { echo "$1"; faults=$((faults + 1)); }; }
work=$(mktemp -d /tmp/vostel-capabilities.XXXXXX)  # where every user gets to
trap 'rm -rf "$work"' EXIT
chmod 755 "$work"
folder=$work/usr/libexec/vostel
helper=$folder/vostel-nettop
mkdir -p "$folder"
cp "$packaging/nettop-capabilities.sh" "$folder/nettop-capabilities"
fresh() { rm -f "$helper" && cp "$nettop" "$helper" && chmod 755 "$helper"; }
state() { stat -c '%U:%G %a' "$helper"; getcap "$helper" | sed 's/.*vostel-nettop[ =]*//'; }
not() { ! "$@"; }
give() { "$folder/nettop-capabilities" "$@"; }

# refuses WORDS OPTION...: it fails with these words and leaves the helper as it is.
refuses() {
    local before said status
    before=$(state)
    said=$(give "${@:2}" 2>&1)
    status=$?
    check "$* succeeds" test $status != 0
    check "$* says '$said'" test "$said" != "${said#nettop-capabilities: *"$1"}"
    check "$* changes the helper" test "$(state)" = "$before"
}
fresh || exit 2
refuses "no group 'no-such-group'" --group=no-such-group
refuses "no group ''" --group=
refuses "no group '--help'" --group=--help
refuses 'not a number' --group=0
refuses 'unknown option' --groups=root
refuses 'is not there' "$work/nothing"
refuses 'unexpected' --off "$helper" more

if [ "$(id -u)" != 0 ]; then
    echo "$checks checks, $faults faults; giving and keeping capabilities is checked as root"
    [ "$faults" = 0 ]
    exit
fi

group=daemon stranger=65534 # a group that every system has, and nobody, who is not in it
member=$(getent group $group | cut -d : -f 3)
all='cap_dac_read_search,cap_sys_ptrace'
open_to_all() { [[ "$(state)" == "root:root 755"*"$all"* ]]; }
for_group() { [[ "$(state)" == "root:$group 750"*"$all"* ]]; }
plain() { [ "$(state)" = "$(printf 'root:root 755\n')" ]; }
# By way of a shell: setpriv itself still has root's rights when it starts its program.
runs_as() { setpriv --reuid=$stranger --regid="$1" --clear-groups \
    sh -c "$helper --version" >/dev/null 2>&1; }

give
check "no options: $(state)" open_to_all
give --group=$group
check "--group: $(state)" for_group
check "a member of the group cannot run it" runs_as "$member"
check "everybody can run it" not runs_as $stranger

# An upgrade: a new file takes the old one's place between the two scripts.
upgrade() {
    DPKG_ROOT=$work sh -e "$packaging/debian/preinst" upgrade 0.1
    fresh
    DPKG_ROOT=$work sh -e "$packaging/debian/postinst" configure 0.1
    check "an upgrade leaves its note" test ! -e "$work/var/lib/vostel"
}
upgrade
check "an upgrade, for a group: $(state)" for_group
give
upgrade
check "an upgrade, for all: $(state)" open_to_all
give --group=$group
give --off
check "--off: $(state)" plain
upgrade
check "an upgrade, unasked: $(state)" plain

# The group is gone: nobody gets them, rather than everybody.
mkdir -p "$work/var/lib/vostel"
echo no-such-group >"$work/var/lib/vostel/nettop-capabilities"
DPKG_ROOT=$work sh -e "$packaging/debian/postinst" configure 0.1 2>/dev/null
check "postinst fails without its group" test $? = 0
check "without its group: $(state)" plain

echo "$checks checks, $faults faults"
[ "$faults" = 0 ]
