// SPDX-License-Identifier: Apache-2.0
//
// The vector layer on SSE4.1: 16 pixels a step, always in memory order.
#pragma once

#include <smmintrin.h>
#include <stdint.h>

#include "simd/order.h"

namespace lox::LOX_SET {

#define LOX_OP [[gnu::always_inline]] static inline

struct Sse41Lanes {
  static constexpr int n = 16;

  struct U8 {
    __m128i v;
  };
  struct H16 {
    __m128i v;
  };
  struct W16 {
    H16 a, b;
  };
  // Interleaved, each byte less 128 as a signed byte.
  struct Pairs {
    __m128i v;
  };
  struct WPairs {
    Pairs a, b;
  };
  template <int K0, int K1>
  struct Dot {
    __m128i k, bias;
  };
  template <int I, int K>
  struct HalfDot {
    __m128i k, bias;
  };

  LOX_OP U8 fill_u8(int k) { return {_mm_set1_epi8(static_cast<char>(k))}; }
  LOX_OP W16 fill_w16(int k) {
    const __m128i v = _mm_set1_epi16(static_cast<short>(k));
    return {{v}, {v}};
  }

  LOX_OP __m128i load_raw(const uint8_t *p) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i *>(p));
  }
  LOX_OP __m128i load_8(const uint8_t *p) {
    return _mm_loadl_epi64(reinterpret_cast<const __m128i *>(p));
  }
  LOX_OP void store_raw(uint8_t *p, __m128i v) {
    _mm_storeu_si128(reinterpret_cast<__m128i *>(p), v);
  }
  LOX_OP __m128i less_128(__m128i v) {
    return _mm_xor_si128(v, _mm_set1_epi8(-128));
  }

  template <Order>
  LOX_OP U8 load(const uint8_t *p) {
    return {load_raw(p)};
  }
  template <Order>
  LOX_OP Pairs load_pairs(const uint8_t *p) {
    return {less_128(load_raw(p))};
  }
  template <Order>
  LOX_OP Pairs load_zip(const uint8_t *first, const uint8_t *second) {
    return {less_128(_mm_unpacklo_epi8(load_8(first), load_8(second)))};
  }
  template <Order>
  LOX_OP WPairs load_zip_wide(const uint8_t *first, const uint8_t *second) {
    const __m128i f = load_raw(first);
    const __m128i s = load_raw(second);
    return {{less_128(_mm_unpacklo_epi8(f, s))},
            {less_128(_mm_unpackhi_epi8(f, s))}};
  }
  template <Order, int kLuma>
  LOX_OP void load_422(const uint8_t *p, U8 &luma, Pairs &pairs) {
    const __m128i v0 = load_raw(p);
    const __m128i v1 = load_raw(p + 16);
    const __m128i mask = _mm_set1_epi16(0xFF);
    const __m128i even =
        _mm_packus_epi16(_mm_and_si128(v0, mask), _mm_and_si128(v1, mask));
    const __m128i odd =
        _mm_packus_epi16(_mm_srli_epi16(v0, 8), _mm_srli_epi16(v1, 8));
    luma = {kLuma == 0 ? even : odd};
    pairs = {less_128(kLuma == 0 ? odd : even)};
  }

  template <int K0, int K1>
  LOX_OP Dot<K0, K1> make_dot(int bias) {
    static_assert((K0 >= 0 && K1 >= 0) || (K0 <= 0 && K1 <= 0));
    constexpr int k0 = K0 < 0 ? -K0 : K0;
    constexpr int k1 = K1 < 0 ? -K1 : K1;
    return {_mm_set1_epi16(static_cast<short>(k1 << 8 | k0)),
            _mm_set1_epi16(static_cast<short>(bias))};
  }
  template <int K0, int K1>
  LOX_OP H16 dot(Pairs p, const Dot<K0, K1> &d) {
    const __m128i sum = _mm_maddubs_epi16(d.k, p.v);
    return {K0 < 0 || K1 < 0 ? _mm_sub_epi16(d.bias, sum)
                             : _mm_add_epi16(d.bias, sum)};
  }
  template <int K0, int K1>
  LOX_OP W16 dot(WPairs p, const Dot<K0, K1> &d) {
    return {dot(p.a, d), dot(p.b, d)};
  }
  template <int I, int K>
  LOX_OP HalfDot<I, K> make_half_dot(int bias) {
    return {_mm_set1_epi16(static_cast<short>((K >> 1) << 8 * I)),
            _mm_set1_epi16(static_cast<short>(bias))};
  }
  template <int I, int K>
  LOX_OP H16 half_dot(Pairs p, const HalfDot<I, K> &d) {
    const __m128i whole = _mm_maddubs_epi16(d.k, p.v);
    const __m128i high = I == 1 ? p.v : _mm_slli_epi16(p.v, 8);
    return {_mm_add_epi16(_mm_add_epi16(whole, d.bias),
                          _mm_srai_epi16(high, 9))};
  }
  template <int I, int K>
  LOX_OP W16 half_dot(WPairs p, const HalfDot<I, K> &d) {
    return {half_dot(p.a, d), half_dot(p.b, d)};
  }
  LOX_OP W16 twice(H16 h) {
    return {{_mm_unpacklo_epi16(h.v, h.v)}, {_mm_unpackhi_epi16(h.v, h.v)}};
  }

  LOX_OP W16 mul_wide(U8 a, U8 b) {
    const __m128i zero = _mm_setzero_si128();
    return {{_mm_mullo_epi16(_mm_unpacklo_epi8(a.v, zero),
                             _mm_unpacklo_epi8(b.v, zero))},
            {_mm_mullo_epi16(_mm_unpackhi_epi8(a.v, zero),
                             _mm_unpackhi_epi8(b.v, zero))}};
  }
  LOX_OP W16 widen_high(U8 a) {
    const __m128i zero = _mm_setzero_si128();
    return {{_mm_unpacklo_epi8(zero, a.v)}, {_mm_unpackhi_epi8(zero, a.v)}};
  }
  LOX_OP W16 sub(W16 a, W16 b) {
    return {{_mm_sub_epi16(a.a.v, b.a.v)}, {_mm_sub_epi16(a.b.v, b.b.v)}};
  }
  LOX_OP W16 half(W16 a) {
    return {{_mm_srli_epi16(a.a.v, 1)}, {_mm_srli_epi16(a.b.v, 1)}};
  }
  LOX_OP W16 add_saturate(W16 a, W16 b) {
    return {{_mm_adds_epi16(a.a.v, b.a.v)}, {_mm_adds_epi16(a.b.v, b.b.v)}};
  }
  template <int S>
  LOX_OP U8 narrow(W16 a) {
    return {_mm_packus_epi16(_mm_srai_epi16(a.a.v, S),
                             _mm_srai_epi16(a.b.v, S))};
  }
  template <int S>
  LOX_OP W16 narrow_high(W16 a) {
    return {{narrow_high<S>(a.a.v)}, {narrow_high<S>(a.b.v)}};
  }
  template <int S>
  LOX_OP __m128i narrow_high(__m128i v) {
    static_assert(S == 6 || S == 7);
    v = _mm_max_epi16(v, _mm_setzero_si128());
    v = _mm_add_epi16(v, v);
    return S == 7 ? v : _mm_adds_epu16(v, v);
  }
  LOX_OP W16 pack565(W16 high, W16 mid, W16 low) {
    return {{pack565(high.a.v, mid.a.v, low.a.v)},
            {pack565(high.b.v, mid.b.v, low.b.v)}};
  }
  LOX_OP __m128i pack565(__m128i high, __m128i mid, __m128i low) {
    const __m128i h = _mm_and_si128(high, _mm_set1_epi16(-0x0800));
    const __m128i m =
        _mm_and_si128(_mm_srli_epi16(mid, 5), _mm_set1_epi16(0x07E0));
    return _mm_or_si128(_mm_or_si128(h, m), _mm_srli_epi16(low, 11));
  }

  LOX_OP void store_bytes(uint8_t *p, U8 a) { store_raw(p, a.v); }
  LOX_OP void store16(uint8_t *p, W16 a) {
    store_raw(p, a.a.v);
    store_raw(p + 16, a.b.v);
  }
  // Each source byte has a place of its own, modulo 16, among the three output
  // vectors: one shuffle puts it there, two selections a vector gather the
  // channels.
  LOX_OP void store3(uint8_t *p, U8 a, U8 b, U8 c) {
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
    store_raw(p, select(select(x, y, one), z, two));
    store_raw(p + 16, select(select(y, z, one), x, two));
    store_raw(p + 32, select(select(z, x, one), y, two));
  }
  LOX_OP __m128i select(__m128i v, __m128i w, __m128i mask) {
    return _mm_blendv_epi8(v, w, mask);
  }
  LOX_OP void store4(uint8_t *p, U8 a, U8 b, U8 c, U8 d) {
    const __m128i ab0 = _mm_unpacklo_epi8(a.v, b.v);
    const __m128i ab1 = _mm_unpackhi_epi8(a.v, b.v);
    const __m128i cd0 = _mm_unpacklo_epi8(c.v, d.v);
    const __m128i cd1 = _mm_unpackhi_epi8(c.v, d.v);
    store_raw(p, _mm_unpacklo_epi16(ab0, cd0));
    store_raw(p + 16, _mm_unpackhi_epi16(ab0, cd0));
    store_raw(p + 32, _mm_unpacklo_epi16(ab1, cd1));
    store_raw(p + 48, _mm_unpackhi_epi16(ab1, cd1));
  }
};

#undef LOX_OP

}  // namespace lox::LOX_SET
