// SPDX-License-Identifier: Apache-2.0
//
// Anaglyphs: two views packed into one red-cyan picture.
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "orumlox/vqe.h"

namespace {

constexpr int kPixel = 3;
// Bytes of eight pixels, the fewest that are whole 64-bit words.
constexpr ptrdiff_t kStep = 24;

// A mask of the reds of eight pixels.
constexpr uint8_t kRed[kStep] = {255, 0, 0, 255, 0, 0, 255, 0, 0, 255, 0, 0,
                                 255, 0, 0, 255, 0, 0, 255, 0, 0, 255, 0, 0};

void pack_row(const uint8_t *a, const uint8_t *b, uint8_t *dst,
              ptrdiff_t bytes) {
  uint64_t red[kStep / 8];
  std::memcpy(red, kRed, kStep);
  ptrdiff_t x = 0;
  for (; x + kStep <= bytes; x += kStep) {
    uint64_t from_a[kStep / 8];
    uint64_t from_b[kStep / 8];
    std::memcpy(from_a, a + x, kStep);
    std::memcpy(from_b, b + x, kStep);
    for (ptrdiff_t i = 0; i < kStep / 8; ++i) {
      from_b[i] ^= (from_a[i] ^ from_b[i]) & red[i];
    }
    std::memcpy(dst + x, from_b, kStep);
  }
  for (; x + kPixel <= bytes; x += kPixel) {
    dst[x] = a[x];
    dst[x + 1] = b[x + 1];
    dst[x + 2] = b[x + 2];
  }
}

}  // namespace

extern "C" {

void vexo_fpa_frm_pack(const uint8_t *view_a, const uint8_t *view_b,
                       uint8_t *dst, int32_t rows, int32_t row_bytes,
                       int32_t src_pitch, int32_t dst_pitch) {
  if (rows < 1 || row_bytes < kPixel) return;
  for (ptrdiff_t y = 0; y < rows; ++y) {
    pack_row(view_a + y * src_pitch, view_b + y * src_pitch,
             dst + y * dst_pitch, row_bytes);
  }
}

int32_t vexo_fpa(const vexo_img *src, const vexo_img *dst, int32_t mode) {
  const int64_t width = dst->width[0];
  if (src->format != VEXO_FMT_RGB888 || dst->format != src->format ||
      src->width[0] != 2 * width || src->height[0] != dst->height[0] ||
      src->stride[0] != kPixel * int64_t{src->width[0]} ||
      src->stride[0] != 2 * int64_t{dst->stride[0]} ||
      (mode != 1 && mode != 2)) {
    return VEXO_ERR_ARG;
  }
  if (width < 1 || dst->height[0] < 1) return VEXO_OK;
  const uint8_t *const left = src->plane[0];
  const uint8_t *const right = left + dst->stride[0];
  vexo_fpa_frm_pack(mode == 1 ? left : right, mode == 1 ? right : left,
                    dst->plane[0], dst->height[0], dst->stride[0],
                    src->stride[0], dst->stride[0]);
  return VEXO_OK;
}

}  // extern "C"
