// SPDX-License-Identifier: Apache-2.0
//
// The memory of shift-matrix sets.
#pragma once

#include "orumlox/unprefixed.h"

namespace lox {

// Entries of the sets of a context.
int32_t set_entries(const vexo_rsz_new_context *context);

// What columns take of the lowest four frequencies; of the first ones it is
// known once for all rows.
struct ColumnCosines {
  static constexpr int32_t kKnown = 16;
  explicit ColumnCosines(int32_t width);
  int32_t width;
  double known[kKnown][4];
};

// FDCT_BlockXYFn of a block of which `count` rows from `first` on are given,
// all others being 0. Takes the time of the rows given.
void transform_rows(const uint8_t *samples, int32_t first, int32_t count,
                    int32_t height, const ColumnCosines &columns, float *out);

// Frees what get_mem3Dint16 made; null is ignored.
void free_set(vexo_shift_set set, int32_t count);

}  // namespace lox
