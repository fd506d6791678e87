// SPDX-License-Identifier: Apache-2.0
// Colour conversion pixel by pixel and written for plainness: a table of YUV
// layouts, one of RGB layouts, the arithmetic from YUV to RGB, and tables of
// which kernel leads from where to where.
#ifndef ORUMLOX_TESTS_REFERENCE_CSC_MODEL_H
#define ORUMLOX_TESTS_REFERENCE_CSC_MODEL_H

#include <orumlox/csc.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <utility>

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
  const char* name;
  int32_t format;
  int32_t pixel_bytes;
  void (*pack)(const Channels& c, uint8_t* pixel);
  // 16-bit pixels have zeros below their channels.
  Channels (*unpack)(const uint8_t* pixel);
};

template <bool kRedOnTop>
void pack_565(const Channels& c, uint8_t* pixel) {
  const int32_t word = std::clamp((kRedOnTop ? c.r : c.b) >> 11, 0, 31) << 11 |
                       std::clamp(c.g >> 10, 0, 63) << 5 |
                       std::clamp((kRedOnTop ? c.b : c.r) >> 11, 0, 31);
  pixel[0] = static_cast<uint8_t>(word & 0xFF);
  pixel[1] = static_cast<uint8_t>(word >> 8);
}

template <bool kRedOnTop>
Channels unpack_565(const uint8_t* pixel) {
  const int32_t word = pixel[0] | pixel[1] << 8;
  const int32_t top = (word >> 11) << 11;
  const int32_t low = (word & 31) << 11;
  return {kRedOnTop ? top : low, (word >> 5 & 63) << 10, kRedOnTop ? low : top};
}

// 24- and 32-bit pixels: which byte each channel has, and alpha's, if any.
template <int kR, int kG, int kB, int kA>
void pack_bytes(const Channels& c, uint8_t* pixel) {
  pixel[kR] = static_cast<uint8_t>(std::clamp(c.r >> 8, 0, 255));
  pixel[kG] = static_cast<uint8_t>(std::clamp(c.g >> 8, 0, 255));
  pixel[kB] = static_cast<uint8_t>(std::clamp(c.b >> 8, 0, 255));
  if constexpr (kA >= 0) pixel[kA] = 255;
}

template <int kR, int kG, int kB>
Channels unpack_bytes(const uint8_t* pixel) {
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

inline const Destination* rgb_layout(int32_t format) {
  const auto* d = std::find_if(
      kDestinationTable, kDestinationTable + kDestinations,
      [&](const Destination& entry) { return entry.format == format; });
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
  const char* name;
  int planes;
  // Widths without a multiple of four are converted in pairs and a row at a
  // time, as 4:2:0 is: an odd width has one pixel more, and with an odd height
  // the first row has a chroma row of its own.
  bool in_pairs;
  Place luma, cb, cr;  // grey's chroma is its luma, and not looked at
  // To each destination of the table, null where there is no such kernel.
  vexo_csc_kernel* kernel[kDestinations];
  int32_t standard = VEXO_STD_DEFAULT;

  // How many pixels of a row are converted.
  int32_t converted(int32_t width) const {
    return in_pairs ? (width + 1) / 2 * 2 : width;
  }

  // The bytes of a plane's row that the first `columns` pixels lie in.
  int32_t row_bytes(int plane, int32_t columns) const {
    int32_t bytes = 0;
    for (const Place& p : {luma, cb, cr}) {
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
  static uint8_t* at(const Place& p, bool shifted, const vexo_img& img,
                     int32_t x, int32_t y) {
    return img.plane[p.plane] +
           ((y + (shifted ? p.y_shift : 0)) >> p.y_shift) *
               img.stride[p.plane] +
           (x >> p.x_shift) * p.step + p.first;
  }
  struct Samples {
    uint8_t *y, *u, *v;
  };
  Samples samples(const vexo_img& img, int32_t x, int32_t y) const {
    const bool shifted =
        in_pairs && img.width[0] % 4 != 0 && img.height[0] % 2 != 0;
    return {at(luma, shifted, img, x, y), at(cb, shifted, img, x, y),
            at(cr, shifted, img, x, y)};
  }

  Channels pixel(const vexo_img& img, int32_t x, int32_t y) const {
    const Samples s = samples(img, x, y);
    // Grey is replicated without expanding its range.
    if (format == VEXO_FMT_YUV400) return {*s.y << 8, *s.y << 8, *s.y << 8};
    return convert(standard, *s.y, *s.u, *s.v, x >= img.width[0] / 8 * 8);
  }
};

#define LOX_SOURCE(src, SRC, planes, in_pairs, y, u, v, ...)         \
  Source {                                                           \
    VEXO_FMT_##SRC, #src, planes, in_pairs, y, u, v, { __VA_ARGS__ } \
  }
#define LOX_SOURCE_TO_ALL(src, ...)                                      \
  LOX_SOURCE(src, __VA_ARGS__, vexo_csc_##src##_to_rgb565,               \
             vexo_csc_##src##_to_bgr565, vexo_csc_##src##_to_rgb888,     \
             vexo_csc_##src##_to_bgr888, vexo_csc_##src##_to_rgba8888,   \
             vexo_csc_##src##_to_bgra8888, vexo_csc_##src##_to_argb8888, \
             vexo_csc_##src##_to_abgr8888)
const Source kSourceTable[] = {
    LOX_SOURCE(yuv400, YUV400, 1, false, kLuma, kLuma, kLuma,
               vexo_csc_yuv400_to_rgb565, nullptr, vexo_csc_yuv400_to_rgb888),
    LOX_SOURCE_TO_ALL(yuv420, YUV420, 3, true, kLuma, planar(1, 1, 1),
                      planar(2, 1, 1)),
    LOX_SOURCE_TO_ALL(yv12, YV12, 3, true, kLuma, planar(2, 1, 1),
                      planar(1, 1, 1)),
    LOX_SOURCE_TO_ALL(nv12, NV12, 2, true, kLuma, paired(0), paired(1)),
    LOX_SOURCE_TO_ALL(nv21, NV21, 2, true, kLuma, paired(1), paired(0)),
    LOX_SOURCE_TO_ALL(yuv422n, YUV422N, 3, false, kLuma, planar(1, 1, 0),
                      planar(2, 1, 0)),
    LOX_SOURCE_TO_ALL(yuv444, YUV444, 3, false, kLuma, planar(1, 0, 0),
                      planar(2, 0, 0)),
    LOX_SOURCE(yuv422w, YUV422W, 3, false, kLuma, planar(1, 0, 1),
               planar(2, 0, 1), vexo_csc_yuv422w_to_rgb565,
               vexo_csc_yuv422w_to_bgr565),
    LOX_SOURCE_TO_ALL(uyvy, UYVY, 1, false, packed_luma(1), packed_chroma(0),
                      packed_chroma(2)),
    LOX_SOURCE_TO_ALL(yuyv, YUYV, 1, false, packed_luma(0), packed_chroma(1),
                      packed_chroma(3)),
    // The high byte of each 16-bit sample.
    LOX_SOURCE(p010le, P010LE, 2, true, (Place{0, 0, 0, 2, 1}),
               (Place{1, 1, 1, 4, 1}), (Place{1, 1, 1, 4, 3}), nullptr, nullptr,
               nullptr, nullptr, vexo_csc_p010le_to_rgba8888),
};
#undef LOX_SOURCE_TO_ALL
#undef LOX_SOURCE

// The other standards, whose kernels convert exactly the width.
#define LOX_STANDARD(std, src, STD, SRC, planes, u, v)         \
  Source {                                                     \
    VEXO_FMT_##SRC, #std "_" #src, planes, false, kLuma, u, v, \
        {nullptr, nullptr, nullptr, nullptr,                   \
         vexo_csc_##std##_##src##_to_rgba8888},                \
        VEXO_STD_##STD                                         \
  }
const Source kStandardTable[] = {
    LOX_STANDARD(bt601_fr, yuv420, BT601_FULL, YUV420, 3, planar(1, 1, 1),
                 planar(2, 1, 1)),
    LOX_STANDARD(bt601_fr, nv12, BT601_FULL, NV12, 2, paired(0), paired(1)),
    LOX_STANDARD(bt601_fr, nv21, BT601_FULL, NV21, 2, paired(1), paired(0)),
    LOX_STANDARD(bt709, yuv420, BT709, YUV420, 3, planar(1, 1, 1),
                 planar(2, 1, 1)),
    LOX_STANDARD(bt709_fr, yuv420, BT709_FULL, YUV420, 3, planar(1, 1, 1),
                 planar(2, 1, 1)),
};
#undef LOX_STANDARD

// The layout of an 8-bit YUV format.
inline Source yuv_layout(int32_t format) {
  const bool yv16 = format == VEXO_FMT_YV16;
  for (const Source& s : kSourceTable) {
    if (s.format != (yv16 ? int32_t{VEXO_FMT_YUV422N} : format)) continue;
    Source layout = s;
    if (yv16) std::swap(layout.cb, layout.cr);
    return layout;
  }
  return {};
}

// Every other kernel.
struct Route {
  int32_t src, dst;
  const char* name;
  vexo_csc_kernel* kernel;
  int32_t standard = VEXO_STD_DEFAULT;
};

#define LOX_ROUTE(src, SRC, dst, DST)                 \
  Route {                                             \
    VEXO_FMT_##SRC, VEXO_FMT_##DST, #src "_to_" #dst, \
        vexo_csc_##src##_to_##dst                     \
  }
#define LOX_TO_PLANAR(src, SRC) \
  LOX_ROUTE(src, SRC, yuv420, YUV420), LOX_ROUTE(src, SRC, yv12, YV12)
#define LOX_TO_420(src, SRC)                                \
  LOX_TO_PLANAR(src, SRC), LOX_ROUTE(src, SRC, nv12, NV12), \
      LOX_ROUTE(src, SRC, nv21, NV21)
#define LOX_RGBA_BY(std, STD, dst, DST)                    \
  Route {                                                  \
    VEXO_FMT_RGBA8888, VEXO_FMT_##DST, #std "_to_" #dst,   \
        vexo_csc_##std##_rgba8888_to_##dst, VEXO_STD_##STD \
  }
constexpr Route kRgbRoutes[] = {
    LOX_TO_420(rgb565, RGB565),
    LOX_TO_420(bgr565, BGR565),
    LOX_TO_420(rgb888, RGB888),
    LOX_TO_420(bgr888, BGR888),
    LOX_TO_420(rgba8888, RGBA8888),
    LOX_TO_420(bgra8888, BGRA8888),
    LOX_TO_420(argb8888, ARGB8888),
    LOX_TO_420(abgr8888, ABGR8888),
    LOX_ROUTE(rgba8888, RGBA8888, yuv444, YUV444),
    LOX_ROUTE(argb8888, ARGB8888, yuv444, YUV444),
    LOX_RGBA_BY(bt601_fr, BT601_FULL, yuv420, YUV420),
    LOX_RGBA_BY(bt601_fr, BT601_FULL, yv12, YV12),
    LOX_RGBA_BY(bt601_fr, BT601_FULL, nv12, NV12),
    LOX_RGBA_BY(bt601_fr, BT601_FULL, nv21, NV21),
    LOX_RGBA_BY(bt709, BT709, nv12, NV12),
    LOX_RGBA_BY(bt709, BT709, nv21, NV21),
    LOX_ROUTE(rgba8888, RGBA8888, rgb565, RGB565),
    LOX_ROUTE(rgb888, RGB888, rgb565, RGB565),
    LOX_ROUTE(rgb565, RGB565, rgba8888, RGBA8888),
};
constexpr Route kLayoutRoutes[] = {
    LOX_ROUTE(yuv420, YUV420, nv12, NV12),
    LOX_ROUTE(yuv420, YUV420, nv21, NV21),
    LOX_ROUTE(yuv420, YUV420, yuv422n, YUV422N),
    LOX_TO_PLANAR(yuv422n, YUV422N),
    LOX_TO_PLANAR(yv16, YV16),
    LOX_ROUTE(yuv444, YUV444, yuv420, YUV420),
    LOX_TO_PLANAR(nv12, NV12),
    LOX_TO_PLANAR(nv21, NV21),
};
constexpr Route kTileRoutes[] = {
    LOX_TO_420(t64x32, T64X32),
    LOX_ROUTE(t16x16, T16X16, yuv420, YUV420),
    LOX_ROUTE(t16x16, T16X16, nv12, NV12),
    LOX_ROUTE(t64x32, T64X32, rgb565, RGB565),
    LOX_ROUTE(t64x32, T64X32, bgr565, BGR565),
    LOX_ROUTE(t64x32, T64X32, rgb888, RGB888),
    LOX_ROUTE(t64x32, T64X32, bgr888, BGR888),
    LOX_ROUTE(t64x32, T64X32, rgba8888, RGBA8888),
    LOX_ROUTE(t64x32, T64X32, bgra8888, BGRA8888),
    LOX_ROUTE(t64x32, T64X32, argb8888, ARGB8888),
    LOX_ROUTE(t64x32, T64X32, abgr8888, ABGR8888),
    LOX_ROUTE(t16x16, T16X16, rgba8888, RGBA8888),
    LOX_ROUTE(t8x8, T8X8, rgba8888, RGBA8888),
    LOX_ROUTE(t256x16, T256X16, rgba8888, RGBA8888),
};
// These have tests of their own.
constexpr Route kOtherRoutes[] = {
    LOX_ROUTE(nv21, NV21, nv12, NV12),
    LOX_ROUTE(yuyv, YUYV, yuv420, YUV420),
    LOX_ROUTE(yuv420, YUV420, t64x32, T64X32),
    {VEXO_FMT_YUV420PLANAR16, VEXO_FMT_YUV420, "yuv420Planar16_to_yuv420Planar",
     vexo_csc_yuv420Planar16_to_yuv420Planar},
};
#undef LOX_RGBA_BY
#undef LOX_TO_420
#undef LOX_TO_PLANAR
#undef LOX_ROUTE

}  // namespace lox_test

#endif  // ORUMLOX_TESTS_REFERENCE_CSC_MODEL_H
