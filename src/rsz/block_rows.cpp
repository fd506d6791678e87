// SPDX-License-Identifier: Apache-2.0
//
// Rows of the means of blocks.
#include "rsz/block_rows.h"

#include "rsz/blocks_scalar.h"
#include "simd/simd.h"

#if defined(LOX_SET_neon)
#include "rsz/blocks_neon.h"
#elif LOX_VECTORS
#include "rsz/blocks_x86.h"
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
      dst[x * M.unit + i] =
          x < whole ? ScalarBlocks::mean<M>(src, step, x, i)
                    : ScalarBlocks::mean<ungrouped(M)>(src, step, x, i);
    }
  }
}

constexpr BlockMean kHalveBytes = {1, 2, {1, 1}, {1, 1}, 2, false};
constexpr BlockMean kHalvePairs = {2, 2, {1, 1}, {1, 1}, 2, false};
constexpr BlockMean kQuarterBytes = {1, 4,    {1, 1, 1, 1}, {1, 1, 1, 1},
                                     4, false};
constexpr BlockMean kQuarterPairs = {2, 4,    {1, 1, 1, 1}, {1, 1, 1, 1},
                                     4, false};
constexpr BlockMean kQuarterBytesOf2Rows = {1, 4, {1, 1, 1, 1}, {}, 3, false};
constexpr BlockMean kQuarterGroupedOf2Rows = {2, 4, {1, 1, 1, 1}, {}, 3, true};
constexpr BlockMean kQuarterGrouped = {2, 4,   {1, 2, 1, 2}, {1, 0, 1, 0},
                                       4, true};

}  // namespace

constinit const BlockRows block_rows = {
    .halve_bytes = row<kHalveBytes>,
    .halve_pairs = row<kHalvePairs>,
    .quarter_bytes = row<kQuarterBytes>,
    .quarter_pairs = row<kQuarterPairs>,
    .quarter_bytes_of_2_rows = row<kQuarterBytesOf2Rows>,
    .quarter_grouped_of_2_rows = row<kQuarterGroupedOf2Rows>,
    .quarter_grouped = row<kQuarterGrouped>,
};

}  // namespace lox::LOX_SET
