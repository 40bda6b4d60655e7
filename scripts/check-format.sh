#!/bin/sh
# Fails with the files that clang-format would change, and when it is not installed. --fix changes them.
# Which version: 19, which Debian 12 and 13 both have; others break lines elsewhere.
cd "$(dirname "$0")/.." || exit 2
format=clang-format-19
if ! command -v $format >/dev/null 2>&1; then
    echo "$format is not installed: the format cannot be checked" >&2
    exit 2
fi
files=$(find src helpers bench fuzz cmake -name '*.h' -o -name '*.cpp')
[ -n "$files" ] || { echo "no sources found: the check is broken" >&2; exit 2; }
if [ "${1:-}" = --fix ]; then
    # shellcheck disable=SC2086  # a list of words
    exec $format -i $files
fi
bad=0
for file in $files; do
    if ! $format --dry-run --Werror "$file" >/dev/null 2>&1; then
        echo "not formatted: $file (scripts/check-format.sh --fix)"
        bad=1
    fi
done
exit $bad
