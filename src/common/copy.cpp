// SPDX-License-Identifier: Apache-2.0
//
// Plane and image copies. A plane without padding on either side is copied as
// one run.
#include "common/copy.h"

#include <cstddef>
#include <cstdint>

#include "common/caches.h"
#include "common/copy_rows.h"
#include "common/format.h"
#include "orumlox/common.h"

namespace lox {

namespace {

void copy_run(uint8_t *dst, const uint8_t *src, int64_t bytes) {
  if (bytes < 1) return;
  copy_rows().copy(dst, src, static_cast<size_t>(bytes));
}

// A plane of `width` samples of kBytes bytes: one run when a row fills both
// strides. Width and strides are positive then, so no product overflows.
template <int kBytes>
void copy_samples(const uint8_t *src, int32_t width, int32_t height,
                  int32_t src_stride, int32_t dst_stride, uint8_t *dst) {
  if (width < 1 || height < 1) return;
  const int64_t row_bytes = int64_t{width} * kBytes;
  if (row_bytes == src_stride && row_bytes == dst_stride) {
    copy_run(dst, src, row_bytes * height);
  } else {
    copy_plane(dst, dst_stride, src, src_stride, row_bytes, height);
  }
}

void copy_plane_8b(const vexo_img &src, const vexo_img &dst, int p) {
  vexo_cpy_8b(src.plane[p], src.width[p], src.height[p], src.stride[p],
              dst.stride[p], dst.plane[p]);
}

void copy_plane_16b(const vexo_img &src, const vexo_img &dst, int p) {
  vexo_cpy_16b(src.plane[p], src.width[p], src.height[p], src.stride[p],
               dst.stride[p], dst.plane[p]);
}

}  // namespace

void copy_plane(uint8_t *dst, int64_t dst_step, const uint8_t *src,
                int64_t src_step, int64_t row_bytes, int32_t rows) {
  if (row_bytes < 1 || rows < 1) return;
  const CopyRows &kernels = copy_rows();
  // Of rows as long as kBeyondCaches copy() itself chooses by the length.
  const bool far =
      row_bytes < int64_t{kBeyondCaches} &&
      static_cast<uint64_t>(row_bytes * rows) >= memory_now().far_from / 2;
  const auto copy = far ? kernels.copy_far : kernels.copy;
  for (;;) {
    copy(dst, src, static_cast<size_t>(row_bytes));
    if (--rows == 0) return;
    dst += dst_step;
    src += src_step;
  }
}

void copy_block(uint8_t *dst, ptrdiff_t dst_step, const uint8_t *src,
                ptrdiff_t src_step, int32_t row_bytes, int32_t rows) {
  if (row_bytes < 1) return;
  copy_rows().copy_block(dst, dst_step, src, src_step,
                         static_cast<size_t>(row_bytes), rows);
}

}  // namespace lox

extern "C" {

void mlox_blk_mcpy(void *dst, const void *src, int32_t dst_step,
                   int32_t src_step, int32_t row_bytes, int32_t rows) {
  lox::copy_plane(static_cast<uint8_t *>(dst), dst_step,
                  static_cast<const uint8_t *>(src), src_step, row_bytes, rows);
}

void vexo_cpy_8b(const uint8_t *src, int32_t width, int32_t height,
                 int32_t src_stride, int32_t dst_stride, uint8_t *dst) {
  lox::copy_samples<1>(src, width, height, src_stride, dst_stride, dst);
}

void vexo_cpy_24b(const uint8_t *src, int32_t width, int32_t height,
                  int32_t src_stride, int32_t dst_stride, uint8_t *dst) {
  lox::copy_samples<3>(src, width, height, src_stride, dst_stride, dst);
}

void vexo_cpy_32b(const uint8_t *src, int32_t width, int32_t height,
                  int32_t src_stride, int32_t dst_stride, uint8_t *dst) {
  lox::copy_samples<4>(src, width, height, src_stride, dst_stride, dst);
}

void vexo_cpy_16b(const uint8_t *src, int32_t width, int32_t height,
                  int32_t src_stride, int32_t dst_stride, uint8_t *dst) {
  // Quirk: an odd stride is rounded down before it is compared with the width,
  // because strides count whole samples.
  lox::copy_samples<2>(src, width, height, src_stride & ~1, dst_stride & ~1,
                       dst);
}

int32_t vexo_cpy(const vexo_img *src, const vexo_img *dst) {
  const int32_t format = src->format;
  if (format != dst->format) return VEXO_ERR_ARG;
  if (lox::rgb_bytes(format) == 2) {
    lox::copy_plane_16b(*src, *dst, 0);
    return VEXO_OK;
  }
  if (!lox::is_planar_yuv(format)) return VEXO_ERR_UNSUPPORTED;
  lox::copy_plane_8b(*src, *dst, 0);
  if (format == VEXO_FMT_NV12) {
    lox::copy_plane_16b(*src, *dst, 1);
  } else if (format != VEXO_FMT_YUV400) {
    // Quirk: NV21 too is copied as three planes, because callers pass it so.
    lox::copy_plane_8b(*src, *dst, 1);
    lox::copy_plane_8b(*src, *dst, 2);
  }
  return VEXO_OK;
}

}  // extern "C"
