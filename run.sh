#!/bin/sh
# Installs what is missing, builds a release and starts Vostel. Arguments go to the program.
set -u
root=$(cd "$(dirname "$0")" && pwd)
. "$root/scripts/common.sh"

prepare BUILD RUN
build release
say "starting Vostel"
exec "$root/build/release/src/app/vostel" "$@"
