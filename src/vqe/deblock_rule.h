// SPDX-License-Identifier: Apache-2.0
//
// The deblocking filter of one sample's edge: what the row kernels compute, and
// what planes with overlapping rows are filtered by.
#pragma once

#include <stddef.h>
#include <stdint.h>

namespace lox {

// Up to this strength the filter can work in bytes. Steps above 127 saturate
// there, but are so large that either way the samples are left alone.
constexpr int kMaxByteStrength = 63;

namespace detail {
[[gnu::always_inline]] static inline uint8_t limit_to_byte(int v) {
  return static_cast<uint8_t>(v < 0 ? 0 : v > 255 ? 255 : v);
}
}  // namespace detail

// a is the first of four samples `step` bytes apart, two on each side of the
// edge. A step across it of more than twice the strength is taken for the
// picture's own.
[[gnu::always_inline]] static inline void deblock_sample(uint8_t *a,
                                                         ptrdiff_t step,
                                                         int strength) {
  uint8_t *const b = a + step;
  uint8_t *const c = b + step;
  uint8_t *const d = c + step;
  const int v = *a - 4 * *b + 4 * *c - *d;
  // Quirk: an arithmetic shift rounds down, so negative steps count as larger.
  const int eighth = v >> 3;
  const int size = eighth < 0 ? -eighth : eighth;
  const int excess = size > strength ? 2 * (size - strength) : 0;
  const int change = size > excess ? size - excess : 0;
  const int signed_change = v < 0 ? -change : change;
  const int limit = change >> 1;
  const int quarter = (*a - *d) >> 2;
  const int outer = quarter > limit    ? limit
                    : quarter < -limit ? -limit
                                       : quarter;
  *b = detail::limit_to_byte(*b + signed_change);
  *c = detail::limit_to_byte(*c - signed_change);
  *a = static_cast<uint8_t>(*a - outer);
  *d = static_cast<uint8_t>(*d + outer);
}

}  // namespace lox
