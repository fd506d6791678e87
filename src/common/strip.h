// SPDX-License-Identifier: Apache-2.0
//
// The rows between two steps of a call: one makes them, the other takes some at
// a time while they are in the near caches, and no picture of them ever exists.
// They are on the stack, so that nothing has to be had for them.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include "common/caches.h"

namespace lox {

// Columns that are done together, and how many rows of them at once.
struct StripSize {
  int32_t columns, rows;
};

// Room for kBytes.
template <int32_t kBytes = kStripBytes>
class Strip {
 public:
  // The next one, where `left` columns of `unit` bytes are. It takes `rows`
  // rows at once or, where it can be wider so, half as many and down to
  // `least`; all are powers of two. What does not fit is done in strips of
  // nearly the same width, of whole vectors.
  static StripSize next(int32_t left, int32_t unit, int32_t rows,
                        int32_t least) {
    while (rows > least && int64_t{left} * unit * rows > kBytes) rows /= 2;
    const int32_t most = kBytes / (unit * rows);
    const int32_t strips = (left - 1) / most + 1;
    const int32_t even =
        strips == 1 ? left : (left - 1) / strips / 64 * 64 + 64;
    return {even < most ? even : most, rows};
  }

  Strip(StripSize size, int32_t unit)
      : rows_(size.rows), pitch_(ptrdiff_t{size.columns} * unit) {}

  // Where to make row y; rows follow each other.
  uint8_t *row(int32_t y) { return bytes_ + (y & (rows_ - 1)) * pitch_; }
  // After each row, of which `last` is the last one: calls take(first, rows,
  // bytes, pitch) for those that are there, when they are all or enough.
  template <class Take>
  void made(int32_t y, int32_t last, Take take) {
    const int32_t rows = (y & (rows_ - 1)) + 1;
    if (rows == rows_ || y == last) take(y - (rows - 1), rows, bytes_, pitch_);
  }

 private:
  int32_t rows_;
  ptrdiff_t pitch_;
  alignas(64) uint8_t bytes_[kBytes];
};

}  // namespace lox
