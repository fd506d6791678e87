// SPDX-License-Identifier: Apache-2.0
//
// The row kernels that move samples without changing them, and those that
// change packed or wider ones to bytes.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include "common/row_table.h"

namespace lox {

// Nothing beyond what is said is read or written; sources and destinations do
// not overlap unless said.
struct LayoutRows {
  // The even and the odd ones of n bytes; of an odd n the last is even.
  void (*deinterleave)(const uint8_t *src, uint8_t *even, uint8_t *odd,
                       ptrdiff_t n);
  // The even ones of n bytes.
  void (*even)(const uint8_t *src, uint8_t *dst, ptrdiff_t n);
  // n bytes of each in turn.
  void (*interleave)(const uint8_t *even, const uint8_t *odd, uint8_t *dst,
                     ptrdiff_t n);
  // Byte k of n groups of four to planes[k], unless that is null; and back,
  // with 255 for a null plane.
  void (*deinterleave4)(const uint8_t *src, uint8_t *const *planes,
                        ptrdiff_t n);
  void (*interleave4)(const uint8_t *const *planes, uint8_t *dst, ptrdiff_t n);
  // n pairs with their bytes exchanged; dst may be src.
  void (*swap)(const uint8_t *src, uint8_t *dst, ptrdiff_t n);
  // n little-endian words shifted right by 2; their low bytes.
  void (*narrow_10_to_8)(const uint8_t *src, uint8_t *dst, ptrdiff_t n);
  // Luma, U and V of `width` pixels of packed 4:2:2 with luma first; the U and
  // V of an odd last pixel too.
  void (*yuyv)(const uint8_t *src, uint8_t *y, uint8_t *u, uint8_t *v,
               ptrdiff_t width);
  // The same, the U and V averaged with those that are there, rounded down.
  void (*yuyv_average)(const uint8_t *src, uint8_t *y, uint8_t *u, uint8_t *v,
                       ptrdiff_t width);
};

LOX_ROW_TABLE(LayoutRows, layout_rows)

}  // namespace lox
