#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
#
# Executed ARM instructions per output pixel, under qemu-arm:
#   bench/arm_count.sh PATH/TO/insn_count.c [small|large]
# The argument is the source of a QEMU plug-in that counts instructions between
# marks, by class. Prints a Markdown table, of 1920x1080 unless small.
set -eu
if [ $# -lt 1 ] || [ ! -r "$1" ]; then
  echo "usage: bench/arm_count.sh PATH/TO/insn_count.c [small|large]" >&2
  exit 2
fi
counter=$(cd "$(dirname "$1")" && pwd)/$(basename "$1")
size=${2:-large}
root=$(cd "$(dirname "$0")/.." && pwd)
cd "$root"

scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
cc -O2 -Wall -shared -fPIC -o "$scratch/insn_count.so" "$counter"

cmake -S . -B build/arm-count -G Ninja -DCMAKE_BUILD_TYPE=Release \
  -DCMAKE_TOOLCHAIN_FILE="$root/cmake/toolchains/armhf.cmake" \
  -DORUMLOX_BENCH=ON -DORUMLOX_TESTS=OFF -DORUMLOX_TOOLS=OFF \
  -DORUMLOX_EXAMPLES=OFF >&2
cmake --build build/arm-count --target arm_guest >&2
guest=build/arm-count/bench/arm_guest

# count WORKLOAD [FORM]: "pixels total vector load store branch" of one frame,
# less what an empty pair of marks takes.
count() {
  if ! qemu-arm -plugin "$scratch/insn_count.so,classes=on" -d plugin \
    -D "$scratch/log" "$guest" "$1" "$size" ${2:+"$2"}; then
    echo "$1 ${2:-}: the guest failed" >&2
    return 1
  fi
  awk '$2 == "mark" {
         for (i = 1; i < NF; ++i) if ($i == "delta") break
         n = 0
         for (++i; i <= NF; ++i) if ($i + 0 == $i) v[$3, n++] = $i
       }
       END {
         if (n != 5) { print "no counts in the log" > "/dev/stderr"; exit 1 }
         for (j = 0; j < n; ++j) printf "%d ", v[3, j] - v[2, j]
       }' "$scratch/log"
}

# row WORKLOAD TITLE THEIRS: THEIRS is libyuv's count to compare with, or "-";
# it holds for the large size only.
row() {
  theirs=$3
  # Small frames have more of their rows' ends in the mean.
  [ "$size" = large ] || theirs=-
  own=$(count "$1")
  portable="-"
  case $1 in
    memcpy | media_bits*) ;;
    *) portable=$(count "$1" portable) ;;
  esac
  echo "$own" | awk -v title="$2" -v theirs="$theirs" -v portable="$portable" '{
      printf "| %s | %.3f | %.3f | %.3f | %.3f | %.3f", title, $2 / $1,
             $3 / $1, $4 / $1, $5 / $1, $6 / $1
      split(portable, p, " ")
      if (portable == "-") printf " | –"
      else printf " | %.3f", p[2] / p[1]
      if (theirs == "-") printf " | – | – |\n"
      else printf " | %s | %.2f |\n", theirs, theirs * $1 / $2
    }'
}

cat <<END
Executed instructions per output pixel (per byte for the plane copy and memcpy)
of one frame of the $size sizes after a warm-up, $(arm-linux-gnueabihf-g++ --version |
  head -n 1), $(qemu-arm --version | head -n 1).

| workload | total | vector | load | store | branch | portable form | libyuv | × libyuv |
|---|---:|---:|---:|---:|---:|---:|---:|---:|
END
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
context=$(count hdr_context | awk '{ print $2 }')
cat <<END

DCT domain: 1920x1080 to 480x270, planned before; RGBA8888 by the parts of the
call, on one thread.

Bit fields are of random lengths, most significant bit first; counts are those
of a field, beside a reader with 64 bits of cache, inlined or called. Of the
H.264 frame, random bytes without a key frame, they are those of a byte. Of
deblocking they are those of a luma pixel, all three planes included.

PQ is the bands of a tone mapping on one thread; the context that they read,
which every call builds once, takes $context instructions more.

vector: NEON or VFP, its loads and stores among them. load, store: scalar and
vector. × libyuv: libyuv's count over this one, above 1 is fewer here. libyuv's
figures are those of its version 1857 built with NEON, at the large sizes,
counted in the same way elsewhere: of scaling its bilinear filter, at 4:1 its
box filter, which takes fewer there; of NV12 turned through two planes. Its row
for the C library's memcpy is that function itself and shows that the two ways
of counting agree.
END
