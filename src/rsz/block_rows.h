// SPDX-License-Identifier: Apache-2.0
//
// The row kernels that halve and quarter by the means of blocks.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include "common/row_table.h"

namespace lox {

// A row of n outputs, each the mean of a block of the rows that begin at src
// and are `step` bytes apart. Outputs are bytes, or pairs whose bytes are
// averaged apart. Nothing beyond the blocks is read, nothing beyond the outputs
// written. Of fewer than 8 outputs one byte is made and written after the
// other, so that the blocks may overlap the outputs; else they do not.
using BlockFn = void (*)(const uint8_t *src, ptrdiff_t step, uint8_t *dst,
                         ptrdiff_t n);

struct BlockRows {
  BlockFn halve_bytes, halve_pairs;      // 2 x 2
  BlockFn quarter_bytes, quarter_pairs;  // 4 x 4
  BlockFn quarter_bytes_of_2_rows;       // rows 0 and 2 of 4 x 4
  // 4 x 4, of which four outputs together take the pairs 0 2 4 6, 1 3 5 7,
  // 8 10 12 14 and 9 11 13 15: of rows 0 and 2; and of all rows, the second and
  // the fourth pair counted twice in rows 0 and 2, not at all in rows 1 and 3.
  // The last one to three outputs take their own blocks, samples alike.
  BlockFn quarter_grouped_of_2_rows, quarter_grouped;
};

LOX_ROW_TABLE(BlockRows, block_rows)

}  // namespace lox
