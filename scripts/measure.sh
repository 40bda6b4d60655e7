#!/bin/sh
# Measures what the program costs on the dock bar, in a settings folder and on a display of its own.
#
#   scripts/measure.sh [-s SECONDS] [-m MODULES] [-t TICK] [PROGRAM]
#
#   -s SECONDS  how long each run lasts; 60 by default
#   -m MODULES  runs only with these modules on, for example "cpu memory"; by default two runs: "cpu",
#               and "all" (every module the program knows)
#   -t TICK     soak: every interval is TICK seconds, and a line is printed every tenth of the time
#   PROGRAM     build/release/src/app/vostel by default
#
# Prints processor time (user and system, children too) in percent of one core, PSS, wake-ups a
# second (voluntary context switches of all threads), descriptors, threads, and the time from the
# start to the first image on the screen. The first 5 s do not count, but for the first image.
# PSS shares what other programs use, too (an X server's or another Qt program's libraries), among
# them; RSS, also printed, is what it would be if nothing were shared.
# Needs: Xvfb, openbox, xdotool, xprop.
set -eu
root=$(cd "$(dirname "$0")/.." && pwd)
warm_up=5
seconds=60 sets='cpu|all' tick=
while getopts s:m:t: option; do
    case $option in
        s) seconds=$OPTARG ;;
        m) sets=$OPTARG ;;
        t) tick=$OPTARG ;;
        *) sed -n '2,/^set/s/^# \{0,1\}//p' "$0" | sed '$d' >&2; exit 2 ;;
    esac
done
shift $((OPTIND - 1))
program=${1:-$root/build/release/src/app/vostel}
[ -x "$program" ] || { echo "measure: no program $program; build it with ./run.sh" >&2; exit 1; }

work=$(mktemp -d)
started=
trap 'kill $started 2>/dev/null || true; rm -rf "$work"' EXIT
trap 'exit 1' INT TERM
mkdir -m 700 "$work/runtime"
Xvfb -displayfd 3 -screen 0 1280x800x24 -noreset -nolisten tcp 3>"$work/display" 2>/dev/null &
started=$!
until [ -s "$work/display" ]; do sleep 0.05; done
DISPLAY=:$(cat "$work/display")
XDG_CONFIG_HOME=$work/config XDG_RUNTIME_DIR=$work/runtime
export DISPLAY XDG_CONFIG_HOME XDG_RUNTIME_DIR
unset WAYLAND_DISPLAY DBUS_SESSION_BUS_ADDRESS QT_QPA_PLATFORM 2>/dev/null || true
openbox --sm-disable >/dev/null 2>&1 &
started="$started $!"
until xprop -root _NET_SUPPORTING_WM_CHECK 2>/dev/null | grep -q 'window id'; do sleep 0.05; done

modules=$("$program" snapshot --out=/ --module=? 2>&1 | sed -n 's/.*(known: \(.*\)).*/\1/p' | tr -d ,)
[ -n "$modules" ] || { echo "measure: the program does not name its modules" >&2; exit 1; }

# Keys beside these come from the first run.
write_settings() {
    mkdir -p "$XDG_CONFIG_HOME/vostel"
    {
        echo '<plist version="1.0"><dict>'
        for id in $modules; do
            case " $1 " in *" $id "* | " all ") on=true ;; *) on=false ;; esac
            echo "<key>module.$id.enabled</key><$on/>"
            if [ -n "$tick" ]; then
                for key in interval updateInterval; do
                    for prefix in "$id" "$(printf %.3s "$id")"; do
                        echo "<key>$prefix.$key</key><real>$tick</real>"
                    done
                done
            fi
        done
        echo '</dict></plist>'
    } >"$XDG_CONFIG_HOME/vostel/com.vostel.app.plist"
}

ticks_used() { sed 's/.*) //' "/proc/$1/stat" | awk '{ print $12 + $13 + $14 + $15 }'; }
wakeups() { cat /proc/"$1"/task/*/status | awk '/^voluntary/ { n += $2 } END { print n }'; }
memory() { awk -v name="^$2:" '$0 ~ name { printf "%.1f", $2 / 1024 }' "/proc/$1/smaps_rollup"; }
descriptors() { ls "/proc/$1/fd" | wc -l; }
threads() { ls "/proc/$1/task" | wc -l; }
now() { date +%s%N; }

run() {
    write_settings "$1"
    # The first run, which seeds and greets, is not what is measured.
    timeout -s TERM 3 "$program" --bar=offscreen >/dev/null 2>&1 || true
    begun=$(now)
    "$program" --bar=dock >"$work/log" 2>&1 &
    pid=$!
    started="$started $pid"
    # The window is mapped with its first picture on it.
    until xdotool search --onlyvisible --class vostel >/dev/null 2>&1; do
        kill -0 $pid 2>/dev/null || { cat "$work/log" >&2; exit 1; }
    done
    shown=$((($(now) - begun) / 1000000))
    sleep "$warm_up"
    used=$(ticks_used $pid) woken=$(wakeups $pid) begun=$(now)
    part=$seconds
    [ -z "$tick" ] || part=$((seconds / 10))
    passed=0
    while [ $passed -lt "$seconds" ]; do
        sleep "$part"
        passed=$((passed + part))
        elapsed=$((($(now) - begun) / 1000000))
        printf '%s after %s s: %s %% of a core, PSS %s MB (RSS %s), %s wake-ups/s, %s descriptors, %s threads, first image %s ms\n' \
            "$1" "$passed" \
            "$(awk -v t=$(($(ticks_used $pid) - used)) -v ms=$elapsed -v hz="$(getconf CLK_TCK)" \
                'BEGIN { printf "%.2f", t / hz / ms * 1e5 }')" \
            "$(memory $pid Pss)" "$(memory $pid Rss)" \
            "$(awk -v n=$(($(wakeups $pid) - woken)) -v ms=$elapsed 'BEGIN { printf "%.1f", n / ms * 1000 }')" \
            "$(descriptors $pid)" "$(threads $pid)" "$shown"
    done
    kill $pid
    wait $pid || { echo "measure: the program did not end cleanly" >&2; cat "$work/log" >&2; exit 1; }
}

IFS_before=$IFS
IFS='|'
set -- $sets
IFS=$IFS_before
for set in "$@"; do
    run "$set"
done
