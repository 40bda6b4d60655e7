#!/bin/sh
# Prints what assistive technology is told of the bar and of every page of the settings window, under
# a virtual X server, and fails when a control has no name.
#
#   scripts/see-accessibility.sh [PROGRAM]      default: build/dev/src/app/vostel
#
# Needs: xvfb openbox dbus at-spi2-core python3-pyatspi
set -eu
here=$(cd "$(dirname "$0")" && pwd)
program=${1:-$here/../build/dev/src/app/vostel}
if [ -z "${SEE_ACCESSIBILITY_BUS:-}" ]; then
    SEE_ACCESSIBILITY_BUS=1 exec dbus-run-session -- sh "$0" "$program" 2>&1
fi

work=$(mktemp -d)
started=
# shellcheck disable=SC2086  # a list of process ids
trap 'kill $started 2>/dev/null || true; rm -rf "$work"' EXIT
trap 'exit 1' INT TERM
mkdir -m 700 "$work/runtime" "$work/config"
export XDG_RUNTIME_DIR="$work/runtime" XDG_CONFIG_HOME="$work/config" HOME="$work"
export QT_LINUX_ACCESSIBILITY_ALWAYS_ON=1

Xvfb -displayfd 3 -screen 0 1280x1000x24 3>"$work/display" 2>/dev/null &
started="$started $!"
while [ ! -s "$work/display" ]; do sleep 0.1; done
DISPLAY=:$(cat "$work/display")
export DISPLAY
openbox >/dev/null 2>&1 &
started="$started $!"
for launcher in /usr/libexec/at-spi-bus-launcher /usr/lib/at-spi2-core/at-spi-bus-launcher; do
    [ -x "$launcher" ] && "$launcher" --launch-immediately >/dev/null 2>&1 &
    started="$started $!"
done
sleep 1
# A first run opens the settings window.
"$program" --bar=dock >"$work/log" 2>&1 &
started="$started $!"
sleep 2
# Debian's bindings belong to the system's own interpreter.
python=/usr/bin/python3
[ -x "$python" ] || python=python3
"$python" "$here/accessible-tree.py"
