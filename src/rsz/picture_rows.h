// SPDX-License-Identifier: Apache-2.0
//
// A picture as vexo_rsz scales or copies it, some rows at a time and wherever
// they are wanted.
#pragma once

#include <cstdint>

#include "orumlox/img.h"
#include "rsz/layout.h"

namespace lox {

class PictureRows {
 public:
  // Columns are done so many at most.
  static constexpr int32_t kColumns = 4096;
  // So many are done at once, whatever the ratio.
  static constexpr int32_t kWholeColumns = Columns::kBytes;
  // Rows scaled across, two of every plane.
  static constexpr int32_t kScratch = 2 * 4 * kColumns;

  // Planes of the destination's sizes, which vexo_rsz takes; where they are is
  // not looked at.
  PictureRows(const vexo_img &src, const vexo_img &dst, uint8_t *scratch);
  // Columns of plane 0 from x on, `count` at most; x is a multiple of 64.
  // Returns how many they are, of which all but the last ones are a multiple of
  // 64.
  int32_t start(int32_t x, int32_t count);
  // The next rows, as many as the strip's planes have.
  void next(const vexo_img &strip);

 private:
  // Rows of 16-bit samples, which are reduced or copied.
  struct WordRows {
    const uint8_t *src;
    int64_t step;
    int32_t below, factor, count;
    void next(uint8_t *dst, int32_t unit);
  };

  // In plane 0's columns.
  int32_t ratio(int p) const;

  const vexo_img &src_, &dst_;
  uint8_t *scratch_;
  Layout layout_;
  bool words_;
  int planes_;
  WordRows word_rows_[2];
  PlaneRows rows_[3];
};

}  // namespace lox
