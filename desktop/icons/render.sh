#!/bin/sh
# Renders the PNG icons from pondera.svg; run after changing the SVG and commit
# the results (the build uses the committed PNGs, so it needs no SVG renderer).
set -e
cd "$(dirname "$0")"
for size in 16 32 48 64 128 256; do
  rsvg-convert -w "$size" -h "$size" pondera.svg -o "pondera-$size.png"
done
