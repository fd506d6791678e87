// SPDX-License-Identifier: Apache-2.0
//
// The row kernels of samples that lose bits: pixels to words of 5, 6 and 5
// bits, samples to fewer bits, and 16-bit samples to where others keep theirs.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include "common/row_table.h"
#include "simd/pixel_format.h"

namespace lox {

// How samples lose their low bits: sample i becomes
// min(sample + added[i % kPeriod], most) >> shift.
struct FewerBits {
  static constexpr int kPeriod = 16;
  uint16_t added[2 * kPeriod];  // a period twice
  uint16_t most;
  uint16_t shift;
};

// Nothing beyond what is said is read or written; sources and destinations do
// not overlap. Words are little-endian.
struct DitherRows {
  // `width` pixels, dithered, the first of which has place (x, y).
  using PixelsFn = void (*)(const uint8_t *src, uint8_t *dst, ptrdiff_t width,
                            ptrdiff_t x, ptrdiff_t y);
  // From a layout of three or four bytes, by RgbLayout less kRgb888; red or
  // blue on top. From grey, which is the same in both.
  PixelsFn rgb_to_565[kRgbLayouts - kRgb888][2];
  PixelsFn grey_to_565;

  // n words, or n bytes, to n bytes.
  void (*words)(const uint8_t *src, uint8_t *dst, ptrdiff_t n,
                const FewerBits &how);
  void (*bytes)(const uint8_t *src, uint8_t *dst, ptrdiff_t n,
                const FewerBits &how);

  // n words shifted by six bits; pairs of words to two rows, and back.
  void (*words_down)(const uint8_t *src, uint8_t *dst, ptrdiff_t n);
  void (*words_up)(const uint8_t *src, uint8_t *dst, ptrdiff_t n);
  void (*pairs_down)(const uint8_t *src, uint8_t *first, uint8_t *second,
                     ptrdiff_t n);
  void (*pairs_up)(const uint8_t *first, const uint8_t *second, uint8_t *dst,
                   ptrdiff_t n);
};

LOX_ROW_TABLE(DitherRows, dither_rows)

}  // namespace lox
