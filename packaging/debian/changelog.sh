#!/bin/sh
# CHANGELOG.md in Debian's format. Headings there are "## 0.1.0 - 2026-11-21", or "## Unreleased" for
# what becomes the given version; entries are "- " lines with indented continuations.
# Usage: changelog.sh CHANGELOG.md VERSION MAINTAINER OUTPUT
set -eu
# The same source gives the same package where the caller says when it was made.
now=$(date -u -R -d "@${SOURCE_DATE_EPOCH:-$(date +%s)}")
awk -v version="$2" -v maintainer="$3" -v now="$now" '
    # Lines of at most 78 columns.
    function writeEntry(    count, words, i, line) {
        count = split(entry, words, " ")
        line = "  *"
        for (i = 1; i <= count; ++i) {
            if (length(line) + 1 + length(words[i]) > 78) {
                print line
                line = "   "
            }
            line = line " " words[i]
        }
        if (count > 0) print line
        entry = ""
    }
    function finish() {
        writeEntry()
        if (open) printf "\n -- %s  %s\n\n", maintainer, date
        open = 0
    }
    /^## / {
        finish()
        date = now
        if ($2 != "Unreleased") {
            version = $2
            command = "LC_ALL=C date -u -R -d " $4
            command | getline date
            close(command)
        }
        printf "vostel (%s) unstable; urgency=medium\n\n", version
        open = 1
        next
    }
    open && /^- /  { writeEntry(); entry = substr($0, 3) }
    open && /^  / { entry = entry substr($0, 2) }
    END { finish() }
' "$1" >"$4"
[ -s "$4" ] || { echo "changelog.sh: no version found in $1" >&2; exit 1; }
