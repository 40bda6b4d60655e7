#!/bin/sh
# Fails with the files that clang-format would change. Without clang-format it says so and passes.
# With --fix it changes them. Which version: the one of Debian 12 (14); others break lines elsewhere.
cd "$(dirname "$0")/.." || exit 2
if ! command -v clang-format >/dev/null 2>&1; then
    echo "clang-format is not installed: the format is not checked"
    exit 0
fi
files=$(find src helpers bench fuzz -name '*.h' -o -name '*.cpp')
[ -n "$files" ] || { echo "no sources found: the check is broken" >&2; exit 2; }
if [ "${1:-}" = --fix ]; then
    # shellcheck disable=SC2086  # a list of words
    exec clang-format -i $files
fi
bad=0
for file in $files; do
    if ! clang-format --dry-run --Werror "$file" >/dev/null 2>&1; then
        echo "not formatted: $file (scripts/check-format.sh --fix)"
        bad=1
    fi
done
exit $bad
