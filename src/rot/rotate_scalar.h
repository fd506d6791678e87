// SPDX-License-Identifier: Apache-2.0
//
// What the operations of turning mean, and the plain rule of the row kernels.
// A unit is kUnit bytes, moved whole; steps may be negative.
#pragma once

#include <stddef.h>
#include <stdint.h>
#include <string.h>

#include "simd/op.h"

namespace lox::LOX_SET {

struct ScalarRotate {
  template <int kUnit>
  LOX_OP void copy_unit(const uint8_t *src, uint8_t *dst) {
    memcpy(dst, src, kUnit);
  }

  // A tile of kCols by kRows units to kRows by kCols: unit (x, y) to (y, x).
  template <int kUnit>
  static constexpr int kCols = 1;
  template <int kUnit>
  static constexpr int kRows = 1;
  template <int kUnit>
  LOX_OP void transpose_tile(const uint8_t *src, ptrdiff_t, uint8_t *dst,
                             ptrdiff_t) {
    copy_unit<kUnit>(src, dst);
  }
  // The side of the squares that planes are best turned in, in cache lines.
  static constexpr int kLines = 1;
  // Fetches the cache line that lies so many bytes behind p, to be written;
  // for a row that is written from end to end, kAhead. 0 where that does not
  // help.
  static constexpr int kAhead = 0;
  LOX_OP void fetch_line(const uint8_t *, ptrdiff_t) {}

  // A run of kRun units that ends before src, backwards to dst. Both pointers
  // move, src down and dst up.
  template <int kUnit>
  static constexpr int kRun = 1;
  template <int kUnit>
  LOX_OP void reverse_run(const uint8_t *&src, uint8_t *&dst) {
    src -= kUnit;
    copy_unit<kUnit>(src, dst);
    dst += kUnit;
  }
};

}  // namespace lox::LOX_SET
