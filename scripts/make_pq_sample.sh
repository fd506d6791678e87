#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
#
# Makes samples/coffee_pq_320x208.y4m, a PQ picture of BT.2020 primaries in 10
# bits, out of the photograph beside it:
#   scripts/make_pq_sample.sh [OUT]
# The file is fixed and checked in: nobody but who changes it needs to run this.
# Installs ffmpeg first if it is missing (as root).
set -eu

cd "$(dirname "$0")/.."
# shellcheck source=scripts/packages.sh
. scripts/packages.sh
need ffmpeg

# In linear light, white at 1: a photograph for a screen of 100 nits has lost
# its highlights, and a high power gives some back. White becomes 1300 nits,
# middle tones of 0.1 to 0.3 become 60 to 190.
lift() {
  echo "$1='0.6*min($1(X,Y),1)+0.7*pow(min($1(X,Y),1),4)'"
}
linear="zscale=min=smpte170m:pin=bt709:tin=bt709:rin=limited"
linear="$linear:m=gbr:p=bt2020:t=linear:r=full:npl=100,format=gbrpf32le"
pq="zscale=min=gbr:pin=bt2020:tin=linear:rin=full"
pq="$pq:m=bt2020nc:p=bt2020:t=smpte2084:r=limited:npl=1000,format=yuv420p10le"
ffmpeg -v error -y -i samples/coffee_320x208.y4m \
  -vf "$linear,geq=$(lift r):$(lift g):$(lift b),$pq" \
  -bitexact -strict -1 -f yuv4mpegpipe "${1:-samples/coffee_pq_320x208.y4m}"
