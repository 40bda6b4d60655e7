#!/bin/sh
# Makes the pictures of README anew in docs/images: real desktop programs under a moderate load, in process,
# mount and network namespaces of their own, so that nothing else of this machine is in the picture. All values
# are what the program measured.
#
#   sudo scripts/render-images.sh [PROGRAM]
#
# PROGRAM is build/release/src/app/vostel by default. Best on an otherwise idle machine. Takes two minutes.
# Needs: root, iproute2, python3, Xvfb, openbox, dbus-run-session, chromium, curl, mousepad,
# gnome-calculator, gnome-system-monitor, adwaita-icon-theme, hicolor-icon-theme.
set -eu
root=$(cd "$(dirname "$0")/.." && pwd)
if [ "${1:-}" != --inside ]; then
    program=$(realpath "${1:-$root/build/release/src/app/vostel}")
    for tool in ip python3 Xvfb openbox dbus-run-session chromium curl mousepad gnome-calculator; do
        command -v $tool >/dev/null 2>&1 || { echo "render-images: $tool is not installed" >&2; exit 1; }
    done
    # The machine and the web server at the other end of its network.
    trap 'ip netns delete vostel-here; ip netns delete vostel-there; kill $server' EXIT
    trap 'exit 1' INT TERM
    ip netns add vostel-here
    ip netns add vostel-there
    ip -n vostel-here link add eth0 type veth peer name eth0 netns vostel-there
    ip -n vostel-here link set lo up
    for side in here:20 there:1; do
        ip -n "vostel-${side%:*}" address add "192.168.1.${side#*:}/24" dev eth0
        ip -n "vostel-${side%:*}" link set eth0 up
    done
    ip netns exec vostel-there python3 "$root/scripts/render-images-server.py" 2>/dev/null &
    server=$!
    ip netns exec vostel-here unshare --mount --pid --ipc --fork --kill-child --mount-proc \
        dbus-run-session -- sh "$0" --inside "$program"
    exit
fi
program=$2

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
trap 'exit 1' INT TERM
# /tmp/.X11-unix of the machine is in use.
mount -t tmpfs tmpfs /tmp
mkdir -p "$work/home/.config/vostel" "$work/runtime"
chmod 700 "$work/runtime"
export HOME="$work/home" XDG_RUNTIME_DIR="$work/runtime" XDG_CONFIG_HOME="$work/home/.config" NO_AT_BRIDGE=1 \
    XDG_CURRENT_DESKTOP=GNOME

export DISPLAY=:7
Xvfb :7 -screen 0 1600x900x24 -nolisten tcp >/dev/null 2>&1 &
sleep 1
openbox >/dev/null 2>&1 &
chromium --no-sandbox --disable-gpu --no-first-run --disable-background-networking --disable-component-update \
    --disable-sync --user-data-dir="$work/chromium" "http://192.168.1.1/page?rate=900000" >/dev/null 2>&1 &
curl -so /dev/null "http://192.168.1.1/down?rate=350000" &
mousepad >/dev/null 2>&1 &
gnome-calculator >/dev/null 2>&1 &
gnome-system-monitor >/dev/null 2>&1 &
sleep 12

# The address of the machine on the internet is nobody's business.
cat >"$XDG_CONFIG_HOME/vostel/com.vostel.app.plist" <<EOF
<?xml version="1.0" encoding="UTF-8"?>
<plist version="1.0"><dict><key>net.lookUpWAN</key><false/></dict></plist>
EOF
QT_QPA_PLATFORM=offscreen "$program" --bar=offscreen >/dev/null 2>&1 &  # the first run seeds the settings
first=$!
sleep 3
kill $first
wait $first || true
"$program" snapshot --out="$work/out" --scale=2 --appearance=dark --after=75 >/dev/null
for pair in bar-dark:bar network-popover-dark:network cpu-popover-dark:cpu memory-popover-dark:memory \
    settings-cpu-dark:settings; do
    cp "$work/out/${pair%%:*}.png" "$root/docs/images/${pair##*:}.png"
    echo "docs/images/${pair##*:}.png"
done
