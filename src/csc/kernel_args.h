// SPDX-License-Identifier: Apache-2.0
//
// The six parameters of every conversion kernel and the rows to convert, as one
// thing to pass on.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include "common/row_range.h"

namespace lox {

struct KernelArgs {
  uint8_t *const *src_plane;
  const int32_t *src_width;
  const int32_t *src_height;
  const int32_t *src_stride;
  const int32_t *dst_stride;
  uint8_t *const *dst_plane;
  RowRange asked;
  // The source is a part of a picture of so many pixels, if more than its own.
  int64_t of_pixels = 0;

  // Whether a plane of the source has nothing to convert. Drivers ask before
  // they walk a plane, because one without width may claim 2^31 rows.
  bool empty(int plane = 0) const {
    return src_width[plane] < 1 || src_height[plane] < 1;
  }
  // Of the picture, or of the one that it is a part of.
  uint64_t pixels() const {
    const int64_t own = int64_t{src_width[0]} * src_height[0];
    return static_cast<uint64_t>(of_pixels > own ? of_pixels : own);
  }
  // The rows to convert, and those of a destination plane of `count` rows that
  // go with them.
  RowRange rows() const { return rows_of(src_height[0]); }
  RowRange rows_of(int32_t count) const {
    return rows_of_plane(asked, src_height[0], count);
  }
  const uint8_t *src(int plane, ptrdiff_t row) const {
    return src_plane[plane] + row * src_stride[plane];
  }
  uint8_t *dst(int plane, ptrdiff_t row) const {
    return dst_plane[plane] + row * dst_stride[plane];
  }
};

// Converts the rows of one plane, each by itself.
inline void convert_rows(void (*convert_row)(const uint8_t *src, uint8_t *dst,
                                             ptrdiff_t width),
                         const KernelArgs &args, int plane = 0) {
  if (args.empty(plane)) return;
  const RowRange rows = args.rows_of(args.src_height[plane]);
  for (int32_t row = rows.begin; row < rows.end; ++row) {
    convert_row(args.src(plane, row), args.dst(plane, row),
                args.src_width[plane]);
  }
}

}  // namespace lox

#define LOX_PARAMETERS                                          \
  uint8_t *const src_plane[4], const int32_t src_width[4],      \
      const int32_t src_height[4], const int32_t src_stride[4], \
      const int32_t dst_stride[4], uint8_t *const dst_plane[4]
#define LOX_ARGUMENTS                                                    \
  {                                                                      \
    src_plane, src_width, src_height, src_stride, dst_stride, dst_plane, \
        lox::kAllRows, 0                                                 \
  }
// An exported kernel: all rows by a driver.
#define LOX_KERNEL(name, driver, from, to)          \
  void vexo_csc_##name(LOX_PARAMETERS) {            \
    lox::driver(LOX_ARGUMENTS, lox::from, lox::to); \
  }
// To all layouts of 4:2:0, of 16-bit RGB, of RGB.
#define LOX_KERNELS_420(token, driver, from)             \
  LOX_KERNEL(token##_to_yuv420, driver, from, kToYuv420) \
  LOX_KERNEL(token##_to_yv12, driver, from, kToYv12)     \
  LOX_KERNEL(token##_to_nv12, driver, from, kToNv12)     \
  LOX_KERNEL(token##_to_nv21, driver, from, kToNv21)
#define LOX_KERNELS_565(token, driver, from)           \
  LOX_KERNEL(token##_to_rgb565, driver, from, kRgb565) \
  LOX_KERNEL(token##_to_bgr565, driver, from, kBgr565)
#define LOX_KERNELS_RGB(token, driver, from)               \
  LOX_KERNELS_565(token, driver, from)                     \
  LOX_KERNEL(token##_to_rgb888, driver, from, kRgb888)     \
  LOX_KERNEL(token##_to_bgr888, driver, from, kBgr888)     \
  LOX_KERNEL(token##_to_rgba8888, driver, from, kRgba8888) \
  LOX_KERNEL(token##_to_bgra8888, driver, from, kBgra8888) \
  LOX_KERNEL(token##_to_argb8888, driver, from, kArgb8888) \
  LOX_KERNEL(token##_to_abgr8888, driver, from, kAbgr8888)
