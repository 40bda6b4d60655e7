#!/bin/sh
# Installs what is missing, builds everything and runs the tests.
#
#   ./test.sh [ARGUMENT...]    the arguments go to ctest, for example: ./test.sh -R cpu
#   ./test.sh --help           this text; builds nothing
#
# VOSTEL_PRESET=NAME  another preset of CMakePresets.json than dev: asan, tsan, ci
# VOSTEL_INSTALL=no   installs nothing
set -u
root=$(cd "$(dirname "$0")" && pwd)
. "$root/scripts/common.sh"

case "${1:-}" in
    -h | --help)
        show_help "$0"
        exit 0 ;;
esac
preset=${VOSTEL_PRESET:-dev}
prepare BUILD RUN TEST
build "$preset"
say "testing build/$preset"
cd "$root" || exit 1
exec ctest --preset "$preset" "$@"
