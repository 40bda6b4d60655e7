#!/bin/sh
# Builds every fuzz target and runs each on its corpus; fails when one finds something. Needs clang-19.
#
#   scripts/check-fuzz.sh [SECONDS]     how long each runs; 10 by default
set -eu
root=$(cd "$(dirname "$0")/.." && pwd)
. "$root/scripts/common.sh"
seconds=${1:-10}
command -v clang++-19 >/dev/null 2>&1 || fail "clang++-19 is not installed: nothing is fuzzed"
build fuzz fuzz_targets
cd "$root/build/fuzz/fuzz"
targets=$(find . -maxdepth 1 -type f -name '*_fuzz' | sed 's|^\./||' | sort)
[ "$targets" = "$(cd "$root/fuzz/corpus" && find . -mindepth 1 -maxdepth 1 | sed 's|^\./||' | sort)" ] ||
    fail "fuzz/corpus does not hold one folder for each of: $(echo $targets)"
for target in $targets; do
    # What is new goes to the first folder.
    mkdir -p "found/$target"
    if ! ./"$target" -max_total_time="$seconds" -timeout=10 -print_final_stats=1 -artifact_prefix="found/$target-" \
        "found/$target" "$root/fuzz/corpus/$target" >"$target.log" 2>&1; then
        tail -n 40 "$target.log" >&2
        fail "$target found something; the input is build/fuzz/fuzz/found/$target-*"
    fi
    runs=$(sed -n 's/^stat::number_of_executed_units: *//p' "$target.log")
    [ "${runs:-0}" -gt 0 ] || fail "$target ran nothing"
    say "$target: $runs inputs"
done
