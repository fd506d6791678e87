// SPDX-License-Identifier: Apache-2.0
//
// The DCT-domain scaler on NEON. The sums of a column are four words, one for
// each coefficient; products by element weigh them. Rows of a basis are
// symmetric or antisymmetric, too: columns are added and subtracted first,
// which takes words that lie about 0, so the first sum is kept less kTaken. By
// the inequality of Cauchy and Schwarz no other sum is further from 0 than
// that.
#pragma once

#include <string.h>

#include "dct/dct_rows.h"
#include "simd/simd.h"

namespace lox::LOX_SET {

template <class>
struct DctOps {
  static constexpr int n = 8;  // columns
  static constexpr int blocks = 1;
  static constexpr int kColumns = 1;
  static constexpr int kHalves = 1;

  static constexpr int kTaken = 1 << 14;  // of first sums, at most 255 * 128

  // Where the sum of column i for coefficient u is.
  LOX_OP constexpr ptrdiff_t column(ptrdiff_t i, int u) { return 4 * i + u; }
  // Where coefficient (u, v) is in a block's sums.
  LOX_OP constexpr int place(int u, int v) { return 4 * v + u; }
  // The weights of a row: what kTaken takes from coefficient 0, then those of
  // two columns at a time from the left one on, a word for each v; last those
  // of the column in the middle. Returns the width.
  template <class Entry>
  LOX_OP int32_t put_across(int16_t *words, int32_t width, int, Entry entry) {
    int32_t first[4] = {};
    for (int32_t x = 0; x < width; ++x) first[0] += kTaken * entry(0, x);
    memcpy(words, first, sizeof first);
    words += 8;
    const int32_t pairs = width / 2;
    for (int32_t x = 0; x < (pairs + 1) / 2 * 2; ++x) {
      for (int v = 0; v < 4; ++v) {
        *words++ = static_cast<int16_t>(x < pairs ? entry(v, x) : 0);
      }
    }
    for (int v = 0; v < 4; ++v) {
      *words++ = static_cast<int16_t>(
          width % 2 != 0 && v % 2 == 0 ? entry(v, pairs) : 0);
    }
    return width;
  }

  // --- sums of columns ------------------------------------------------------

  struct Sums {
    uint16x8_t u0;  // of bytes
    int32x4_t first_low, first_high;
    int32x4_t u1_low, u1_high, u2_low, u2_high, u3_low, u3_high;
  };
  LOX_OP Sums no_sums(int) {
    const int32x4_t z = vdupq_n_s32(0);
    return {vdupq_n_u16(0), z, z, z, z, z, z, z, z};
  }
  LOX_OP void weigh_first(Sums &s, int w0) {
    const auto w = static_cast<uint16_t>(w0);
    s.first_low = vaddq_s32(
        s.first_low, vreinterpretq_s32_u32(vmull_n_u16(vget_low_u16(s.u0), w)));
    s.first_high =
        vaddq_s32(s.first_high,
                  vreinterpretq_s32_u32(vmull_n_u16(vget_high_u16(s.u0), w)));
    s.u0 = vdupq_n_u16(0);
  }
  LOX_OP int16x8_t as_signed(uint16x8_t v) { return vreinterpretq_s16_u16(v); }
  // Of a row and its mirror image, with lane kLane of each two weights.
  template <int kLane>
  LOX_OP void add(Sums &s, uint8x8_t a, uint8x8_t b, int16x4_t w12,
                  int16x4_t w3) {
    const uint16x8_t sum = vaddl_u8(a, b);
    s.u0 = vaddq_u16(s.u0, sum);
    add_sum<kLane>(s, as_signed(sum), w12);
    const int16x8_t difference = as_signed(vsubl_u8(a, b));
    const int16x4_t low = vget_low_s16(difference);
    const int16x4_t high = vget_high_s16(difference);
    s.u1_low = vmlal_lane_s16(s.u1_low, low, w12, kLane);
    s.u1_high = vmlal_lane_s16(s.u1_high, high, w12, kLane);
    s.u3_low = vmlal_lane_s16(s.u3_low, low, w3, kLane);
    s.u3_high = vmlal_lane_s16(s.u3_high, high, w3, kLane);
  }
  template <int kLane>
  LOX_OP void add_sum(Sums &s, int16x8_t sum, int16x4_t w12) {
    s.u2_low = vmlal_lane_s16(s.u2_low, vget_low_s16(sum), w12, 2 + kLane);
    s.u2_high = vmlal_lane_s16(s.u2_high, vget_high_s16(sum), w12, 2 + kLane);
  }
  template <int>
  LOX_OP void add_pairs(Sums &s, const uint8_t *top0, const uint8_t *bottom0,
                        const uint8_t *top1, const uint8_t *bottom1,
                        const int16_t *w) {
    const int16x8_t w123 = vld1q_s16(w);
    const int16x4_t w12 = vget_low_s16(w123);
    const int16x4_t w3 = vget_high_s16(w123);
    add<0>(s, Neon::load8(top0), Neon::load8(bottom0), w12, w3);
    add<1>(s, Neon::load8(top1), Neon::load8(bottom1), w12, w3);
  }
  template <int>
  LOX_OP void add_pair(Sums &s, const uint8_t *top, const uint8_t *bottom,
                       const int16_t *w) {
    add<0>(s, Neon::load8(top), Neon::load8(bottom), vld1_s16(w),
           vld1_s16(w + 4));
  }
  // A row without a mirror image counts for even coefficients alone.
  template <int>
  LOX_OP void add_row(Sums &s, const uint8_t *row, const int16_t *w) {
    const uint16x8_t sum = vmovl_u8(Neon::load8(row));
    s.u0 = vaddq_u16(s.u0, sum);
    add_sum<1>(s, as_signed(sum), vld1_s16(w));
  }
  template <int>
  LOX_OP void add_pair_and_row(Sums &s, const uint8_t *top,
                               const uint8_t *bottom, const uint8_t *row,
                               const int16_t *w) {
    add_pair<0>(s, top, bottom, w);
    add_row<0>(s, row, w);
  }

  template <int>
  LOX_OP void put(Sums &s, int w0, int shift, int16_t *t) {
    const int32x4_t by = vdupq_n_s32(-shift);
    weigh_first(s, w0);
    put_columns(t, words(s.first_low, s.u1_low, by),
                words(s.u2_low, s.u3_low, by));
    put_columns(t + 16, words(s.first_high, s.u1_high, by),
                words(s.u2_high, s.u3_high, by));
  }
  // Rounded, a word of b above one of a.
  LOX_OP int32x4_t words(int32x4_t a, int32x4_t b, int32x4_t by) {
    return vsliq_n_s32(vrshlq_s32(a, by), vrshlq_s32(b, by), 16);
  }
  // Four columns. Stores that interleave would have their registers copied.
  LOX_OP void put_columns(int16_t *t, int32x4_t t01, int32x4_t t23) {
    const int16x8_t less = vsubq_s16(
        vreinterpretq_s16_s32(t01), vreinterpretq_s16_s32(vdupq_n_s32(kTaken)));
    const int32x4x2_t v = vzipq_s32(vreinterpretq_s32_s16(less), t23);
    vst1q_s16(t, vreinterpretq_s16_s32(v.val[0]));
    vst1q_s16(t + 8, vreinterpretq_s16_s32(v.val[1]));
  }

  // --- blocks ---------------------------------------------------------------

  // Weighted coefficients: for each v four of u.
  struct Group {
    int16x4_t v0, v1, v2, v3;
  };
  LOX_OP int16x4_t weighted(int32x4_t k, const int32_t *weights) {
    return vshrn_n_s32(vmulq_s32(k, vld1q_s32(weights)), 8);
  }
  LOX_OP void sum_rows(Group &group, int, const int16_t *t,
                       const DctTables::Kind &kind) {
    const int32_t width = kind.count;
    const int16_t *across = kind.across;
    int32x4_t v0 = vreinterpretq_s32_s16(vld1q_s16(across));
    int32x4_t v1 = vdupq_n_s32(0);
    int32x4_t v2 = v1;
    int32x4_t v3 = v1;
    const int16_t *left = t;
    const int16_t *right = t + 4 * (width - 1);
    across += 8;
    for (uint32_t i = (static_cast<uint32_t>(width) + 2) / 4; i != 0; --i) {
      const int16x8_t w = vld1q_s16(across);
      const int16x8_t a = vld1q_s16(left);
      const int16x4_t b0 = vld1_s16(right);
      const int16x4_t b1 = vld1_s16(right - 4);
      across += 8;
      left += 8;
      right -= 8;
      const int16x8_t b = vcombine_s16(b0, b1);
      const int16x8_t sum = vaddq_s16(a, b);
      const int16x8_t difference = vsubq_s16(a, b);
      const int16x4_t w0 = vget_low_s16(w);
      const int16x4_t w1 = vget_high_s16(w);
      v0 = vmlal_lane_s16(v0, vget_low_s16(sum), w0, 0);
      v1 = vmlal_lane_s16(v1, vget_low_s16(difference), w0, 1);
      v2 = vmlal_lane_s16(v2, vget_low_s16(sum), w0, 2);
      v3 = vmlal_lane_s16(v3, vget_low_s16(difference), w0, 3);
      v0 = vmlal_lane_s16(v0, vget_high_s16(sum), w1, 0);
      v1 = vmlal_lane_s16(v1, vget_high_s16(difference), w1, 1);
      v2 = vmlal_lane_s16(v2, vget_high_s16(sum), w1, 2);
      v3 = vmlal_lane_s16(v3, vget_high_s16(difference), w1, 3);
    }
    if (width % 2 != 0) {
      const int16x4_t middle = vld1_s16(t + 4 * (width / 2));
      const int16x4_t w = vld1_s16(across);
      v0 = vmlal_lane_s16(v0, middle, w, 0);
      v2 = vmlal_lane_s16(v2, middle, w, 2);
    }
    const int32x4_t by = vdupq_n_s32(-kind.shift);
    group = {weighted(vminq_s32(vshlq_s32(v0, by), vld1q_s32(kind.most)),
                      kind.weights),
             weighted(vshlq_s32(v1, by), kind.weights + 4),
             weighted(vshlq_s32(v2, by), kind.weights + 8),
             weighted(vshlq_s32(v3, by), kind.weights + 12)};
  }

  // Four rows: the halves of two registers, the rows 0 and 2, and 3 and 1.
  struct Four {
    int16x8_t r02, r31;
  };
  LOX_OP Four transpose(Four m) {
#if LOX_ARM
    // In place; compilers write the exchange of halves as eight instructions.
    __asm__(
        "vtrn.32 %e0, %f0\n\tvtrn.32 %f1, %e1\n\t"
        "vtrn.16 %e0, %f1\n\tvtrn.16 %f0, %e1"
        : "+w"(m.r02), "+w"(m.r31));
    return m;
#else
    const int16x4x2_t r01 = vtrn_s16(vget_low_s16(m.r02), vget_high_s16(m.r31));
    const int16x4x2_t r23 = vtrn_s16(vget_high_s16(m.r02), vget_low_s16(m.r31));
    const int32x4x2_t all =
        vtrnq_s32(vreinterpretq_s32_s16(vcombine_s16(r01.val[0], r01.val[1])),
                  vreinterpretq_s32_s16(vcombine_s16(r23.val[0], r23.val[1])));
    const int16x8_t c01 = vreinterpretq_s16_s32(all.val[0]);
    const int16x8_t c23 = vreinterpretq_s16_s32(all.val[1]);
    return {vcombine_s16(vget_low_s16(c01), vget_low_s16(c23)),
            vcombine_s16(vget_high_s16(c23), vget_high_s16(c01))};
#endif
  }

  // What the inverse takes, held in registers.
  struct Constants {
    int16x8_t plus_minus, minus_plus, middle, flip;
  };
  LOX_OP Constants constants() {
    const int16x4_t plus = vdup_n_s16(53 * 256);
    const int16x4_t minus = vdup_n_s16(-53 * 256);
    return {NeonYuv::keep(vcombine_s16(plus, minus)),
            NeonYuv::keep(vcombine_s16(minus, plus)),
            NeonYuv::keep(vsetq_lane_s16(128 * 128, vdupq_n_s16(0), 0)),
            NeonYuv::keep(vdupq_n_s16(static_cast<int16_t>(0x8080)))};
  }
  // One direction of the inverse, in words: (128 e + 128 a + 53 b) >> 7 is
  // e + a + (53 b >> 7), and a shift by 14 is one by 7 after that.
  LOX_OP Four butterfly(const Four &c, const Constants &k) {
    const int16x8_t c13 = vextq_s16(c.r31, c.r31, 4);
    const int16x4_t c0 = vget_low_s16(c.r02);
    const int16x4_t c2 = vget_high_s16(c.r02);
    const int16x8_t even = vcombine_s16(vqadd_s16(c0, c2), vqsub_s16(c0, c2));
    const int16x8_t odd02 = vqaddq_s16(c13, vqdmulhq_s16(c.r31, k.plus_minus));
    const int16x8_t odd31 = vqsubq_s16(vqdmulhq_s16(c.r31, k.minus_plus), c13);
    return {vqaddq_s16(even, odd02), vqaddq_s16(even, odd31)};
  }
  LOX_OP void put_row(uint8_t *p, uint8x8_t v, int half) {
    const uint32x2_t two = vreinterpret_u32_u8(v);
    const uint32_t row =
        half == 0 ? vget_lane_u32(two, 0) : vget_lane_u32(two, 1);
    memcpy(p, &row, sizeof row);
  }
  // With samples taken less 128 the first direction's results are at most 32241
  // and what rounding down adds, for blocks of all sides. Those of the second,
  // before they are shifted, are below 41000: the sum of an even and an odd
  // half, whose difference is a result, too. So where one half is beyond a
  // word, the other has its sign or is less than 2^14, or a result would be
  // beyond 2^15 + 2^14: what saturates becomes black or white, as it should.
  LOX_OP void put_blocks(const Group &g, const Constants &k, uint8_t *dst,
                         ptrdiff_t stride) {
    const Four w = {vsubq_s16(vcombine_s16(g.v0, g.v2), k.middle),
                    vcombine_s16(g.v3, g.v1)};
    const Four s = butterfly(transpose(butterfly(w, k)), k);
    const uint8x16_t rows =
        veorq_u8(vreinterpretq_u8_s8(vcombine_s8(vqshrn_n_s16(s.r02, 7),
                                                 vqshrn_n_s16(s.r31, 7))),
                 vreinterpretq_u8_s16(k.flip));
    put_row(dst, vget_low_u8(rows), 0);
    put_row(dst + stride, vget_high_u8(rows), 1);
    put_row(dst + 2 * stride, vget_low_u8(rows), 1);
    put_row(dst + 3 * stride, vget_high_u8(rows), 0);
  }
};

}  // namespace lox::LOX_SET
