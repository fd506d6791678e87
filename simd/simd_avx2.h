// SPDX-License-Identifier: Apache-2.0
//
// The vector layer on AVX2: 32 pixels a step in two vectors of 16-bit lanes.
// Packing and interleaving work inside 128-bit halves; so that what is stored
// is contiguous, the loads put each pixel where its store wants it (Order).
// Shuffles are what these kernels have most of, so a load shuffles once for
// widening, duplicating and ordering together, and right shifts are written as
// high halves of products, which other units compute.
#pragma once

#include <immintrin.h>
#include <stdint.h>

#include "simd/order.h"

namespace lox::LOX_SET {

#define LOX_OP [[gnu::always_inline]] static inline

struct Avx2Lanes {
  static constexpr int n = 32;
  static constexpr int kStreamAlignment = 32;

  // Which pixels are where, by Order:
  //           a, low half   a, high half   b
  //   kBytes  0..7          16..23         8..15, 24..31
  //   kWords  0..7          8..15          as a, 16 further
  //   kQuads  0..3, 8..11   4..7, 12..15   as a, 16 further
  struct W16 {
    __m256i a, b;
  };
  // Each byte in the high half of its pixel's lane.
  struct U8 {
    __m256i a, b;
  };
  struct Words {
    __m256i a, b;
  };
  struct Bytes {
    __m256i v;
  };
  // The pair of each pixel in its lane, as signed bytes.
  struct WPairs {
    __m256i a, b;
  };
  using Pairs = WPairs;
  struct Factor {
    __m256i whole, half;
  };
  template <int K0, int K1>
  struct Dot {
    __m256i k, bias;
  };
  template <int I, int K>
  struct HalfDot {
    __m256i k, bias;
  };

  LOX_OP __m256i fill_raw(int k) {
    return _mm256_set1_epi16(static_cast<short>(k));
  }
  LOX_OP W16 fill(int k) { return {fill_raw(k), fill_raw(k)}; }

  LOX_OP __m256i load_raw(const uint8_t *p) {
    return _mm256_loadu_si256(reinterpret_cast<const __m256i *>(p));
  }
  template <bool kStream = false>
  LOX_OP void store_raw(uint8_t *p, __m256i v) {
    if constexpr (kStream) {
      _mm256_stream_si256(reinterpret_cast<__m256i *>(p), v);
    } else {
      _mm256_storeu_si256(reinterpret_cast<__m256i *>(p), v);
    }
  }
  LOX_OP __m128i load_16(const uint8_t *p) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i *>(p));
  }
  // The same 16 bytes in both halves.
  LOX_OP __m256i load_twice(const uint8_t *p) {
    return _mm256_broadcastsi128_si256(load_16(p));
  }
  LOX_OP __m256i load_halves(const uint8_t *low, const uint8_t *high) {
    return _mm256_inserti128_si256(_mm256_castsi128_si256(load_16(low)),
                                   load_16(high), 1);
  }
  LOX_OP __m256i less_128(__m256i v) {
    return _mm256_xor_si256(v, _mm256_set1_epi8(-128));
  }

  // Of 16 bytes in both halves, those of the half's pixels: to the high bytes
  // of the lanes, the low ones zero.
  template <Order O>
  LOX_OP __m256i pick_bytes(__m256i twice) {
    static_assert(O != Order::kBytes);
    const __m256i quads = _mm256_setr_epi8(
        -1, 0, -1, 1, -1, 2, -1, 3, -1, 8, -1, 9, -1, 10, -1, 11,  //
        -1, 4, -1, 5, -1, 6, -1, 7, -1, 12, -1, 13, -1, 14, -1, 15);
    const __m256i words = _mm256_setr_epi8(
        -1, 0, -1, 1, -1, 2, -1, 3, -1, 4, -1, 5, -1, 6, -1, 7,  //
        -1, 8, -1, 9, -1, 10, -1, 11, -1, 12, -1, 13, -1, 14, -1, 15);
    return _mm256_shuffle_epi8(twice, O == Order::kQuads ? quads : words);
  }
  // Of 8 pairs in both halves, those of the half's pixels, each twice.
  template <Order O>
  LOX_OP __m256i pick_pairs(__m256i twice) {
    static_assert(O != Order::kBytes);
    const __m256i quads = _mm256_setr_epi8(
        0, 1, 0, 1, 2, 3, 2, 3, 8, 9, 8, 9, 10, 11, 10, 11,  //
        4, 5, 4, 5, 6, 7, 6, 7, 12, 13, 12, 13, 14, 15, 14, 15);
    const __m256i words = _mm256_setr_epi8(
        0, 1, 0, 1, 2, 3, 2, 3, 4, 5, 4, 5, 6, 7, 6, 7,  //
        8, 9, 8, 9, 10, 11, 10, 11, 12, 13, 12, 13, 14, 15, 14, 15);
    return _mm256_shuffle_epi8(twice, O == Order::kQuads ? quads : words);
  }
  // 16 pairs in memory order, each twice.
  LOX_OP Pairs double_pairs(__m256i v) {
    v = less_128(v);
    return {_mm256_unpacklo_epi16(v, v), _mm256_unpackhi_epi16(v, v)};
  }

  template <Order O>
  LOX_OP U8 load(const uint8_t *p) {
    if constexpr (O == Order::kBytes) {
      const __m256i v = load_raw(p);
      const __m256i zero = _mm256_setzero_si256();
      return {_mm256_unpacklo_epi8(zero, v), _mm256_unpackhi_epi8(zero, v)};
    } else {
      return {pick_bytes<O>(load_twice(p)), pick_bytes<O>(load_twice(p + 16))};
    }
  }
  LOX_OP Bytes load_bytes(const uint8_t *p) { return {load_raw(p)}; }
  template <Order O>
  LOX_OP Pairs load_pairs(const uint8_t *p) {
    if constexpr (O == Order::kBytes) {
      return double_pairs(load_raw(p));
    } else {
      return {less_128(pick_pairs<O>(load_twice(p))),
              less_128(pick_pairs<O>(load_twice(p + 16)))};
    }
  }
  template <Order O>
  LOX_OP Pairs load_zip(const uint8_t *first, const uint8_t *second) {
    const __m256i f = load_twice(first);
    const __m256i s = load_twice(second);
    const __m256i low = _mm256_unpacklo_epi8(f, s);
    const __m256i high = _mm256_unpackhi_epi8(f, s);
    if constexpr (O == Order::kBytes) {
      return double_pairs(_mm256_blend_epi32(low, high, 0xF0));
    } else {
      return {less_128(pick_pairs<O>(low)), less_128(pick_pairs<O>(high))};
    }
  }
  template <Order O>
  LOX_OP WPairs load_zip_wide(const uint8_t *first, const uint8_t *second) {
    if constexpr (O == Order::kBytes) {
      const __m256i f = less_128(load_raw(first));
      const __m256i s = less_128(load_raw(second));
      return {_mm256_unpacklo_epi8(f, s), _mm256_unpackhi_epi8(f, s)};
    } else {
      // The second in the high bytes as it is loaded, the first moved below.
      const U8 f = load<O>(first);
      const U8 s = load<O>(second);
      return {less_128(_mm256_or_si256(_mm256_srli_epi16(f.a, 8), s.a)),
              less_128(_mm256_or_si256(_mm256_srli_epi16(f.b, 8), s.b))};
    }
  }
  template <Order O, int kLuma>
  LOX_OP void load_422(const uint8_t *p, U8 &luma, Pairs &pairs) {
    __m256i a, b;
    if constexpr (O == Order::kQuads) {
      a = first_and_last_quarters(p);
      b = first_and_last_quarters(p + 32);
    } else if constexpr (O == Order::kWords) {
      a = load_raw(p);
      b = load_raw(p + 32);
    } else {
      a = load_halves(p, p + 32);
      b = load_halves(p + 16, p + 48);
    }
    constexpr char c0 = 1 - kLuma;
    constexpr char c1 = 3 - kLuma;
    const __m256i pick = _mm256_broadcastsi128_si256(_mm_setr_epi8(
        c0, c1, c0, c1, c0 + 4, c1 + 4, c0 + 4, c1 + 4, c0 + 8, c1 + 8, c0 + 8,
        c1 + 8, c0 + 12, c1 + 12, c0 + 12, c1 + 12));
    pairs = {less_128(_mm256_shuffle_epi8(a, pick)),
             less_128(_mm256_shuffle_epi8(b, pick))};
    if constexpr (kLuma == 0) {
      luma = {_mm256_slli_epi16(a, 8), _mm256_slli_epi16(b, 8)};
    } else {
      luma = {_mm256_and_si256(a, fill_raw(0xFF00)),
              _mm256_and_si256(b, fill_raw(0xFF00))};
    }
  }
  // Of 32 bytes, the quarters 0 and 2, then 1 and 3.
  LOX_OP __m256i first_and_last_quarters(const uint8_t *p) {
    return _mm256_castpd_si256(
        _mm256_shuffle_pd(_mm256_castsi256_pd(load_twice(p)),
                          _mm256_castsi256_pd(load_twice(p + 16)), 0xC));
  }

  template <int K0, int K1>
  LOX_OP Dot<K0, K1> make_dot(int bias) {
    static_assert((K0 >= 0 && K1 >= 0) || (K0 <= 0 && K1 <= 0));
    constexpr int k0 = K0 < 0 ? -K0 : K0;
    constexpr int k1 = K1 < 0 ? -K1 : K1;
    return {fill_raw(k1 << 8 | k0), fill_raw(bias)};
  }
  template <int K0, int K1>
  LOX_OP __m256i dot(__m256i p, const Dot<K0, K1> &d) {
    const __m256i sum = _mm256_maddubs_epi16(d.k, p);
    return K0 < 0 || K1 < 0 ? _mm256_sub_epi16(d.bias, sum)
                            : _mm256_add_epi16(d.bias, sum);
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
  LOX_OP __m256i half_dot(__m256i p, const HalfDot<I, K> &d) {
    const __m256i high = I == 1 ? p : _mm256_slli_epi16(p, 8);
    return _mm256_add_epi16(
        _mm256_add_epi16(_mm256_maddubs_epi16(d.k, p), d.bias),
        _mm256_srai_epi16(high, 9));
  }
  template <int I, int K>
  LOX_OP W16 half_dot(WPairs p, const HalfDot<I, K> &d) {
    return {half_dot(p.a, d), half_dot(p.b, d)};
  }

  LOX_OP Factor make_factor(int k) {
    return {fill_raw(k << 8), fill_raw(k << 7)};
  }
  LOX_OP void scale(U8 v, Factor k, W16 &whole, W16 &half) {
    whole = {_mm256_mulhi_epu16(v.a, k.whole),
             _mm256_mulhi_epu16(v.b, k.whole)};
    half = {_mm256_mulhi_epu16(v.a, k.half), _mm256_mulhi_epu16(v.b, k.half)};
  }
  LOX_OP W16 widen_high(U8 v) { return {v.a, v.b}; }
  LOX_OP W16 add(W16 x, W16 y) {
    return {_mm256_add_epi16(x.a, y.a), _mm256_add_epi16(x.b, y.b)};
  }
  LOX_OP W16 add_saturate(W16 x, W16 y) {
    return {_mm256_adds_epi16(x.a, y.a), _mm256_adds_epi16(x.b, y.b)};
  }

  template <int S>
  LOX_OP __m256i shift_right(__m256i v) {
    return _mm256_mulhi_epi16(v, fill_raw(1 << (16 - S)));
  }
  template <int S>
  LOX_OP Bytes narrow(W16 v) {
    return {_mm256_packus_epi16(shift_right<S>(v.a), shift_right<S>(v.b))};
  }
  // Within 0 .. what the byte's 255 has below the shift.
  template <int S>
  LOX_OP __m256i clamp(__m256i v) {
    static_assert(S == 6 || S == 7);
    v = _mm256_max_epi16(v, _mm256_setzero_si256());
    return S == 7 ? v : _mm256_min_epi16(v, fill_raw(0x3FFF));
  }
  template <int S>
  LOX_OP __m256i narrow_high(__m256i v) {
    v = clamp<S>(v);
    v = _mm256_add_epi16(v, v);
    return S == 7 ? v : _mm256_add_epi16(v, v);
  }
  template <int S>
  LOX_OP W16 narrow_high(W16 v) {
    return {narrow_high<S>(v.a), narrow_high<S>(v.b)};
  }
  template <int S0, int S1>
  LOX_OP Words join(W16 low, W16 high) {
    const __m256i l = narrow<S0>(low).v;
    const __m256i h = narrow<S1>(high).v;
    return {_mm256_unpacklo_epi8(l, h), _mm256_unpackhi_epi8(l, h)};
  }
  template <int S>
  LOX_OP Words join_high_255(W16 low) {
    const __m256i l = narrow<S>(low).v;
    const __m256i h = _mm256_set1_epi8(-1);
    return {_mm256_unpacklo_epi8(l, h), _mm256_unpackhi_epi8(l, h)};
  }
  template <int S>
  LOX_OP Words join_low_255(W16 high) {
    const __m256i l = _mm256_set1_epi8(-1);
    const __m256i h = narrow<S>(high).v;
    return {_mm256_unpacklo_epi8(l, h), _mm256_unpackhi_epi8(l, h)};
  }
  LOX_OP __m256i pack565(__m256i high, __m256i mid, __m256i low) {
    const __m256i h = _mm256_and_si256(high, fill_raw(0xF800));
    const __m256i m =
        _mm256_and_si256(_mm256_srli_epi16(mid, 5), fill_raw(0x07E0));
    return _mm256_or_si256(_mm256_or_si256(h, m), _mm256_srli_epi16(low, 11));
  }
  LOX_OP W16 pack565(W16 high, W16 mid, W16 low) {
    return {pack565(high.a, mid.a, low.a), pack565(high.b, mid.b, low.b)};
  }

  LOX_OP void store_bytes(uint8_t *p, Bytes v) { store_raw(p, v.v); }
  template <bool kStream>
  LOX_OP void store16(uint8_t *p, W16 v) {
    store_raw<kStream>(p, v.a);
    store_raw<kStream>(p + 32, v.b);
  }
  // Each source byte has a place of its own, modulo 16, among the three output
  // vectors of its half: one shuffle puts it there, two selections a vector
  // gather the channels.
  template <bool kStream>
  LOX_OP void store3(uint8_t *p, Bytes a, Bytes b, Bytes c) {
    const __m256i x = _mm256_shuffle_epi8(
        a.v,
        _mm256_setr_epi8(0, 11, 6, 1, 12, 7, 2, 13, 8, 3, 14, 9, 4, 15, 10, 5,
                         0, 11, 6, 1, 12, 7, 2, 13, 8, 3, 14, 9, 4, 15, 10, 5));
    const __m256i y = _mm256_shuffle_epi8(
        b.v,
        _mm256_setr_epi8(5, 0, 11, 6, 1, 12, 7, 2, 13, 8, 3, 14, 9, 4, 15, 10,
                         5, 0, 11, 6, 1, 12, 7, 2, 13, 8, 3, 14, 9, 4, 15, 10));
    const __m256i z = _mm256_shuffle_epi8(
        c.v,
        _mm256_setr_epi8(10, 5, 0, 11, 6, 1, 12, 7, 2, 13, 8, 3, 14, 9, 4, 15,
                         10, 5, 0, 11, 6, 1, 12, 7, 2, 13, 8, 3, 14, 9, 4, 15));
    // Bytes whose place is 1, and 2, modulo 3 within 16.
    const __m256i one =
        _mm256_setr_epi8(0, -1, 0, 0, -1, 0, 0, -1, 0, 0, -1, 0, 0, -1, 0, 0, 0,
                         -1, 0, 0, -1, 0, 0, -1, 0, 0, -1, 0, 0, -1, 0, 0);
    const __m256i two =
        _mm256_setr_epi8(0, 0, -1, 0, 0, -1, 0, 0, -1, 0, 0, -1, 0, 0, -1, 0, 0,
                         0, -1, 0, 0, -1, 0, 0, -1, 0, 0, -1, 0, 0, -1, 0);
    const __m256i v0 = select(select(x, y, one), z, two);
    const __m256i v1 = select(select(y, z, one), x, two);
    const __m256i v2 = select(select(z, x, one), y, two);
    store_raw<kStream>(p, _mm256_permute2x128_si256(v0, v1, 0x20));
    store_raw<kStream>(p + 32, _mm256_permute2x128_si256(v2, v0, 0x30));
    store_raw<kStream>(p + 64, _mm256_permute2x128_si256(v1, v2, 0x31));
  }
  LOX_OP __m256i select(__m256i v, __m256i w, __m256i mask) {
    return _mm256_blendv_epi8(v, w, mask);
  }
  template <bool kStream>
  LOX_OP void store4(uint8_t *p, Words ab, Words cd) {
    store_raw<kStream>(p, _mm256_unpacklo_epi16(ab.a, cd.a));
    store_raw<kStream>(p + 32, _mm256_unpackhi_epi16(ab.a, cd.a));
    store_raw<kStream>(p + 64, _mm256_unpacklo_epi16(ab.b, cd.b));
    store_raw<kStream>(p + 96, _mm256_unpackhi_epi16(ab.b, cd.b));
  }
  LOX_OP void end_stream() { _mm_sfence(); }
};

#undef LOX_OP

}  // namespace lox::LOX_SET
