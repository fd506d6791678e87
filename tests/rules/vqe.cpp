// SPDX-License-Identifier: Apache-2.0
// Saturation, sharpening, deblocking and anaglyphs, sample by sample and, where
// the order counts, in place.
#include <orumlox/unprefixed.h>

#include <algorithm>
#include <cstdlib>

#include "rules/rules.h"

namespace lox_test {
namespace {

uint8_t limited(int64_t value) {
  return static_cast<uint8_t>(std::clamp<int64_t>(value, 0, 255));
}

void saturation_table(const Function &, uint8_t *table, int16_t strength) {
  for (int32_t i = 0; i < 256; ++i) {
    const int32_t k = i % 2 == 0 ? i / 2 : 0;
    table[i] = limited(((k - 128) * strength >> 10) + 128);
  }
}
int32_t shared_table(const Function &f, int32_t strength) {
  const int32_t low = strength & 0xFFFF;
  saturation_table(
      f, lut,
      static_cast<int16_t>(strength < 1 ? 1180 : low - low / 32768 * 65536));
  return VEXO_OK;
}

void saturate(const Function &, const uint8_t *table, int32_t count,
              const uint8_t *src_u, const uint8_t *src_v, uint8_t *dst_u,
              uint8_t *dst_v) {
  for (int32_t i = 0; i < count; ++i) {
    dst_u[i] = table[src_u[i]];
    dst_v[i] = table[src_v[i]];
  }
}
int32_t clear_chroma(const Function &, const vexo_img *src,
                     const vexo_img *dst) {
  if (src->format != 1 || dst->format != 1) return VEXO_ERR_ARG;
  if (src->width[1] < 1) return VEXO_OK;
  for (int32_t i = 0; i < src->width[1] * src->height[1]; ++i) {
    dst->plane[1][i] = dst->plane[2][i] = 0;
  }
  return VEXO_OK;
}

void sharpen(const Function &, const uint8_t *src, int32_t width,
             int32_t height, uint8_t *dst, int32_t) {
  for (int32_t y = 0; y < height; ++y) {
    for (int32_t x = 0; x < width; ++x) {
      const auto at = [&](int32_t dx, int32_t dy) {
        return int32_t{src[(y + dy) * width + x + dx]};
      };
      const int32_t c = at(0, 0);
      dst[y * width + x] = static_cast<uint8_t>(c);
      if (std::min({x, y, width - 1 - x, height - 1 - y}) < 2) continue;
      const int32_t near = at(-1, 0) + at(1, 0) + at(0, -1) + at(0, 1);
      const int32_t far = at(-2, 0) + at(2, 0) + at(0, -2) + at(0, 2) +
                          at(-1, -1) + at(1, -1) + at(-1, 1) + at(1, 1);
      dst[y * width + x] = limited(c + ((16 * c - (2 * near + far)) >> 4));
    }
  }
}
int32_t sharpen_picture(const Function &f, const vexo_img *src,
                        const vexo_img *dst, int32_t) {
  if (src->format != 1 || dst->format != 1) return VEXO_ERR_ARG;
  sharpen(f, src->plane[0], src->width[0], src->height[0], dst->plane[0], 0);
  return VEXO_OK;
}
int32_t nothing(const Function &) { return VEXO_OK; }

// The four samples from p on, `step` bytes apart.
void filter(uint8_t *p, ptrdiff_t step, int64_t strength) {
  const int32_t a = p[0], b = p[step], c = p[2 * step], d = p[3 * step];
  const int32_t v = a - 4 * b + 4 * c - d;
  const int64_t size = std::abs(v >> 3);
  const int64_t m =
      std::max<int64_t>(0, size - std::max<int64_t>(0, 2 * (size - strength)));
  const int64_t d1 = v < 0 ? -m : m;
  const int64_t d2 = std::clamp<int64_t>((a - d) >> 2, -(m >> 1), m >> 1);
  p[step] = limited(b + d1);
  p[2 * step] = limited(c - d1);
  p[0] = static_cast<uint8_t>(a - d2);
  p[3 * step] = static_cast<uint8_t>(d + d2);
}
// Passes: 1 the edges between rows, 2 those between columns, 3 both.
template <int kPasses, int32_t kMost = INT32_MAX>
void deblock(const Function &, uint8_t *plane, int32_t given, int32_t stride,
             int32_t width, int32_t height) {
  const int32_t strength = std::min(given, kMost);
  if (strength < 1) return;
  for (ptrdiff_t y = 8; kPasses & 1 && y < height / 8 * 8; y += 8) {
    for (ptrdiff_t x = 0; x < width; ++x) {
      filter(plane + (y - 2) * stride + x, stride, strength);
    }
  }
  for (ptrdiff_t x = 8; kPasses & 2 && x < width / 8 * 8; x += 8) {
    for (ptrdiff_t y = 0; y < height; ++y) {
      filter(plane + y * stride + x - 2, 1, strength);
    }
  }
}
int32_t deblock_picture(const Function &f, const vexo_img *img,
                        uint32_t strength) {
  if (strength > 15) return VEXO_ERR_ARG;
  for (int p = 0; p < 3; ++p) {
    if (img->plane[p] == nullptr) continue;
    deblock<3>(f, img->plane[p], static_cast<int32_t>(strength), img->stride[p],
               img->width[p], img->height[p]);
  }
  return VEXO_OK;
}

void pack(const Function &, const uint8_t *a, const uint8_t *b, uint8_t *dst,
          int32_t rows, int32_t row_bytes, int32_t src_pitch,
          int32_t dst_pitch) {
  for (ptrdiff_t y = 0; y < rows; ++y) {
    for (int32_t i = 0; i < row_bytes / 3 * 3; ++i) {
      dst[y * dst_pitch + i] = (i % 3 ? b : a)[y * src_pitch + i];
    }
  }
}
int32_t anaglyph(const Function &f, const vexo_img *src, const vexo_img *dst,
                 int32_t mode) {
  const int64_t width = dst->width[0];
  if (src->format != 400 || dst->format != 400 || mode < 1 || mode > 2 ||
      src->width[0] != 2 * width || src->height[0] != dst->height[0] ||
      src->stride[0] != 6 * width || dst->stride[0] != 3 * width) {
    return VEXO_ERR_ARG;
  }
  if (width < 1 || dst->height[0] < 1) return VEXO_OK;
  const uint8_t *views[] = {src->plane[0], src->plane[0] + 3 * width};
  pack(f, views[mode - 1], views[2 - mode], dst->plane[0], dst->height[0],
       dst->stride[0], src->stride[0], dst->stride[0]);
  return VEXO_OK;
}

}  // namespace

std::vector<Rule> vqe_rules() {
  return {rule_for(color_sat_lut, saturation_table),
          rule_for(vexo_vqe_cs_init, shared_table),
          rule_for(color_sat, saturate),
          rule_for(vexo_vqe_cs, clear_chroma),
          rule_for(vexo_vqe_de, sharpen_picture),
          rule_for(detail_enh, sharpen),
          rule_for(vexo_vqe_dejagging, nothing),
          rule_for(vexo_dbf8x8_h263_hor, deblock<1>),
          rule_for(vexo_dbf8x8_h263_ver, deblock<2>),
          rule_for(vexo_dbf8x8, deblock<3, 12>),
          rule_for(vexo_dbf8x8_yuv, deblock_picture),
          rule_for(vexo_fpa_frm_pack, pack),
          rule_for(vexo_fpa, anaglyph)};
}

}  // namespace lox_test
