// SPDX-License-Identifier: Apache-2.0
//
// The vector layer on AVX2: 32 pixels a step in two registers of 16-bit
// elements. Packing and interleaving work inside 128-bit lanes; so that what is
// stored is contiguous, the loads put each pixel where its store wants it
// (Order). Shuffles are what these kernels have most of, so a load shuffles
// once for widening, duplicating and ordering together.
#pragma once

#include "simd/x86_rgb.h"

namespace lox::LOX_SET {

struct Avx2Register {
  using Reg = __m256i;
#define LOX_MM(name) _mm256_##name
#define LOX_BITS(name) _mm256_##name##_si256
#include "simd/x86_register.h"

  LOX_OP Reg broadcast128(__m128i v) { return _mm256_broadcastsi128_si256(v); }

  // All bits of the bytes that are negative.
  LOX_OP Reg negative8(Reg v) { return _mm256_cmpgt_epi8(zero(), v); }
  // A bit for each byte: set where it is zero.
  LOX_OP uint32_t zero_bytes(Reg v) {
    return static_cast<uint32_t>(
        _mm256_movemask_epi8(_mm256_cmpeq_epi8(v, zero())));
  }
  // Bytes of b where the mask has its high bit, else of a.
  LOX_OP Reg select8(Reg a, Reg b, Reg mask) {
    return _mm256_blendv_epi8(a, b, mask);
  }

  LOX_OP bool any_bit(Reg v) { return _mm256_testz_si256(v, v) == 0; }
  // In each lane, the even 32-bit elements of a, then those of b.
  LOX_OP Reg even32(Reg a, Reg b) {
    return _mm256_castps_si256(_mm256_shuffle_ps(_mm256_castsi256_ps(a),
                                                 _mm256_castsi256_ps(b), 0x88));
  }
  LOX_OP Reg odd32(Reg a, Reg b) {
    return _mm256_castps_si256(_mm256_shuffle_ps(_mm256_castsi256_ps(a),
                                                 _mm256_castsi256_ps(b), 0xDD));
  }
  // A shift by element is one operation, by one number for all it is two.
  using Shift = Reg;
  LOX_OP Shift shift(int by) { return fill32(by); }
  LOX_OP Reg shift_right_signed32_by(Reg v, Shift by) {
    return _mm256_srav_epi32(v, by);
  }
  // Even words of a, odd ones of b.
  LOX_OP Reg select_odd16(Reg a, Reg b) {
    return _mm256_blend_epi16(a, b, 0xAA);
  }
  // 16 bytes in both lanes.
  LOX_OP Reg load_broadcast128(const uint8_t *p) {
    return broadcast128(_mm_loadu_si128(reinterpret_cast<const __m128i *>(p)));
  }
  LOX_OP void store_lanes(uint8_t *p, Reg a, Reg b, Reg c, Reg d) {
    store<false>(p, interleave_low_lanes(a, b));
    store<false>(p + 32, interleave_low_lanes(c, d));
    store<false>(p + 128, interleave_high_lanes(a, b));
    store<false>(p + 160, interleave_high_lanes(c, d));
  }
  // Of lanes stored without gaps and loaded again, those of each register.
  LOX_OP void transpose_lanes(Reg &a, Reg &b, Reg &c, Reg &d) {
    const Reg c0 = interleave_low_lanes(a, c);
    const Reg c1 = interleave_high_lanes(a, c);
    const Reg c2 = interleave_low_lanes(b, d);
    const Reg c3 = interleave_high_lanes(b, d);
    a = c0;
    b = c1;
    c = c2;
    d = c3;
  }
  // Four rows that lie one behind the other.
  LOX_OP void store_rows(uint8_t *p, ptrdiff_t stride, Reg v) {
    const __m128i low = _mm256_castsi256_si128(v);
    const __m128i high = _mm256_extracti128_si256(v, 1);
    _mm_storeu_si64(p, low);
    _mm_storeu_si64(p + stride, _mm_unpackhi_epi64(low, low));
    _mm_storeu_si64(p + 2 * stride, high);
    _mm_storeu_si64(p + 3 * stride, _mm_unpackhi_epi64(high, high));
  }
  // 16 bytes in each lane, `step` apart.
  LOX_OP Reg load_lanes(const uint8_t *p, ptrdiff_t step) {
    return _mm256_inserti128_si256(
        _mm256_castsi128_si256(
            _mm_loadu_si128(reinterpret_cast<const __m128i *>(p))),
        _mm_loadu_si128(reinterpret_cast<const __m128i *>(p + step)), 1);
  }
  LOX_OP void store_lanes(uint8_t *p, ptrdiff_t step, Reg v) {
    _mm_storeu_si128(reinterpret_cast<__m128i *>(p), _mm256_castsi256_si128(v));
    _mm_storeu_si128(reinterpret_cast<__m128i *>(p + step),
                     _mm256_extracti128_si256(v, 1));
  }
  // 16 bytes in each lane, from every second offset.
  LOX_OP Reg load_groups(const uint8_t *p, const int16_t *offsets) {
    return _mm256_inserti128_si256(
        _mm256_castsi128_si256(
            _mm_loadu_si128(reinterpret_cast<const __m128i *>(p + offsets[0]))),
        _mm_loadu_si128(reinterpret_cast<const __m128i *>(p + offsets[2])), 1);
  }
  // Units of both lanes in turn: of 64, of 32, and of 16 bits, these of the
  // first half of each lane and then of the second.
  LOX_OP Reg permute_quads(Reg v) { return _mm256_permute4x64_epi64(v, 0xD8); }
  // The reverse of permute_quads, before what works inside lanes.
  LOX_OP Reg unpermute_quads(Reg v) { return permute_quads(v); }
  LOX_OP Reg permute_dwords(Reg v) {
    return _mm256_permutevar8x32_epi32(
        v, _mm256_setr_epi32(0, 4, 1, 5, 2, 6, 3, 7));
  }
  // The reverse of permute_dwords.
  LOX_OP Reg unpermute_dwords(Reg v) {
    return _mm256_permutevar8x32_epi32(
        v, _mm256_setr_epi32(0, 2, 4, 6, 1, 3, 5, 7));
  }
  LOX_OP Reg permute_words(Reg v) {
    return shuffle8(permute_quads(v),
                    broadcast128(_mm_setr_epi8(0, 1, 8, 9, 2, 3, 10, 11, 4, 5,
                                               12, 13, 6, 7, 14, 15)));
  }
  LOX_OP Reg interleave_low_lanes(Reg a, Reg b) {
    return _mm256_permute2x128_si256(a, b, 0x20);
  }
  LOX_OP Reg interleave_high_lanes(Reg a, Reg b) {
    return _mm256_permute2x128_si256(a, b, 0x31);
  }
  LOX_OP void store_halves(uint8_t *low, uint8_t *high, Reg v) {
    _mm_storeu_si128(reinterpret_cast<__m128i *>(low),
                     _mm256_castsi256_si128(v));
    _mm_storeu_si128(reinterpret_cast<__m128i *>(high),
                     _mm256_extracti128_si256(v, 1));
  }
};

// Which pixels are where, by Order:
//           a, low half   a, high half   b
//   kBytes  0..7          16..23         8..15, 24..31
//   kWords  0..7          8..15          as a, 16 further
//   kQuads  0..3, 8..11   4..7, 12..15   as a, 16 further
struct Avx2 : X86Rgb<Avx2Register> {
  using R = Avx2Register;

  LOX_OP __m128i load_16(const uint8_t *p) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i *>(p));
  }
  // The same 16 bytes in both lanes.
  LOX_OP Reg load_twice(const uint8_t *p) {
    return R::broadcast128(load_16(p));
  }

  // Of 16 bytes in both lanes, those of the lane's pixels, each in an element.
  template <Order O>
  LOX_OP Reg pick_bytes(Reg twice) {
    static_assert(O != Order::kBytes);
    const Reg quads = _mm256_setr_epi8(
        0, -1, 1, -1, 2, -1, 3, -1, 8, -1, 9, -1, 10, -1, 11, -1,  //
        4, -1, 5, -1, 6, -1, 7, -1, 12, -1, 13, -1, 14, -1, 15, -1);
    const Reg words = _mm256_setr_epi8(
        0, -1, 1, -1, 2, -1, 3, -1, 4, -1, 5, -1, 6, -1, 7, -1,  //
        8, -1, 9, -1, 10, -1, 11, -1, 12, -1, 13, -1, 14, -1, 15, -1);
    return R::shuffle8(twice, O == Order::kQuads ? quads : words);
  }
  // Of 8 pairs in both lanes, those of the lane's pixels, each twice.
  template <Order O>
  LOX_OP Reg pick_pairs(Reg twice) {
    static_assert(O != Order::kBytes);
    const Reg quads = _mm256_setr_epi8(
        0, 1, 0, 1, 2, 3, 2, 3, 8, 9, 8, 9, 10, 11, 10, 11,  //
        4, 5, 4, 5, 6, 7, 6, 7, 12, 13, 12, 13, 14, 15, 14, 15);
    const Reg words = _mm256_setr_epi8(
        0, 1, 0, 1, 2, 3, 2, 3, 4, 5, 4, 5, 6, 7, 6, 7,  //
        8, 9, 8, 9, 10, 11, 10, 11, 12, 13, 12, 13, 14, 15, 14, 15);
    return R::shuffle8(twice, O == Order::kQuads ? quads : words);
  }

  template <Order O>
  LOX_OP U8 load(const uint8_t *p) {
    if constexpr (O == Order::kBytes) {
      return widen(R::load(p));
    } else {
      return {pick_bytes<O>(load_twice(p)), pick_bytes<O>(load_twice(p + 16))};
    }
  }
  template <Order O>
  LOX_OP Pairs load_pairs(const uint8_t *p) {
    if constexpr (O == Order::kBytes) {
      return double_pairs(R::load(p));
    } else {
      return {pick_pairs<O>(load_twice(p)), pick_pairs<O>(load_twice(p + 16))};
    }
  }
  template <Order O>
  LOX_OP W16 load_elements(const uint8_t *p) {
    W16 v;
    if constexpr (O == Order::kBytes) {
      v = {R::load_lanes(p, 32), R::load_lanes(p + 16, 32)};
    } else {
      v = {R::load(p), R::load(p + 32)};
    }
    if constexpr (O == Order::kQuads) {
      v = {R::unpermute_quads(v.a), R::unpermute_quads(v.b)};
    }
    return v;
  }
  template <Order O>
  LOX_OP U8 load_words(const uint8_t *p) {
    return high_bytes(load_elements<O>(p));
  }
  template <Order O>
  LOX_OP Pairs load_word_pairs(const uint8_t *p) {
    const Reg pairs =
        R::permute_quads(pack_high_bytes(R::load(p), R::load(p + 32)));
    if constexpr (O == Order::kBytes) {
      return double_pairs(pairs);
    } else {
      return {pick_pairs<O>(R::interleave_low_lanes(pairs, pairs)),
              pick_pairs<O>(R::interleave_high_lanes(pairs, pairs))};
    }
  }
  template <Order O>
  LOX_OP Pairs load_interleave(const uint8_t *first, const uint8_t *second) {
    const Reg f = load_twice(first);
    const Reg s = load_twice(second);
    const Reg low = R::unpack_low8(f, s);
    const Reg high = R::unpack_high8(f, s);
    if constexpr (O == Order::kBytes) {
      return double_pairs(_mm256_blend_epi32(low, high, 0xF0));
    } else {
      return {pick_pairs<O>(low), pick_pairs<O>(high)};
    }
  }
  template <Order O>
  LOX_OP WPairs load_interleave_wide(const uint8_t *first,
                                     const uint8_t *second) {
    if constexpr (O == Order::kBytes) {
      return interleave(R::load(first), R::load(second));
    } else {
      // The first in the low bytes as it is loaded, the second moved above.
      const U8 f = load<O>(first);
      const U8 s = load<O>(second);
      return {R::bit_or(f.a, R::shift_left16<8>(s.a)),
              R::bit_or(f.b, R::shift_left16<8>(s.b))};
    }
  }
  template <Order O, int kLuma>
  LOX_OP void load_422(const uint8_t *p, U8 &luma, Pairs &pairs) {
    if constexpr (O == Order::kQuads) {
      split_422<kLuma>(even_and_odd_quarters(p), even_and_odd_quarters(p + 32),
                       luma, pairs);
    } else if constexpr (O == Order::kWords) {
      split_422<kLuma>(R::load(p), R::load(p + 32), luma, pairs);
    } else {
      split_422<kLuma>(R::load_lanes(p, 32), R::load_lanes(p + 16, 32), luma,
                       pairs);
    }
  }
  // Of 32 bytes, the quarters 0 and 2, then 1 and 3: those in the middle change
  // places, and both lanes of the middle have them so. Shuffles nothing.
  LOX_OP Reg even_and_odd_quarters(const uint8_t *p) {
    return _mm256_blend_epi32(R::load(p), load_twice(p + 8), 0x3C);
  }

  template <bool kStream>
  LOX_OP void store3(uint8_t *p, Bytes a, Bytes b, Bytes c) {
    const Three t = interleave3(a.v, b.v, c.v);
    R::store<kStream>(p, _mm256_permute2x128_si256(t.v0, t.v1, 0x20));
    R::store<kStream>(p + 32, _mm256_permute2x128_si256(t.v2, t.v0, 0x30));
    R::store<kStream>(p + 64, _mm256_permute2x128_si256(t.v1, t.v2, 0x31));
  }
};

}  // namespace lox::LOX_SET
