#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
#
# Makes the pictures of the README anew, in docs/pictures, with the vexo of a build:
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
