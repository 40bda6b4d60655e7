#!/bin/sh
# Builds and runs every test. Arguments go to ctest.
set -u
root=$(cd "$(dirname "$0")" && pwd)
. "$root/scripts/common.sh"

prepare BUILD RUN TEST
build "${VOSTEL_PRESET:-dev}"
say "testing"
exec ctest --test-dir "$root/build/${VOSTEL_PRESET:-dev}" --output-on-failure "$@"
