#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
#
# make_streams.sh FOLDER: encodes a short clip with every codec that
# key_frame_test.cpp knows, and writes each packet of NAME to NAME.packets, a
# line with ffprobe's key flag (1 or 0) and the bytes in hexadecimal.
set -eu
mkdir -p "$1"
cd "$1"

# encode NAME SIZE OPTION...: NAME's ending is the container. Pictures are
# suddenly inverted, for scene cuts besides the regular key frames.
encode() {
  name=$1
  clip="testsrc2=s=$2:r=25:d=2.4,negate=enable='gte(mod(n,41),16)'"
  shift 2
  ffmpeg -nostdin -v error -y -f lavfi -i "$clip" -pix_fmt yuv420p -threads 1 \
    -flags +bitexact -g 12 "$@" "$name"
}
stream() {
  encode "$@"
  ffprobe -v error -show_packets -show_data -show_entries packet=flags,data \
    -of default "$1" | awk '
      /^flags=/ { key = /K/ }
      /^[0-9a-f]*: / { hex = hex substr($0, 11, 39) }
      /^\[\/PACKET/ { gsub(" ", "", hex); print key, hex; hex = "" }
    ' >"$1.packets"
}

# Key flags are to be those of IDR pictures: ffprobe flags recovery points too,
# those of open GOPs and of a periodic refresh, so there are none. Scene cuts
# close to a key frame are intra pictures without a flag.
x264=min-keyint=7:open-gop=0:intra-refresh=0:scenecut=60:bframes=3
stream h264.h264 176x144 -c:v libx264 -x264-params "$x264"
stream h264_slices.h264 176x144 -c:v libx264 -x264-params "$x264:slices=4"
x265=log-level=none:pools=none:frame-threads=1:bframes=3:keyint=12:min-keyint=7
stream hevc_idr.hevc 176x144 -c:v libx265 -x265-params "$x265:open-gop=0"
stream hevc_cra.hevc 176x144 -c:v libx265 -x265-params "$x265:open-gop=1"
stream mpeg4.m4v 176x144 -c:v mpeg4 -bf 2 -f m4v
stream mpeg4.avi 176x144 -c:v mpeg4 -bf 2
# Elsewhere ffprobe flags all of H.263. h263p writes extended picture types.
stream h263.3gp 176x144 -c:v h263
stream h263_extended.mov 176x144 -c:v h263p
# Widths above 255 take 16 bits: the rule knows where the type is behind those.
stream sorenson.flv 272x144 -c:v flv
stream wmv7.asf 176x144 -c:v wmv1
stream wmv8.asf 176x144 -c:v wmv2
stream msmpeg4.avi 176x144 -c:v msmpeg4
# Two passes, and time for hidden reference frames.
for codec in libvpx libvpx-vp9; do
  set -- 176x144 -c:v $codec -g 25 -auto-alt-ref 1 -lag-in-frames 16 -f webm
  encode /dev/null "$@" -pass 1
  stream $codec.webm "$@" -pass 2
done
