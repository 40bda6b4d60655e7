#!/bin/sh
# Shows a program's tray items in a real host, without a display, and takes screenshots of it: one
# of the running host, and one after the host was killed and started again.
#
#   scripts/see-tray.sh waybar|xfce FOLDER [PROGRAM [ARGUMENT...]]
#
#   waybar  Waybar under headless sway             needs: sway waybar grim
#   xfce    Xfce's panel under a virtual X server  needs: xfce4-panel xfconf xvfb imagemagick
#   FOLDER  gets HOST.png, HOST-again.png and the logs of all who took part
#   PROGRAM default: build/dev/src/statusbar/tray_demo
#
# SEE_TRAY_SECONDS  time that the program gets before each picture; 4 by default
# SEE_TRAY_LATE     when set, the program is started first and the host SECONDS later, with one more
#                   picture before that
# SEE_TRAY_XWAYLAND when set, the program finds an X server, too, in the Wayland session
# SEE_TRAY_USER     when run by root, who runs it all, because sway does not run as root; nobody by
#                   default
# Everything runs on a message bus, a home and a runtime folder of its own, and ends with the script.
set -eu

usage() { sed -n '2,/^set/s/^# \{0,1\}//p' "$0" | sed '$d' >&2; exit 2; }
fail() { echo "see-tray: $*" >&2; exit 1; }

seconds=${SEE_TRAY_SECONDS:-4}
started=

# Waits up to 15 s for a command to succeed.
wait_for() {
    tries=75
    until "$@" >/dev/null 2>&1; do
        tries=$((tries - 1))
        [ $tries -gt 0 ] || fail "gave up waiting for: $*"
        sleep 0.2
    done
}

items() {
    dbus-send --session --print-reply --dest=org.kde.StatusNotifierWatcher /StatusNotifierWatcher \
        org.freedesktop.DBus.Properties.Get string:org.kde.StatusNotifierWatcher \
        string:RegisteredStatusNotifierItems
}
has_items() { items | grep -q 'string "..'; }

start_display_waybar() {
    cat >"$work/sway.conf" <<'EOF'
output HEADLESS-1 resolution 800x300
output * background #303030 solid_color
EOF
    cat >"$work/waybar.json" <<'EOF'
{ "layer": "top", "position": "top", "height": 30, "modules-left": ["clock"],
  "modules-right": ["tray"], "tray": { "icon-size": 22, "spacing": 8 } }
EOF
    echo '* { font-size: 13px; } window#waybar { background: #202020; color: #ffffff; }' \
        >"$work/waybar.css"
    export WLR_BACKENDS=headless WLR_LIBINPUT_NO_DEVICES=1 WLR_RENDERER=pixman
    sway -c "$work/sway.conf" >"$out/sway.log" 2>&1 &
    started="$started $!"
    wait_for ls "$XDG_RUNTIME_DIR"/wayland-1
    export WAYLAND_DISPLAY=wayland-1
    unset DISPLAY || true
    if [ -n "${SEE_TRAY_XWAYLAND:-}" ]; then
        SWAYSOCK=$(ls "$XDG_RUNTIME_DIR"/sway-ipc.*)
        export SWAYSOCK
        swaymsg exec "echo \$DISPLAY >$work/display"
        wait_for test -s "$work/display"
        DISPLAY=$(cat "$work/display")
        export DISPLAY
    else
        export QT_QPA_PLATFORM="${QT_QPA_PLATFORM:-wayland;offscreen}"
    fi
}
start_host_waybar() { waybar -c "$work/waybar.json" -s "$work/waybar.css" >>"$out/host.log" 2>&1 & }
picture_waybar() { grim "$1"; }

start_display_xfce() {
    channels=$HOME/.config/xfce4/xfconf/xfce-perchannel-xml
    mkdir -p "$channels"
    cat >"$channels/xfce4-panel.xml" <<'EOF'
<?xml version="1.0" encoding="UTF-8"?>
<channel name="xfce4-panel" version="1.0">
  <property name="configver" type="int" value="2"/>
  <property name="panels" type="array">
    <value type="int" value="1"/>
    <property name="dark-mode" type="bool" value="true"/>
    <property name="panel-1" type="empty">
      <property name="position" type="string" value="p=6;x=0;y=0"/>
      <property name="length" type="uint" value="100"/>
      <property name="position-locked" type="bool" value="true"/>
      <property name="size" type="uint" value="30"/>
      <property name="plugin-ids" type="array">
        <value type="int" value="1"/>
        <value type="int" value="2"/>
      </property>
    </property>
  </property>
  <property name="plugins" type="empty">
    <property name="plugin-1" type="string" value="clock"/>
    <property name="plugin-2" type="string" value="systray">
      <property name="icon-size" type="int" value="22"/>
      <property name="square-icons" type="bool" value="true"/>
    </property>
  </property>
</channel>
EOF
    Xvfb -displayfd 3 -screen 0 800x300x24 -nolisten tcp 3>"$work/display" 2>"$out/xvfb.log" &
    started="$started $!"
    wait_for test -s "$work/display"
    DISPLAY=:$(cat "$work/display")
    export DISPLAY
    export QT_QPA_PLATFORM="${QT_QPA_PLATFORM:-xcb;offscreen}"
}
start_host_xfce() { xfce4-panel --disable-wm-check >>"$out/host.log" 2>&1 & }
picture_xfce() { import -window root "$1"; }

inside() {
    host=$1 out=$2 work=$3
    shift 3
    trap 'kill $started 2>/dev/null || true' EXIT
    trap 'exit 1' INT TERM
    "start_display_$host"
    if [ -n "${SEE_TRAY_LATE:-}" ]; then
        "$@" >"$out/program.log" 2>&1 &
        started="$! $started"
        sleep "$seconds"
        "picture_$host" "$out/$host-before.png"
    fi
    "start_host_$host"
    host_id=$!
    if [ -z "${SEE_TRAY_LATE:-}" ]; then
        "$@" >"$out/program.log" 2>&1 &
        started="$! $started"
    fi
    wait_for has_items
    sleep "$seconds"
    items >"$out/items.txt"
    "picture_$host" "$out/$host.png"
    kill -9 $host_id
    sleep 1
    "start_host_$host"
    started="$! $started"
    wait_for has_items
    sleep "$seconds"
    "picture_$host" "$out/$host-again.png"
}

if [ "${1:-}" = --inside ]; then
    shift
    inside "$@"
    exit
fi

[ $# -ge 2 ] || usage
host=$1
case $host in
waybar) tools="sway waybar grim" ;;
xfce) tools="Xvfb xfce4-panel import" ;;
*) usage ;;
esac
for tool in $tools dbus-run-session dbus-send; do
    command -v "$tool" >/dev/null || fail "$tool is not installed"
done
mkdir -p "$2"
final=$(cd "$2" && pwd)
shift 2
here=$(cd "$(dirname "$0")" && pwd)
[ $# -gt 0 ] || set -- "$here/../build/dev/src/statusbar/tray_demo"

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
trap 'exit 1' INT TERM
mkdir -m 700 "$work/runtime" "$work/home" "$work/out"
as=
if [ "$(id -u)" = 0 ]; then
    user=${SEE_TRAY_USER:-nobody}
    chown -R "$user" "$work"
    as="runuser -u $user --"
fi
status=0
$as env -u WAYLAND_DISPLAY -u DISPLAY -u DBUS_SESSION_BUS_ADDRESS \
    HOME="$work/home" XDG_CONFIG_HOME="$work/home/.config" XDG_RUNTIME_DIR="$work/runtime" \
    XDG_DATA_HOME="$work/home/.local/share" SEE_TRAY_SECONDS="$seconds" \
    dbus-run-session -- sh "$here/see-tray.sh" --inside "$host" "$work/out" "$work" "$@" || status=$?
cp "$work"/out/* "$final"/
exit $status
