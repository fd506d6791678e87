// SPDX-License-Identifier: Apache-2.0
// What becomes of the geometry of a thumbnail's result.
#pragma once

#include <orumlox/rot.h>

namespace lox_test {

// Its geometry when the scaled picture is turned, the planes kept.
inline vexo_img turned_geometry(const vexo_img &scaled, const vexo_img &result,
                                int32_t rotation) {
  const bool quarter = rotation == VEXO_ROT_90L || rotation == VEXO_ROT_90R;
  const bool planar = scaled.format == VEXO_FMT_YUV420;
  const int32_t selector = result.color_std;
  vexo_img img = result;
  const bool set = planar || (scaled.format == VEXO_FMT_NV12 &&
                              (selector == 0 || selector == 1));
  const auto up = [](int32_t n, int32_t unit) {
    return (n + unit - 1) / unit * unit;
  };
  const int32_t w = scaled.width[0], h = scaled.height[0];
  const int32_t unit = selector == 0 ? 32 : 16;
  for (int p = 0; p < (planar ? 3 : 2) && set; ++p) {
    const int32_t part = p == 0 ? 1 : 2;
    if (quarter) {
      img.width[p] = h / part;
      img.height[p] = w / part;
      img.stride[p] = planar ? scaled.buf_height[0] / part
                             : up(h, selector == 0 ? 128 : 16);
      img.buf_height[p] = planar          ? scaled.stride[0] / part
                          : selector == 0 ? up(w, unit) / part
                                          : up(w / part, unit);
    } else if (rotation == VEXO_ROT_180) {
      const int from = p == 0 ? 0 : 1;
      img.width[p] = scaled.width[from];
      img.height[p] = scaled.height[from];
      img.stride[p] = scaled.stride[from];
      img.buf_height[p] = scaled.buf_height[from];
    }
  }
  return img;
}

}  // namespace lox_test
