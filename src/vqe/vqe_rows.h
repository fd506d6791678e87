// SPDX-License-Identifier: Apache-2.0
//
// The row kernels of sharpening and deblocking.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include "common/row_table.h"

namespace lox {

struct VqeRows {
  // Sharpens n samples of each of `rows` rows. src is the first sample; two
  // rows and two columns around them are read, nothing else. Source and
  // destination have rows `pitch` bytes apart and do not overlap.
  void (*sharpen)(const uint8_t *src, ptrdiff_t pitch, uint8_t *dst,
                  ptrdiff_t n, ptrdiff_t rows);

  // Deblock with a strength of 1 to kMaxByteStrength. Rows must not lie over
  // each other.
  //
  // A horizontal edge: n columns of four rows, `stride` bytes apart, the edge
  // between the second and the third.
  void (*deblock_horizontal)(uint8_t *first, ptrdiff_t stride, ptrdiff_t n,
                             int strength);
  // Vertical edges, 8 bytes apart, of `rows` rows (1 to 8). `first` is the
  // first of the four samples of the first edge; for each edge 8 bytes from
  // there on are read and written, four of them as they were.
  void (*deblock_vertical)(uint8_t *first, ptrdiff_t stride, ptrdiff_t edges,
                           int rows, int strength);
};

LOX_ROW_TABLE(VqeRows, vqe_rows)

}  // namespace lox
