// SPDX-License-Identifier: Apache-2.0
//
// The DCT-domain scaler on NEON. The sums of a column are four words, one for
// each coefficient; products by element weigh them.
#pragma once

#include <string.h>

#include "simd/simd.h"

namespace lox::LOX_SET {

template <class>
struct DctOps {
  static constexpr int n = 8;  // columns
  static constexpr int blocks = 1;
  static constexpr int kColumns = 1;
  static constexpr int kHalves = 1;

  // Where the sum of column i for coefficient u is.
  LOX_OP constexpr ptrdiff_t column(ptrdiff_t i, int u) { return 4 * i + u; }
  // Where coefficient (u, v) is in a block's sums.
  LOX_OP constexpr int place(int u, int v) { return 4 * v + u; }
  LOX_OP void put_across(int16_t *across, ptrdiff_t i, int v, int16_t weight) {
    across[4 * i + v] = weight;
  }

  // --- sums of columns ------------------------------------------------------

  struct Sums {
    uint16x8_t u0;  // of bytes
    int32x4_t u1_low, u1_high, u2_low, u2_high, u3_low, u3_high;
  };
  LOX_OP Sums no_sums(int) {
    const int32x4_t z = vdupq_n_s32(0);
    return {vdupq_n_u16(0), z, z, z, z, z, z};
  }
  LOX_OP int16x8_t as_signed(uint16x8_t v) { return vreinterpretq_s16_u16(v); }
  LOX_OP uint8x8_t load8(const uint8_t *p) {
#if LOX_ARM && !LOX_GCC_ARM
    // Held, or the compiler loads some through core registers and memory.
    return NeonYuv::keep(vld1_u8(p));
#else
    return vld1_u8(p);
#endif
  }
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
    const int16x4_t w12 = vld1_s16(w);
    const int16x4_t w3 = vld1_s16(w + 4);
    add<0>(s, load8(top0), load8(bottom0), w12, w3);
    add<1>(s, load8(top1), load8(bottom1), w12, w3);
  }
  template <int>
  LOX_OP void add_pair(Sums &s, const uint8_t *top, const uint8_t *bottom,
                       const int16_t *w) {
    add<0>(s, load8(top), load8(bottom), vld1_s16(w), vld1_s16(w + 4));
  }
  // A row without a mirror image counts for even coefficients alone.
  template <int>
  LOX_OP void add_row(Sums &s, const uint8_t *row, const int16_t *w) {
    const uint16x8_t sum = vmovl_u8(load8(row));
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

  LOX_OP int16x8_t round(int32x4_t low, int32x4_t high, int32x4_t shift) {
    return vcombine_s16(vmovn_s32(vrshlq_s32(low, shift)),
                        vmovn_s32(vrshlq_s32(high, shift)));
  }
  LOX_OP int32x4_t weighted_dc(uint16x4_t sum, int w0) {
    return vreinterpretq_s32_u32(vmull_n_u16(sum, static_cast<uint16_t>(w0)));
  }
  template <int>
  LOX_OP void put(const Sums &s, int w0, int shift, int16_t *t) {
    const int32x4_t by = vdupq_n_s32(-shift);
    const int16x8_t t0 = round(weighted_dc(vget_low_u16(s.u0), w0),
                               weighted_dc(vget_high_u16(s.u0), w0), by);
    const int16x8_t t1 = round(s.u1_low, s.u1_high, by);
    const int16x8_t t2 = round(s.u2_low, s.u2_high, by);
    const int16x8_t t3 = round(s.u3_low, s.u3_high, by);
    const int16x8x2_t t01 = vzipq_s16(t0, t1);
    const int16x8x2_t t23 = vzipq_s16(t2, t3);
    put_columns(t, t01.val[0], t23.val[0]);
    put_columns(t + 16, t01.val[1], t23.val[1]);
  }
  // Four columns. Stores that interleave would have their registers copied.
  LOX_OP void put_columns(int16_t *t, int16x8_t t01, int16x8_t t23) {
    const int32x4x2_t v =
        vzipq_s32(vreinterpretq_s32_s16(t01), vreinterpretq_s32_s16(t23));
    vst1q_s16(t, vreinterpretq_s16_s32(v.val[0]));
    vst1q_s16(t + 8, vreinterpretq_s16_s32(v.val[1]));
  }

  // --- blocks ---------------------------------------------------------------

  // Weighted coefficients: for each v four of u.
  struct Group {
    int16x4_t v0, v1, v2, v3;
  };
  LOX_OP int16x4_t weighted_coefficients(int32x4_t sum, int32x4_t shift,
                                         const int32_t *most,
                                         const int32_t *weights) {
    const int32x4_t k = vminq_s32(vshlq_s32(sum, shift), vld1q_s32(most));
    return vshrn_n_s32(vmull_s16(vmovn_s32(k), vmovn_s32(vld1q_s32(weights))),
                       8);
  }
  LOX_OP void sum_rows(Group &group, int, const int16_t *t,
                       const int16_t *across, int count, int shift,
                       const int32_t *most, const int32_t *weights) {
    int32x4_t v0 = vdupq_n_s32(0);
    int32x4_t v1 = v0;
    int32x4_t v2 = v0;
    int32x4_t v3 = v0;
    for (int i = 0; i < count; i += 2, t += 8, across += 8) {
      const int16x8_t columns = vld1q_s16(t);
      const int16x8_t w = vld1q_s16(across);
      const int16x4_t column0 = vget_low_s16(columns);
      const int16x4_t column1 = vget_high_s16(columns);
      const int16x4_t w0 = vget_low_s16(w);
      const int16x4_t w1 = vget_high_s16(w);
      v0 = vmlal_lane_s16(v0, column0, w0, 0);
      v1 = vmlal_lane_s16(v1, column0, w0, 1);
      v2 = vmlal_lane_s16(v2, column0, w0, 2);
      v3 = vmlal_lane_s16(v3, column0, w0, 3);
      v0 = vmlal_lane_s16(v0, column1, w1, 0);
      v1 = vmlal_lane_s16(v1, column1, w1, 1);
      v2 = vmlal_lane_s16(v2, column1, w1, 2);
      v3 = vmlal_lane_s16(v3, column1, w1, 3);
    }
    const int32x4_t by = vdupq_n_s32(-shift);
    group = {weighted_coefficients(v0, by, most, weights),
             weighted_coefficients(v1, by, most + 4, weights + 4),
             weighted_coefficients(v2, by, most + 8, weights + 8),
             weighted_coefficients(v3, by, most + 12, weights + 12)};
  }

  struct Four {
    int16x4_t a, b, c, d;
  };
  template <int S>
  LOX_OP Four butterfly(const Four &c) {
    const int32x4_t e0 = vshlq_n_s32(vaddl_s16(c.a, c.c), 7);
    const int32x4_t e1 = vshlq_n_s32(vsubl_s16(c.a, c.c), 7);
    const int32x4_t oa = vsubq_s32(vmull_n_s16(c.b, 53), vshll_n_s16(c.d, 7));
    const int32x4_t ob = vmlal_n_s16(vshll_n_s16(c.b, 7), c.d, 53);
    return {
        vshrn_n_s32(vaddq_s32(e0, ob), S), vshrn_n_s32(vaddq_s32(e1, oa), S),
        vshrn_n_s32(vsubq_s32(e1, oa), S), vshrn_n_s32(vsubq_s32(e0, ob), S)};
  }
  LOX_OP Four transpose(const Four &r) {
    const int16x4x2_t ab = vtrn_s16(r.a, r.b);
    const int16x4x2_t cd = vtrn_s16(r.c, r.d);
    const int32x2x2_t even = vtrn_s32(vreinterpret_s32_s16(ab.val[0]),
                                      vreinterpret_s32_s16(cd.val[0]));
    const int32x2x2_t odd = vtrn_s32(vreinterpret_s32_s16(ab.val[1]),
                                     vreinterpret_s32_s16(cd.val[1]));
    return {vreinterpret_s16_s32(even.val[0]), vreinterpret_s16_s32(odd.val[0]),
            vreinterpret_s16_s32(even.val[1]),
            vreinterpret_s16_s32(odd.val[1])};
  }
  LOX_OP void put_row(uint8_t *p, uint8x8_t v, int half) {
    const uint32x2_t two = vreinterpret_u32_u8(v);
    const uint32_t row =
        half == 0 ? vget_lane_u32(two, 0) : vget_lane_u32(two, 1);
    memcpy(p, &row, sizeof row);
  }
  // With samples taken less 128 the first direction's results are below 2^15
  // for all sides up to 128, so that words hold them: at most 32241 and what
  // rounding down adds.
  LOX_OP void put_blocks(const Group &g, uint8_t *dst, ptrdiff_t stride) {
    const int16x4_t middle = vset_lane_s16(128 * 128, vdup_n_s16(0), 0);
    const Four s = butterfly<14>(
        transpose(butterfly<7>({vsub_s16(g.v0, middle), g.v1, g.v2, g.v3})));
    const uint8x8_t flip = vdup_n_u8(0x80);
    const uint8x8_t ab =
        veor_u8(vreinterpret_u8_s8(vqmovn_s16(vcombine_s16(s.a, s.b))), flip);
    const uint8x8_t cd =
        veor_u8(vreinterpret_u8_s8(vqmovn_s16(vcombine_s16(s.c, s.d))), flip);
    put_row(dst, ab, 0);
    put_row(dst + stride, ab, 1);
    put_row(dst + 2 * stride, cd, 0);
    put_row(dst + 3 * stride, cd, 1);
  }
};

}  // namespace lox::LOX_SET
