// SPDX-License-Identifier: Apache-2.0
//
// The vector layer on SSE4.1: 16 pixels a step in two vectors of 16-bit lanes,
// pixels 0 to 7 and 8 to 15, whatever the order asked for.
#pragma once

#include <smmintrin.h>
#include <stdint.h>

#include "simd/order.h"

namespace lox::LOX_SET {

#define LOX_OP [[gnu::always_inline]] static inline

struct Sse41Lanes {
  static constexpr int n = 16;
  static constexpr int kStreamAlignment = 16;

  struct W16 {
    __m128i a, b;
  };
  // Each byte in the high half of its pixel's lane.
  struct U8 {
    __m128i a, b;
  };
  struct Words {
    __m128i a, b;
  };
  struct Bytes {
    __m128i v;
  };
  // The pair of each pixel in its lane, as signed bytes.
  struct WPairs {
    __m128i a, b;
  };
  using Pairs = WPairs;
  struct Factor {
    __m128i whole, half;
  };
  template <int K0, int K1>
  struct Dot {
    __m128i k, bias;
  };
  template <int I, int K>
  struct HalfDot {
    __m128i k, bias;
  };

  LOX_OP __m128i fill_raw(int k) {
    return _mm_set1_epi16(static_cast<short>(k));
  }
  LOX_OP W16 fill(int k) { return {fill_raw(k), fill_raw(k)}; }

  LOX_OP __m128i load_raw(const uint8_t *p) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i *>(p));
  }
  LOX_OP __m128i load_8(const uint8_t *p) {
    return _mm_loadl_epi64(reinterpret_cast<const __m128i *>(p));
  }
  template <bool kStream = false>
  LOX_OP void store_raw(uint8_t *p, __m128i v) {
    if constexpr (kStream) {
      _mm_stream_si128(reinterpret_cast<__m128i *>(p), v);
    } else {
      _mm_storeu_si128(reinterpret_cast<__m128i *>(p), v);
    }
  }
  LOX_OP __m128i less_128(__m128i v) {
    return _mm_xor_si128(v, _mm_set1_epi8(-128));
  }
  // 8 pairs in memory order, each twice.
  LOX_OP Pairs double_pairs(__m128i v) {
    v = less_128(v);
    return {_mm_unpacklo_epi16(v, v), _mm_unpackhi_epi16(v, v)};
  }

  template <Order>
  LOX_OP U8 load(const uint8_t *p) {
    const __m128i v = load_raw(p);
    const __m128i zero = _mm_setzero_si128();
    return {_mm_unpacklo_epi8(zero, v), _mm_unpackhi_epi8(zero, v)};
  }
  LOX_OP Bytes load_bytes(const uint8_t *p) { return {load_raw(p)}; }
  template <Order>
  LOX_OP Pairs load_pairs(const uint8_t *p) {
    return double_pairs(load_raw(p));
  }
  template <Order>
  LOX_OP Pairs load_zip(const uint8_t *first, const uint8_t *second) {
    return double_pairs(_mm_unpacklo_epi8(load_8(first), load_8(second)));
  }
  template <Order>
  LOX_OP WPairs load_zip_wide(const uint8_t *first, const uint8_t *second) {
    const __m128i f = less_128(load_raw(first));
    const __m128i s = less_128(load_raw(second));
    return {_mm_unpacklo_epi8(f, s), _mm_unpackhi_epi8(f, s)};
  }
  template <Order, int kLuma>
  LOX_OP void load_422(const uint8_t *p, U8 &luma, Pairs &pairs) {
    const __m128i a = load_raw(p);
    const __m128i b = load_raw(p + 16);
    constexpr char c0 = 1 - kLuma;
    constexpr char c1 = 3 - kLuma;
    const __m128i pick = _mm_setr_epi8(c0, c1, c0, c1, c0 + 4, c1 + 4, c0 + 4,
                                       c1 + 4, c0 + 8, c1 + 8, c0 + 8, c1 + 8,
                                       c0 + 12, c1 + 12, c0 + 12, c1 + 12);
    pairs = {less_128(_mm_shuffle_epi8(a, pick)),
             less_128(_mm_shuffle_epi8(b, pick))};
    if constexpr (kLuma == 0) {
      luma = {_mm_slli_epi16(a, 8), _mm_slli_epi16(b, 8)};
    } else {
      luma = {_mm_and_si128(a, fill_raw(0xFF00)),
              _mm_and_si128(b, fill_raw(0xFF00))};
    }
  }

  template <int K0, int K1>
  LOX_OP Dot<K0, K1> make_dot(int bias) {
    static_assert((K0 >= 0 && K1 >= 0) || (K0 <= 0 && K1 <= 0));
    constexpr int k0 = K0 < 0 ? -K0 : K0;
    constexpr int k1 = K1 < 0 ? -K1 : K1;
    return {fill_raw(k1 << 8 | k0), fill_raw(bias)};
  }
  template <int K0, int K1>
  LOX_OP __m128i dot(__m128i p, const Dot<K0, K1> &d) {
    const __m128i sum = _mm_maddubs_epi16(d.k, p);
    return K0 < 0 || K1 < 0 ? _mm_sub_epi16(d.bias, sum)
                            : _mm_add_epi16(d.bias, sum);
  }
  template <int K0, int K1>
  LOX_OP W16 dot(WPairs p, const Dot<K0, K1> &d) {
    return {dot(p.a, d), dot(p.b, d)};
  }
  // With K = 2k + 1, K x / 2 rounded down is k x + (x >> 1).
  template <int I, int K>
  LOX_OP HalfDot<I, K> make_half_dot(int bias) {
    return {fill_raw((K >> 1) << 8 * I), fill_raw(bias)};
  }
  template <int I, int K>
  LOX_OP __m128i half_dot(__m128i p, const HalfDot<I, K> &d) {
    const __m128i high = I == 1 ? p : _mm_slli_epi16(p, 8);
    return _mm_add_epi16(_mm_add_epi16(_mm_maddubs_epi16(d.k, p), d.bias),
                         _mm_srai_epi16(high, 9));
  }
  template <int I, int K>
  LOX_OP W16 half_dot(WPairs p, const HalfDot<I, K> &d) {
    return {half_dot(p.a, d), half_dot(p.b, d)};
  }

  LOX_OP Factor make_factor(int k) {
    return {fill_raw(k << 8), fill_raw(k << 7)};
  }
  LOX_OP void scale(U8 v, Factor k, W16 &whole, W16 &half) {
    whole = {_mm_mulhi_epu16(v.a, k.whole), _mm_mulhi_epu16(v.b, k.whole)};
    half = {_mm_mulhi_epu16(v.a, k.half), _mm_mulhi_epu16(v.b, k.half)};
  }
  LOX_OP W16 widen_high(U8 v) { return {v.a, v.b}; }
  LOX_OP W16 add(W16 x, W16 y) {
    return {_mm_add_epi16(x.a, y.a), _mm_add_epi16(x.b, y.b)};
  }
  LOX_OP W16 add_saturate(W16 x, W16 y) {
    return {_mm_adds_epi16(x.a, y.a), _mm_adds_epi16(x.b, y.b)};
  }

  template <int S>
  LOX_OP Bytes narrow(W16 v) {
    return {_mm_packus_epi16(_mm_srai_epi16(v.a, S), _mm_srai_epi16(v.b, S))};
  }
  // Within 0 .. what the byte's 255 has below the shift.
  template <int S>
  LOX_OP __m128i clamp(__m128i v) {
    static_assert(S == 6 || S == 7);
    v = _mm_max_epi16(v, _mm_setzero_si128());
    return S == 7 ? v : _mm_min_epi16(v, fill_raw(0x3FFF));
  }
  template <int S>
  LOX_OP W16 narrow_high(W16 v) {
    return {_mm_slli_epi16(clamp<S>(v.a), 8 - S),
            _mm_slli_epi16(clamp<S>(v.b), 8 - S)};
  }
  template <int S0, int S1>
  LOX_OP Words join(W16 low, W16 high) {
    const __m128i l = narrow<S0>(low).v;
    const __m128i h = narrow<S1>(high).v;
    return {_mm_unpacklo_epi8(l, h), _mm_unpackhi_epi8(l, h)};
  }
  template <int S>
  LOX_OP Words join_high_255(W16 low) {
    const __m128i l = narrow<S>(low).v;
    const __m128i h = _mm_set1_epi8(-1);
    return {_mm_unpacklo_epi8(l, h), _mm_unpackhi_epi8(l, h)};
  }
  template <int S>
  LOX_OP Words join_low_255(W16 high) {
    const __m128i l = _mm_set1_epi8(-1);
    const __m128i h = narrow<S>(high).v;
    return {_mm_unpacklo_epi8(l, h), _mm_unpackhi_epi8(l, h)};
  }
  LOX_OP __m128i pack565(__m128i high, __m128i mid, __m128i low) {
    const __m128i h = _mm_and_si128(high, fill_raw(0xF800));
    const __m128i m = _mm_and_si128(_mm_srli_epi16(mid, 5), fill_raw(0x07E0));
    return _mm_or_si128(_mm_or_si128(h, m), _mm_srli_epi16(low, 11));
  }
  LOX_OP W16 pack565(W16 high, W16 mid, W16 low) {
    return {pack565(high.a, mid.a, low.a), pack565(high.b, mid.b, low.b)};
  }

  LOX_OP void store_bytes(uint8_t *p, Bytes v) { store_raw(p, v.v); }
  template <bool kStream>
  LOX_OP void store16(uint8_t *p, W16 v) {
    store_raw<kStream>(p, v.a);
    store_raw<kStream>(p + 16, v.b);
  }
  // Each source byte has a place of its own, modulo 16, among the three output
  // vectors: one shuffle puts it there, two selections a vector gather the
  // channels.
  template <bool kStream>
  LOX_OP void store3(uint8_t *p, Bytes a, Bytes b, Bytes c) {
    const __m128i x = _mm_shuffle_epi8(
        a.v,
        _mm_setr_epi8(0, 11, 6, 1, 12, 7, 2, 13, 8, 3, 14, 9, 4, 15, 10, 5));
    const __m128i y = _mm_shuffle_epi8(
        b.v,
        _mm_setr_epi8(5, 0, 11, 6, 1, 12, 7, 2, 13, 8, 3, 14, 9, 4, 15, 10));
    const __m128i z = _mm_shuffle_epi8(
        c.v,
        _mm_setr_epi8(10, 5, 0, 11, 6, 1, 12, 7, 2, 13, 8, 3, 14, 9, 4, 15));
    // Bytes whose place is 1, and 2, modulo 3.
    const __m128i one =
        _mm_setr_epi8(0, -1, 0, 0, -1, 0, 0, -1, 0, 0, -1, 0, 0, -1, 0, 0);
    const __m128i two =
        _mm_setr_epi8(0, 0, -1, 0, 0, -1, 0, 0, -1, 0, 0, -1, 0, 0, -1, 0);
    store_raw<kStream>(p, select(select(x, y, one), z, two));
    store_raw<kStream>(p + 16, select(select(y, z, one), x, two));
    store_raw<kStream>(p + 32, select(select(z, x, one), y, two));
  }
  LOX_OP __m128i select(__m128i v, __m128i w, __m128i mask) {
    return _mm_blendv_epi8(v, w, mask);
  }
  template <bool kStream>
  LOX_OP void store4(uint8_t *p, Words ab, Words cd) {
    store_raw<kStream>(p, _mm_unpacklo_epi16(ab.a, cd.a));
    store_raw<kStream>(p + 16, _mm_unpackhi_epi16(ab.a, cd.a));
    store_raw<kStream>(p + 32, _mm_unpacklo_epi16(ab.b, cd.b));
    store_raw<kStream>(p + 48, _mm_unpackhi_epi16(ab.b, cd.b));
  }
  LOX_OP void end_stream() { _mm_sfence(); }
};

#undef LOX_OP

}  // namespace lox::LOX_SET
