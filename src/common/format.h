// SPDX-License-Identifier: Apache-2.0
//
// What a format code tells by its number alone. A range holds the codes in it
// that no format has, too: calls treat those as the format's family.
#pragma once

#include <stdint.h>

#include "orumlox/img.h"

namespace lox {

// 8-bit YUV, in planes, in tiles and packed; every negative code as well.
constexpr bool is_yuv(int32_t format) { return format < 200; }
constexpr bool is_rgb(int32_t format) { return format >= 200 && format < 600; }

// 8-bit YUV that is copied, scaled and turned plane by plane: 0 to 99 without
// the tiles of 64 x 32. Quirk: other tiles and codes without a format count as
// three planes, because callers pass them as such.
constexpr bool is_planar_yuv(int32_t format) {
  return format >= 0 && format < 100 && format != VEXO_FMT_T64X32;
}

constexpr bool is_tiled(int32_t format) {
  return format >= VEXO_FMT_T64X32 && format <= VEXO_FMT_T256X16;
}
// 4:2:0 of 16-bit words, ten bits of which count.
constexpr bool is_10_bit(int32_t format) {
  return format == VEXO_FMT_YUV420PLANAR16 || format == VEXO_FMT_P010LE;
}

// Where a luma origin falls in a plane of half the size: rounded up.
constexpr int32_t half_up(int32_t offset) {
  return static_cast<int32_t>((int64_t{offset} + 1) >> 1);
}

// U and V, in either order, are the pairs of plane 1.
constexpr bool has_chroma_pairs(int32_t format) {
  return format == VEXO_FMT_NV12 || format == VEXO_FMT_NV21;
}

// Chroma has a row for two of luma's.
constexpr bool has_half_rows(int32_t format) {
  return format == VEXO_FMT_YUV420 || format == VEXO_FMT_YV12 ||
         has_chroma_pairs(format) || format == VEXO_FMT_YUV422W ||
         format == VEXO_FMT_T64X32 || format == VEXO_FMT_P010LE;
}

// Chroma has a column for two of luma's, in planes or within a packed row.
constexpr bool has_half_columns(int32_t format) {
  return format == VEXO_FMT_YUV422N || format == VEXO_FMT_YV16 ||
         format == VEXO_FMT_UYVY || format == VEXO_FMT_YUYV ||
         format == VEXO_FMT_YUV420PLANAR16 ||
         (has_half_rows(format) && format != VEXO_FMT_YUV422W);
}

// Bytes of a pixel of RGB; 0 for everything else.
constexpr int rgb_bytes(int32_t format) {
  if (!is_rgb(format)) return 0;
  return format >= 500 ? 4 : format >= 400 ? 3 : format < 300 ? 2 : 0;
}

}  // namespace lox
