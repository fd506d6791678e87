// SPDX-License-Identifier: Apache-2.0
// The planes of pictures that lay themselves out.
#pragma once

#include "cases/cases.h"

namespace lox_test {

constexpr int32_t kPictureStandards[] = {
    VEXO_STD_DEFAULT,    VEXO_STD_BT601_FULL, VEXO_STD_BT709,
    VEXO_STD_BT709_FULL, VEXO_STD_BT2020,     VEXO_STD_BT2020_FULL};

inline int32_t known_format(Source &source) {
  constexpr int32_t kCodes[] = {0,   1,   2,   3,   4,   5,   6,   7,   8,
                                11,  12,  13,  14,  100, 101, 200, 201, 400,
                                401, 500, 501, 502, 503, 600, 601, 700, 701};
  return source.one_of(kCodes);
}

// Chroma is rounded up, and tiles are whole, those of T64X32 in pairs.
inline ExactImage picture_image(int32_t format, int32_t width, int32_t height) {
  ExactImage image = exact_image(format, width, height);
  if (!is_tiled_code(format)) return image;
  constexpr int kTiles[4][3] = {
      {128, 32, 32}, {16, 16, 8}, {8, 8, 4}, {256, 16, 8}};
  const auto &tile = kTiles[format - VEXO_FMT_T64X32];
  image[1].height = half_up(height);
  for (int p = 0; p < 2; ++p) {
    const auto whole = [](int64_t n, int64_t to) {
      return (n + to - 1) / to * to;
    };
    image[p].row_bytes = whole(int64_t{image[p].width} * (p + 1), tile[0]);
    image[p].whole = image[p].row_bytes * whole(image[p].height, tile[p + 1]);
  }
  return image;
}

}  // namespace lox_test
