// SPDX-License-Identifier: Apache-2.0
// Where the bytes of tiled planes lie.
#pragma once

#include <orumlox/img.h>

#include <cstdint>

namespace lox_test {

// How many tiles of a t64x32 plane lie before a tile. Two rows of tiles are
// stored in units of two by two; every second unit has its lower row first. A
// last row without a partner is stored from left to right.
inline int64_t tiles_before(int64_t width, int64_t height, int64_t column,
                            int64_t row) {
  const int64_t units_in_row = (width + 127) / 128;
  const int64_t last_row = (height - 1) / 32;
  const int64_t rows_before = row / 2 * units_in_row * 4;
  if (row == last_row && row % 2 == 0) return rows_before + column;
  const int64_t unit = column / 2;
  const bool second_half = unit % 2 != row % 2;
  return rows_before + unit * 4 + (second_half ? 2 : 0) + column % 2;
}

// Byte (x, y) of a plane of that size.
inline int64_t tile_byte(int32_t format, bool chroma, int64_t width,
                         int64_t height, int64_t x, int64_t y) {
  const int64_t columns = format == VEXO_FMT_T64X32    ? 64
                          : format == VEXO_FMT_T256X16 ? 256
                          : format == VEXO_FMT_T16X16  ? 16
                                                       : 8;
  const int64_t rows = format == VEXO_FMT_T64X32 ? 32
                       : format == VEXO_FMT_T8X8 ? (chroma ? 4 : 8)
                                                 : (chroma ? 8 : 16);
  const int64_t before =
      format == VEXO_FMT_T64X32
          ? tiles_before(width, height, x / 64, y / 32)
          : y / rows * ((width + columns - 1) / columns) + x / columns;
  return (before * rows + y % rows) * columns + x % columns;
}

}  // namespace lox_test
