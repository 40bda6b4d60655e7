#!/bin/sh
# A file includes only what stands on its own floor or below. Fails with the includes that look up.
cd "$(dirname "$0")/../src" || exit 2

# From the ground floor up; folders of one line share a floor.
floor_of() {
    case "$1" in
        platform/*) echo 0 ;;
        statusbar/*) echo 1 ;;
        core/*) echo 2 ;;
        render/*) echo 3 ;;
        ui/*) echo 4 ;;
        item/*) echo 5 ;;
        audio/* | monitors/* | usage/*) echo 6 ;;
        combined/*) echo 7 ;;
        app/*) echo 8 ;;
        *) echo "no floor for $1" >&2; exit 2 ;;
    esac
}

bad=0
list=$(mktemp)
trap 'rm -f "$list"' EXIT
trap 'exit 1' INT TERM
grep -rnE '^#include "[a-z]+/' --include='*.h' --include='*.cpp' . | sed 's|^\./||' >"$list"
while IFS=: read -r file line text; do
    target=$(printf '%s' "$text" | sed -E 's/^#include "([^"]+)".*/\1/')
    if [ "$(floor_of "$target")" -gt "$(floor_of "$file")" ]; then
        echo "src/$file:$line includes upwards: $target"
        bad=1
    fi
done <"$list"
# Below the item floor nothing knows Qt but what says so: the platform is plain C++.
if grep -rnE '#include <Q' platform; then
    echo "src/platform is plain C++: no Qt there"
    bad=1
fi
checked=$(wc -l <"$list")
[ "$checked" -gt 0 ] || { echo "no includes found: the check is broken"; exit 2; }
exit $bad
