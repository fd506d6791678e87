// SPDX-License-Identifier: Apache-2.0
#include "bench/tone_mapping.h"

#include <algorithm>
#include <cmath>

namespace bench {

namespace {

void put(uint8_t *at, double code, int shift) {
  const long sample = std::lround(std::clamp(code, 64.0, 960.0)) << shift;
  at[0] = static_cast<uint8_t>(sample);
  at[1] = static_cast<uint8_t>(sample >> 8);
}

uint8_t *row_of(const vexo_img &img, int plane, int y) {
  return img.plane[plane] + ptrdiff_t{img.stride[plane]} * y;
}

}  // namespace

void draw_hdr(const vexo_img &img) {
  const bool pairs = img.format == VEXO_FMT_P010LE;
  const int shift = pairs ? 6 : 0;
  const double w = img.width[0], h = img.height[0];
  for (int y = 0; y < img.height[0]; ++y) {
    uint8_t *row = row_of(img, 0, y);
    for (int x = 0; x < img.width[0]; ++x) {
      const double wave =
          std::sin(7 * x / w + 3 * y / h) * std::sin(2 * x / w - 5 * y / h);
      const double detail = std::sin(x * 0.9) * std::sin(y * 0.7);
      // A little further than the ends, so that both are reached.
      const double level =
          std::clamp(0.5 + 0.46 * wave + 0.06 * detail, 0., 1.);
      put(row + ptrdiff_t{2} * x, 64 + 876 * level * std::sqrt(level), shift);
    }
  }
  for (int y = 0; y < img.height[1]; ++y) {
    for (int x = 0; x < img.width[1]; ++x) {
      for (int c = 0; c < 2; ++c) {
        const double wave =
            std::sin(11 * x / w + 5 * y * (c + 1) / h + 1.5 * c);
        const double detail = std::sin(x * 0.5 + c) * std::sin(y * 0.4);
        put(row_of(img, pairs ? 1 : 1 + c, y) +
                ptrdiff_t{2} * (pairs ? 2 * x + c : x),
            512 + 60 * wave + 8 * detail, shift);
      }
    }
  }
}

void build_context(const ToneMapping &mapping, const vexo_img &src,
                   const vexo_img &dst, vexo_hdr_context *context) {
  lox::build_hdr_context(context, &src, &dst, 1000, 0,
                         mapping.kind == VEXO_HDR_HLG);
}

void map_bands(const vexo_hdr_context &context) {
  constexpr int32_t kBand = 4;
  for (int32_t row = 0; row < context.height; row += kBand) {
    _vexo_hdr10_to_sdr8(&context, row, row + kBand);
  }
}

}  // namespace bench
