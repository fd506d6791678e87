// SPDX-License-Identifier: Apache-2.0
//
// A plane in rows of blocks, from which the scalers of pictures are made.
#pragma once

#include <cstddef>
#include <cstdint>

#include "dct/plan.h"

namespace lox {

class BlockRows {
 public:
  // Of `plane` by plane `plan` of the context's plan, in the plane's own sizes
  // and work area; makes the tables there.
  BlockRows(const vexo_rsz_new_context *context, int32_t plan,
            const DctPlane &plane, uint8_t *work, vexo_shift_set a,
            vexo_shift_set b);

  // Rows of blocks that reach into the destination.
  int32_t count() const { return (size_.height + 3) / 4; }
  // The first row of the source that row i of blocks does not take.
  int64_t source_end(int32_t i) const;
  // Row i of blocks, from the plane to the destination.
  void scale(int32_t i, const uint8_t *src, uint8_t *dst) const;

 private:
  ptrdiff_t first_of(int32_t i) const {
    return first_ + ptrdiff_t{i} * columns_;
  }

  const vexo_rsz_new_context *context_;
  const DctPlane &plane_;
  uint8_t *work_;
  Written size_;
  int32_t columns_;
  ptrdiff_t first_;  // of the plan's blocks
  DctKind kinds_[4] = {};
};

}  // namespace lox
