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
// work. What depends on the sides of blocks lies behind it.
constexpr int32_t kDctMostSide = 1024;  // of blocks that have a vector form
constexpr int kDctColumns = 2048;       // of blocks done together
constexpr int kDctBeyond = 4;           // columns that are read, weigh nothing
struct DctTables {
  bool usable;
  // By height (of kinds 0 and 2): what the first, second and third coefficient
  // takes of two samples, for every two in the upper half; what is left over,
  // last.
  int16_t (*down[2])[8];
  // The rows of blocks where they are listed.
  const uint8_t **rows;
  // By kind and whether blocks begin at an odd column, coefficients in the
  // order of the set.
  struct alignas(256) Kind {
    int32_t weights[16];
    int32_t most[16];  // limits of coefficients
    // The weights of columns in the order of the set, and what it counts of
    // them.
    const int16_t *across;
    int32_t count;
    int32_t shift;  // of sums, to the right
  } kinds[4][2];
  // Four sums of each column.
  alignas(64) int16_t sums[4 * (kDctColumns + kDctBeyond)];
};

// Entries of DctTables::down for a height, words of the weights for a width.
constexpr int64_t dct_down_rows(int64_t height) { return height / 4 + 1; }
constexpr int64_t dct_across_words(int64_t width) {
  return (width / 2 + 3) * 32;
}
// The bytes behind the tables of blocks of up to these sides; larger blocks
// have no tables.
constexpr int64_t dct_table_bytes(int64_t width, int64_t height) {
  if (width > kDctMostSide) width = kDctMostSide;
  if (height > kDctMostSide) height = kDctMostSide;
  return (4 * dct_across_words(width) + 2 * 8 * dct_down_rows(height)) *
             int64_t{sizeof(int16_t)} +
         height * int64_t{sizeof(const uint8_t *)};
}

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
  // Room for a block's source samples; where there is a vector form its tables
  // may lie there.
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
