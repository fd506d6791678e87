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

  // For rows 0 to `last`. With `rest_first` it is all but the first ones that
  // are taken in full numbers.
  Strip(StripSize size, int32_t unit, int32_t last, bool rest_first = false)
      : rows_(size.rows),
        last_(last),
        rest_first_(rest_first),
        pitch_(ptrdiff_t{size.columns} * unit),
        at_(bytes_) {
    end_part();
  }

  // Where to make the next row; rows follow each other.
  uint8_t *row() const { return at_; }
  // After row y: calls take(first, rows, bytes, pitch) for those that are there
  // when there are enough.
  template <class Take>
  void made(int32_t y, Take take) {
    at_ += pitch_;
    if (y != end_) return;
    take(first_, y + 1 - first_, bytes_, pitch_);
    at_ = bytes_;
    first_ = y + 1;
    end_part();
  }

 private:
  // The last rows are more than half as many as others, where they can be,
  // because few rows do not fill a vector.
  void end_part() {
    const int32_t left = last_ - first_ + 1;
    if (rest_first_) {
      const int32_t rest = left % rows_;
      const int32_t some = rest == 0          ? rows_
                           : rest < rows_ / 4 ? rest + rows_ / 2
                                              : rest;
      end_ = first_ + (some < left ? some : left) - 1;
      return;
    }
    const int32_t rows =
        left > rows_ && left < rows_ + rows_ / 2 ? rows_ / 2 : rows_;
    end_ = left <= rows_ ? last_ : first_ + rows - 1;
  }

  int32_t rows_, last_;
  bool rest_first_;
  int32_t first_ = 0, end_ = 0;
  ptrdiff_t pitch_;
  uint8_t *at_;
  alignas(64) uint8_t bytes_[kBytes];
};

}  // namespace lox
