// SPDX-License-Identifier: Apache-2.0
//
// A plane reduced by the means of fixed blocks, of a source that need not have
// the rows, strides or all the samples that the block downscalers ask for.
#pragma once

#include <cstddef>
#include <cstdint>

#include "rsz/block_rows.h"

namespace lox {

struct MeansSource {
  const uint8_t *plane;
  ptrdiff_t stride;
  int32_t width, rows;  // units
};

// Writes `rows` rows of `count` outputs, from row `first` on. Units beyond the
// source's width or rows are those of its last column or row. Does nothing
// without a source.
void block_means(BlockKind kind, const MeansSource &src, uint8_t *dst,
                 ptrdiff_t dst_stride, int32_t count, int32_t rows,
                 int32_t first);

}  // namespace lox
