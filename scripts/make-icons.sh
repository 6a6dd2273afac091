#!/usr/bin/env bash
# Draws the controls' icons (16 and 32 pixels) and toolbox bitmaps (16 x 15)
# into resources/icons with ImageMagick. The results are committed; run this
# only to change the artwork.
set -eu
out=$(cd "$(dirname "$0")/.." && pwd)/resources/icons
tmp=$(mktemp -d)
trap 'rm -rf "$tmp"' EXIT
# The background colour is what the container test looks for in a
# design-time drawing; keep tests/frame/ole_container_test.cpp in step.
background='#1d4f91'
# The module's own icon (the file's, and the About box's) reads "VN".
for pair in VNMATH:VN VNArray:A VNComplex:C VNMatrix:M VNStat:S VNDSP:D; do
  name=${pair%%:*} letter=${pair##*:}
  for size in 32 16; do
    convert -size ${size}x${size} xc:"$background" -fill white -font DejaVu-Sans-Bold \
      -pointsize $((size * 11 / 16 / ${#letter})) -gravity center -annotate +0+0 "$letter" \
      -define png:color-type=6 "$tmp/$name-$size.png"
  done
  convert "$tmp/$name-32.png" "$tmp/$name-16.png" "$out/$name.ico"
  [ "$name" = VNMATH ] && continue
  convert -size 16x15 xc:"$background" -fill white -font DejaVu-Sans-Bold -pointsize 11 -gravity center \
    -annotate +0+0 "$letter" -type TrueColor BMP3:"$out/$name.bmp"
done
