// SPDX-License-Identifier: Apache-2.0
//
// What the means of blocks are, and the plain rule of the row kernels.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include "simd/op.h"

namespace lox {

// The mean of a block of side x side samples: what each of them counts in even
// and in odd rows, the sum shifted right. Samples are bytes, or pairs whose
// bytes are averaged apart.
struct BlockMean {
  int unit;  // bytes of a sample, 1 or 2
  int side;  // 2 or 4
  int even[4], odd[4];
  int shift;
  // Of each 16 samples of a row the outputs take 0 2 4 6, 1 3 5 7, 8 10 12 14
  // and 9 11 13 15, not 0 1 2 3 and so on.
  bool grouped;
};

}  // namespace lox

namespace lox::LOX_SET {

struct ScalarBlocks {
  // Byte `place` of output x of the row of blocks that begins at src, in rows
  // `step` bytes apart. A backend's put_means<M>(src, step, dst) makes the
  // first n bytes of outputs; n is its own, whole groups of four outputs.
  template <BlockMean M>
  LOX_OP uint8_t mean(const uint8_t *src, ptrdiff_t step, ptrdiff_t x,
                      int place) {
    const ptrdiff_t first =
        M.grouped ? x / 4 * 16 + x % 4 / 2 * 8 + x % 2 : x * M.side;
    int sum = 0;
    for (int row = 0; row < M.side; ++row) {
      for (int i = 0; i < M.side; ++i) {
        const int weight = row % 2 == 0 ? M.even[i] : M.odd[i];
        if (weight == 0) continue;
        const ptrdiff_t sample = first + i * (M.grouped ? 2 : 1);
        sum += weight * src[row * step + sample * M.unit + place];
      }
    }
    return static_cast<uint8_t>(sum >> M.shift);
  }
};

}  // namespace lox::LOX_SET
