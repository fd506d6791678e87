#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
#
# Executed ARM instructions per output pixel, under qemu-arm:
#   bench/arm_count.sh PATH/TO/insn_count.c [gcc|clang|both [small|large [ID...]]]
# The first argument is the source of a QEMU plug-in that counts instructions
# between marks. clang is the NDK's (ANDROID_NDK_HOME), its guest runs on
# Android's libraries ($ANDROID_RUNTIME/runtime); gcc is Debian's for armhf.
# Prints a Markdown table, of the workloads with these names or of all.
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

# count COMPILER WORKLOAD [FORM]: instructions per pixel of one frame, less what
# an empty pair of marks takes.
count() {
  compiler=$1
  shift
  system=
  [ "$compiler" = gcc ] || system="-L $ANDROID_RUNTIME/runtime"
  # shellcheck disable=SC2086 # two words, or none
  if ! qemu-arm $system -plugin "$scratch/insn_count.so" -d plugin \
    -D "$scratch/log" "build/arm-count-$compiler/bench/arm_guest" \
    "$1" "$size" ${2:+"$2"} >"$scratch/pixels" 2>"$scratch/errors"; then
    cat "$scratch/errors" >&2
    echo "$*: the guest of $compiler failed" >&2
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

# row WORKLOAD TITLE THEIRS: THEIRS is libyuv's count to compare with, or "-";
# it holds for the large size only. The portable form and the comparison are
# of the first compiler.
row() {
  case $wanted in
    *" $1 "* | '  ') ;;
    *) return 0 ;;
  esac
  theirs=$3
  # Small frames have more of their rows' ends in the mean.
  [ "$size" = large ] || theirs=-
  line="| $2"
  own=
  for compiler in $compilers; do
    counted=$(count "$compiler" "$1")
    line="$line | $counted"
    : "${own:=$counted}"
  done
  case $1 in
    memcpy | media_bits*) portable=– ;;
    *) portable=$(count "${compilers%% *}" "$1" portable) ;;
  esac
  times=–
  [ "$theirs" = - ] || times=$(echo "$theirs $own" | awk '{ printf "%.2f", $1 / $2 }')
  [ "$theirs" != - ] || theirs=–
  echo "$line | $portable | $theirs | $times |"
}

name_of() {
  case $1 in
    gcc) arm-linux-gnueabihf-g++ --version | head -n 1 ;;
    clang)
      set -- "$ANDROID_NDK_HOME"/toolchains/llvm/prebuilt/*/bin/clang
      "$1" --version | head -n 1
      ;;
  esac
}

echo 'Executed instructions per output pixel (per byte for the plane copy and memcpy)'
echo "of one frame of the $size sizes after a warm-up, $(qemu-arm --version | head -n 1)."
rule='|---|'
titles='| workload |'
for compiler in $compilers; do
  echo "$compiler: $(name_of "$compiler")."
  titles="$titles $compiler |"
  rule="$rule---:|"
done
echo
echo "$titles portable form | libyuv | × libyuv |"
echo "$rule---:|---:|---:|"
row nv12_rgba8888 'NV12 → RGBA8888' 3.389
row yuv420_rgba8888 'I420 → RGBA8888' 3.393
row yuv420_rgb565 'I420 → RGB565' 4.018
row nv21_rgb888 'NV21 → RGB888' 3.389
row yuyv_rgba8888 'YUYV → RGBA8888' -
row yuv420_rgba8888_bt709 'I420 → RGBA8888, BT.709' -
row yuv420_rgba8888_bt601fr 'I420 → RGBA8888, full range' -
row rgba8888_nv12 'RGBA8888 → NV12' 1.689
row rgba8888_yuv420 'RGBA8888 → I420' 1.609
row rgb565_nv12 'RGB565 → NV12' -
row yuv420_nv12 'I420 → NV12' 0.203
row nv12_yuv420 'NV12 → I420' 0.203
row nv12_nv21 'NV12 → NV21' 0.219
row t64x32_nv12 '64x32 tiles → NV12' -
row copy_8b 'plane copy' 0.125
row grey_2to1 'plane 2:1' 0.701
row grey_4to1 'plane 4:1' 3.535
row grey_3to2 'plane 3:2' 7.586
row grey_720p_404 'plane 720p to 720x404, or that ratio' -
row grey_1to2 'plane 1:2' 0.914
row grey_2to3 'plane 2:3' 5.057
row grey_1to3 'plane 1:3' -
row grey_1to2_mode1 'plane 1:2, mode 1' 0.914
row grey_2to3_mode1 'plane 2:3, mode 1' 5.057
row grey_1to3_mode1 'plane 1:3, mode 1' -
row rgba8888_3to2 'RGBA8888 3:2' 13.430
row rgb888_3to2 'RGB888 3:2' -
row rgb565_3to2 'RGB565 3:2' -
row nv12_3to2 'NV12 3:2' -
row rgba8888_90l 'RGBA8888 to the left' 1.763
row rgba8888_90r 'RGBA8888 to the right' 1.763
row rgba8888_180 'RGBA8888 half turn' 1.259
row rgba8888_hori 'RGBA8888 mirror' 1.007
row rgba8888_vert 'RGBA8888 flip' 0.505
row nv12_90r 'NV12 to the right' 0.893
row nv12_2to1_90l 'NV12 2:1, to the left' -
row dct_nv12_480x270 'NV12 4:1, DCT domain' -
row dct_rgba8888_480x270 'RGBA8888 4:1, DCT domain' -
row hdr_p010_nv12 'P010 PQ → NV12' -
row hdr_p010_rgba8888 'P010 PQ → RGBA8888' -
row vqe_sharpen 'sharpening' -
row vqe_deblock 'deblocking, I420' -
row media_bits 'bit field' -
row media_bits_inlined 'bit field, plain reader inlined' -
row media_bits_called 'bit field, plain reader called' -
row media_keyframe_h264 'H.264 scanned' -
row memcpy 'C library memcpy' 0.269
[ "$wanted" = '  ' ] || exit 0
context=$(count "${compilers%% *}" hdr_context)
context=${context%.*}
cat <<END

DCT domain: 1920x1080 to 480x270, planned before; RGBA8888 by the parts of the
call, on one thread.

Bit fields are of random lengths, most significant bit first; counts are those
of a field, beside a reader with 64 bits of cache, inlined or called. Of the
H.264 frame, random bytes without a key frame, they are those of a byte. Of
deblocking they are those of a luma pixel, all three planes included.

PQ is the bands of a tone mapping on one thread; the context that they read,
which every call builds once, takes $context instructions more.

The portable form and what is compared with libyuv are of the first compiler. ×
libyuv: libyuv's count over this one, above 1 is fewer here. libyuv's figures are
those of its version 1857 built with NEON, at the large sizes, counted in the same
way elsewhere: of scaling its bilinear filter, at 4:1 its box filter, which takes
fewer there; of NV12 turned through two planes. Its row for memcpy is glibc's, as
GCC's is, and shows that the two ways of counting agree; clang's is Android's.
END
