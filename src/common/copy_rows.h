// SPDX-License-Identifier: Apache-2.0
//
// The row kernels of the plane copies.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include "common/row_table.h"

namespace lox {

struct CopyRows {
  // Copies n bytes. The two ranges do not overlap.
  void (*copy)(uint8_t *dst, const uint8_t *src, size_t n);
  // The same of a row of a plane that is not in the nearer caches.
  void (*copy_far)(uint8_t *dst, const uint8_t *src, size_t n);
  // `rows` rows of n bytes, few as those of a tile.
  void (*copy_block)(uint8_t *dst, ptrdiff_t dst_step, const uint8_t *src,
                     ptrdiff_t src_step, size_t n, int rows);
  // `rows` rows of `count` tiles that are 64 bytes wide and go beside each
  // other. `far`: of a plane that is not in the nearer caches. tiles[count] is
  // the tile that is copied after them, or any.
  void (*copy_tiles)(uint8_t *dst, ptrdiff_t dst_step,
                     const uint8_t *const *tiles, int count, int rows,
                     bool far);
};

LOX_ROW_TABLE(CopyRows, copy_rows)

}  // namespace lox
