// SPDX-License-Identifier: Apache-2.0
//
// Block means of planes. Blocks inside the source go straight through the row
// kernels; for the others the last column and row are repeated into a buffer.
#include "dct/block_means.h"

#include <cstring>

namespace lox {

namespace {

// Outputs make their blocks together in fours, so the buffer begins with a
// four.
constexpr int kTogether = 4;
constexpr int32_t kOutputs = 16;
constexpr int kMostSide = 4;
constexpr int kMostUnit = 2;

void means_beyond(BlockKind kind, const MeansSource &src, int32_t y,
                  int32_t first, int32_t count, uint8_t *dst) {
  const BlockMean &mean = kBlockMeans[kind];
  uint8_t block[kMostSide][kOutputs * kMostSide * kMostUnit];
  const auto unit = static_cast<size_t>(mean.unit);
  for (int row = 0; row < mean.side; ++row) {
    const int64_t at = int64_t{y} * mean.side + row;
    const uint8_t *const from =
        src.plane +
        static_cast<ptrdiff_t>(at < src.rows ? at : src.rows - 1) * src.stride;
    for (int32_t i = 0; i < count * mean.side; ++i) {
      const int64_t x = int64_t{first} * mean.side + i;
      const int64_t column = x < src.width ? x : src.width - 1;
      memcpy(block[row] + static_cast<size_t>(i) * unit,
             from + static_cast<size_t>(column) * unit, unit);
    }
  }
  block_rows().row[kind](block[0], sizeof block[0], dst, count);
}

}  // namespace

void block_means(BlockKind kind, const MeansSource &src, uint8_t *dst,
                 ptrdiff_t dst_stride, int32_t count, int32_t rows,
                 int32_t first) {
  if (src.width < 1 || src.rows < 1 || count < 1) return;
  const BlockMean &mean = kBlockMeans[kind];
  const BlockFn row = block_rows().row[kind];
  int32_t inside = src.width / mean.side;
  inside = inside < count ? inside / kTogether * kTogether : count;
  for (int32_t y = first; y < first + rows; ++y, dst += dst_stride) {
    int32_t x = 0;
    if ((int64_t{y} + 1) * mean.side <= src.rows) {
      row(src.plane + ptrdiff_t{y} * mean.side * src.stride, src.stride, dst,
          inside);
      x = inside;
    }
    for (; x < count; x += kOutputs) {
      means_beyond(kind, src, y, x, count - x < kOutputs ? count - x : kOutputs,
                   dst + ptrdiff_t{x} * mean.unit);
    }
  }
}

}  // namespace lox
