#!/bin/sh
# Starts every benchmark of build/ci once, so that none of them is broken. It measures nothing.
set -eu
root=$(cd "$(dirname "$0")/.." && pwd)
. "$root/scripts/common.sh"
build ci benches
export QT_QPA_PLATFORM=offscreen
cd "$root/build/ci/bench"
benches=$(find . -maxdepth 1 -type f -name '*_bench' | sed 's|^\./||' | sort)
[ "$(echo "$benches" | grep -c .)" = "$(grep -c '^vostel_bench(' "$root/bench/CMakeLists.txt")" ] ||
    fail "not every benchmark was built; there are: $(echo $benches)"
for bench in $benches; do
    "$root/scripts/leave-nothing.sh" "./$bench" --benchmark_min_time=0.001 --benchmark_format=csv \
        >"$bench.log" 2>&1 || { tail -n 20 "$bench.log" >&2; fail "$bench fails"; }
    # A benchmark that gives up still ends with status 0.
    if grep -q 'ERROR OCCURRED\|,true,' "$bench.log" || ! grep -q '^".*",[0-9]' "$bench.log"; then
        tail -n 20 "$bench.log" >&2
        fail "$bench measures nothing"
    fi
    say "$bench: $(grep -c '^".*",[0-9]' "$bench.log") benchmarks"
done
