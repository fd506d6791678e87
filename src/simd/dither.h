// SPDX-License-Identifier: Apache-2.0
//
// The pattern of ordered dithering. Before a sample loses its low bits a
// threshold is added, which depends on the place alone: 8 x 8 places have every
// threshold from 0 to 63 once, those near each other far apart ones. So the
// mean over 8 x 8 equal samples is the sample itself, and pictures that are
// done in parts join.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include "simd/op.h"

namespace lox {

// The bits of x ^ y and of y in turn, the lowest ones on top.
LOX_OP constexpr int dither_threshold(int x, int y) {
  int threshold = 0;
  for (int bit = 0; bit < 3; ++bit) {
    threshold = threshold << 2 | ((x ^ y) >> bit & 1) << 1 | (y >> bit & 1);
  }
  return threshold;
}

// A row of what is added to channels that lose three and two bits, from any of
// its first eight columns on for 16 of them.
struct DitherRow {
  uint8_t five[24];
  uint8_t six[24];
};
struct DitherTable {
  DitherRow row[8];
};
constexpr DitherTable kDither = [] {
  DitherTable table = {};
  for (int y = 0; y < 8; ++y) {
    for (int x = 0; x < 24; ++x) {
      const int threshold = dither_threshold(x, y);
      table.row[y].five[x] = static_cast<uint8_t>(threshold >> 3);
      table.row[y].six[x] = static_cast<uint8_t>(threshold >> 4);
    }
  }
  return table;
}();

// The thresholds of channels of five and of six bits from a place on.
struct DitherPlace {
  const uint8_t *five, *six;
};
LOX_OP DitherPlace dither_place(ptrdiff_t x, ptrdiff_t y) {
  const DitherRow &row = kDither.row[y & 7];
  return {row.five + (x & 7), row.six + (x & 7)};
}

}  // namespace lox
