// SPDX-License-Identifier: Apache-2.0
//
// The means of blocks on the x86 backends. The samples that an output takes
// from a row are brought beside each other, so that products of bytes weigh and
// sum them.
#pragma once

#include "rsz/block_rows.h"
#include "simd/simd.h"

namespace lox::LOX_SET {

template <class V, class R = typename V::R>
struct BlockOps {
  using Reg = typename R::Reg;
  static constexpr int n = static_cast<int>(sizeof(Reg));

  template <BlockMean M>
  LOX_OP Reg take_row(const uint8_t *p) {
    const Reg v = R::load(p);
    if constexpr (M.unit == 1) {
      return v;
    } else {
      return R::shuffle8(
          v, R::broadcast128(
                 M.grouped ? _mm_setr_epi8(0, 4, 8, 12, 1, 5, 9, 13, 2, 6, 10,
                                           14, 3, 7, 11, 15)
                 : M.side == 4 ? _mm_setr_epi8(0, 2, 4, 6, 1, 3, 5, 7, 8, 10,
                                               12, 14, 9, 11, 13, 15)
                               : _mm_setr_epi8(0, 2, 1, 3, 4, 6, 5, 7, 8, 10, 9,
                                               11, 12, 14, 13, 15)));
    }
  }
  // The sums of two samples and of those below them, in 16-bit elements.
  template <BlockMean M>
  LOX_OP Reg sums(const uint8_t *src, ptrdiff_t step) {
    constexpr int kLast = M.side == 4 ? 2 : 0;
    Reg sum = R::zero();
    for (int row = 0; row < M.side; ++row) {
      const int(&k)[4] = row % 2 == 0 ? M.even : M.odd;
      if (k[0] == 0) continue;
      const Reg weights =
          R::fill32(k[0] | k[1] << 8 | k[kLast] << 16 | k[kLast + 1] << 24);
      sum = R::add16(sum,
                     R::multiply_add8(take_row<M>(src + row * step), weights));
    }
    return sum;
  }
  // The means of what is summed from two registers, in 16-bit elements.
  template <BlockMean M>
  LOX_OP Reg means_by_4(const uint8_t *src, ptrdiff_t step) {
    const Reg one = R::fill16(1);
    return R::pack_signed32(
        R::template shift_right32<M.shift>(
            R::multiply_add16(sums<M>(src, step), one)),
        R::template shift_right32<M.shift>(
            R::multiply_add16(sums<M>(src + n, step), one)));
  }
  template <BlockMean M>
  LOX_OP void put_means(const uint8_t *src, ptrdiff_t step, uint8_t *dst) {
    Reg v;
    if constexpr (M.side == 4) {
      v = R::permute_dwords(R::pack_unsigned16(
          means_by_4<M>(src, step), means_by_4<M>(src + 2 * n, step)));
    } else {
      v = R::permute_quads(R::pack_unsigned16(
          R::template shift_right16<M.shift>(sums<M>(src, step)),
          R::template shift_right16<M.shift>(sums<M>(src + n, step))));
    }
    R::template store<false>(dst, v);
  }
};

}  // namespace lox::LOX_SET
