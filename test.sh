#!/bin/sh
# Installs what is missing, builds everything and runs the tests.
#
#   ./test.sh [ARGUMENT...]    the arguments go to ctest, for example: ./test.sh -R cpu
#   ./test.sh --help           this text; builds nothing
#
# VOSTEL_PRESET=NAME  another preset of CMakePresets.json than dev: asan, tsan, ci
# VOSTEL_TARGET=NAME  builds only this
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
also=CI
[ "$preset" != dev ] || also=
prepare BUILD RUN TEST $also
build "$preset" "${VOSTEL_TARGET:-}"
say "testing build/$preset"
cd "$root" || exit 1
if [ "$(id -u)" = 0 ]; then
    exec ctest --preset "$preset" "$@"
fi
ctest --preset "$preset" -LE root "$@"
status=$?
number=$(ctest --preset "$preset" -N -L root | sed -n 's/^Total Tests: //p')
say "$number tests need root and did not run; to run them: sudo ctest --test-dir build/$preset -L root"
exit $status
