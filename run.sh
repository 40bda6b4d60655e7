#!/bin/sh
# Installs what is missing, builds a release and starts Vostel.
#
#   ./run.sh [ARGUMENT...]     the arguments go to the program, for example: ./run.sh status --json
#   ./run.sh --help            this text, and the program's own once it is built; builds nothing
#
# VOSTEL_INSTALL=no   installs nothing
set -u
root=$(cd "$(dirname "$0")" && pwd)
. "$root/scripts/common.sh"

program=$root/build/release/src/app/vostel
case "${1:-}" in
    -h | --help)
        show_help "$0"
        is_configured release && [ -x "$program" ] && exec "$program" --help
        exit 0 ;;
esac
prepare BUILD RUN
build release
say "starting Vostel"
exec "$program" "$@"
