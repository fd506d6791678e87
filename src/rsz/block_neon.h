// SPDX-License-Identifier: Apache-2.0
//
// The means of blocks on NEON. Loads take apart what must not be summed, so
// that neighbouring bytes of a register are neighbours of a block.
#pragma once

#include "rsz/block_rows.h"
#include "simd/simd.h"

namespace lox::LOX_SET {

template <class>
struct BlockOps {
  static constexpr int n = 16;

  // What a row has for n bytes of outputs, in as many registers as a block has
  // columns: bytes as they are; of pairs the first bytes and the second ones in
  // turn; of grouped ones those of even pairs, then those of odd pairs.
  template <BlockMean M>
  LOX_OP void load_row(const uint8_t *p, uint8x16_t (&v)[M.side]) {
    if constexpr (M.grouped) {
      const uint8x16x4_t pairs = vld4q_u8(p);
      for (int i = 0; i < 4; ++i) v[i] = pairs.val[i];
    } else if constexpr (M.unit == 2) {
      for (int i = 0; i < M.side; i += 2) {
        const uint8x16x2_t pairs = vld2q_u8(p + 16 * i);
        v[i] = pairs.val[0];
        v[i + 1] = pairs.val[1];
      }
    } else {
      for (int i = 0; i < M.side; ++i) v[i] = vld1q_u8(p + 16 * i);
    }
  }
  // The weighted sums of two neighbours and of those below them.
  template <BlockMean M>
  LOX_OP void sum_rows(const uint8_t *src, ptrdiff_t step,
                       uint16x8_t (&sum)[M.side]) {
    // Weights of 1 and 2 in even rows, of 1 and 0 in odd ones: each sample
    // once, and the second of the even row in the place of that of the odd row.
    constexpr bool kLopsided = M.even[1] == 2;
    static_assert(!kLopsided ||
                  (M.even[0] == 1 && M.odd[0] == 1 && M.odd[1] == 0));
    for (int i = 0; i < M.side; ++i) sum[i] = vdupq_n_u16(0);
    for (int row = 0; row < M.side; row += 2) {
      uint8x16_t even[M.side];
      load_row<M>(src + row * step, even);
      for (int i = 0; i < M.side; ++i) sum[i] = vpadalq_u8(sum[i], even[i]);
      if constexpr (M.odd[0] != 0) {
        uint8x16_t odd[M.side];
        load_row<M>(src + (row + 1) * step, odd);
        for (int i = 0; i < M.side; ++i) {
          if constexpr (kLopsided) {
            const uint8x16_t first = vreinterpretq_u8_u16(vdupq_n_u16(0x00FF));
            odd[i] = vbslq_u8(first, odd[i], even[i]);
          }
          sum[i] = vpadalq_u8(sum[i], odd[i]);
        }
      }
    }
  }
  template <int S>
  LOX_OP uint8x8_t means_by_4(uint16x8_t a, uint16x8_t b) {
    return vshrn_n_u16(
        vcombine_u16(vpadd_u16(vget_low_u16(a), vget_high_u16(a)),
                     vpadd_u16(vget_low_u16(b), vget_high_u16(b))),
        S);
  }
  template <BlockMean M>
  LOX_OP void put_means(const uint8_t *src, ptrdiff_t step, uint8_t *dst) {
    uint16x8_t sum[M.side];
    sum_rows<M>(src, step, sum);
    uint8x8x2_t means;
    if constexpr (M.side == 2) {
      means.val[0] = vshrn_n_u16(sum[0], M.shift);
      means.val[1] = vshrn_n_u16(sum[1], M.shift);
    } else if constexpr (M.unit == 2 && !M.grouped) {
      means.val[0] = means_by_4<M.shift>(sum[0], sum[2]);
      means.val[1] = means_by_4<M.shift>(sum[1], sum[3]);
    } else {
      means.val[0] = means_by_4<M.shift>(sum[0], sum[1]);
      means.val[1] = means_by_4<M.shift>(sum[2], sum[3]);
      // First and second bytes of the even outputs, and of the odd ones.
      if constexpr (M.grouped) means = vzip_u8(means.val[0], means.val[1]);
    }
    if constexpr (M.unit == 2) {
      vst2_u8(dst, means);
    } else {
      vst1q_u8(dst, vcombine_u8(means.val[0], means.val[1]));
    }
  }
};

}  // namespace lox::LOX_SET
