// SPDX-License-Identifier: Apache-2.0
// Colour conversion pixel by pixel and written for plainness: a table of YUV
// layouts, one of RGB layouts, and the arithmetic from YUV to RGB.
#pragma once

#include <orumlox/csc.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <utility>
#include <vector>

#include "support/kernels.h"

namespace lox_test {

// The three channels before the shift that brings them to their width: 256
// times the channel, with the half of rounding added.
struct Channels {
  int32_t r, g, b;
};

template <int kY, int kBlack, int kVr, int kUg, int kVg, int kUb>
Channels by_matrix(int32_t y, int32_t u, int32_t v) {
  const int32_t l = kY * (y - kBlack) + 128;
  return {l + kVr * (v - 128), l + kUg * (u - 128) + kVg * (v - 128),
          l + kUb * (u - 128)};
}

inline Channels bt601_full(int32_t y, int32_t u, int32_t v, bool tail) {
  u -= 128;
  v -= 128;
  if (!tail) {
    return {256 * (y + (179 * v >> 7)),
            256 * (y + (-44 * u >> 7) + (-91 * v >> 7)),
            256 * (y + (227 * u >> 7))};
  }
  const auto floored = [](double c) {
    return 256 * static_cast<int32_t>(std::floor(c));
  };
  return {floored(y + 1.402 * v), floored(y - 0.344 * u - 0.714 * v),
          floored(y + 1.772 * u)};
}

// `tail`: the pixel lies in the last width mod 8 columns.
inline Channels convert(int32_t standard, int32_t y, int32_t u, int32_t v,
                        bool tail) {
  switch (standard) {
    case VEXO_STD_BT601_FULL:
      return bt601_full(y, u, v, tail);
    case VEXO_STD_BT709:
      return by_matrix<298, 16, 459, -55, -137, 541>(y, u, v);
    case VEXO_STD_BT709_FULL:
      return by_matrix<256, 0, 394, -47, -118, 465>(y, u, v);
    default:
      return by_matrix<298, 16, 409, -100, -208, 516>(y, u, v);
  }
}

struct Destination {
  const char *name;
  int32_t format;
  int32_t pixel_bytes;
  void (*pack)(const Channels &c, uint8_t *pixel);
  // 16-bit pixels have zeros below their channels.
  Channels (*unpack)(const uint8_t *pixel);
};

template <bool kRedOnTop>
void pack_565(const Channels &c, uint8_t *pixel) {
  const int32_t word = std::clamp((kRedOnTop ? c.r : c.b) >> 11, 0, 31) << 11 |
                       std::clamp(c.g >> 10, 0, 63) << 5 |
                       std::clamp((kRedOnTop ? c.b : c.r) >> 11, 0, 31);
  pixel[0] = static_cast<uint8_t>(word & 0xFF);
  pixel[1] = static_cast<uint8_t>(word >> 8);
}

template <bool kRedOnTop>
Channels unpack_565(const uint8_t *pixel) {
  const int32_t word = pixel[0] | pixel[1] << 8;
  const int32_t top = (word >> 11) << 11;
  const int32_t low = (word & 31) << 11;
  return {kRedOnTop ? top : low, (word >> 5 & 63) << 10, kRedOnTop ? low : top};
}

// 24- and 32-bit pixels: which byte each channel has, and alpha's, if any.
template <int kR, int kG, int kB, int kA>
void pack_bytes(const Channels &c, uint8_t *pixel) {
  pixel[kR] = static_cast<uint8_t>(std::clamp(c.r >> 8, 0, 255));
  pixel[kG] = static_cast<uint8_t>(std::clamp(c.g >> 8, 0, 255));
  pixel[kB] = static_cast<uint8_t>(std::clamp(c.b >> 8, 0, 255));
  if constexpr (kA >= 0) pixel[kA] = 255;
}

template <int kR, int kG, int kB>
Channels unpack_bytes(const uint8_t *pixel) {
  return {pixel[kR] << 8, pixel[kG] << 8, pixel[kB] << 8};
}

constexpr int kDestinations = 8;
constexpr Destination kDestinationTable[kDestinations] = {
    {"rgb565", VEXO_FMT_RGB565, 2, pack_565<true>, unpack_565<true>},
    {"bgr565", VEXO_FMT_BGR565, 2, pack_565<false>, unpack_565<false>},
    {"rgb888", VEXO_FMT_RGB888, 3, pack_bytes<0, 1, 2, -1>,
     unpack_bytes<0, 1, 2>},
    {"bgr888", VEXO_FMT_BGR888, 3, pack_bytes<2, 1, 0, -1>,
     unpack_bytes<2, 1, 0>},
    {"rgba8888", VEXO_FMT_RGBA8888, 4, pack_bytes<0, 1, 2, 3>,
     unpack_bytes<0, 1, 2>},
    {"bgra8888", VEXO_FMT_BGRA8888, 4, pack_bytes<2, 1, 0, 3>,
     unpack_bytes<2, 1, 0>},
    {"argb8888", VEXO_FMT_ARGB8888, 4, pack_bytes<1, 2, 3, 0>,
     unpack_bytes<1, 2, 3>},
    {"abgr8888", VEXO_FMT_ABGR8888, 4, pack_bytes<3, 2, 1, 0>,
     unpack_bytes<3, 2, 1>},
};

inline const Destination *rgb_layout(int32_t format) {
  const auto *d = std::find_if(
      kDestinationTable, kDestinationTable + kDestinations,
      [&](const Destination &entry) { return entry.format == format; });
  return d == kDestinationTable + kDestinations ? nullptr : d;
}

// Where a kind of sample lies: column x has byte (x >> x_shift) * step + first
// of the plane's row y >> y_shift.
struct Place {
  int plane, x_shift, y_shift;
  int32_t step, first;
};
constexpr Place planar(int plane, int x_shift, int y_shift) {
  return {plane, x_shift, y_shift, 1, 0};
}
constexpr Place paired(int32_t first) { return {1, 1, 1, 2, first}; }
constexpr Place packed_luma(int32_t first) { return {0, 0, 0, 2, first}; }
constexpr Place packed_chroma(int32_t first) { return {0, 1, 0, 4, first}; }
constexpr Place kLuma = planar(0, 0, 0);

struct Source {
  int32_t format;
  const char *name;
  int planes;
  // Widths without a multiple of four are converted in pairs and a row at a
  // time, as 4:2:0 is: an odd width has one pixel more, and with an odd height
  // the first row has a chroma row of its own.
  bool in_pairs;
  Place luma, cb, cr;  // grey's chroma is its luma, and not looked at
  int32_t standard = VEXO_STD_DEFAULT;

  // To a destination of the table, null where there is no such kernel.
  vexo_csc_kernel *kernel(int destination) const {
    return conversion(standard, format, kDestinationTable[destination].format);
  }

  // How many pixels of a row are converted.
  int32_t converted(int32_t width) const {
    return in_pairs ? (width + 1) / 2 * 2 : width;
  }

  // The bytes of a plane's row that the first `columns` pixels lie in.
  int32_t row_bytes(int plane, int32_t columns) const {
    int32_t bytes = 0;
    for (const Place &p : {luma, cb, cr}) {
      if (p.plane != plane || columns < 1) continue;
      const int32_t last = ((columns - 1) >> p.x_shift) * p.step + p.first;
      bytes = std::max(bytes, last + 1);
    }
    return bytes;
  }
  int32_t rows(int plane, int32_t height) const {
    return plane > 0 && cb.y_shift == 1 ? (height + 1) / 2 : height;
  }

  // The sample for pixel (x, y) of a picture whose size and planes are `img`'s.
  static uint8_t *at(const Place &p, bool shifted, const vexo_img &img,
                     int32_t x, int32_t y) {
    return img.plane[p.plane] +
           ((y + (shifted ? p.y_shift : 0)) >> p.y_shift) *
               img.stride[p.plane] +
           (x >> p.x_shift) * p.step + p.first;
  }
  struct Samples {
    uint8_t *y, *u, *v;
  };
  Samples samples(const vexo_img &img, int32_t x, int32_t y) const {
    const bool shifted =
        in_pairs && img.width[0] % 4 != 0 && img.height[0] % 2 != 0;
    return {at(luma, shifted, img, x, y), at(cb, shifted, img, x, y),
            at(cr, shifted, img, x, y)};
  }

  Channels pixel(const vexo_img &img, int32_t x, int32_t y) const {
    const Samples s = samples(img, x, y);
    // Grey is replicated without expanding its range.
    if (format == VEXO_FMT_YUV400) return {*s.y << 8, *s.y << 8, *s.y << 8};
    return convert(standard, *s.y, *s.u, *s.v, x >= img.width[0] / 8 * 8);
  }
};

constexpr Source kSourceTable[] = {
    {VEXO_FMT_YUV400, "yuv400", 1, false, kLuma, kLuma, kLuma},
    {VEXO_FMT_YUV420, "yuv420", 3, true, kLuma, planar(1, 1, 1),
     planar(2, 1, 1)},
    {VEXO_FMT_YV12, "yv12", 3, true, kLuma, planar(2, 1, 1), planar(1, 1, 1)},
    {VEXO_FMT_NV12, "nv12", 2, true, kLuma, paired(0), paired(1)},
    {VEXO_FMT_NV21, "nv21", 2, true, kLuma, paired(1), paired(0)},
    {VEXO_FMT_YUV422N, "yuv422n", 3, false, kLuma, planar(1, 1, 0),
     planar(2, 1, 0)},
    {VEXO_FMT_YUV444, "yuv444", 3, false, kLuma, planar(1, 0, 0),
     planar(2, 0, 0)},
    {VEXO_FMT_YUV422W, "yuv422w", 3, false, kLuma, planar(1, 0, 1),
     planar(2, 0, 1)},
    {VEXO_FMT_UYVY, "uyvy", 1, false, packed_luma(1), packed_chroma(0),
     packed_chroma(2)},
    {VEXO_FMT_YUYV, "yuyv", 1, false, packed_luma(0), packed_chroma(1),
     packed_chroma(3)},
    // The high byte of each 16-bit sample.
    {VEXO_FMT_P010LE,
     "p010le",
     2,
     true,
     {0, 0, 0, 2, 1},
     {1, 1, 1, 4, 1},
     {1, 1, 1, 4, 3}},
};

// The other standards, whose kernels convert exactly the width.
constexpr Source kStandardTable[] = {
    {VEXO_FMT_YUV420, "bt601_fr_yuv420", 3, false, kLuma, planar(1, 1, 1),
     planar(2, 1, 1), VEXO_STD_BT601_FULL},
    {VEXO_FMT_NV12, "bt601_fr_nv12", 2, false, kLuma, paired(0), paired(1),
     VEXO_STD_BT601_FULL},
    {VEXO_FMT_NV21, "bt601_fr_nv21", 2, false, kLuma, paired(1), paired(0),
     VEXO_STD_BT601_FULL},
    {VEXO_FMT_YUV420, "bt709_yuv420", 3, false, kLuma, planar(1, 1, 1),
     planar(2, 1, 1), VEXO_STD_BT709},
    {VEXO_FMT_YUV420, "bt709_fr_yuv420", 3, false, kLuma, planar(1, 1, 1),
     planar(2, 1, 1), VEXO_STD_BT709_FULL},
};

// The layout of an 8-bit YUV format.
inline Source yuv_layout(int32_t format) {
  const bool yv16 = format == VEXO_FMT_YV16;
  for (const Source &s : kSourceTable) {
    if (s.format != (yv16 ? int32_t{VEXO_FMT_YUV422N} : format)) continue;
    Source layout = s;
    if (yv16) std::swap(layout.cb, layout.cr);
    return layout;
  }
  return {};
}

// The kernels with tests of their own elsewhere: those of RGB, of tiles, and
// between planar and semi-planar layouts but the exchange of pairs in place.
inline std::vector<Conversion> rgb_routes() {
  return conversions_that([](int32_t src, int32_t) {
    return src >= VEXO_FMT_RGB565 && src <= VEXO_FMT_ABGR8888;
  });
}
inline std::vector<Conversion> tile_routes() {
  return conversions_that([](int32_t src, int32_t) {
    return src >= VEXO_FMT_T64X32 && src <= VEXO_FMT_T256X16;
  });
}
inline std::vector<Conversion> layout_routes() {
  return conversions_that([](int32_t src, int32_t dst) {
    const bool exchange = src == VEXO_FMT_NV21 && dst == VEXO_FMT_NV12;
    return src < VEXO_FMT_YUV422W && dst < VEXO_FMT_YUV422W && !exchange;
  });
}

}  // namespace lox_test
