// SPDX-License-Identifier: Apache-2.0
//
// Rows of the means of blocks.
#include "rsz/block_rows.h"

#include "simd/simd.h"

#if defined(LOX_SET_neon)
#include "rsz/block_neon.h"
#elif LOX_VECTORS
#include "rsz/block_x86.h"
#endif

namespace lox::LOX_SET {

namespace {

// What is left over of a mean of grouped pairs.
constexpr BlockMean ungrouped(BlockMean m) {
  m.grouped = false;
  for (int i = 0; i < 4; ++i) {
    m.even[i] = m.even[0];
    m.odd[i] = m.odd[0];
  }
  return m;
}

// Byte `place` of output x of the row of blocks that begins at src.
template <BlockMean M>
LOX_INLINE uint8_t mean(const uint8_t *src, ptrdiff_t step, ptrdiff_t x,
                        int place) {
  const ptrdiff_t first =
      M.grouped ? x / 4 * 16 + x % 4 / 2 * 8 + x % 2 : x * M.side;
  int sum = 0;
  for (int row = 0; row < M.side; ++row) {
    for (int i = 0; i < M.side; ++i) {
      const int weight = row % 2 == 0 ? M.even[i] : M.odd[i];
      if (weight == 0) continue;
      const ptrdiff_t sample = first + ptrdiff_t{i} * (M.grouped ? 2 : 1);
      sum += weight * src[row * step + sample * M.unit + place];
    }
  }
  return static_cast<uint8_t>(sum >> M.shift);
}

template <BlockMean M>
void row(const uint8_t *src, ptrdiff_t step, uint8_t *dst, ptrdiff_t n) {
  const ptrdiff_t whole = M.grouped ? n & ~3 : n;
  ptrdiff_t x = 0;
#if LOX_VECTORS
  const ptrdiff_t bytes = whole * M.unit;
  x = with_vectors(
          bytes,
          [&]<class V>(V) LOX_INLINE_LAMBDA {
            static_assert(V::n >= 8 * M.unit && BlockOps<V>::n == V::n);
            const uint8_t *from = src;
            uint8_t *to = dst;
            for_vectors<V, 1>(
                bytes,
                [&]() LOX_INLINE_LAMBDA {
                  BlockOps<V>::template put_means<M>(from, step, to);
                },
                moving<M.side>(from), moving<1>(to));
          }) /
      M.unit;
#endif
  for (; x < n; ++x) {
    for (int i = 0; i < M.unit; ++i) {
      dst[x * M.unit + i] = x < whole ? mean<M>(src, step, x, i)
                                      : mean<ungrouped(M)>(src, step, x, i);
    }
  }
}

}  // namespace

constinit const BlockRows block_rows = {
    row<kBlockMeans[kHalveBytes]>,
    row<kBlockMeans[kHalvePairs]>,
    row<kBlockMeans[kQuarterBytes]>,
    row<kBlockMeans[kQuarterPairs]>,
    row<kBlockMeans[kQuarterBytesOf2Rows]>,
    row<kBlockMeans[kQuarterGroupedOf2Rows]>,
    row<kBlockMeans[kQuarterGrouped]>,
};

}  // namespace lox::LOX_SET
