// SPDX-License-Identifier: Apache-2.0
//
// The six parameters of every conversion kernel, as one thing to pass on.
#pragma once

#include <stddef.h>
#include <stdint.h>

namespace lox {

struct KernelArgs {
  uint8_t *const *src_plane;
  const int32_t *src_width;
  const int32_t *src_height;
  const int32_t *src_stride;
  const int32_t *dst_stride;
  uint8_t *const *dst_plane;

  // Whether a plane of the source has nothing to convert. Drivers ask before
  // they walk a plane, because one without width may claim 2^31 rows.
  bool empty(int plane = 0) const {
    return src_width[plane] < 1 || src_height[plane] < 1;
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
  for (int32_t row = 0; row < args.src_height[plane]; ++row) {
    convert_row(args.src(plane, row), args.dst(plane, row),
                args.src_width[plane]);
  }
}

}  // namespace lox

#define LOX_PARAMETERS                                          \
  uint8_t *const src_plane[4], const int32_t src_width[4],      \
      const int32_t src_height[4], const int32_t src_stride[4], \
      const int32_t dst_stride[4], uint8_t *const dst_plane[4]
#define LOX_ARGUMENTS \
  { src_plane, src_width, src_height, src_stride, dst_stride, dst_plane }
