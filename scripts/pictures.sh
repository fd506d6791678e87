#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
#
# Makes the pictures of the README and of the gallery anew, in docs/pictures, with the
# vexo of a build:
#   scripts/pictures.sh [VEXO]
set -eu
cd "$(dirname "$0")/.."
vexo=${1:-build/demo/tools/vexo/vexo}
to=docs/pictures
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
photo=$work/photo.y4m
mkdir -p "$to"

"$vexo" scale samples/coffee_320x208.y4m "$photo" --size 240x156
"$vexo" convert "$photo" "$to/photo.png"
# The bytes of the frame, as if they were grey: luma, below it chroma.
"$vexo" convert "$photo" "$work/nv12.yuv" --to nv12
"$vexo" convert "$work/nv12.yuv" "$to/nv12.png" --from yuv400 --size 240x234
# The 10 bits as they are, and tone mapped; then to the size of the others.
"$vexo" convert samples/coffee_pq_320x208.y4m "$work/hdr.y4m" --to yuv420
"$vexo" tonemap samples/coffee_pq_320x208.y4m "$work/sdr.png"
"$vexo" scale "$work/hdr.y4m" "$to/hdr.png" --size 240x156
"$vexo" scale "$work/sdr.png" "$to/sdr.png" --size 240x156
"$vexo" thumbnail samples/coffee_320x208.y4m "$to/thumbnail.png" --size 96x64 \
  --turn right
"$vexo" sharpen "$photo" "$to/sharp.png"

# The gallery of the tool (docs/guides/gallery.md), of clips that ffmpeg makes.
clip=$work/clip.mp4
ffmpeg -v error -y -i samples/coffee_320x208.y4m -vf \
  "zoompan=z=1+on/90:x=iw/2-iw/zoom/2:y=ih/2-ih/zoom/2:d=180:s=320x208:fps=30" \
  -c:v mpeg4 -q:v 3 -g 15 "$clip"
"$vexo" sheet "$clip" "$to/sheet.png" --grid 4x2 --cell 160x104 --times
"$vexo" thumbnail "$clip" "$to/letterbox.png" --fit 160x160 --letterbox
"$vexo" convert "$clip" "$work/coarse.mp4" --quality 10
"$vexo" compare "$clip" "$work/coarse.mp4" --map "$to/map.png" >/dev/null
ffmpeg -v error -y -f lavfi -i "color=gray:s=360x360,geq=lum='127.5+120*cos(((X-180)^2+(Y-180)^2)*PI/360)':cb=128:cr=128" \
  -frames:v 1 -pix_fmt gray "$work/plate.pgm"
ffmpeg -v error -y -f lavfi -i "gradients=s=240x60:c0=black:c1=0x6080ff:x0=0:y0=0:x1=240:y1=0" \
  -frames:v 1 -pix_fmt yuv444p "$work/sky.y4m"
ffmpeg -v error -y -f lavfi -i "color=black:s=60x40,drawbox=x=9:y=7:w=17:h=21:c=red:t=fill,drawbox=x=33:y=8:w=15:h=19:c=blue:t=3" \
  -frames:v 1 -pix_fmt yuv420p "$work/red.y4m"
for way in plain lanczos; do
  "$vexo" scale "$work/plate.pgm" "$to/plate-$way.png" --size 240x240 --filter $way
done
"$vexo" convert "$work/sky.y4m" "$to/sky-plain.png" --to rgb565
"$vexo" convert "$work/sky.y4m" "$to/sky-dithered.png" --to rgb565 --dither
for way in plain smooth; do
  "$vexo" convert "$work/red.y4m" "$work/red.png" --chroma $way
  ffmpeg -v error -y -i "$work/red.png" -vf scale=240:-1:flags=neighbor "$to/red-$way.png"
done
