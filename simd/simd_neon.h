// SPDX-License-Identifier: Apache-2.0
//
// The vector layer on NEON, ARMv7 and AArch64: 16 pixels a step. Loads take the
// even and the odd pixels apart, so a pair's chroma serves both as it is, and
// the interleaving stores put them together again.
#pragma once

#include <arm_neon.h>
#include <stdint.h>

#include "simd/order.h"

namespace lox::LOX_SET {

#define LOX_OP [[gnu::always_inline]] static inline

struct NeonLanes {
  static constexpr int n = 16;

  struct U8 {
    uint8x8_t even, odd;
  };
  struct H16 {
    int16x8_t v;
  };
  struct W16 {
    H16 even, odd;
  };
  // As they are in memory; the constants of dot and half_dot take the 128 off.
  struct Pairs {
    uint8x8_t first, second;
  };
  struct WPairs {
    Pairs even, odd;
  };
  template <int K0, int K1>
  struct Dot {
    uint8x8_t k0, k1;
    int16x8_t bias;
  };
  template <int I, int K>
  struct HalfDot {
    uint8x8_t k;
    uint16x8_t bias;
  };

  LOX_OP U8 fill_u8(int k) {
    const uint8x8_t v = vdup_n_u8(static_cast<uint8_t>(k));
    return {v, v};
  }
  LOX_OP W16 fill_w16(int k) {
    const int16x8_t v = vdupq_n_s16(static_cast<int16_t>(k));
    return {{v}, {v}};
  }

  template <Order>
  LOX_OP U8 load(const uint8_t *p) {
    const uint8x8x2_t v = vld2_u8(p);
    return {v.val[0], v.val[1]};
  }
  template <Order>
  LOX_OP Pairs load_pairs(const uint8_t *p) {
    const uint8x8x2_t v = vld2_u8(p);
    return {v.val[0], v.val[1]};
  }
  template <Order>
  LOX_OP Pairs load_zip(const uint8_t *first, const uint8_t *second) {
    return {vld1_u8(first), vld1_u8(second)};
  }
  template <Order>
  LOX_OP WPairs load_zip_wide(const uint8_t *first, const uint8_t *second) {
    const uint8x8x2_t f = vld2_u8(first);
    const uint8x8x2_t s = vld2_u8(second);
    return {{f.val[0], s.val[0]}, {f.val[1], s.val[1]}};
  }
  template <Order, int kLuma>
  LOX_OP void load_422(const uint8_t *p, U8 &luma, Pairs &pairs) {
    const uint8x8x4_t v = vld4_u8(p);
    luma = {v.val[kLuma], v.val[kLuma + 2]};
    pairs = {v.val[1 - kLuma], v.val[3 - kLuma]};
  }

  template <int K0, int K1>
  LOX_OP Dot<K0, K1> make_dot(int bias) {
    static_assert((K0 >= 0 && K1 >= 0) || (K0 <= 0 && K1 <= 0));
    constexpr int k0 = K0 < 0 ? -K0 : K0;
    constexpr int k1 = K1 < 0 ? -K1 : K1;
    return {vdup_n_u8(k0), vdup_n_u8(k1),
            vdupq_n_s16(static_cast<int16_t>(bias - 128 * (K0 + K1)))};
  }
  template <int K0, int K1>
  LOX_OP H16 dot(Pairs p, const Dot<K0, K1> &d) {
    uint16x8_t sum;
    if constexpr (K1 == 0) {
      sum = vmull_u8(p.first, d.k0);
    } else if constexpr (K0 == 0) {
      sum = vmull_u8(p.second, d.k1);
    } else {
      sum = vmlal_u8(vmull_u8(p.first, d.k0), p.second, d.k1);
    }
    const int16x8_t signed_sum = vreinterpretq_s16_u16(sum);
    return {K0 < 0 || K1 < 0 ? vsubq_s16(d.bias, signed_sum)
                             : vaddq_s16(d.bias, signed_sum)};
  }
  template <int K0, int K1>
  LOX_OP W16 dot(WPairs p, const Dot<K0, K1> &d) {
    return {dot(p.even, d), dot(p.odd, d)};
  }
  // With K = 2k + 1, K x / 2 rounded down is k x + (x >> 1).
  template <int I, int K>
  LOX_OP HalfDot<I, K> make_half_dot(int bias) {
    return {vdup_n_u8(K >> 1),
            vdupq_n_u16(static_cast<uint16_t>(bias - 128 * (K >> 1) - 64))};
  }
  template <int I, int K>
  LOX_OP H16 half_dot(Pairs p, const HalfDot<I, K> &d) {
    const uint8x8_t x = I == 0 ? p.first : p.second;
    return {vreinterpretq_s16_u16(
        vmlal_u8(vaddw_u8(d.bias, vshr_n_u8(x, 1)), x, d.k))};
  }
  template <int I, int K>
  LOX_OP W16 half_dot(WPairs p, const HalfDot<I, K> &d) {
    return {half_dot(p.even, d), half_dot(p.odd, d)};
  }
  LOX_OP W16 twice(H16 h) { return {h, h}; }

  LOX_OP W16 mul_wide(U8 a, U8 b) {
    return {{vreinterpretq_s16_u16(vmull_u8(a.even, b.even))},
            {vreinterpretq_s16_u16(vmull_u8(a.odd, b.odd))}};
  }
  LOX_OP W16 widen_high(U8 a) {
    return {{vreinterpretq_s16_u16(vshll_n_u8(a.even, 8))},
            {vreinterpretq_s16_u16(vshll_n_u8(a.odd, 8))}};
  }
  LOX_OP W16 sub(W16 a, W16 b) {
    return {{vsubq_s16(a.even.v, b.even.v)}, {vsubq_s16(a.odd.v, b.odd.v)}};
  }
  LOX_OP W16 half(W16 a) { return {half(a.even), half(a.odd)}; }
  LOX_OP H16 half(H16 a) {
    return {vreinterpretq_s16_u16(
        vshrq_n_u16(vreinterpretq_u16_s16(a.v), 1))};
  }
  LOX_OP W16 add_saturate(W16 a, W16 b) {
    return {{vqaddq_s16(a.even.v, b.even.v)}, {vqaddq_s16(a.odd.v, b.odd.v)}};
  }
  template <int S>
  LOX_OP U8 narrow(W16 a) {
    return {vqshrun_n_s16(a.even.v, S), vqshrun_n_s16(a.odd.v, S)};
  }
  template <int S>
  LOX_OP W16 narrow_high(W16 a) {
    return {{vreinterpretq_s16_u16(vqshluq_n_s16(a.even.v, 8 - S))},
            {vreinterpretq_s16_u16(vqshluq_n_s16(a.odd.v, 8 - S))}};
  }
  LOX_OP W16 pack565(W16 high, W16 mid, W16 low) {
    return {pack565(high.even, mid.even, low.even),
            pack565(high.odd, mid.odd, low.odd)};
  }
  LOX_OP H16 pack565(H16 high, H16 mid, H16 low) {
    const uint16x8_t h = vreinterpretq_u16_s16(high.v);
    const uint16x8_t m = vreinterpretq_u16_s16(mid.v);
    const uint16x8_t l = vreinterpretq_u16_s16(low.v);
    return {vreinterpretq_s16_u16(vsriq_n_u16(vsriq_n_u16(h, m, 5), l, 11))};
  }

  LOX_OP void store_bytes(uint8_t *p, U8 a) {
    uint8x8x2_t v;
    v.val[0] = a.even;
    v.val[1] = a.odd;
    vst2_u8(p, v);
  }
  LOX_OP void store16(uint8_t *p, W16 a) {
    uint16x8x2_t v;
    v.val[0] = vreinterpretq_u16_s16(a.even.v);
    v.val[1] = vreinterpretq_u16_s16(a.odd.v);
    vst2q_u16(reinterpret_cast<uint16_t *>(p), v);
  }
  LOX_OP void store3(uint8_t *p, U8 a, U8 b, U8 c) {
    const uint8x8x2_t x = vzip_u8(a.even, a.odd);
    const uint8x8x2_t y = vzip_u8(b.even, b.odd);
    const uint8x8x2_t z = vzip_u8(c.even, c.odd);
    vst3_u8(p, {{x.val[0], y.val[0], z.val[0]}});
    vst3_u8(p + 24, {{x.val[1], y.val[1], z.val[1]}});
  }
  LOX_OP void store4(uint8_t *p, U8 a, U8 b, U8 c, U8 d) {
    const uint8x8x2_t x = vzip_u8(a.even, a.odd);
    const uint8x8x2_t y = vzip_u8(b.even, b.odd);
    const uint8x8x2_t z = vzip_u8(c.even, c.odd);
    const uint8x8x2_t w = vzip_u8(d.even, d.odd);
    vst4_u8(p, {{x.val[0], y.val[0], z.val[0], w.val[0]}});
    vst4_u8(p + 32, {{x.val[1], y.val[1], z.val[1], w.val[1]}});
  }
};

#undef LOX_OP

}  // namespace lox::LOX_SET
