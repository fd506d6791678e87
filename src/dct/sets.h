// SPDX-License-Identifier: Apache-2.0
//
// The shift-matrix sets: their memory and what their bases are made of.
#pragma once

#include "orumlox/unprefixed.h"

namespace lox {

// How many entries the sets of a context have.
int32_t set_entries(const vexo_rsz_new_context *context);

// The cosines of the lowest four frequencies at each column of a block. The
// first kKnown columns' are kept for all rows.
struct ColumnCosines {
  static constexpr int32_t kKnown = 16;
  explicit ColumnCosines(int32_t width);
  int32_t width;
  double known[kKnown][4];
};

// FDCT_BlockXYFn of a block that is 0 but for the `count` rows from `first` on,
// which are given. Takes the time of those alone.
void transform_rows(const uint8_t *samples, int32_t first, int32_t count,
                    int32_t height, const ColumnCosines &columns, float *out);

// Frees what get_mem3Dint16 made; null is ignored.
void free_set(vexo_shift_set set, int32_t count);

}  // namespace lox
