// SPDX-License-Identifier: Apache-2.0
//
// Cuts a window out of an image, or places an image in a larger black one. The
// source's format decides in both, and the source's offset is the origin.
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "common/copy.h"
#include "common/format.h"
#include "orumlox/common.h"

namespace {

using lox::half_up;

uint8_t *at(uint8_t *plane, int32_t stride, int32_t row, int64_t byte) {
  return plane + ptrdiff_t{row} * stride + static_cast<ptrdiff_t>(byte);
}

// One plane's part in a crop: its rows and bytes are the destination's.
void crop_plane(const vexo_img &src, const vexo_img &dst, int p, int32_t row,
                int64_t byte, int64_t row_bytes) {
  if (dst.height[p] < 1 || row_bytes < 1) return;
  lox::copy_plane(dst.plane[p], dst.stride[p],
                  at(src.plane[p], src.stride[p], row, byte), src.stride[p],
                  row_bytes, dst.height[p]);
}

// One plane's part in a padding: black everywhere, then the source's rows.
void pad_plane(const vexo_img &src, const vexo_img &dst, int p, int black,
               int32_t row, int64_t byte, int64_t row_bytes) {
  if (dst.stride[p] > 0 && dst.buf_height[p] > 0) {
    std::memset(
        dst.plane[p], black,
        static_cast<size_t>(int64_t{dst.stride[p]} * dst.buf_height[p]));
  }
  if (src.height[p] < 1 || row_bytes < 1) return;
  lox::copy_plane(at(dst.plane[p], dst.stride[p], row, byte), dst.stride[p],
                  src.plane[p], src.stride[p], row_bytes, src.height[p]);
}

constexpr int kBlackLuma = 16;
constexpr int kBlackChroma = 128;

}  // namespace

extern "C" {

int32_t vexo_crop(const vexo_img *src, const vexo_img *dst) {
  const int32_t x = src->offset_x;
  const int32_t y = src->offset_y;
  const int32_t width = dst->width[0];
  switch (src->format) {
    case VEXO_FMT_RGB888:
    case VEXO_FMT_BGR888:
    case VEXO_FMT_RGBA8888:
    case VEXO_FMT_BGRA8888:
    case VEXO_FMT_ARGB8888:
    case VEXO_FMT_ABGR8888: {
      const int bytes = lox::rgb_bytes(src->format);
      crop_plane(*src, *dst, 0, y, int64_t{x} * bytes, int64_t{width} * bytes);
      return VEXO_OK;
    }
    case VEXO_FMT_NV12:
    case VEXO_FMT_NV21:
      crop_plane(*src, *dst, 0, y, x, width);
      // Quirk: an odd x starts in the middle of a pair, because chroma begins
      // at the same byte as luma.
      crop_plane(*src, *dst, 1, half_up(y), x, width);
      return VEXO_OK;
    case VEXO_FMT_YUV420:
      crop_plane(*src, *dst, 0, y, x, width);
      crop_plane(*src, *dst, 1, half_up(y), half_up(x), dst->width[1]);
      crop_plane(*src, *dst, 2, half_up(y), half_up(x), dst->width[2]);
      return VEXO_OK;
    default:
      return VEXO_ERR_UNSUPPORTED;
  }
}

int32_t vexo_padding(const vexo_img *src, const vexo_img *dst) {
  const int32_t x = src->offset_x;
  const int32_t y = src->offset_y;
  const int32_t width = src->width[0];
  if (dst->width[0] < int64_t{x} + width ||
      dst->height[0] < int64_t{y} + src->height[0]) {
    return VEXO_ERR_ARG;
  }
  switch (src->format) {
    case VEXO_FMT_RGB888:
    case VEXO_FMT_BGR888:
    case VEXO_FMT_RGBA8888:
    case VEXO_FMT_BGRA8888: {
      // Quirk: ARGB8888 and ABGR8888, which vexo_crop takes, are refused,
      // because callers rely on the refusal.
      const int bytes = lox::rgb_bytes(src->format);
      pad_plane(*src, *dst, 0, 0, y, int64_t{x} * bytes,
                int64_t{width} * bytes);
      return VEXO_OK;
    }
    case VEXO_FMT_NV12:
    case VEXO_FMT_NV21:
      pad_plane(*src, *dst, 0, kBlackLuma, y, x, width);
      pad_plane(*src, *dst, 1, kBlackChroma, half_up(y), x, width);
      return VEXO_OK;
    case VEXO_FMT_YUV420:
      pad_plane(*src, *dst, 0, kBlackLuma, y, x, width);
      pad_plane(*src, *dst, 1, kBlackChroma, half_up(y), half_up(x),
                src->width[1]);
      pad_plane(*src, *dst, 2, kBlackChroma, half_up(y), half_up(x),
                src->width[2]);
      return VEXO_OK;
    default:
      return VEXO_ERR_UNSUPPORTED;
  }
}

}  // extern "C"
