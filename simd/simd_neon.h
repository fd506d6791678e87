// SPDX-License-Identifier: Apache-2.0
//
// The vector layer on NEON, continued: the operations from RGB and those that
// move bytes. Here a vector's pixels lie in their order.
#pragma once

#include "simd/simd_neon_yuv.h"

namespace lox::LOX_SET {

struct NeonLanes : NeonYuv {
  template <PixelFormat F>
  struct Pixels {
    uint8x16_t r, g, b;
  };
  template <PixelFormat F>
  LOX_OP Pixels<F> load_pixels(const uint8_t *p) {
    if constexpr (F.bytes == 4) {
      const uint8x16x4_t v = vld4q_u8(p);
      return {v.val[F.r], v.val[F.g], v.val[F.b]};
    } else if constexpr (F.bytes == 3) {
      const uint8x16x3_t v = vld3q_u8(p);
      return {v.val[F.r], v.val[F.g], v.val[F.b]};
    } else {
      const uint8x16x2_t v = vld2q_u8(p);
      const uint8x16_t top = vandq_u8(v.val[1], vdupq_n_u8(0xF8));
      const uint8x16_t last = vshlq_n_u8(v.val[0], 3);
      const uint8x16_t green = vandq_u8(
          vsriq_n_u8(vshlq_n_u8(v.val[1], 5), v.val[0], 3), vdupq_n_u8(0xFC));
      return {F.r == 1 ? top : last, green, F.r == 1 ? last : top};
    }
  }

  template <PixelFormat F, int KR, int KG, int KB>
  struct Weights {
    uint8x8_t r, g, b;
    uint16x8_t bias;
  };
  LOX_OP uint8x8_t factor(int k) {
    return keep(vdup_n_u8(static_cast<uint8_t>(k < 0 ? -k : k)));
  }
  template <PixelFormat F, int KR, int KG, int KB>
  LOX_OP Weights<F, KR, KG, KB> make_weights(int bias) {
    return {factor(KR), factor(KG), factor(KB),
            keep(vdupq_n_u16(static_cast<uint16_t>(bias)))};
  }
  template <int K>
  LOX_OP uint16x8_t accumulate(uint16x8_t sum, uint8x8_t v, uint8x8_t k) {
    return K < 0 ? vmlsl_u8(sum, v, k) : vmlal_u8(sum, v, k);
  }
  // The sum begins with a product that is added.
  template <PixelFormat F, int KR, int KG, int KB>
  LOX_OP uint8x8_t weigh(uint8x8_t r, uint8x8_t g, uint8x8_t b,
                         Weights<F, KR, KG, KB> w) {
    static_assert(KR > 0 || KB > 0);
    uint16x8_t sum;
    if constexpr (KR > 0) {
      sum = accumulate<KB>(vmull_u8(r, w.r), b, w.b);
    } else {
      sum = accumulate<KR>(vmull_u8(b, w.b), r, w.r);
    }
    return vaddhn_u16(accumulate<KG>(sum, g, w.g), w.bias);
  }
  template <PixelFormat F, int KR, int KG, int KB>
  LOX_OP Bytes weigh(const Pixels<F> &p, Weights<F, KR, KG, KB> w) {
    return {vcombine_u8(
        weigh(vget_low_u8(p.r), vget_low_u8(p.g), vget_low_u8(p.b), w),
        weigh(vget_high_u8(p.r), vget_high_u8(p.g), vget_high_u8(p.b), w))};
  }

  template <PixelFormat F>
  struct EvenPairs {
    uint8x8_t first, second;
  };
  LOX_OP uint8x8_t even(uint8x16_t v) {
    return vmovn_u16(vreinterpretq_u16_u8(v));
  }
  template <PixelFormat F, class W0, class W1>
  LOX_OP EvenPairs<F> weigh_even(const Pixels<F> &p, W0 first, W1 second) {
    const uint8x8_t r = even(p.r);
    const uint8x8_t g = even(p.g);
    const uint8x8_t b = even(p.b);
    return {weigh(r, g, b, first), weigh(r, g, b, second)};
  }
  template <PixelFormat F>
  LOX_OP void store_pairs(uint8_t *p, EvenPairs<F> v) {
    const uint8x8x2_t pairs = {{v.first, v.second}};
    vst2_u8(p, pairs);
  }
  template <PixelFormat F>
  LOX_OP void store_rows(uint8_t *first, uint8_t *second, EvenPairs<F> v) {
    const uint8x8_t a = v.first;
    const uint8x8_t b = v.second;
    vst1_u8(first, a);
    vst1_u8(second, b);
  }

  // Of channels in the high bytes of the lanes; what is below does not matter.
  LOX_OP int16x8_t to_565(uint16x8_t r, uint16x8_t g, uint16x8_t b) {
    return as_signed(vsriq_n_u16(vsriq_n_u16(r, g, 5), b, 11));
  }
  template <PixelFormat F>
  LOX_OP W16 to_565(const Pixels<F> &p) {
    const uint16x8_t r = vreinterpretq_u16_u8(p.r);
    const uint16x8_t g = vreinterpretq_u16_u8(p.g);
    const uint16x8_t b = vreinterpretq_u16_u8(p.b);
    return {to_565(vshlq_n_u16(r, 8), vshlq_n_u16(g, 8), vshlq_n_u16(b, 8)),
            to_565(r, g, b)};
  }
  template <PixelFormat F>
  LOX_OP void store_rgba(uint8_t *p, const Pixels<F> &v) {
    const uint8x16x4_t pixels = {{v.r, v.g, v.b, vdupq_n_u8(255)}};
    vst4q_u8(p, pixels);
  }

  struct TwoBytes {
    Bytes even, odd;
  };
  LOX_OP TwoBytes load_unzip(const uint8_t *p) {
    const uint8x16x2_t v = vld2q_u8(p);
    return {{v.val[0]}, {v.val[1]}};
  }
  LOX_OP TwoBytes unzip(Bytes a, Bytes b) {
    const uint8x16x2_t v = vuzpq_u8(a.v, b.v);
    return {{v.val[0]}, {v.val[1]}};
  }
  LOX_OP void store_zip(uint8_t *p, Bytes even, Bytes odd) {
    const uint8x16x2_t v = {{even.v, odd.v}};
    vst2q_u8(p, v);
  }
  LOX_OP Bytes swap_pairs(Bytes v) { return {vrev16q_u8(v.v)}; }
  LOX_OP Bytes average_down(Bytes a, Bytes b) { return {vhaddq_u8(a.v, b.v)}; }
  LOX_OP Bytes load_words_by_4(const uint8_t *p) {
    const uint8x16x2_t v = vld2q_u8(p);
    return {vsliq_n_u8(vshrq_n_u8(v.val[0], 2), v.val[1], 6)};
  }
};

}  // namespace lox::LOX_SET
