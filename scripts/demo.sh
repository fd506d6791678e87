#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
#
# Builds the library and the vexo tool, takes the sample photograph through
# several pixel layouts and checks that the pictures that must agree do.
# Installs missing Debian packages first (as root). The pictures end up in out/.
set -eu

cd "$(dirname "$0")/.."
build=build/demo
out=out
sample=samples/coffee_320x208.y4m
size=320x208

# shellcheck source=scripts/packages.sh
. scripts/packages.sh
need g++ cmake ninja-build libcli11-dev libpng-dev zlib1g-dev

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

# As ${build}/tools/vexo/vexo convert, and shows what is done.
convert() {
  echo "  vexo convert $*"
  "$build/tools/vexo/vexo" convert "$@"
}

same() {
  if ! cmp -s "$out/$1" "$out/$2"; then
    echo "demo: $out/$1 and $out/$2 differ" >&2
    exit 1
  fi
  echo "  $1 and $2 are the same picture"
}

echo
echo "The photograph as PNG, converted to different layouts:"
convert "$sample" "$out/rgba8888.png" --to rgba8888
convert "$sample" "$out/argb8888.png" --to argb8888
convert "$sample" "$out/rgb888.png" --to rgb888
convert "$sample" "$out/bgr888.png" --to bgr888
convert "$sample" "$out/rgb565.png" --to rgb565

echo
echo "As raw frames, and back to PNG:"
convert "$sample" "$out/coffee_yuv420.yuv" --to yuv420
convert "$sample" "$out/coffee_yv12.yuv" --to yv12
convert "$sample" "$out/coffee_rgb565.rgb" --to rgb565
convert "$sample" "$out/coffee_bgr888.rgb" --to bgr888
convert "$out/coffee_yuv420.yuv" "$out/from_yuv420.png" \
  --size "$size" --from yuv420
convert "$out/coffee_yuv420.yuv" "$out/via_yv12.png" \
  --size "$size" --from yuv420 --via yv12
convert "$out/coffee_yv12.yuv" "$out/from_yv12.png" --size "$size" --from yv12
convert "$out/coffee_rgb565.rgb" "$out/from_rgb565.png" --to rgb565 \
  --size "$size" --from rgb565
convert "$out/coffee_bgr888.rgb" "$out/from_bgr888.png" \
  --size "$size" --from bgr888

echo
echo "The same samples taken for another layout, to show that order matters:"
convert "$out/coffee_yv12.yuv" "$out/u_and_v_exchanged.png" \
  --size "$size" --from yuv420

echo
echo "Checks:"
same rgba8888.png argb8888.png
same rgb888.png bgr888.png
same rgb888.png from_yuv420.png
same rgb888.png from_yv12.png
same rgb888.png via_yv12.png
same rgb888.png from_bgr888.png
same rgb565.png from_rgb565.png
if cmp -s "$out/rgb888.png" "$out/u_and_v_exchanged.png"; then
  echo "demo: exchanged chroma planes made no difference" >&2
  exit 1
fi
echo "  u_and_v_exchanged.png differs, as it must"

echo
"$build/tools/vexo/vexo" formats >"$out/formats.txt"
echo "Every conversion that the library has: $out/formats.txt"
echo "The pictures are in $(pwd)/$out/:"
for picture in "$out"/*.png; do
  echo "  $picture"
done
