// SPDX-License-Identifier: Apache-2.0
//
// The row kernels that halve and quarter by the means of blocks.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include "common/row_table.h"

namespace lox {

// A mean of a block of side x side samples: what each of them counts in even
// and in odd rows, the sum shifted right. Samples are bytes, or pairs whose
// bytes are averaged apart.
struct BlockMean {
  int unit;  // bytes of a sample, 1 or 2
  int side;  // 2 or 4
  int even[4], odd[4];
  int shift;
  // Four outputs together make their blocks: of each 16 samples of a row they
  // take 0 2 4 6, 1 3 5 7, 8 10 12 14 and 9 11 13 15. The last one to three
  // outputs of a row take their own blocks, samples alike.
  bool grouped;

  // Outputs that must be made together.
  constexpr int together() const { return grouped ? 4 : 1; }
};

enum BlockKind {
  kHalveBytes,
  kHalvePairs,
  kQuarterBytes,
  kQuarterPairs,
  kQuarterBytesOf2Rows,    // rows 0 and 2
  kQuarterGroupedOf2Rows,  // rows 0 and 2
  kQuarterGrouped,         // every second sample twice or not at all
  kBlockKinds
};
constexpr BlockMean kBlockMeans[kBlockKinds] = {
    {1, 2, {1, 1}, {1, 1}, 2, false},
    {2, 2, {1, 1}, {1, 1}, 2, false},
    {1, 4, {1, 1, 1, 1}, {1, 1, 1, 1}, 4, false},
    {2, 4, {1, 1, 1, 1}, {1, 1, 1, 1}, 4, false},
    {1, 4, {1, 1, 1, 1}, {}, 3, false},
    {2, 4, {1, 1, 1, 1}, {}, 3, true},
    {2, 4, {1, 2, 1, 2}, {1, 0, 1, 0}, 4, true}};

// A row of n outputs, each the mean of a block of the rows that begin at src
// and are `step` bytes apart. Nothing beyond the blocks is read, nothing beyond
// the outputs written. Of fewer than 8 outputs one byte is made and written
// after the other, so that the blocks may overlap the outputs; else they do
// not.
using BlockFn = void (*)(const uint8_t *src, ptrdiff_t step, uint8_t *dst,
                         ptrdiff_t n);

struct BlockRows {
  BlockFn row[kBlockKinds];
};

LOX_ROW_TABLE(BlockRows, block_rows)

}  // namespace lox
