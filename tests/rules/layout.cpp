// SPDX-License-Identifier: Apache-2.0
// Planes of a picture, byte by byte.
#include <orumlox/csc.h>

#include <algorithm>
#include <string_view>
#include <utility>

#include "rules/rules.h"
#include "rules/tiles.h"

namespace lox_test {
namespace {

// Calls `each` for the bytes of a plane.
template <class Each>
void for_bytes(int64_t width, int64_t height, Each each) {
  for (int64_t y = 0; y < height && width > 0; ++y) {
    for (int64_t x = 0; x < width; ++x) each(x, y);
  }
}

// Byte (x, y) of the result is byte (x * kX, y * kY) of the source, or
// (x, y / 2) where rows are doubled. Only the picking of columns rounds rows
// up.
template <int kX, int kY, int kDoubled>
void pick(const Function &, const uint8_t *src, int32_t width, int32_t height,
          int32_t src_stride, int32_t dst_stride, uint8_t *dst) {
  const int64_t rows = (int64_t{height} + kX - 1) * kDoubled / kY;
  if (height < 1) return;
  for_bytes((int64_t{width} + kX - 1) / kX, rows, [&](int64_t x, int64_t y) {
    dst[y * dst_stride + x] = src[y * kY / kDoubled * src_stride + x * kX];
  });
}

void unpack_pairs(const Function &, const uint8_t *src, int32_t width,
                  int32_t height, int32_t src_stride, int32_t u_stride,
                  int32_t v_stride, uint8_t *u, uint8_t *v) {
  for_bytes(width, height, [&](int64_t x, int64_t y) {
    (x % 2 == 0 ? u + y * u_stride : v + y * v_stride)[x / 2] =
        src[y * src_stride + x];
  });
}
void pack_pairs(const Function &, const uint8_t *u, const uint8_t *v,
                int32_t width, int32_t height, int32_t u_stride,
                int32_t v_stride, int32_t dst_stride, uint8_t *dst) {
  for_bytes(width, height, [&](int64_t x, int64_t y) {
    dst[y * dst_stride + 2 * x] = u[y * u_stride + x];
    dst[y * dst_stride + 2 * x + 1] = v[y * v_stride + x];
  });
}

// Pixels of four bytes to planes and back, any of which may be missing.
void unpack_pixels(const Function &, const uint8_t *src, int32_t width,
                   int32_t height, int32_t src_stride, int32_t s0, int32_t s1,
                   int32_t s2, int32_t s3, uint8_t *p0, uint8_t *p1,
                   uint8_t *p2, uint8_t *p3) {
  const int64_t strides[] = {s0, s1, s2, s3};
  uint8_t *const planes[] = {p0, p1, p2, p3};
  for_bytes(width, height, [&](int64_t x, int64_t y) {
    for (int k = 0; k < 4; ++k) {
      if (planes[k] == nullptr) continue;
      planes[k][y * strides[k] + x] = src[y * src_stride + 4 * x + k];
    }
  });
}
void pack_pixels(const Function &, uint8_t *dst, int32_t width, int32_t height,
                 int32_t dst_stride, int32_t s0, int32_t s1, int32_t s2,
                 int32_t s3, const uint8_t *p0, const uint8_t *p1,
                 const uint8_t *p2, const uint8_t *p3) {
  const int64_t strides[] = {s0, s1, s2, s3};
  const uint8_t *const planes[] = {p0, p1, p2, p3};
  for_bytes(width, height, [&](int64_t x, int64_t y) {
    for (int k = 0; k < 4; ++k) {
      dst[y * dst_stride + 4 * x + k] =
          planes[k] != nullptr ? planes[k][y * strides[k] + x] : 255;
    }
  });
}

// Each factor is what its low 16 bits are as a signed number, their product is
// not cut; one pair at least, and all that begin below the count.
void swap(const Function &, uint8_t *plane, int32_t stride, int32_t rows) {
  const int32_t count = static_cast<int16_t>(stride & 0xFFFF) *
                        static_cast<int16_t>(rows & 0xFFFF);
  for (int32_t i = 0; i == 0 || i < count; i += 2) {
    std::swap(plane[i], plane[i + 1]);
  }
}

int32_t tile_offset(const Function &, int32_t width, int32_t height, int32_t x,
                    int32_t y) {
  return static_cast<int32_t>(
      tile_byte(VEXO_FMT_T64X32, false, width, height, x, y));
}
template <int32_t kFormat, bool kChroma>
void tiles(const Function &, const uint8_t *src, int32_t width, int32_t height,
           int32_t stride, uint8_t *dst) {
  for_bytes(width, height, [&](int64_t x, int64_t y) {
    dst[y * stride + x] = src[tile_byte(kFormat, kChroma, width, height, x, y)];
  });
}
void unpack_tiles(const Function &, const uint8_t *src, int32_t width,
                  int32_t height, int32_t u_stride, uint8_t *u,
                  int32_t v_stride, uint8_t *v) {
  for_bytes(width, height, [&](int64_t x, int64_t y) {
    (x % 2 == 0 ? u + y * u_stride : v + y * v_stride)[x / 2] =
        src[tile_byte(VEXO_FMT_T16X16, true, width, height, x, y)];
  });
}

}  // namespace

std::vector<Rule> layout_rules() {
  return {
      rule_for(vexo_csc_2x2_to_1x1, pick<2, 2, 1>),
      rule_for(vexo_csc_1x2_to_1x1, pick<1, 2, 1>),
      rule_for(vexo_csc_1x1_to_1x2, pick<1, 1, 2>),
      rule_for(vexo_csc_8b8b_unpck, unpack_pairs),
      rule_for(vexo_csc_8b8b_pck, pack_pairs),
      rule_for(vexo_csc_8b8b8b8b_unpack, unpack_pixels),
      rule_for(vexo_csc_8b8b8b8b_pack, pack_pixels),
      rule_for(vexo_csc_swap_8byte8, swap),
      rule_for(vexo_get_tile_offset, tile_offset),
      rule_for(vexo_csc_copy_16x16tiles_to_linear,
               tiles<VEXO_FMT_T16X16, false>),
      rule_for(vexo_csc_copy_16x8tiles_to_linear, tiles<VEXO_FMT_T16X16, true>),
      rule_for(vexo_csc_copy_8x8tiles_to_linear, tiles<VEXO_FMT_T8X8, false>),
      rule_for(vexo_csc_copy_8x4tiles_to_linear, tiles<VEXO_FMT_T8X8, true>),
      rule_for(vexo_csc_unpack_16x8tiles_to_linear, unpack_tiles)};
}

}  // namespace lox_test
