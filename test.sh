#!/bin/sh
# Builds and runs every test. Arguments go to ctest (for example: ./test.sh -R cpu).
# VOSTEL_PRESET names another preset of CMakePresets.json: asan, tsan, ci.
set -u
root=$(cd "$(dirname "$0")" && pwd)
. "$root/scripts/common.sh"

preset=${VOSTEL_PRESET:-dev}
prepare BUILD RUN TEST
build "$preset"
say "testing build/$preset"
cd "$root" || exit 1
exec ctest --preset "$preset" "$@"
