// SPDX-License-Identifier: Apache-2.0
// Tone mapping pixel by pixel, written for plainness: the context in doubles, a
// pixel's way through its tables, and every byte of a picture in the order of
// writing.
#pragma once

#include <orumlox/hdr.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <map>

#include "cases/cases.h"

namespace lox_test {

// The nit by measurement and by the source's word.
inline int32_t measured_nit(const Function &, int32_t width, int32_t height,
                            const uint16_t *luma) {
  const int32_t step = width > 2000 ? 4 : 2;
  int32_t largest = 0;
  for (int32_t y = 0; y < height; y += step) {
    for (int32_t x = 0; x < width; x += step) {
      largest = std::max<int32_t>(largest, luma[ptrdiff_t{y} * width + x]);
    }
  }
  return largest <= 750 ? 1000 : largest <= 810 ? 2000 : 4001;
}
inline int32_t final_nit(const vexo_img &src) {
  if (src.mode != 1) return src.source_nit <= 1500 ? 1000 : 4000;
  const void *luma = src.plane[0];
  return measured_nit({}, src.width[0], src.height[0],
                      static_cast<const uint16_t *>(luma));
}

inline double tone_curve(const Function &, double x, double s, double t, double,
                         int32_t n, double a) {
  return x <= t ? s * x : a * (1 - std::pow(1 - x, n)) + (1 - a) * x;
}

// What depends on the nit and on the kind of signal alone.
inline vexo_hdr_context fill_tables(int32_t nit, bool hlg) {
  vexo_hdr_context c{};
  c.scale = 10000.0 / nit;
  c.s = nit == 1000 ? 2 : nit == 2000 ? 3.7 : nit == 4000 ? 7.5 : 10;
  c.t = nit == 1000 ? 0.1 : nit == 2000 ? 0.07 : nit == 4000 ? 0.0375 : 0.04;
  c.knee = c.s * c.t;
  c.n = static_cast<int32_t>(std::log(1 - c.s * c.t) / std::log(1 - c.t) + 0.5);
  c.a = (c.s * c.t - c.t) / (1 - std::pow(1 - c.t, c.n) - c.t);
  for (int i = 0; i < 1024; ++i) {
    const double m1 = 0.1593017578125, m2 = 78.84375;
    const double c1 = 0.8359375, c2 = 18.8515625, c3 = 18.6875;
    const double n = std::pow(i / 1023.0, 1 / m2);
    const double l = std::pow(std::max(n - c1, 0.0) / (c2 - c3 * n), 1 / m1);
    const double pq = std::min(10000.0 / nit * l, 1.0);
    c.pq[i] = hlg ? 0 : static_cast<uint16_t>(pq * 32767 + 0.5);
    const double power = std::pow(i / 1023.0, 2.4);
    c.hlg_linear[i] = hlg ? static_cast<uint16_t>(power * 32767 + 0.5) : 0;
  }
  for (int i = 1; i < 257; ++i) {
    const float x = static_cast<float>(std::min(i, 255)) / 255;
    const double g = tone_curve({}, x, c.s, c.t, 0, c.n, c.a) / x;
    c.gain[i] = static_cast<uint16_t>(g * 256 + 0.5);
  }
  for (int i = 0; i < 4096; ++i) {
    const float x = static_cast<float>(i) / 4095;
    const double y = std::min(std::pow(double{x}, 0.45454543828964233f), 1.0);
    const int code = static_cast<int>(y * 4095 + 0.5);
    const float product = static_cast<float>(code >> 4) * 0.85882354f;
    c.gamma[i] = static_cast<uint8_t>(16 + product);
  }
  return c;
}

inline vexo_hdr_context model_context(const vexo_img *src, const vexo_img *dst,
                                      int32_t nit, int32_t variant, bool hlg) {
  static const auto tables = [] {
    std::map<int32_t, vexo_hdr_context> all;
    for (const int32_t n : {1000, 2000, 4000, 4001}) {
      all[n] = fill_tables(n, false);
      all[-n] = fill_tables(n, true);
    }
    return all;
  }();
  vexo_hdr_context c = tables.at(hlg ? -nit : nit);
  c.width = src->width[0];
  c.height = src->height[0];
  c.chunk = c.width % 32 == 0 ? 32 : c.width % 16 == 0 ? 16 : 8;
  c.variant = variant;
  c.hlg = hlg ? 1 : 0;
  c.src = src;
  c.dst = dst;
  return c;
}

struct Pixel {
  int32_t r, g, b, y, u, v;
};

inline Pixel tone_map(const vexo_hdr_context &c, int32_t y_code, int32_t u_code,
                      int32_t v_code) {
  // No product lies half way between two integers.
  const auto nearest = [](double x) { return std::lround(x); };
  const auto dot = [](const int32_t(&k)[3], const int32_t(&x)[3]) {
    return k[0] * x[0] + k[1] * x[1] + k[2] * x[2];
  };
  const int mild = c.variant != 0 ? 1 : 0;

  const double y = std::clamp((y_code - 64) * 1024 / 876.0, 0.0, 1024.0);
  const double u = (std::clamp(u_code, 64, 960) - 512) * 1024 / 896.0;
  const double v = (std::clamp(v_code, 64, 960) - 512) * 1024 / 896.0;
  const long signal[3] = {
      nearest(y) + nearest(1.4746 * v),
      nearest(y) - nearest(0.16455 * u) - nearest(0.57135 * v),
      nearest(y) + nearest(1.8814 * u)};
  int32_t linear[3];
  for (int i = 0; i < 3; ++i) {
    const auto *table = c.hlg != 0 ? c.hlg_linear : c.pq;
    linear[i] = table[std::clamp(signal[i], 0L, 1023L)];
  }

  constexpr int32_t kToBt709[2][3][3] = {
      {{425, -150, -19}, {-32, 290, -2}, {-5, -26, 287}},
      {{344, -72, -16}, {-17, 276, -3}, {1, -5, 261}}};
  int32_t light[3];
  for (int i = 0; i < 3; ++i) {
    light[i] = std::clamp(dot(kToBt709[mild][i], linear) >> 8, 0, 32767);
  }
  const int32_t m = std::max({light[0], light[1], light[2]});
  const int32_t f = (m >> 3) & 15;
  const int32_t gain =
      ((16 - f) * c.gain[m >> 7] + f * c.gain[(m >> 7) + 1]) >> 4;
  int32_t rgb[3];
  for (int i = 0; i < 3; ++i) {
    const int32_t p = gain * light[i];
    const int32_t toned = p >= 0x7FFF00 ? 4095 : p >> 11;
    rgb[i] = c.gamma[c.hlg != 0 ? light[i] >> 3 : toned];
  }

  constexpr int32_t kToYuv[2][3][3] = {
      {{871, 2929, 296}, {-480, -1615, 2095}, {2095, -1903, -192}},
      {{859, 2955, 283}, {-461, -1587, 2048}, {2048, -1869, -179}}};
  const auto weighed = [&](int32_t base, int row) {
    return std::clamp(base + (dot(kToYuv[mild][row], rgb) >> 12), 0, 255);
  };
  return {rgb[0],        rgb[1],          rgb[2],
          weighed(0, 0), weighed(128, 1), weighed(128, 2)};
}

// The pixel of a source picture.
inline Pixel pixel_at(const vexo_hdr_context &c, int32_t x, int32_t row) {
  const vexo_img &src = *c.src;
  const bool planar = src.format == VEXO_FMT_YUV420PLANAR16;
  if (!planar && src.format != VEXO_FMT_P010LE) return tone_map(c, 0, 0, 0);
  // Planes 1 and 2 have one stride; rows are whole words apart.
  const auto code = [&](int p, int32_t column, int32_t line) -> int32_t {
    const ptrdiff_t words = src.stride[p == 0 ? 0 : 1] / 2;
    uint16_t word;
    std::memcpy(&word, src.plane[p] + 2 * (line * words + column), sizeof word);
    return planar ? word & 1023 : word >> 6;
  };
  const int32_t i = x / 2;
  const int32_t y = code(0, x, row);
  return planar ? tone_map(c, y, code(1, i, row / 2), code(2, i, row / 2))
                : tone_map(c, y, code(1, 2 * i, row / 2),
                           code(1, 2 * i + 1, row / 2));
}

// The rows first to end - 1 as one band.
int32_t tone_map_band(const Function &, const vexo_hdr_context *context,
                      int32_t first, int32_t end);

}  // namespace lox_test
