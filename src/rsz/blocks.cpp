// SPDX-License-Identifier: Apache-2.0
//
// The block downscalers: which columns of a plane they make, by which row
// kernel.
#include <cstddef>
#include <cstdint>

#include "orumlox/rsz_blocks.h"
#include "rsz/block_rows.h"

namespace lox {

namespace {

struct Plane {
  const uint8_t *src;
  uint8_t *dst;
  int32_t width, height;  // bytes of an output row, output rows
  int64_t dst_step;
};

// Whether source and destination have bytes in common, as whole rows.
bool overlap(const Plane &p, int side) {
  const auto bytes = [&](int64_t step, int64_t row_bytes, int64_t rows) {
    return static_cast<uintptr_t>((rows - 1) * step + row_bytes);
  };
  const int64_t row_bytes = int64_t{side} * p.width;
  const auto src = reinterpret_cast<uintptr_t>(p.src);
  const uintptr_t src_end =
      src + bytes(row_bytes, row_bytes, int64_t{side} * p.height);
  // Rows that go upwards begin with the last one.
  const bool up = p.dst_step < 0;
  const auto first = reinterpret_cast<uintptr_t>(p.dst);
  const uintptr_t dst =
      up ? first + static_cast<uintptr_t>((p.height - 1) * p.dst_step) : first;
  const uintptr_t dst_end =
      dst + bytes(up ? -p.dst_step : p.dst_step, p.width, p.height);
  return src < dst_end && dst < src_end;
}

// Makes columns `begin` to `end` of every row, counted in bytes.
void reduce(BlockKind kind, const Plane &p, int32_t begin, int32_t end) {
  const BlockMean &mean = kBlockMeans[kind];
  if (p.width < 1 || p.height < 1) return;
  begin = begin < 0 ? 0 : begin;
  end = end > p.width ? p.width : end;
  const ptrdiff_t first = begin / mean.unit;
  const ptrdiff_t count = end / mean.unit - first;
  if (count < 1) return;
  const BlockFn row = block_rows().row[kind];
  const ptrdiff_t together = overlap(p, mean.side) ? mean.together() : count;
  const ptrdiff_t src_step = ptrdiff_t{mean.side} * p.width;
  for (ptrdiff_t y = 0; y < p.height; ++y) {
    const uint8_t *const src =
        p.src + y * mean.side * src_step + first * mean.side * mean.unit;
    uint8_t *const dst =
        p.dst + static_cast<ptrdiff_t>(y * p.dst_step) + first * mean.unit;
    // Where the planes overlap, so few outputs a call that the kernel makes one
    // after the other: what is read then is what the rule's order leaves.
    for (ptrdiff_t x = 0; x < count; x += together) {
      const ptrdiff_t left = count - x;
      row(src + x * mean.side * mean.unit, src_step, dst + x * mean.unit,
          left < together ? left : together);
    }
  }
}

}  // namespace

}  // namespace lox

extern "C" {

#define LOX_ALL(name, kind)                                                    \
  void name(const uint8_t *src, uint8_t *dst, int32_t width, int32_t height) { \
    lox::reduce(lox::kind, {src, dst, width, height, width}, 0, width);        \
  }
LOX_ALL(vexo_8b_rsz_down_2x2, kHalveBytes)
LOX_ALL(vexo_8b8b_rsz_down_2x2, kHalvePairs)
LOX_ALL(vexo_8b_rsz_down_4x4, kQuarterBytesOf2Rows)
LOX_ALL(vexo_8b8b_rsz_down_4x4, kQuarterGroupedOf2Rows)

#define LOX_COLUMNS(name, kind)                                              \
  void name(const uint8_t *src, uint8_t *dst, int32_t width, int32_t height, \
            int32_t processed) {                                             \
    lox::reduce(lox::kind, {src, dst, width, height, width}, 0, processed);  \
  }                                                                          \
  void name##_remain(const uint8_t *src, uint8_t *dst, int32_t width,        \
                     int32_t height, int32_t processed) {                    \
    lox::reduce(lox::kind, {src, dst, width, height, width}, processed,      \
                width);                                                      \
  }
LOX_COLUMNS(vexo_8b_rsz_down_2x2_non_alignment, kHalveBytes)
LOX_COLUMNS(vexo_8b8b_rsz_down_2x2_non_alignment, kHalvePairs)
LOX_COLUMNS(vexo_8b_rsz_down_4x4_non_alignment, kQuarterBytes)
LOX_COLUMNS(vexo_8b8b_rsz_down_4x4_non_alignment, kQuarterGrouped)

#define LOX_STRIDED(name, kind)                                              \
  void name(const uint8_t *src, uint8_t *dst, int32_t width, int32_t height, \
            int32_t dst_stride) {                                            \
    lox::reduce(lox::kind, {src, dst, width, height, dst_stride}, 0, width); \
  }
LOX_STRIDED(vexo_8b_rsz_down_2x2_non_dct, kHalveBytes)
LOX_STRIDED(vexo_8b8b_rsz_down_2x2_non_dct, kHalvePairs)
LOX_STRIDED(vexo_8b_rsz_down_4x4_non_dct, kQuarterBytes)
LOX_STRIDED(vexo_8b8b_rsz_down_4x4_non_dct, kQuarterPairs)

}  // extern "C"
