// SPDX-License-Identifier: Apache-2.0
// The conversion of YUV pictures to RGB, pixel by pixel and written for
// plainness: a table of source layouts, one of destination layouts, and the
// arithmetic between them.
#ifndef ORUMLOX_TESTS_REFERENCE_CSC_MODEL_H
#define ORUMLOX_TESTS_REFERENCE_CSC_MODEL_H

#include <orumlox/csc.h>

#include <algorithm>
#include <cstdint>

namespace lox_test {

// The three channels before the shift that brings them to their width: 256
// times the channel, with the half of rounding added.
struct Channels {
  int32_t r, g, b;
};

inline Channels convert(int32_t y, int32_t u, int32_t v) {
  const int32_t l = 298 * (y - 16) + 128;
  return {l + 409 * (v - 128), l - 100 * (u - 128) - 208 * (v - 128),
          l + 516 * (u - 128)};
}

struct Destination {
  const char* name;
  int32_t format;
  int32_t pixel_bytes;
  void (*pack)(const Channels& c, uint8_t* pixel);
};

template <bool kRedOnTop>
void pack_565(const Channels& c, uint8_t* pixel) {
  const int32_t word = std::clamp((kRedOnTop ? c.r : c.b) >> 11, 0, 31) << 11 |
                       std::clamp(c.g >> 10, 0, 63) << 5 |
                       std::clamp((kRedOnTop ? c.b : c.r) >> 11, 0, 31);
  pixel[0] = static_cast<uint8_t>(word & 0xFF);
  pixel[1] = static_cast<uint8_t>(word >> 8);
}

// 24- and 32-bit pixels: which byte each channel has, and alpha's, if any.
template <int kR, int kG, int kB, int kA>
void pack_bytes(const Channels& c, uint8_t* pixel) {
  pixel[kR] = static_cast<uint8_t>(std::clamp(c.r >> 8, 0, 255));
  pixel[kG] = static_cast<uint8_t>(std::clamp(c.g >> 8, 0, 255));
  pixel[kB] = static_cast<uint8_t>(std::clamp(c.b >> 8, 0, 255));
  if constexpr (kA >= 0) pixel[kA] = 255;
}

constexpr int kDestinations = 8;
constexpr Destination kDestinationTable[kDestinations] = {
    {"rgb565", VEXO_FMT_RGB565, 2, pack_565<true>},
    {"bgr565", VEXO_FMT_BGR565, 2, pack_565<false>},
    {"rgb888", VEXO_FMT_RGB888, 3, pack_bytes<0, 1, 2, -1>},
    {"bgr888", VEXO_FMT_BGR888, 3, pack_bytes<2, 1, 0, -1>},
    {"rgba8888", VEXO_FMT_RGBA8888, 4, pack_bytes<0, 1, 2, 3>},
    {"bgra8888", VEXO_FMT_BGRA8888, 4, pack_bytes<2, 1, 0, 3>},
    {"argb8888", VEXO_FMT_ARGB8888, 4, pack_bytes<1, 2, 3, 0>},
    {"abgr8888", VEXO_FMT_ABGR8888, 4, pack_bytes<3, 2, 1, 0>},
};

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
    return convert(*s.y, *s.u, *s.v);
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
};
#undef LOX_SOURCE_TO_ALL
#undef LOX_SOURCE

}  // namespace lox_test

#endif  // ORUMLOX_TESTS_REFERENCE_CSC_MODEL_H
