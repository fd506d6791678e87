// SPDX-License-Identifier: Apache-2.0
//
// The row kernels that rotate and mirror.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include "common/row_table.h"

namespace lox {

// For each size of a unit, 1 to 4 bytes, at its index less one. Nothing beyond
// the units is read or written; source and destination do not overlap.
struct RotateRows {
  // n units, the last one first.
  void (*reverse[4])(const uint8_t *src, uint8_t *dst, ptrdiff_t n);
  // `height` rows of `width` units become `width` rows of `height`: unit (x, y)
  // goes to (y, x). Steps are bytes from row to row, negative ones too.
  void (*transpose[4])(const uint8_t *src, ptrdiff_t src_step, uint8_t *dst,
                       ptrdiff_t dst_step, ptrdiff_t width, ptrdiff_t height);
  // The same of a part of a plane that is written past the caches: so is the
  // part, where its rows begin with lines.
  void (*transpose_past[4])(const uint8_t *src, ptrdiff_t src_step,
                            uint8_t *dst, ptrdiff_t dst_step, ptrdiff_t width,
                            ptrdiff_t height);
};

LOX_ROW_TABLE(RotateRows, rotate_rows)

}  // namespace lox
