#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
#
# Executed ARM instructions per output pixel, under qemu-arm:
#   bench/arm_count.sh PATH/TO/insn_count.c [gcc|clang|both [small|large [ID...]]]
# The first argument is the source of a QEMU plug-in that counts instructions
# between marks. clang is the NDK's (ANDROID_NDK_HOME), its guest runs on
# Android's libraries ($ANDROID_RUNTIME/runtime); gcc is Debian's for armhf.
# Prints a Markdown table, of the workloads with these names or of all; README.md
# says what the counts are of. libyuv's are those of its version 1857 built with
# NEON, at the large sizes, counted in the same way elsewhere: of scaling its
# bilinear filter, at 4:1 its box filter, which takes fewer there; of NV12 turned
# through two planes.
set -eu
counter=${1:-}
compilers=${2:-both}
size=${3:-large}
case $compilers in
  gcc | clang) ;;
  both) compilers='clang gcc' ;;
  *) counter= ;;
esac
if [ ! -r "$counter" ]; then
  echo "usage: bench/arm_count.sh PATH/TO/insn_count.c" \
    "[gcc|clang|both [small|large [ID...]]]" >&2
  exit 2
fi
shift $(($# < 3 ? $# : 3))
wanted=" $* "
case $compilers in
  *clang*)
    : "${ANDROID_NDK_HOME:?is the folder of the NDK}"
    : "${ANDROID_RUNTIME:?is the folder of runtime/}"
    ;;
esac
counter=$(cd "$(dirname "$counter")" && pwd)/$(basename "$counter")
root=$(cd "$(dirname "$0")/.." && pwd)
cd "$root"

scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
cc -O2 -Wall -shared -fPIC -o "$scratch/insn_count.so" "$counter"

# build COMPILER OPTION...: the guest, as the library is built for users.
build() {
  dir=build/arm-count-$1
  shift
  cmake -S . -B "$dir" -G Ninja -DCMAKE_BUILD_TYPE=Release -DORUMLOX_BENCH=ON \
    -DORUMLOX_TESTS=OFF -DORUMLOX_TOOLS=OFF -DORUMLOX_EXAMPLES=OFF "$@" >&2
  cmake --build "$dir" --target arm_guest >&2
}
for compiler in $compilers; do
  if [ "$compiler" = gcc ]; then
    build gcc -DCMAKE_TOOLCHAIN_FILE="$root/cmake/toolchains/armhf.cmake"
  else
    # As Android's libc++ lacks what the link libraries of the NDK name.
    build clang --preset android-armeabi-v7a -DORUMLOX_TRIM=OFF \
      -DANDROID_STL=c++_shared \
      -DCMAKE_EXE_LINKER_FLAGS=-Wl,--allow-shlib-undefined
  fi
done

# count COMPILER WORKLOAD: instructions per pixel of one frame, less what an
# empty pair of marks takes.
count() {
  system=
  [ "$1" = gcc ] || system="-L $ANDROID_RUNTIME/runtime"
  # shellcheck disable=SC2086 # two words, or none
  if ! qemu-arm $system -plugin "$scratch/insn_count.so" -d plugin \
    -D "$scratch/log" "build/arm-count-$1/bench/arm_guest" \
    "$2" "$size" >"$scratch/pixels" 2>"$scratch/errors"; then
    cat "$scratch/errors" >&2
    echo "$2: the guest of $1 failed" >&2
    return 1
  fi
  awk 'NR == FNR { pixels = $1; next }
       $2 == "mark" {
         for (i = 1; i < NF; ++i) if ($i == "delta") v[$3] = $(i + 1)
       }
       END {
         if (!(3 in v)) { print "no counts in the log" > "/dev/stderr"; exit 1 }
         printf "%.3f", (v[3] - v[2]) / pixels
       }' "$scratch/pixels" "$scratch/log"
}

# row WORKLOAD [THEIRS]: THEIRS is libyuv's count.
row() {
  case $wanted in
    *" $1 "* | '  ') ;;
    *) return 0 ;;
  esac
  line="| $1"
  for compiler in $compilers; do
    line="$line | $(count "$compiler" "$1")"
  done
  # Small frames have more of their rows' ends in the mean.
  [ "$size" = large ] || set -- "$1"
  echo "$line | ${2:-–} |"
}

echo "Executed instructions a pixel, $size sizes, $(qemu-arm --version | head -n 1)"
titles='| workload |'
rule='|---|'
for compiler in $compilers; do
  path=$(sed -n 's/^set(CMAKE_CXX_COMPILER "\(.*\)")/\1/p' \
    "build/arm-count-$compiler"/CMakeFiles/*/CMakeCXXCompiler.cmake)
  echo "$compiler: $("$path" --version | head -n 1)"
  titles="$titles $compiler |"
  rule="$rule---:|"
done
echo
echo "$titles libyuv |"
echo "$rule---:|"
for each in \
  nv12_rgba8888:3.389 yuv420_rgba8888:3.393 yuv420_rgb565:4.018 \
  yuv420_rgb565_dither: planar16_2to1: planar16_3to2: planar16_2to3: \
  nv21_rgb888:3.389 yuyv_rgba8888: nv12_rgba8888_new: yuv420_rgba8888_new: yuv420_rgba8888_bt709: \
  yuv420_rgba8888_bt601fr: rgba8888_nv12:1.689 rgba8888_yuv420:1.609 \
  rgb565_nv12: yuv420_nv12:0.203 nv12_yuv420:0.203 nv12_nv21:0.219 \
  t64x32_nv12: copy_8b:0.125 grey_2to1:0.701 grey_4to1:3.535 grey_3to2:7.586 \
  grey_720p_404: grey_1to2:0.914 grey_2to3:5.057 grey_1to3: \
  grey_1to2_mode1:0.914 grey_2to3_mode1:5.057 grey_1to3_mode1: \
  rgba8888_3to2:13.430 rgb888_3to2: rgb565_3to2: nv12_3to2: rgba8888_90l:1.763 \
  rgba8888_90r:1.763 rgba8888_180:1.259 rgba8888_hori:1.007 \
  rgba8888_vert:0.505 nv12_90r:0.893 nv12_2to1_90l: camera_nv12_rgba8888: \
  camera_nv12_rgba8888_90r: camera_nv12_rgb565_90r: dct_nv12_480x270: \
  dct_rgba8888_480x270: hdr_p010_nv12: hdr_p010_rgba8888: vqe_sharpen: \
  nv12_rgba8888_3to2: nv12_rgba8888_2to3: nv12_rgba8888_90r: \
  nv12_rgba8888_hori: vqe_deblock: media_bits: media_bits_inlined: media_bits_called: \
  media_keyframe_h264: hdr_context: memcpy:0.269; do
  row "${each%%:*}" "${each#*:}"
done
