// SPDX-License-Identifier: Apache-2.0
//
// The row kernels of the DCT-domain scaler: a row of blocks, from source
// samples to destination samples.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include "common/row_table.h"

namespace lox {

// A type of blocks: the sides of its source blocks, the bases of their columns
// and rows (entries of sets A and B), and the weights of the coefficients.
// Without bases no block is of this type.
struct DctKind {
  int32_t width, height;
  const int16_t *const *down;
  const int16_t *const *across;
  const int32_t *weights;
};

// What the vector forms make of the kinds once for a plane, and where they
// work.
constexpr int kDctMostSide = 128;  // of blocks that have a vector form
constexpr int kDctColumns = 2048;  // of blocks done together
constexpr int kDctBeyond = 4;      // columns that are read and weigh nothing
struct DctTables {
  bool usable;
  // By height (of kinds 0 and 2): what the first, second and third coefficient
  // takes of two samples, for every two in the upper half; what is left over,
  // last.
  alignas(64) int16_t down[2][kDctMostSide / 4 + 1][8];
  // By width (of kinds 0 and 1) and whether blocks begin at an odd column, in
  // the order of the set.
  alignas(64) int16_t across[2][2][(kDctMostSide / 2 + 2) * 32];
  // How many entries of that a block takes; by kind, what its sums are shifted
  // right by.
  int32_t across_count[2][2];
  int32_t row_shift[4];
  // By kind, in the order of the set: weights, and limits of coefficients.
  alignas(64) int32_t weights[4][16];
  alignas(64) int32_t most[4][16];
  // Four sums of each column.
  alignas(64) int16_t sums[4 * (kDctColumns + kDctBeyond)];
};

// A row of `count` blocks, which are equally high.
struct DctJob {
  const DctKind *kinds;  // 4
  // The plane; what it lacks is repeated from its last column or row.
  const uint8_t *src;
  ptrdiff_t stride;
  int32_t width, rows;
  int32_t first_row;
  // Of each block its first column and its type.
  const int32_t *columns;
  const uint8_t *types;
  ptrdiff_t count;
  // Room for a block's source samples.
  uint8_t *work;
  // 4 rows of 4 x count samples.
  uint8_t *dst;
  ptrdiff_t dst_stride;

  [[gnu::always_inline]] const uint8_t *row(int64_t y) const {
    const int64_t at = first_row + y;
    return src + static_cast<ptrdiff_t>(at < rows ? at : rows - 1) * stride;
  }
  [[gnu::always_inline]] ptrdiff_t column(int64_t x) const {
    return static_cast<ptrdiff_t>(x < width ? x : width - 1);
  }
};

struct DctRows {
  void (*prepare)(DctTables *tables, const DctKind *kinds);
  void (*blocks)(DctTables *tables, const DctJob *job);
};

LOX_ROW_TABLE(DctRows, dct_rows)

}  // namespace lox
