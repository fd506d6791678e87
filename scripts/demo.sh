#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
#
# Builds the library and the vexo tool, takes the sample photograph through
# the pixel layouts and standards, scales and turns it, makes thumbnails of it,
# tone maps an HDR version of it, sharpens and deblocks it, and checks that
# pictures that must agree do. Installs missing Debian packages first (as root).
# The pictures end up in out/.
set -eu

cd "$(dirname "$0")/.."
build=build/demo
out=out
sample=samples/coffee_320x208.y4m
hdr_sample=samples/coffee_pq_320x208.y4m
size=320x208
rgb_layouts="rgb565 bgr565 rgb888 bgr888 rgba8888 bgra8888 argb8888 abgr8888"

# shellcheck source=scripts/packages.sh
. scripts/packages.sh
need g++ cmake ninja-build libcli11-dev libpng-dev zlib1g-dev libavformat-dev \
  libavcodec-dev libavutil-dev libjpeg-dev libwebp-dev libfreetype-dev

echo "Building in $build ..."
mkdir -p "$build" "$out"
{
  cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release \
    -DORUMLOX_TESTS=OFF -DORUMLOX_BENCH=OFF -DORUMLOX_EXAMPLES=OFF &&
    cmake --build "$build" --target vexo
} >"$build/demo.log" 2>&1 || {
  tail -n 40 "$build/demo.log" >&2
  echo "demo: the build failed; all of its output is in $build/demo.log" >&2
  exit 1
}

# As $build/tools/vexo/vexo, and shows what is done.
vexo() {
  echo "  vexo $*"
  "$build/tools/vexo/vexo" "$@"
}

convert() {
  vexo convert "$@"
}

# All of these files of out/ are equal.
same() {
  first=$1
  for other in "$@"; do
    if ! cmp -s "$out/$first" "$out/$other"; then
      echo "demo: $out/$first and $out/$other differ" >&2
      exit 1
    fi
  done
  echo "  the same: $*"
}

# All of these files of out/ differ from the first.
differ() {
  first=$1
  shift
  for other in "$@"; do
    if cmp -s "$out/$first" "$out/$other"; then
      echo "demo: $out/$first and $out/$other are the same" >&2
      exit 1
    fi
  done
  echo "  not the same as $first, as it must be: $*"
}

echo
echo "The photograph in every RGB layout:"
for rgb in $rgb_layouts; do
  convert "$sample" "$out/$rgb.png" --to "$rgb"
  convert "$sample" "$out/coffee_$rgb.rgb" --to "$rgb"
done
same rgb888.png bgr888.png
same rgba8888.png bgra8888.png argb8888.png abgr8888.png
same rgb565.png bgr565.png

echo
echo "Each of them as NV12:"
for rgb in $rgb_layouts; do
  convert "$out/coffee_$rgb.rgb" "$out/nv12_of_$rgb.yuv" --to nv12 \
    --size "$size" --from "$rgb"
done
same nv12_of_rgb888.yuv nv12_of_bgr888.yuv nv12_of_rgba8888.yuv \
  nv12_of_bgra8888.yuv nv12_of_argb8888.yuv nv12_of_abgr8888.yuv
same nv12_of_rgb565.yuv nv12_of_bgr565.yuv

echo
echo "RGBA as YUV in several layouts, and back:"
for yuv in yuv420 yv12 nv12 nv21 yuv444; do
  convert "$out/rgba8888.png" "$out/from_$yuv.png" --via "$yuv"
done
same from_yuv420.png from_yv12.png from_nv12.png from_nv21.png
differ from_yuv420.png from_yuv444.png

echo
echo "The photograph's own samples through other layouts, and back:"
convert "$sample" "$out/coffee.yuv"
set --
for yuv in nv12 nv21 nv12,nv21 yuv422n t64x32 t64x32,nv12; do
  convert "$sample" "$out/through_$yuv.yuv" --via "$yuv" --to yuv420
  set -- "$@" "through_$yuv.yuv"
done
same coffee.yuv "$@"
convert "$sample" "$out/coffee_t64x32.yuv" --to t64x32
convert "$out/coffee_t64x32.yuv" "$out/from_t64x32.png" --size "$size" \
  --from t64x32
convert "$sample" "$out/coffee_yv12.yuv" --to yv12
convert "$out/coffee_yv12.yuv" "$out/u_and_v_exchanged.png" --size "$size" \
  --from yuv420
same rgb888.png from_t64x32.png
differ rgb888.png u_and_v_exchanged.png

echo
echo "Other standards, which take the samples for other colours:"
for standard in bt601-full bt709 bt709-full; do
  convert "$sample" "$out/$standard.png" --to rgba8888 --standard "$standard"
done
differ rgba8888.png bt601-full.png bt709.png bt709-full.png
differ bt601-full.png bt709-full.png
convert "$out/rgba8888.png" "$out/from_bt601-full.png" --via yuv420 \
  --standard bt601-full
convert "$out/rgba8888.png" "$out/from_bt709.png" --via nv21,yuv420 \
  --standard bt709

echo
echo "Scaled, up in both modes and down:"
for scaled in 640x416 480x312 960x624; do
  vexo scale "$sample" "$out/up_$scaled.png" --size "$scaled"
  vexo scale "$sample" "$out/up_${scaled}_mode1.png" --size "$scaled" --mode1
done
# The weights of mode 1 are rounded: half is exact, a third is not.
same up_640x416.png up_640x416_mode1.png
differ up_960x624.png up_960x624_mode1.png
for scaled in 160x104 213x139 180x117 80x52; do
  vexo scale "$sample" "$out/down_$scaled.png" --size "$scaled"
done

echo
echo "Turned and mirrored:"
for turn in left right half mirror flip; do
  vexo rotate "$sample" "$out/turned_$turn.png" --turn "$turn"
done
vexo rotate "$out/turned_left.png" "$out/left_right.png" --turn right
set -- "$out/rgb888.png"
for quarter in 1 2 3 4; do
  vexo rotate "$1" "$out/quarter_$quarter.png" --turn right
  set -- "$out/quarter_$quarter.png"
done
same rgb888.png left_right.png quarter_4.png
same turned_right.png quarter_1.png
vexo rotate "$out/turned_mirror.png" "$out/mirror_flip.png" --turn flip
same turned_half.png quarter_2.png mirror_flip.png
differ rgb888.png turned_left.png turned_right.png turned_half.png \
  turned_mirror.png turned_flip.png

echo
echo "Scaled and turned at once, and one after the other:"
vexo scale "$sample" "$out/half_size.y4m" --size 160x104
for turn in left right half; do
  case $turn in half) upright=160x104 ;; *) upright=104x160 ;; esac
  vexo scale "$sample" "$out/at_once_$turn.png" --size "$upright" \
    --rotate "$turn"
  vexo rotate "$out/half_size.y4m" "$out/in_turn_$turn.png" --turn "$turn"
  same "at_once_$turn.png" "in_turn_$turn.png"
done

echo
echo "Thumbnails, turned at once and one after the other, and pre-scaled:"
convert "$sample" "$out/coffee_nv12.yuv" --to nv12
vexo thumbnail "$sample" "$out/thumbnail.png" --size 96x64
vexo thumbnail "$sample" "$out/thumbnail.y4m" --size 96x64
vexo thumbnail "$out/coffee_nv12.yuv" "$out/thumbnail_of_nv12.png" \
  --size 96x64 --from-size "$size" --from nv12
vexo thumbnail "$out/rgb888.png" "$out/thumbnail_of_rgb888.png" --size 96x64
vexo thumbnail "$sample" "$out/thumbnail_prescaled.png" --size 96x64 \
  --prescale 2
same thumbnail.png thumbnail_of_nv12.png
# The colours of RGB are reduced after the conversion, not before it.
differ thumbnail.png thumbnail_prescaled.png thumbnail_of_rgb888.png
for turn in left right half mirror flip; do
  vexo thumbnail "$sample" "$out/thumbnail_$turn.png" --size 96x64 \
    --turn "$turn"
  vexo rotate "$out/thumbnail.y4m" "$out/then_$turn.png" --turn "$turn"
  same "thumbnail_$turn.png" "then_$turn.png"
done

echo
echo "An HDR version of it tone mapped in each kind:"
convert "$hdr_sample" "$out/hdr.yuv"
for kind in hdr10 hdr10-mild hlg; do
  vexo tonemap "$hdr_sample" "$out/$kind.png" --kind "$kind"
  vexo tonemap "$hdr_sample" "$out/$kind.y4m" --kind "$kind"
  for layout in yuv420 nv12 rgba8888; do
    vexo tonemap "$out/hdr.yuv" "$out/${kind}_$layout.yuv" --kind "$kind" \
      --size "$size" --from yuv420Planar16 --to "$layout"
  done
  convert "$out/$kind.y4m" "$out/${kind}_of_y4m.yuv"
  convert "$out/${kind}_nv12.yuv" "$out/${kind}_of_nv12.yuv" --size "$size" \
    --from nv12 --to yuv420
  same "${kind}_yuv420.yuv" "${kind}_of_y4m.yuv" "${kind}_of_nv12.yuv"
done
vexo tonemap "$hdr_sample" "$out/hdr10_nit_1000.png" --nit 1000
vexo tonemap "$hdr_sample" "$out/hdr10_nit_4000.png" --nit 4000
vexo tonemap "$hdr_sample" "$out/hdr10_measured.png" --measure
# Its brightest luma measures as that of 1000 nits.
same hdr10.png hdr10_nit_1000.png hdr10_measured.png
differ hdr10.png hdr10-mild.png hlg.png hdr10_nit_4000.png

echo
echo "Sharpened, from three layouts, and smoothed between its blocks:"
vexo sharpen "$sample" "$out/sharpened.png"
vexo sharpen "$sample" "$out/sharpened.yuv"
vexo sharpen "$out/coffee_nv12.yuv" "$out/sharpened_of_nv12.yuv" \
  --size "$size" --from nv12 --to yuv420
vexo sharpen "$out/coffee_t64x32.yuv" "$out/sharpened_of_t64x32.yuv" \
  --size "$size" --from t64x32 --to yuv420
same sharpened.yuv sharpened_of_nv12.yuv sharpened_of_t64x32.yuv
for strength in 0 1 5 12 15; do
  vexo deblock "$sample" "$out/deblocked_$strength.png" --strength "$strength"
done
vexo deblock "$out/coffee_nv12.yuv" "$out/deblocked_of_nv12.png" \
  --size "$size" --from nv12 --strength 12
same rgb888.png deblocked_0.png
same deblocked_12.png deblocked_of_nv12.png
differ rgb888.png sharpened.png deblocked_1.png deblocked_5.png \
  deblocked_12.png deblocked_15.png

echo
"$build/tools/vexo/vexo" formats >"$out/formats.txt"
echo "Every conversion that the library has: $out/formats.txt"
echo "The pictures are in $(pwd)/$out/:"
for picture in "$out"/*.png; do
  echo "  $picture"
done
