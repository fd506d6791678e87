// SPDX-License-Identifier: Apache-2.0
//
// The vector layer on AVX2: 32 pixels a step. Unpacking and packing work inside
// 128-bit halves and undo each other; where a store would leave the halves
// apart, the load has permuted the bytes for it (Order).
//
// Right shifts by a constant are written as high halves of products: the units
// that shift are the ones that shuffle, and shuffles are what these kernels
// have most of.
#pragma once

#include <immintrin.h>
#include <stdint.h>

#include "simd/order.h"

namespace lox::LOX_SET {

#define LOX_OP [[gnu::always_inline]] static inline

struct Avx2Lanes {
  static constexpr int n = 32;

  struct U8 {
    __m256i v;
  };
  struct H16 {
    __m256i v;
  };
  struct W16 {
    H16 a, b;
  };
  // Interleaved, each byte less 128 as a signed byte.
  struct Pairs {
    __m256i v;
  };
  struct WPairs {
    Pairs a, b;
  };
  template <int K0, int K1>
  struct Dot {
    __m256i k, bias;
  };
  template <int I, int K>
  struct HalfDot {
    __m256i k, bias;
  };

  LOX_OP U8 fill_u8(int k) {
    return {_mm256_set1_epi8(static_cast<char>(k))};
  }
  LOX_OP W16 fill_w16(int k) {
    const __m256i v = _mm256_set1_epi16(static_cast<short>(k));
    return {{v}, {v}};
  }

  LOX_OP __m256i load_raw(const uint8_t *p) {
    return _mm256_loadu_si256(reinterpret_cast<const __m256i *>(p));
  }
  LOX_OP void store_raw(uint8_t *p, __m256i v) {
    _mm256_storeu_si256(reinterpret_cast<__m256i *>(p), v);
  }
  LOX_OP __m256i load_both_halves(const uint8_t *p) {
    return _mm256_broadcastsi128_si256(
        _mm_loadu_si128(reinterpret_cast<const __m128i *>(p)));
  }
  // The even and the odd groups of 4 (kQuads) or 8 (kWords) bytes apart.
  template <Order O>
  LOX_OP __m256i permute(__m256i v) {
    if constexpr (O == Order::kQuads) {
      return _mm256_permutevar8x32_epi32(
          v, _mm256_setr_epi32(0, 2, 4, 6, 1, 3, 5, 7));
    } else if constexpr (O == Order::kWords) {
      return _mm256_permute4x64_epi64(v, 0xD8);
    } else {
      return v;
    }
  }
  LOX_OP __m256i less_128(__m256i v) {
    return _mm256_xor_si256(v, _mm256_set1_epi8(-128));
  }

  template <Order O>
  LOX_OP U8 load(const uint8_t *p) {
    return {permute<O>(load_raw(p))};
  }
  template <Order O>
  LOX_OP Pairs load_pairs(const uint8_t *p) {
    return {less_128(permute<O>(load_raw(p)))};
  }
  template <Order O>
  LOX_OP Pairs load_zip(const uint8_t *first, const uint8_t *second) {
    // The bytes of a half come to its lower 8 places, then interleave.
    __m256i pick;
    if constexpr (O == Order::kQuads) {
      pick = _mm256_setr_epi8(0, 1, 4, 5, 8, 9, 12, 13, 0, 0, 0, 0, 0, 0, 0, 0,
                              2, 3, 6, 7, 10, 11, 14, 15, 0, 0, 0, 0, 0, 0, 0,
                              0);
    } else if constexpr (O == Order::kWords) {
      pick = _mm256_setr_epi8(0, 1, 2, 3, 8, 9, 10, 11, 0, 0, 0, 0, 0, 0, 0, 0,
                              4, 5, 6, 7, 12, 13, 14, 15, 0, 0, 0, 0, 0, 0, 0,
                              0);
    } else {
      pick = _mm256_setr_epi8(0, 1, 2, 3, 4, 5, 6, 7, 0, 0, 0, 0, 0, 0, 0, 0, 8,
                              9, 10, 11, 12, 13, 14, 15, 0, 0, 0, 0, 0, 0, 0,
                              0);
    }
    const __m256i f = _mm256_shuffle_epi8(load_both_halves(first), pick);
    const __m256i s = _mm256_shuffle_epi8(load_both_halves(second), pick);
    return {less_128(_mm256_unpacklo_epi8(f, s))};
  }
  template <Order O>
  LOX_OP WPairs load_zip_wide(const uint8_t *first, const uint8_t *second) {
    const __m256i f = permute<O>(load_raw(first));
    const __m256i s = permute<O>(load_raw(second));
    return {{less_128(_mm256_unpacklo_epi8(f, s))},
            {less_128(_mm256_unpackhi_epi8(f, s))}};
  }
  template <Order O, int kLuma>
  LOX_OP void load_422(const uint8_t *p, U8 &luma, Pairs &pairs) {
    const __m256i v0 = load_raw(p);
    const __m256i v1 = load_raw(p + 32);
    const __m256i mask = _mm256_set1_epi16(0xFF);
    const __m256i even = _mm256_packus_epi16(_mm256_and_si256(v0, mask),
                                             _mm256_and_si256(v1, mask));
    const __m256i odd = _mm256_packus_epi16(_mm256_srli_epi16(v0, 8),
                                            _mm256_srli_epi16(v1, 8));
    luma = {from_words<O>(kLuma == 0 ? even : odd)};
    pairs = {less_128(from_words<O>(kLuma == 0 ? odd : even))};
  }
  // What packing leaves is the order kWords; makes another of it.
  template <Order O>
  LOX_OP __m256i from_words(__m256i v) {
    if constexpr (O == Order::kQuads) {
      return _mm256_permutevar8x32_epi32(
          v, _mm256_setr_epi32(0, 4, 2, 6, 1, 5, 3, 7));
    } else if constexpr (O == Order::kWords) {
      return v;
    } else {
      return _mm256_permute4x64_epi64(v, 0xD8);
    }
  }

  template <int K0, int K1>
  LOX_OP Dot<K0, K1> make_dot(int bias) {
    static_assert((K0 >= 0 && K1 >= 0) || (K0 <= 0 && K1 <= 0));
    constexpr int k0 = K0 < 0 ? -K0 : K0;
    constexpr int k1 = K1 < 0 ? -K1 : K1;
    return {_mm256_set1_epi16(static_cast<short>(k1 << 8 | k0)),
            _mm256_set1_epi16(static_cast<short>(bias))};
  }
  template <int K0, int K1>
  LOX_OP H16 dot(Pairs p, const Dot<K0, K1> &d) {
    const __m256i sum = _mm256_maddubs_epi16(d.k, p.v);
    return {K0 < 0 || K1 < 0 ? _mm256_sub_epi16(d.bias, sum)
                             : _mm256_add_epi16(d.bias, sum)};
  }
  template <int K0, int K1>
  LOX_OP W16 dot(WPairs p, const Dot<K0, K1> &d) {
    return {dot(p.a, d), dot(p.b, d)};
  }
  template <int I, int K>
  LOX_OP HalfDot<I, K> make_half_dot(int bias) {
    return {_mm256_set1_epi16(static_cast<short>((K >> 1) << 8 * I)),
            _mm256_set1_epi16(static_cast<short>(bias))};
  }
  template <int I, int K>
  LOX_OP H16 half_dot(Pairs p, const HalfDot<I, K> &d) {
    const __m256i whole = _mm256_maddubs_epi16(d.k, p.v);
    const __m256i high = I == 1 ? p.v : _mm256_slli_epi16(p.v, 8);
    return {_mm256_add_epi16(
        _mm256_add_epi16(whole, d.bias), _mm256_srai_epi16(high, 9))};
  }
  template <int I, int K>
  LOX_OP W16 half_dot(WPairs p, const HalfDot<I, K> &d) {
    return {half_dot(p.a, d), half_dot(p.b, d)};
  }
  LOX_OP W16 twice(H16 h) {
    return {{_mm256_unpacklo_epi16(h.v, h.v)},
            {_mm256_unpackhi_epi16(h.v, h.v)}};
  }

  LOX_OP W16 mul_wide(U8 a, U8 b) {
    const __m256i zero = _mm256_setzero_si256();
    return {{_mm256_mullo_epi16(_mm256_unpacklo_epi8(a.v, zero),
                                _mm256_unpacklo_epi8(b.v, zero))},
            {_mm256_mullo_epi16(_mm256_unpackhi_epi8(a.v, zero),
                                _mm256_unpackhi_epi8(b.v, zero))}};
  }
  LOX_OP W16 widen_high(U8 a) {
    const __m256i zero = _mm256_setzero_si256();
    return {{_mm256_unpacklo_epi8(zero, a.v)},
            {_mm256_unpackhi_epi8(zero, a.v)}};
  }
  LOX_OP W16 sub(W16 a, W16 b) {
    return {{_mm256_sub_epi16(a.a.v, b.a.v)}, {_mm256_sub_epi16(a.b.v, b.b.v)}};
  }
  LOX_OP W16 half(W16 a) {
    return {{_mm256_srli_epi16(a.a.v, 1)}, {_mm256_srli_epi16(a.b.v, 1)}};
  }
  LOX_OP W16 add_saturate(W16 a, W16 b) {
    return {{_mm256_adds_epi16(a.a.v, b.a.v)},
            {_mm256_adds_epi16(a.b.v, b.b.v)}};
  }
  template <int S>
  LOX_OP __m256i shift_right(__m256i v) {
    return _mm256_mulhi_epi16(v, _mm256_set1_epi16(1 << (16 - S)));
  }
  template <int S>
  LOX_OP U8 narrow(W16 a) {
    return {_mm256_packus_epi16(shift_right<S>(a.a.v), shift_right<S>(a.b.v))};
  }
  template <int S>
  LOX_OP W16 narrow_high(W16 a) {
    return {{narrow_high<S>(a.a.v)}, {narrow_high<S>(a.b.v)}};
  }
  template <int S>
  LOX_OP __m256i narrow_high(__m256i v) {
    static_assert(S == 6 || S == 7);
    v = _mm256_max_epi16(v, _mm256_setzero_si256());
    v = _mm256_add_epi16(v, v);
    return S == 7 ? v : _mm256_adds_epu16(v, v);
  }
  LOX_OP W16 pack565(W16 high, W16 mid, W16 low) {
    return {{pack565(high.a.v, mid.a.v, low.a.v)},
            {pack565(high.b.v, mid.b.v, low.b.v)}};
  }
  LOX_OP __m256i pack565(__m256i high, __m256i mid, __m256i low) {
    const __m256i h = _mm256_and_si256(high, _mm256_set1_epi16(-0x0800));
    const __m256i m = _mm256_and_si256(_mm256_srli_epi16(mid, 5),
                                       _mm256_set1_epi16(0x07E0));
    return _mm256_or_si256(_mm256_or_si256(h, m), _mm256_srli_epi16(low, 11));
  }

  LOX_OP void store_bytes(uint8_t *p, U8 a) { store_raw(p, a.v); }
  LOX_OP void store16(uint8_t *p, W16 a) {
    store_raw(p, a.a.v);
    store_raw(p + 32, a.b.v);
  }
  // Each source byte has a place of its own, modulo 16, among the three output
  // vectors of its half: one shuffle puts it there, two selections a vector
  // gather the channels.
  LOX_OP void store3(uint8_t *p, U8 a, U8 b, U8 c) {
    const __m256i x = _mm256_shuffle_epi8(
        a.v, _mm256_setr_epi8(0, 11, 6, 1, 12, 7, 2, 13, 8, 3, 14, 9, 4, 15, 10,
                              5, 0, 11, 6, 1, 12, 7, 2, 13, 8, 3, 14, 9, 4, 15,
                              10, 5));
    const __m256i y = _mm256_shuffle_epi8(
        b.v, _mm256_setr_epi8(5, 0, 11, 6, 1, 12, 7, 2, 13, 8, 3, 14, 9, 4, 15,
                              10, 5, 0, 11, 6, 1, 12, 7, 2, 13, 8, 3, 14, 9, 4,
                              15, 10));
    const __m256i z = _mm256_shuffle_epi8(
        c.v, _mm256_setr_epi8(10, 5, 0, 11, 6, 1, 12, 7, 2, 13, 8, 3, 14, 9, 4,
                              15, 10, 5, 0, 11, 6, 1, 12, 7, 2, 13, 8, 3, 14, 9,
                              4, 15));
    // Bytes whose place is 1, and 2, modulo 3 within 16.
    const __m256i one = _mm256_setr_epi8(
        0, -1, 0, 0, -1, 0, 0, -1, 0, 0, -1, 0, 0, -1, 0, 0, 0, -1, 0, 0, -1, 0,
        0, -1, 0, 0, -1, 0, 0, -1, 0, 0);
    const __m256i two = _mm256_setr_epi8(
        0, 0, -1, 0, 0, -1, 0, 0, -1, 0, 0, -1, 0, 0, -1, 0, 0, 0, -1, 0, 0, -1,
        0, 0, -1, 0, 0, -1, 0, 0, -1, 0);
    const __m256i v0 = select(select(x, y, one), z, two);
    const __m256i v1 = select(select(y, z, one), x, two);
    const __m256i v2 = select(select(z, x, one), y, two);
    store_raw(p, _mm256_permute2x128_si256(v0, v1, 0x20));
    store_raw(p + 32, _mm256_permute2x128_si256(v2, v0, 0x30));
    store_raw(p + 64, _mm256_permute2x128_si256(v1, v2, 0x31));
  }
  LOX_OP __m256i select(__m256i v, __m256i w, __m256i mask) {
    return _mm256_blendv_epi8(v, w, mask);
  }
  LOX_OP void store4(uint8_t *p, U8 a, U8 b, U8 c, U8 d) {
    const __m256i ab0 = _mm256_unpacklo_epi8(a.v, b.v);
    const __m256i ab1 = _mm256_unpackhi_epi8(a.v, b.v);
    const __m256i cd0 = _mm256_unpacklo_epi8(c.v, d.v);
    const __m256i cd1 = _mm256_unpackhi_epi8(c.v, d.v);
    store_raw(p, _mm256_unpacklo_epi16(ab0, cd0));
    store_raw(p + 32, _mm256_unpackhi_epi16(ab0, cd0));
    store_raw(p + 64, _mm256_unpacklo_epi16(ab1, cd1));
    store_raw(p + 96, _mm256_unpackhi_epi16(ab1, cd1));
  }
};

#undef LOX_OP

}  // namespace lox::LOX_SET
