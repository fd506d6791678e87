// SPDX-License-Identifier: Apache-2.0
//
// The row kernels of scaling, and the columns they work on.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include "common/row_table.h"
#include "rsz/walk.h"

namespace lox {

// A strip of output columns. Which column comes from where is worked out once
// for all rows, by a set's prepare(), which fills what is below the line.
struct Columns {
  Axis axis;
  int32_t unit;   // bytes of a sample
  int32_t first;  // the strip, in samples
  int32_t count;

  // ---
  int32_t method;
  // Vectors of output are made in groups of 8 bytes, looked up in a window of
  // source bytes each. The first `period` vectors are done `repeats` times,
  // each time `advance` source bytes further; then come the others, the last
  // of which may overlap the one before.
  int32_t period, repeats;
  ptrdiff_t origin, advance;
  // For each group where its window begins, and which bytes of it are its
  // samples and their neighbours, and what weights they have. Wide rows whose
  // ratio does not repeat soon are done in several strips, so that this stays
  // small enough for the stack and the first-level cache.
  static constexpr int kBytes = 2048;
  static constexpr int kGroups = kBytes / 8 + 8;
  int16_t offsets[kGroups];
  alignas(64) uint8_t table[kGroups * 64];
};

// Rows of samples of one type. Nothing beyond what is said is read or written;
// rows do not overlap.
struct ScaleRows {
  // Works out `count` columns at most, and sets how many it did.
  void (*prepare)(Columns *columns);
  // A strip of a row at `dst`, each output by the rule of the axis; `row` is
  // the whole source row.
  void (*columns)(const uint8_t *row, uint8_t *dst, const Columns *columns);
  // The same of reductions, each output averaged with the row below too: the
  // mean of two samples or of four.
  void (*box)(const uint8_t *row, const uint8_t *below, uint8_t *dst,
              const Columns *columns);
  // n bytes, each `part` of `length` on the way from row `a` to row `b`.
  void (*lerp)(const uint8_t *a, const uint8_t *b, uint8_t *dst, ptrdiff_t n,
               Step step, bool mod1);
};

struct ScaleTables {
  ScaleRows bytes;   // units of 1 to 4 bytes, each byte for itself
  ScaleRows rgb565;  // units of 2 bytes
  // box() of 16-bit components, for units of 2 and 4 bytes by whole factors:
  // `count` outputs, each the mean of its first two samples in two rows.
  void (*box16)(const uint8_t *row, const uint8_t *below, uint8_t *dst,
                int32_t unit, int32_t factor, ptrdiff_t count);
};

LOX_ROW_TABLE(ScaleTables, scale_rows)

}  // namespace lox
