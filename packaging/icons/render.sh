#!/bin/sh
# Draws the PNG files of the icon theme again. Needed after a change of a drawing only: the files are
# checked in, so that building needs no drawing program and every machine ships the pixels that were
# looked at. The three smallest have drawings of their own; scaled down, the large one blurs.
# Needs rsvg-convert.
set -eu
cd "$(dirname "$0")"
for size in 16 22 24 32 48 64 128 256 512; do
    drawing=com.vostel.app-$size.svg
    [ -f "$drawing" ] || drawing=com.vostel.app.svg
    rsvg-convert --width="$size" --height="$size" --output="$size.png" "$drawing"
done
