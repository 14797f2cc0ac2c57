#!/bin/bash
# Draws every picture again from its source in svg/: the compiled-in ones into image/, the check
# marks of the demo's device into demo/device-res/. The same sources give the same bytes.
# Needs: librsvg2-bin imagemagick fonts-wqy-zenhei
set -euo pipefail
cd "$(dirname "$0")"
device_res=../demo/device-res
label_font='WenQuanYi Zen Hei'

icons=(play pause stop backward step openfile videoIcon s1 s2
       00 11 22 33 44 purchase_order tasks company_logo
       playlist 'playlist (1)' 'playlist (2)' background7)
photos=(background1 background2 background3 background10)
check_marks=(radiobutton-checked-md radiobutton-unchecked-md)

fc-list --quiet "$label_font" || { echo "font '$label_font' is missing" >&2; exit 1; }
mkdir -p image "$device_res"
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

for name in "${icons[@]}"; do
  rsvg-convert "svg/$name.svg" -o "image/$name.png"
done

for name in "${check_marks[@]}"; do
  rsvg-convert "svg/$name.svg" -o "$device_res/$name.png"
done

for name in "${photos[@]}"; do
  rsvg-convert "svg/$name.svg" -o "$scratch/$name.png"
  convert "$scratch/$name.png" -strip -sampling-factor 4:4:4 -quality 90 "image/$name.jpg"
done

# The labels are shown at an eighth of their size with linear filtering only, so their edges are
# softened here. Every pixel is white and only alpha differs: otherwise the filtering would draw a
# dark rim around the strokes.
rsvg-convert svg/text.svg -o "$scratch/text.png"
convert "$scratch/text.png" -alpha extract -blur 0x2 "$scratch/alpha.png"
convert -size 1024x256 xc:white "$scratch/alpha.png" -alpha off -compose CopyOpacity -composite \
  -strip -define png:exclude-chunks=date,time PNG32:image/text.png
