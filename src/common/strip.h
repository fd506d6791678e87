// SPDX-License-Identifier: Apache-2.0
//
// The rows between two steps of a call: one makes them, the other takes some at
// a time while they are in the near caches, and no picture of them ever exists.
// They are on the stack: there is no memory to be had, or not.
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
  // The next one, where `left` columns of `unit` bytes are, to take `rows` rows
  // at once. What does not fit is done in strips of nearly the same width, of
  // whole vectors.
  static StripSize next(int32_t left, int32_t unit, int32_t rows) {
    const int32_t most = kBytes / (unit * rows);
    const int32_t strips = (left - 1) / most + 1;
    const int32_t even =
        strips == 1 ? left : (left - 1) / strips / 64 * 64 + 64;
    return {even < most ? even : most, rows};
  }

  Strip(StripSize size, int32_t unit)
      : rows_(size.rows), pitch_(ptrdiff_t{size.columns} * unit) {}

  // Where to make row y; rows follow each other.
  uint8_t *row(int32_t y) { return bytes_ + (y - first_) * pitch_; }
  // After each row, of which `last` is the last one: calls take(first, rows,
  // bytes, pitch) when there are enough. The last ones are more than half as
  // many, where they can be, because few rows do not fill a vector.
  template <class Take>
  void made(int32_t y, int32_t last, Take take) {
    const int32_t rows = y + 1 - first_;
    const int32_t after = last - y;
    const int32_t half = rows_ / 2;
    const bool few_after = rows == half && after > half && after < rows_;
    if (rows < rows_ && after > 0 && !few_after) return;
    take(first_, rows, bytes_, pitch_);
    first_ = y + 1;
  }

 private:
  int32_t rows_;
  int32_t first_ = 0;
  ptrdiff_t pitch_;
  alignas(64) uint8_t bytes_[kBytes];
};

}  // namespace lox
