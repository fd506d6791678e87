// SPDX-License-Identifier: Apache-2.0
#include "bench/enhancing.h"

#include <cmath>

#include "orumlox/vqe.h"

namespace bench {

void draw_blocks(const vexo_img &img) {
  constexpr int32_t kBlock = 8;
  // Most steps are such that the deblocking filter takes them for artefacts.
  constexpr double kStep = 8;
  uint32_t noise = 1;
  for (int p = 0; p < 3 && img.height[p] > 0; ++p) {
    const double w = img.width[p], h = img.height[p];
    for (int32_t y = 0; y < img.height[p]; ++y) {
      uint8_t *row = img.plane[p] + ptrdiff_t{img.stride[p]} * y;
      const double v = y / kBlock * kBlock / h;
      for (int32_t x = 0; x < img.width[p]; ++x) {
        const double u = x / kBlock * kBlock / w;
        const double slow = std::sin(7 * u + 3 * v * (p + 1) + p);
        const double fine = std::sin(200 * u) * std::sin(150 * v);
        const double level = std::round((60 * slow + 20 * fine) / kStep);
        noise = noise * 1664525u + 1013904223u;
        row[x] = static_cast<uint8_t>(126 + kStep * level + (noise >> 30));
      }
    }
  }
}

int32_t deblock(const vexo_img &img) {
  constexpr uint32_t kStrength = 12;
  return vexo_dbf8x8_yuv(&img, kStrength);
}

}  // namespace bench
