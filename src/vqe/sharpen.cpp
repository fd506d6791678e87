// SPDX-License-Identifier: Apache-2.0
//
// Detail enhancement: which samples are sharpened and which are copied.
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "orumlox/unprefixed.h"
#include "vqe/vqe_rows.h"

namespace {

// Samples copied on each side of the plane, because the filter reaches as far.
constexpr ptrdiff_t kBorder = 2;

}  // namespace

extern "C" {

// Quirk: the strength has no effect, because there is one filter.
void detail_enh(const uint8_t *src, int32_t width, int32_t height, uint8_t *dst,
                int32_t) {
  if (width < 1 || height < 1) return;
  const ptrdiff_t pitch = width;
  if (width <= 2 * kBorder || height <= 2 * kBorder) {
    std::memcpy(dst, src, static_cast<size_t>(int64_t{width} * height));
    return;
  }
  // The first sharpened sample, and the end of the last one.
  const ptrdiff_t begin = kBorder * pitch + kBorder;
  const ptrdiff_t end = (height - kBorder) * pitch - kBorder;
  std::memcpy(dst, src, static_cast<size_t>(begin));
  lox::vqe_rows().sharpen(src + begin, pitch, dst + begin, pitch - 2 * kBorder,
                          height - 2 * kBorder);
  for (ptrdiff_t y = kBorder; y < height - kBorder - 1; ++y) {
    // A row's last two samples and the next one's first two.
    const ptrdiff_t at = (y + 1) * pitch - kBorder;
    std::memcpy(dst + at, src + at, 2 * kBorder);
  }
  std::memcpy(dst + end, src + end, static_cast<size_t>(begin));
}

int32_t vexo_vqe_de(const vexo_img *src, const vexo_img *dst,
                    int32_t strength) {
  if (src->format != VEXO_FMT_YUV420 || dst->format != VEXO_FMT_YUV420) {
    return VEXO_ERR_ARG;
  }
  constexpr int32_t kDefaultStrength = 4;
  detail_enh(src->plane[0], src->width[0], src->height[0], dst->plane[0],
             strength < 1 ? kDefaultStrength : strength);
  return VEXO_OK;
}

int32_t vexo_vqe_dejagging(void) { return VEXO_OK; }

}  // extern "C"
