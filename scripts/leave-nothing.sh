#!/bin/sh
# Runs one test in folders of its own and fails when it leaves a process or a file behind. ctest starts every
# test through it (cmake/Vostel.cmake).
#
#   scripts/leave-nothing.sh PROGRAM [ARGUMENT...]
#
# Status: the program's own when that is not 0, else 1 when something was left, else 0.
set -u
folder=$(mktemp -d "${TMPDIR:-/tmp}/vostel-test.XXXXXX") || exit 1
trap 'rm -rf "$folder"' EXIT
trap 'exit 143' INT TERM HUP
mkdir -m 700 "$folder/tmp" "$folder/runtime" "$folder/home"

# Every process that the test starts inherits this.
tag=VOSTEL_TEST_FOLDER=$folder
left_running() { grep -lzxF "$tag" /proc/[0-9]*/environ 2>/dev/null | sed 's|/environ||'; }

env "$tag" TMPDIR="$folder/tmp" XDG_RUNTIME_DIR="$folder/runtime" HOME="$folder/home" "$@"
status=$?

# What was sent a signal has a moment to go.
tries=20
while [ -n "$(left_running)" ] && [ $tries -gt 0 ]; do
    sleep 0.1
    tries=$((tries - 1))
done
fault=0
for process in $(left_running); do
    echo "left running: $(tr '\0' ' ' <"$process/cmdline")(process ${process#/proc/})" >&2
    kill -KILL "${process#/proc/}" 2>/dev/null
    fault=1
done
# Caches in the home folder are what a first start always makes.
for place in tmp runtime; do
    left=$(cd "$folder/$place" && find . -mindepth 1 | head -n 20)
    if [ -n "$left" ]; then
        echo "left in the $place folder:" >&2
        echo "$left" >&2
        fault=1
    fi
done
[ $status -eq 0 ] || exit $status
exit $fault
