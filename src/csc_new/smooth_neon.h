// SPDX-License-Identifier: Apache-2.0
//
// Interpolated chroma on NEON.
#pragma once

#include "csc_new/smooth_rows.h"
#include "simd/simd.h"

namespace lox::LOX_SET {

template <class V>
struct SmoothOps {
  using Reg = int16x8_t;
  using W16 = typename V::W16;
  static constexpr int n = V::n;

  // --- chroma: elements in the order of memory ------------------------------

  struct Elements {
    int16x8_t low, high;
  };
  LOX_OP Reg load(const int16_t *p) { return vld1q_s16(p); }
  LOX_OP void store(int16_t *p, Reg v) { vst1q_s16(p, v); }
  LOX_OP void store(int16_t *p, Elements v) {
    vst1q_s16(p, v.low);
    vst1q_s16(p + 8, v.high);
  }
  // n samples, each on top of its element.
  LOX_OP Elements load_bytes(const uint8_t *p) {
    const uint8x16_t v = vld1q_u8(p);
    return {V::as_signed(vshlq_n_u16(vmovl_u8(vget_low_u8(v)), 8)),
            V::as_signed(vshlq_n_u16(vmovl_u8(vget_high_u8(v)), 8))};
  }
  LOX_OP Reg load_word(const uint8_t *p, int factor) {
    return vmulq_n_s16(vreinterpretq_s16_u8(vld1q_u8(p)),
                       static_cast<int16_t>(factor));
  }
  LOX_OP Elements load_words(const uint8_t *p, int factor) {
    return {load_word(p, factor), load_word(p + 16, factor)};
  }
  LOX_OP Reg centred(Reg v) {
    return vshrq_n_s16(
        veorq_s16(vandq_s16(v, vdupq_n_s16(-0x40)), vdupq_n_s16(INT16_MIN)), 4);
  }
  LOX_OP Elements centred(Elements v) {
    return {centred(v.low), centred(v.high)};
  }
  // The even elements of both, and the odd ones.
  LOX_OP Reg even(Elements v) { return vuzpq_s16(v.low, v.high).val[0]; }
  LOX_OP Reg odd(Elements v) { return vuzpq_s16(v.low, v.high).val[1]; }
  LOX_OP Reg add(Reg a, Reg b) { return vaddq_s16(a, b); }
  template <int S>
  LOX_OP Reg shift_left(Reg v) {
    return vshlq_n_s16(v, S);
  }
  LOX_OP void store_interleave(int16_t *p, Reg even, Reg odd) {
    const int16x8x2_t v = {{even, odd}};
    vst2q_s16(p, v);
  }

  // --- pixels: the even and the odd ones apart ------------------------------

  // By their places in a register: clang would make a register of each before
  // the loop, and has too few.
  struct Factors {
    int16x8_t places, offset, offset_green;
  };
  LOX_OP Factors factors(const SmoothMatrix &m) {
    const int16_t places[8] = {m.red_v, m.green_u,    m.green_v, m.blue_u,
                               m.luma,  m.luma_green, 0,         0};
    return {vld1q_s16(places), V::keep(vdupq_n_s16(m.offset)),
            V::keep(vdupq_n_s16(m.offset_green))};
  }
  template <int kPlace>
  LOX_OP Reg multiply(Reg v, const Factors &k) {
    if constexpr (kPlace < 4) {
      return vqrdmulhq_lane_s16(v, vget_low_s16(k.places), kPlace);
    } else {
      return vqrdmulhq_lane_s16(v, vget_high_s16(k.places), kPlace - 4);
    }
  }
  template <Order O>
  LOX_OP W16 luma_of_bytes(const uint8_t *p) {
    const auto v = V::template load<O>(p);
    return {V::as_signed(vshll_n_u8(v.even, 7)),
            V::as_signed(vshll_n_u8(v.odd, 7))};
  }
  LOX_OP Reg luma(Reg v, int factor) {
    return vandq_s16(
        V::as_signed(vshrq_n_u16(
            V::as_unsigned(vmulq_n_s16(v, static_cast<int16_t>(factor))), 1)),
        vdupq_n_s16(0x7FE0));
  }
  template <Order O>
  LOX_OP W16 luma_of_words(const uint8_t *p, int factor) {
    const W16 v = V::template load_elements<O>(p);
    return {luma(v.even, factor), luma(v.odd, factor)};
  }
  template <Order O>
  LOX_OP W16 load_chroma(const int16_t *p) {
    const int16x8x2_t v = vld2q_s16(p);
    return {v.val[0], v.val[1]};
  }

  struct Channels {
    W16 red, green, blue;
  };
  struct Three {
    int16x8_t red, green, blue;
  };
  template <bool kGreenApart>
  LOX_OP Three channels(Reg luma, Reg u, Reg v, const Factors &k) {
    const int16x8_t y = vaddq_s16(multiply<4>(luma, k), k.offset);
    const int16x8_t y_green =
        kGreenApart ? vaddq_s16(multiply<5>(luma, k), k.offset_green) : y;
    return {vqaddq_s16(y, multiply<0>(v, k)),
            vaddq_s16(vaddq_s16(y_green, multiply<1>(u, k)), multiply<2>(v, k)),
            vqaddq_s16(y, multiply<3>(u, k))};
  }
  template <bool kGreenApart>
  LOX_OP Channels channels(W16 luma, W16 u, W16 v, const Factors &factors) {
    Factors k = factors;
    __asm__ volatile("" : "+w"(k.places));
    const Three even = channels<kGreenApart>(luma.even, u.even, v.even, k);
    const Three odd = channels<kGreenApart>(luma.odd, u.odd, v.odd, k);
    return {
        {even.red, odd.red}, {even.green, odd.green}, {even.blue, odd.blue}};
  }

  LOX_OP uint16x8_t ten_bits(Reg v) {
    return V::as_unsigned(
        vminq_s16(vmaxq_s16(vshrq_n_s16(v, kSmoothBits1010102), vdupq_n_s16(0)),
                  vdupq_n_s16(1023)));
  }
  struct Words {
    uint16x8_t low, high;
  };
  LOX_OP Words words_1010102(Reg red, Reg green, Reg blue) {
    const uint16x8_t g = ten_bits(green);
    return {vsliq_n_u16(ten_bits(red), g, 10),
            vorrq_u16(vsliq_n_u16(vshrq_n_u16(g, 6), ten_bits(blue), 4),
                      vdupq_n_u16(0xC000))};
  }
  template <bool>
  LOX_OP void store_1010102(uint8_t *p, const Channels &c) {
    const Words even = words_1010102(c.red.even, c.green.even, c.blue.even);
    const Words odd = words_1010102(c.red.odd, c.green.odd, c.blue.odd);
    const uint16x8x4_t v = {{even.low, even.high, odd.low, odd.high}};
    vst4q_u16(reinterpret_cast<uint16_t *>(p), v);
  }

  // The magnitude as a float, less the difference of exponents, rounded to ten
  // bits behind its first one. 0 comes out negative, which narrowing makes 0.
  LOX_OP uint16x4_t magnitude(uint16x4_t v) {
    const int32x4_t bits = vreinterpretq_s32_f32(vcvtq_f32_u32(vmovl_u16(v)));
    return vqshrun_n_s32(
        vaddq_s32(bits,
                  vdupq_n_s32((1 << 12) - ((127 - 15 + kSmoothBitsF16) << 23))),
        13);
  }
  LOX_OP uint16x8_t half_float(Reg v) {
    const uint16x8_t a = V::as_unsigned(vabsq_s16(v));
    return vorrq_u16(
        vcombine_u16(magnitude(vget_low_u16(a)), magnitude(vget_high_u16(a))),
        vandq_u16(V::as_unsigned(v), vdupq_n_u16(0x8000)));
  }
  LOX_OP uint16x8x2_t half_floats(W16 v) {
    return vzipq_u16(half_float(v.even), half_float(v.odd));
  }
  template <bool>
  LOX_OP void store_f16(uint8_t *p, const Channels &c) {
    const uint16x8x2_t r = half_floats(c.red);
    const uint16x8x2_t g = half_floats(c.green);
    const uint16x8x2_t b = half_floats(c.blue);
    const uint16x8_t one = vdupq_n_u16(0x3C00);
    const uint16x8x4_t low = {{r.val[0], g.val[0], b.val[0], one}};
    const uint16x8x4_t high = {{r.val[1], g.val[1], b.val[1], one}};
    vst4q_u16(reinterpret_cast<uint16_t *>(p), low);
    vst4q_u16(reinterpret_cast<uint16_t *>(p + 64), high);
  }
};

}  // namespace lox::LOX_SET
