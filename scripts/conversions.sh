#!/bin/sh
# SPDX-License-Identifier: Apache-2.0
#
# conversions.sh VEXO prints docs/conversions.md: what chains of conversions lead
# to, as the program finds them.
set -eu

cat <<'END'
# What converts to what

`vexo_picture_convert` (`picture.h`) goes from each layout to each other one by
the chain of conversions that loses least and then is the shortest. Columns are
codes of `img.h`. A number is that of passes over the picture: 1 is one conversion
or a copy; for more the list below the table says what lies between, but of
standards after the first only what differs. Where there is none the call is
refused.

Standards are those of the side that is YUV, here the same on both; between two
different ones a picture goes through `rgba8888`. Nothing of 8 bits becomes one of
10 but by way of `rgba8888`, and nothing becomes `yuv400` or other tiles than
`t64x32`. To `rgba1010102` and `rgbaf16`, and from BT.2020, it is `vexo_csc_new`
that makes RGB.

This page is made by `scripts/conversions.sh` and held to the program by a test.

END
for standard in bt601 bt601-full bt709 bt709-full; do
  "$1" formats --chains --standard "$standard"
  echo
done
