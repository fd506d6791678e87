// SPDX-License-Identifier: Apache-2.0
//
// The vector layer on NEON, ARMv7 and AArch64; here the operations from YUV to
// RGB. What an operation means is said here, for all backends: sums and
// differences wrap around unless they saturate.
//
// Loads take the even and the odd pixels apart, so that a pair's chroma serves
// both as it is, and the interleaving stores put them together again.
#pragma once

#include <arm_neon.h>
#include <stddef.h>
#include <stdint.h>

#include "simd/dither.h"
#include "simd/pixel_format.h"

namespace lox::LOX_SET {

// Whether vector loads and stores move their pointers for nothing.
constexpr bool kLoadsMovePointers = true;
// How far ahead the lines of a row are fetched before they are written; 0 where
// that does not help.
constexpr int kAhead = 0;
// Processors fetch what is read along a row by themselves, but no further than
// the page that it is in.
constexpr int kPage = 4096;

// Fetches the cache lines of `bytes` bytes that lie `away` bytes behind p. They
// need not be there.
LOX_OP void prefetch(const uint8_t *, ptrdiff_t, int = 1) {}

struct NeonYuv {
  static constexpr int n = 16;  // pixels in a step
  // What streaming stores want their address to be a multiple of; 0 for none.
  static constexpr int kStreamAlignment = 0;

  // A byte for each pixel, as loaded.
  struct U8 {
    uint8x8_t even, odd;
  };
  // 16 bits for each pixel.
  struct W16 {
    int16x8_t even, odd;
  };
  // A byte for each pixel, as narrowed or copied, in their order.
  struct Bytes {
    uint8x16_t v;
  };
  // Two bytes for each pixel.
  struct Words {
    uint8x16_t low, high;
  };
  // As they are in memory; the constants of dot and half_dot take the 128 off.
  struct Pairs {
    uint8x8_t first, second;
  };
  // The pairs of packed rows.
  using PackedPairs = Pairs;
  // A pair for each pixel.
  struct WPairs {
    Pairs even, odd;
  };
  // Constants of scale, dot and half_dot, made before the loop.
  struct Factor {
    uint8x8_t k;
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

  // Keeps a constant in a register: compilers else make it anew in the loop.
  template <class T>
  LOX_OP T keep(T v) {
    __asm__("" : "+w"(v));
    return v;
  }
  LOX_OP int16x8_t as_signed(uint16x8_t v) { return vreinterpretq_s16_u16(v); }
  LOX_OP uint16x8_t as_unsigned(int16x8_t v) {
    return vreinterpretq_u16_s16(v);
  }

  // k for each pixel.
  LOX_OP W16 fill(int k) {
    const int16x8_t v = keep(vdupq_n_s16(static_cast<int16_t>(k)));
    return {v, v};
  }

  // n bytes.
  template <Order>
  LOX_OP U8 load(const uint8_t *p) {
    const uint8x8x2_t v = vld2_u8(p);
    return {v.val[0], v.val[1]};
  }
  LOX_OP Bytes load_bytes(const uint8_t *p) { return {vld1q_u8(p)}; }
  // n / 2 interleaved pairs.
  template <Order>
  LOX_OP Pairs load_pairs(const uint8_t *p) {
    const uint8x8x2_t v = vld2_u8(p);
    return {v.val[0], v.val[1]};
  }
  // The same two of little-endian words, of which the high byte counts.
  template <Order>
  LOX_OP U8 load_words(const uint8_t *p) {
    const uint8x8x4_t v = vld4_u8(p);
    return {v.val[1], v.val[3]};
  }
  // n elements of 16 bits.
  template <Order>
  LOX_OP W16 load_elements(const uint8_t *p) {
    const uint16x8x2_t v = vld2q_u16(reinterpret_cast<const uint16_t *>(p));
    return {as_signed(v.val[0]), as_signed(v.val[1])};
  }
  template <Order>
  LOX_OP Pairs load_word_pairs(const uint8_t *p) {
    const uint8x8x4_t v = vld4_u8(p);
    return {v.val[1], v.val[3]};
  }
  // n / 2 pairs from two rows of n / 2 bytes.
  template <Order>
  LOX_OP Pairs load_interleave(const uint8_t *first, const uint8_t *second) {
    return {vld1_u8(first), vld1_u8(second)};
  }
  // n pairs from two rows of n bytes.
  template <Order>
  LOX_OP WPairs load_interleave_wide(const uint8_t *first,
                                     const uint8_t *second) {
    const uint8x8x2_t f = vld2_u8(first);
    const uint8x8x2_t s = vld2_u8(second);
    return {{f.val[0], s.val[0]}, {f.val[1], s.val[1]}};
  }
  // n pixels of packed 4:2:2 from 2 n bytes: luma is every second byte, from
  // place kLuma (0 or 1) on, the pairs are the others.
  template <Order, int kLuma>
  LOX_OP void load_422(const uint8_t *p, U8 &luma, Pairs &pairs) {
    const uint8x8x4_t v = vld4_u8(p);
    luma = {v.val[kLuma], v.val[kLuma + 2]};
    pairs = {v.val[1 - kLuma], v.val[3 - kLuma]};
  }

  // K0 x + K1 y + bias of a pair (x, y) less 128 each. |K| is at most 255, both
  // of one sign, and the sum of the products fits 16 bits.
  template <int K0, int K1>
  LOX_OP Dot<K0, K1> make_dot(int bias) {
    static_assert((K0 >= 0 && K1 >= 0) || (K0 <= 0 && K1 <= 0));
    constexpr int k0 = K0 < 0 ? -K0 : K0;
    constexpr int k1 = K1 < 0 ? -K1 : K1;
    return {keep(vdup_n_u8(k0)), keep(vdup_n_u8(k1)),
            keep(vdupq_n_s16(static_cast<int16_t>(bias - 128 * (K0 + K1))))};
  }
  template <int K0, int K1>
  LOX_OP int16x8_t dot_pairs(Pairs p, const Dot<K0, K1> &d) {
    uint16x8_t sum;
    if constexpr (K1 == 0) {
      sum = vmull_u8(p.first, d.k0);
    } else if constexpr (K0 == 0) {
      sum = vmull_u8(p.second, d.k1);
    } else {
      sum = vmlal_u8(vmull_u8(p.first, d.k0), p.second, d.k1);
    }
    return K0 < 0 || K1 < 0 ? vsubq_s16(d.bias, as_signed(sum))
                            : vaddq_s16(d.bias, as_signed(sum));
  }
  template <int K0, int K1>
  LOX_OP W16 dot(Pairs p, const Dot<K0, K1> &d) {
    const int16x8_t v = dot_pairs(p, d);
    return {v, v};
  }
  template <int K0, int K1>
  LOX_OP W16 dot(WPairs p, const Dot<K0, K1> &d) {
    return {dot_pairs(p.even, d), dot_pairs(p.odd, d)};
  }
  // K x / 2 rounded down, + bias, of x, the first (I = 0) or second of a pair
  // less 128. K is odd, 511 at most: with K = 2 k + 1 it is k x + (x >> 1).
  template <int I, int K>
  LOX_OP HalfDot<I, K> make_half_dot(int bias) {
    return {
        keep(vdup_n_u8(K >> 1)),
        keep(vdupq_n_u16(static_cast<uint16_t>(bias - 128 * (K >> 1) - 64)))};
  }
  template <int I, int K>
  LOX_OP int16x8_t half_dot_pairs(Pairs p, const HalfDot<I, K> &d) {
    const uint8x8_t x = I == 0 ? p.first : p.second;
    return as_signed(vmlal_u8(keep(vaddw_u8(d.bias, vshr_n_u8(x, 1))), x, d.k));
  }
  template <int I, int K>
  LOX_OP W16 half_dot(Pairs p, const HalfDot<I, K> &d) {
    const int16x8_t v = half_dot_pairs(p, d);
    return {v, v};
  }
  template <int I, int K>
  LOX_OP W16 half_dot(WPairs p, const HalfDot<I, K> &d) {
    return {half_dot_pairs(p.even, d), half_dot_pairs(p.odd, d)};
  }

  // k times a byte (k unsigned), and half of the product rounded down.
  LOX_OP Factor make_factor(int k) {
    return {keep(vdup_n_u8(static_cast<uint8_t>(k)))};
  }
  LOX_OP void scale(U8 v, Factor k, W16 &whole, W16 &half) {
    const uint16x8_t even = keep(vmull_u8(v.even, k.k));
    const uint16x8_t odd = keep(vmull_u8(v.odd, k.k));
    whole = {as_signed(even), as_signed(odd)};
    half = {as_signed(keep(vshrq_n_u16(even, 1))),
            as_signed(keep(vshrq_n_u16(odd, 1)))};
  }
  LOX_OP W16 add(W16 x, W16 y) {
    return {vaddq_s16(x.even, y.even), vaddq_s16(x.odd, y.odd)};
  }
  // Signed.
  LOX_OP W16 add_saturating(W16 x, W16 y) {
    return {vqaddq_s16(x.even, y.even), vqaddq_s16(x.odd, y.odd)};
  }
  // Arithmetic.
  template <int S>
  LOX_OP W16 shift_right(W16 v) {
    return {vshrq_n_s16(v.even, S), vshrq_n_s16(v.odd, S)};
  }
  // The narrowed byte in the high half of each element.
  template <int S>
  LOX_OP uint16x8_t narrow_high(int16x8_t v) {
    return vqshluq_n_s16(v, 8 - S);
  }
  // clamp(v >> S, 0, 255), the shift arithmetic; S is 0, 6 or 7.
  template <int S>
  LOX_OP Bytes narrow(W16 v) {
    return {vreinterpretq_u8_u16(
        vsriq_n_u16(narrow_high<S>(v.odd), narrow_high<S>(v.even), 8))};
  }
  // Two narrowed bytes side by side, or one below or above 255.
  template <int S0, int S1>
  LOX_OP Words pair_narrow(W16 low, W16 high) {
    return {narrow<S0>(low).v, narrow<S1>(high).v};
  }
  template <int S>
  LOX_OP Words pair_narrow_255(W16 low) {
    return {narrow<S>(low).v, vdupq_n_u8(255)};
  }
  template <int S>
  LOX_OP Words pair_255_narrow(W16 high) {
    return {vdupq_n_u8(255), narrow<S>(high).v};
  }
  template <int S0, int S1, int S2>
  LOX_OP int16x8_t pack565(int16x8_t high, int16x8_t mid, int16x8_t low) {
    return as_signed(
        vsriq_n_u16(vsriq_n_u16(narrow_high<S0>(high), narrow_high<S1>(mid), 5),
                    narrow_high<S2>(low), 11));
  }
  // The top 5, 6 and 5 bits of three narrowed bytes.
  template <int S0, int S1, int S2>
  LOX_OP W16 pack565(W16 high, W16 mid, W16 low) {
    return {pack565<S0, S1, S2>(high.even, mid.even, low.even),
            pack565<S0, S1, S2>(high.odd, mid.odd, low.odd)};
  }
  // What is added to bytes before they are packed: the even pixels' and then
  // the odd ones'.
  struct Dither {
    uint8x16_t five, six;
  };
  LOX_OP uint8x16_t even_and_odd(const uint8_t *p) {
    const uint8x8x2_t v = vld2_u8(p);
    return keep(vcombine_u8(v.val[0], v.val[1]));
  }
  // For n pixels from a place on.
  LOX_OP Dither make_dither(DitherPlace at) {
    return {even_and_odd(at.five), even_and_odd(at.six)};
  }
  template <int S>
  LOX_OP uint8x16_t narrow_and_add(W16 v, uint8x16_t threshold) {
    if constexpr (S == 0) {
      return vqaddq_u8(vcombine_u8(vqmovun_s16(v.even), vqmovun_s16(v.odd)),
                       threshold);
    } else {
      return vqaddq_u8(
          vcombine_u8(vqshrun_n_s16(v.even, S), vqshrun_n_s16(v.odd, S)),
          threshold);
    }
  }
  // Of bytes, the even pixels' and then the odd ones'.
  LOX_OP W16 pack565_bytes(uint8x16_t h, uint8x16_t m, uint8x16_t l) {
    const uint8x16x2_t words =
        vzipq_u8(vsriq_n_u8(vshlq_n_u8(m, 3), l, 3), vsriq_n_u8(h, m, 5));
    return {vreinterpretq_s16_u8(words.val[0]),
            vreinterpretq_s16_u8(words.val[1])};
  }
  // Of narrowed bytes to which thresholds are added, saturating.
  template <int S0, int S1, int S2>
  LOX_OP W16 pack565(W16 high, W16 mid, W16 low, Dither d) {
    return pack565_bytes(narrow_and_add<S0>(high, d.five),
                         narrow_and_add<S1>(mid, d.six),
                         narrow_and_add<S2>(low, d.five));
  }

  // n bytes, n words, n groups of three or of four bytes; past the caches if
  // `kStream`. The stores are macros with some compilers and want their vectors
  // named.
  LOX_OP void store_bytes(uint8_t *p, Bytes v) { vst1q_u8(p, v.v); }
  template <bool>
  LOX_OP void store16(uint8_t *p, W16 v) {
    const uint16x8x2_t words = {{as_unsigned(v.even), as_unsigned(v.odd)}};
    vst2q_u16(reinterpret_cast<uint16_t *>(p), words);
  }
  template <bool>
  LOX_OP void store3(uint8_t *p, Bytes a, Bytes b, Bytes c) {
    const uint8x16x3_t pixels = {{a.v, b.v, c.v}};
    vst3q_u8(p, pixels);
  }
  template <bool>
  LOX_OP void store4(uint8_t *p, Words ab, Words cd) {
    const uint8x16x4_t pixels = {{ab.low, ab.high, cd.low, cd.high}};
    vst4q_u8(p, pixels);
  }
  // Makes streaming stores visible to other threads.
  LOX_OP void end_stream() {}
};

}  // namespace lox::LOX_SET
