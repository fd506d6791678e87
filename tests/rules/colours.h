// SPDX-License-Identifier: Apache-2.0
// A table of YUV layouts, one of RGB layouts, and the arithmetic between them.
#pragma once

#include <orumlox/img.h>

#include <algorithm>
#include <cmath>
#include <iterator>

#include "support/exact_sizes.h"

namespace lox_test {

// Three channels before the shift that brings them to their width: 256 times
// the channel, with the half of rounding added.
struct Channels {
  int32_t r, g, b;
};
struct Yuv {
  int32_t y, u, v;
};

template <int kY, int kBlack, int kVr, int kUg, int kVg, int kUb>
Channels by_matrix(const Yuv &c) {
  const int32_t l = kY * (c.y - kBlack) + 128;
  return {l + kVr * (c.v - 128), l + kUg * (c.u - 128) + kVg * (c.v - 128),
          l + kUb * (c.u - 128)};
}

// `tail`: the pixel lies in the last width mod 8 columns.
inline Channels bt601_full(const Yuv &c, bool tail) {
  const int32_t u = c.u - 128;
  const int32_t v = c.v - 128;
  if (!tail) {
    return {256 * (c.y + (179 * v >> 7)),
            256 * (c.y + (-44 * u >> 7) + (-91 * v >> 7)),
            256 * (c.y + (227 * u >> 7))};
  }
  const auto floored = [](double channel) {
    return 256 * static_cast<int32_t>(std::floor(channel));
  };
  return {floored(c.y + 1.402 * v), floored(c.y - 0.344 * u - 0.714 * v),
          floored(c.y + 1.772 * u)};
}

inline Channels to_rgb(int32_t standard, const Yuv &c, bool tail) {
  switch (standard) {
    case VEXO_STD_BT601_FULL:
      return bt601_full(c, tail);
    case VEXO_STD_BT709:
      return by_matrix<298, 16, 459, -55, -137, 541>(c);
    case VEXO_STD_BT709_FULL:
      return by_matrix<256, 0, 394, -47, -118, 465>(c);
    default:
      return by_matrix<298, 16, 409, -100, -208, 516>(c);
  }
}

// The weights of red, green and blue, in 256ths. Luma is truncated and chroma
// rounded.
struct Weights {
  int32_t y[3], black, u[3], v[3];

  static int32_t sum(const int32_t (&w)[3], const Channels &c) {
    return w[0] * (c.r >> 8) + w[1] * (c.g >> 8) + w[2] * (c.b >> 8);
  }
};
inline constexpr Weights kDefault = {
    {66, 129, 25}, 16, {-38, -74, 112}, {112, -94, -18}};
inline constexpr Weights kBt601Full = {
    {77, 150, 29}, 0, {-43, -84, 127}, {127, -106, -21}};
inline constexpr Weights kBt709 = {
    {47, 157, 25}, 16, {-26, -86, 112}, {112, -102, -10}};

inline Yuv to_yuv(int32_t standard, const Channels &c) {
  const Weights &w = standard == VEXO_STD_BT601_FULL ? kBt601Full
                     : standard == VEXO_STD_BT709    ? kBt709
                                                     : kDefault;
  return {(Weights::sum(w.y, c) >> 8) + w.black,
          ((Weights::sum(w.u, c) + 128) >> 8) + 128,
          ((Weights::sum(w.v, c) + 128) >> 8) + 128};
}

// Where the channels of an RGB pixel are: bits of a word of 16, or bytes, alpha
// among them if it has one.
struct Rgb {
  int32_t format;
  int bytes;
  int r, g, b, alpha;

  void put(const Channels &c, uint8_t *pixel) const {
    if (bytes == 2) {
      const int32_t word = std::clamp(c.r >> 11, 0, 31) << r |
                           std::clamp(c.g >> 10, 0, 63) << g |
                           std::clamp(c.b >> 11, 0, 31) << b;
      pixel[0] = static_cast<uint8_t>(word & 0xFF);
      pixel[1] = static_cast<uint8_t>(word >> 8);
      return;
    }
    pixel[r] = static_cast<uint8_t>(std::clamp(c.r >> 8, 0, 255));
    pixel[g] = static_cast<uint8_t>(std::clamp(c.g >> 8, 0, 255));
    pixel[b] = static_cast<uint8_t>(std::clamp(c.b >> 8, 0, 255));
    if (alpha >= 0) pixel[alpha] = 255;
  }
  // 16-bit pixels have zeros below their channels.
  Channels get(const uint8_t *pixel) const {
    if (bytes > 2) return {pixel[r] << 8, pixel[g] << 8, pixel[b] << 8};
    const int32_t word = pixel[0] | pixel[1] << 8;
    return {(word >> r & 31) << 11, (word >> g & 63) << 10,
            (word >> b & 31) << 11};
  }
};
inline constexpr Rgb kRgb[] = {
    {VEXO_FMT_RGB565, 2, 11, 5, 0, -1}, {VEXO_FMT_BGR565, 2, 0, 5, 11, -1},
    {VEXO_FMT_RGB888, 3, 0, 1, 2, -1},  {VEXO_FMT_BGR888, 3, 2, 1, 0, -1},
    {VEXO_FMT_RGBA8888, 4, 0, 1, 2, 3}, {VEXO_FMT_BGRA8888, 4, 2, 1, 0, 3},
    {VEXO_FMT_ARGB8888, 4, 1, 2, 3, 0}, {VEXO_FMT_ABGR8888, 4, 3, 2, 1, 0}};
inline const Rgb &rgb_layout(int32_t format) {
  return *std::find_if(std::begin(kRgb), std::end(kRgb),
                       [&](const Rgb &l) { return l.format == format; });
}

// Where a kind of sample lies: column x has byte (x >> x_shift) * step + first
// of the plane's row y >> y_shift.
struct Place {
  int plane, x_shift, y_shift, step, first;
};
struct YuvLayout {
  int32_t format;
  Place y, u, v;
};
inline constexpr Place kLuma = {0, 0, 0, 1, 0};
constexpr Place planar(int plane, int x_shift, int y_shift) {
  return {plane, x_shift, y_shift, 1, 0};
}
constexpr Place paired(int first) { return {1, 1, 1, 2, first}; }
constexpr Place packed(int x_shift, int first) {
  return {0, x_shift, 0, 2 << x_shift, first};
}
inline constexpr YuvLayout kLayouts[] = {
    {VEXO_FMT_YUV400, kLuma, kLuma, kLuma},
    {VEXO_FMT_YUV420, kLuma, planar(1, 1, 1), planar(2, 1, 1)},
    {VEXO_FMT_YV12, kLuma, planar(2, 1, 1), planar(1, 1, 1)},
    {VEXO_FMT_NV12, kLuma, paired(0), paired(1)},
    {VEXO_FMT_NV21, kLuma, paired(1), paired(0)},
    {VEXO_FMT_YUV422N, kLuma, planar(1, 1, 0), planar(2, 1, 0)},
    {VEXO_FMT_YV16, kLuma, planar(2, 1, 0), planar(1, 1, 0)},
    {VEXO_FMT_YUV444, kLuma, planar(1, 0, 0), planar(2, 0, 0)},
    {VEXO_FMT_YUV422W, kLuma, planar(1, 0, 1), planar(2, 0, 1)},
    {VEXO_FMT_UYVY, packed(0, 1), packed(1, 0), packed(1, 2)},
    {VEXO_FMT_YUYV, packed(0, 0), packed(1, 1), packed(1, 3)},
    {VEXO_FMT_YUV420PLANAR16,
     {0, 0, 0, 2, 0},
     {1, 1, 1, 2, 0},
     {2, 1, 1, 2, 0}},
    // The high byte of each 16-bit sample.
    {VEXO_FMT_P010LE, {0, 0, 0, 2, 1}, {1, 1, 1, 4, 1}, {1, 1, 1, 4, 3}}};
// Tiles have pairs.
inline const YuvLayout &yuv_layout(int32_t format) {
  if (is_tiled_code(format)) format = VEXO_FMT_NV12;
  return *std::find_if(std::begin(kLayouts), std::end(kLayouts),
                       [&](const YuvLayout &l) { return l.format == format; });
}

}  // namespace lox_test
