#!/usr/bin/env bash
# A thumbnail written by the module opens in ImageMagick as a 200 x 150
# picture, and its header says 32 bits per pixel (the screen's depth).
#   check-thumbnail.sh <file.bmp>
set -u
f=$1
[ -f "$f" ] || { echo "no thumbnail at $f (the unit tests write it)"; exit 1; }
got=$(identify -format '%w x %h' "$f") || exit 1
bits=$(od -A n -t u2 -j 28 -N 2 "$f" | tr -d ' ')
echo "identify: $got; bits per pixel: $bits"
[ "$got" = "200 x 150" ] && [ "$bits" = 32 ]
