#!/bin/bash
# Checks a Debian package: lintian, contents, installing, running as an ordinary user, the helper's
# capabilities over an upgrade, purging, and that nothing is left then. Builds nothing.
# Usage: check-package.sh vostel_*.deb       as root, on a machine where Vostel is not installed.
# PICTURE=FILE keeps a picture of the screen with the settings window (needs import, of ImageMagick).
# What the package depends on is installed, too, and stays. Prints what failed; status 1 if anything did.
set -u
package=$(realpath -- "${1:?usage: check-package.sh PACKAGE.deb}")
[ -f "$package" ] || { echo "no such file: $package" >&2; exit 2; }
[ "$(id -u)" = 0 ] || { echo "installing needs root" >&2; exit 2; }
if dpkg-query -s vostel 2>/dev/null | grep -q '^Status: install'; then
    echo "vostel is installed here, and this check would remove it: purge it first" >&2
    exit 2
fi

missing=
for need in lintian:lintian desktop-file-validate:desktop-file-utils appstreamcli:appstream man:man-db zsh:zsh \
    fish:fish Xvfb:xvfb xdotool:xdotool xprop:x11-utils dbus-daemon:dbus setcap:libcap2-bin readelf:binutils \
    setpriv:util-linux; do
    command -v "${need%%:*}" >/dev/null || missing="$missing ${need#*:}"
done
[ -z "$missing" ] || { echo "this check needs:$missing" >&2; exit 2; }

user=65534 # nobody
nettop=/usr/libexec/vostel/vostel-nettop
work=$(mktemp -d)
started=
cleanup() {
    # shellcheck disable=SC2086
    [ -z "$started" ] || kill $started 2>/dev/null
    rm -rf "$work"
}
trap cleanup EXIT

failures=0
step() { echo "== $*"; }
failed() { echo "FAILED: $*"; failures=$((failures + 1)); }
expect() { "${@:2}" || failed "$1"; }
has() { grep -qE -- "$2" <<<"$1"; }
# Up to ten seconds.
until_true() { for _ in $(seq 100); do "$@" && return 0; sleep 0.1; done; return 1; }

mkdir -p "$work/home" "$work/runtime"
chmod 755 "$work"
chmod 700 "$work/runtime"
chown "$user" "$work/home" "$work/runtime"
variables=(HOME="$work/home" XDG_RUNTIME_DIR="$work/runtime" PATH="$PATH" LC_ALL=C.UTF-8)
# Replaces the shell that calls it, so that a background process is the program itself.
become_user() { cd / && exec setpriv --reuid=$user --regid=$user --clear-groups env -i "${variables[@]}" "$@"; }
as_user() { (become_user "$@"); }
start() { become_user "$@" & started="$started $!"; }

# What packages and services write to; contents of caches and logs are others' affair.
all_files() {
    find /bin /etc /lib /opt /sbin /srv /usr /var -xdev \( -path /var/cache -o -path /var/log \
        -o -path /var/tmp -o -path /var/lib/apt \) -prune -o -print 2>/dev/null | sort
}

# snapshot_uses PROGRAM HELPER: the pictures are made, with numbers from that very helper.
snapshot_uses() {
    local folder=$work/home/pictures child found=
    rm -rf "$folder"
    as_user mkdir "$folder"
    become_user "$1" snapshot --out="$folder" >"$work/pictures" 2>&1 &
    local running=$!
    while kill -0 $running 2>/dev/null; do
        for child in $(cat /proc/$running/task/*/children 2>/dev/null); do
            [ "$(readlink "/proc/$child/exe")" = "$2" ] && found=yes
        done
        sleep 0.1
    done
    wait $running || failed "snapshot ends with status $?"
    expect "snapshot of $1 does not start $2" test -n "$found"
    expect "snapshot writes no network popover" test -s "$folder/network-popover-dark.png"
    expect "snapshot writes no settings page" test -s "$folder/settings-general-light.png"
}

step lintian
lintian --allow-root --fail-on error "$package" || failed "lintian finds errors"

step contents
dpkg-deb -x "$package" "$work/unpacked"
for program in usr/bin/vostel usr/libexec/vostel/vostel-nettop; do
    expect "$program has a run path" test -z "$(readelf -d "$work/unpacked/$program" | grep -E 'R(UN)?PATH')"
    expect "$program is not stripped" test -z "$(readelf -SW "$work/unpacked/$program" | grep -F ' .symtab ')"
done
expect "set-user-id programs, or files that everybody may change" \
    test -z "$(find "$work/unpacked" ! -type l \( -perm /6000 -o -perm /022 \))"
expect "the checksums do not cover every file" test \
    "$(dpkg-deb --ctrl-tarfile "$package" | tar -xO ./md5sums | wc -l)" = "$(find "$work/unpacked" -type f | wc -l)"

step dependencies
apt-get satisfy -qq -y --no-install-recommends "$(dpkg-deb -f "$package" Depends)" >"$work/apt" 2>&1 ||
    { cat "$work/apt"; failed "what the package depends on cannot be installed"; exit 1; }
all_files >"$work/before"

step "not installed, at another place"
snapshot_uses "$work/unpacked/usr/bin/vostel" "$work/unpacked$nettop"

step install
apt-get install -qq -y --no-install-recommends "$package" >"$work/apt" 2>&1 ||
    { cat "$work/apt"; failed "apt-get install"; exit 1; }
expect "dpkg does not find all files as they were packed" test -z "$(dpkg --verify vostel)"

step "desktop file, icons, AppStream, man pages, completions"
desktop=/usr/share/applications/com.vostel.app.desktop
expect "the desktop file has faults" test -z "$(desktop-file-validate $desktop 2>&1)"
expect "Exec is not found" command -v "$(sed -n 's/^Exec=//p' $desktop)" >/dev/null
icon=$(sed -n 's/^Icon=//p' $desktop)
for size in 16 22 24 32 48 64 128 256 512; do
    file=/usr/share/icons/hicolor/${size}x$size/apps/$icon.png
    # Width and height stand at bytes 16 and 20 of a PNG file, big-endian.
    expect "$file has not that size" test "$(od -An -t u1 -j 16 -N 8 "$file" | xargs)" = \
        "0 0 $((size / 256)) $((size % 256)) 0 0 $((size / 256)) $((size % 256))"
done
expect "no scalable icon" test -f /usr/share/icons/hicolor/scalable/apps/$icon.svg
expect "no symbolic icon" test -f /usr/share/icons/hicolor/symbolic/apps/$icon-symbolic.svg
appstreamcli validate --no-net /usr/share/metainfo/com.vostel.app.metainfo.xml || failed "AppStream"
for page in vostel vostel-nettop; do
    expect "the man page $page has faults" test -z \
        "$(LC_ALL=C.UTF-8 man --warnings -Tutf8 -Z -l /usr/share/man/man1/$page.1.gz 2>&1 >/dev/null)"
    expect "man does not find $page" man -w $page >/dev/null
done
zsh -n /usr/share/zsh/vendor-completions/_vostel || failed "zsh completion"
expect "fish does not complete" has \
    "$(as_user fish -c 'complete -C "vostel snapshot --appearance "' 2>&1)" '^light'
expect "bash does not complete" has "$(bash --norc -c '
    . /usr/share/bash-completion/completions/vostel
    COMP_WORDS=(vostel --bar = d) COMP_CWORD=3 COMPREPLY=(); _vostel; echo "${COMPREPLY[@]}"')" '^dock$'

step "run as an ordinary user"
expect "another version than the package's" test \
    "$(as_user vostel --version)" = "vostel $(dpkg-deb -f "$package" Version)"
status=$(as_user vostel status --json)
for id in network cpu memory gpu; do
    expect "status says nothing about $id" has "$status" "\"$id\": *\\{"
done
snapshot_uses /usr/bin/vostel $nettop

step "run on a display"
exec 3> >(read -r number; echo "$number" >"$work/display")
start Xvfb -displayfd 3 -screen 0 1280x800x24 -nolisten tcp 2>/dev/null
exec 3>&-
until_true test -s "$work/display" || failed "Xvfb does not start"
start dbus-daemon --session --nofork --address="unix:path=$work/runtime/bus" 2>/dev/null
until_true test -S "$work/runtime/bus" || failed "dbus-daemon does not start"
variables+=(DISPLAY=":$(cat "$work/display")" DBUS_SESSION_BUS_ADDRESS="unix:path=$work/runtime/bus")
become_user vostel 2>"$work/errors" &
vostel=$!
started="$started $vostel"
of_vostel() { as_user xdotool search --onlyvisible --class "$@" 2>/dev/null; }
bar_is_there() { [ -n "$(of_vostel vostel)" ]; }
until_true bar_is_there || failed "no bar appears"
expect "the bar carries an icon" has \
    "$(as_user xprop -id "$(of_vostel vostel | head -n 1)" _NET_WM_ICON)" 'not found'
second=$(as_user vostel)
expect "a second start says '$second'" has "$second" 'its settings window opens'
settings() { as_user xdotool search --onlyvisible --name '^Vostel Settings$' 2>/dev/null; }
until_true settings >/dev/null || failed "no settings window appears"
window=$(settings | head -n 1)
class=$(sed -n 's/^StartupWMClass=//p' $desktop)
expect "the window's class is not that of the desktop file" has \
    "$(as_user xprop -id "$window" WM_CLASS)" "\"$class\""
expect "the window has no icon" has \
    "$(as_user xprop -id "$window" 32c '\n$0 x $1\n' _NET_WM_ICON)" '^_NET_WM_ICON\(CARDINAL\)|Icon \('
[ -z "${PICTURE:-}" ] || as_user import -window root png:- >"$PICTURE"
kill -TERM $vostel
wait $vostel || failed "SIGTERM ends it with status $?"
expect "it complains: $(cat "$work/errors")" test ! -s "$work/errors"

step "capabilities of the helper"
sight() { as_user $nettop -l 1 2>&1 | sed -n 's/^# sight=\([a-z]*\).*/\1/p'; }
reinstall() { dpkg -i "$package" >"$work/apt" 2>&1 || { cat "$work/apt"; failed "dpkg -i"; }; }
expect "the helper has capabilities unasked" test -z "$(getcap $nettop)"
expect "without capabilities it sees '$(sight)'" test "$(sight)" = own
/usr/libexec/vostel/nettop-capabilities || failed "nettop-capabilities"
given=$(getcap $nettop)
expect "no capabilities are set" test -n "$given"
expect "with capabilities it sees '$(sight)'" test "$(sight)" = all
reinstall
expect "an upgrade takes the capabilities away" test "$(getcap $nettop)" = "$given"
expect "the note about them stays" test ! -e /var/lib/vostel
group=daemon # every system has it, and nobody is not in it
/usr/libexec/vostel/nettop-capabilities --group=$group || failed "nettop-capabilities --group"
reinstall
expect "for a group, an upgrade leaves $(stat -c '%U:%G %a' $nettop)" test \
    "$(stat -c '%U:%G %a' $nettop) $(getcap $nettop)" = "root:$group 750 $given"
expect "somebody who is not in the group can run it" test -z "$(sight)"
/usr/libexec/vostel/nettop-capabilities --off || failed "nettop-capabilities --off"
reinstall
expect "an upgrade gives capabilities unasked" test -z "$(getcap $nettop)"
expect "--off leaves the helper to a group" test "$(sight)" = own

step "purge"
apt-get purge -qq -y vostel >"$work/apt" 2>&1 || { cat "$work/apt"; failed "apt-get purge"; }
all_files >"$work/after"
left=$(comm -13 "$work/before" "$work/after")
expect "left behind: $left" test -z "$left"
gone=$(comm -23 "$work/before" "$work/after")
expect "gone with it: $gone" test -z "$gone"
expect "processes are left" test -z "$(ls -l /proc/[0-9]*/exe 2>/dev/null | grep -E '/vostel(-nettop)?( \(deleted\))?$' | grep -E "/usr/(bin|libexec)|$work")"

echo "$failures failures"
[ "$failures" = 0 ]
