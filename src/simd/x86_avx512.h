// SPDX-License-Identifier: Apache-2.0
//
// The vector layer on AVX-512 (F, BW, DQ and VL): 64 pixels a step in two
// registers of 16-bit elements. As on AVX2, packing and interleaving work
// inside 128-bit lanes, of which there are four, and the loads put each pixel
// where its store wants it (Order).
#pragma once

#include "simd/x86_rgb.h"

namespace lox::LOX_SET {

// Four 16-bit places as one of 64 bits.
#define LOX_WORDS(a, b, c, d) \
  (int64_t{a} | int64_t{b} << 16 | int64_t{c} << 32 | int64_t{d} << 48)
#define LOX_EVERY_8TH_WORD(first) \
  LOX_WORDS(first, first + 8, first + 16, first + 24)

struct Avx512Register {
  using Reg = __m512i;
#define LOX_MM(name) _mm512_##name
#define LOX_BITS(name) _mm512_##name##_si512
#include "simd/x86_register.h"

  LOX_OP Reg broadcast128(__m128i v) { return _mm512_broadcast_i32x4(v); }

  LOX_OP bool any_bit(Reg v) { return _mm512_test_epi32_mask(v, v) != 0; }
  // All bits of the bytes that are negative.
  LOX_OP Reg negative8(Reg v) {
    return _mm512_movm_epi8(_mm512_movepi8_mask(v));
  }
  // A bit for each byte: set where it is zero.
  LOX_OP uint64_t zero_bytes(Reg v) { return _mm512_testn_epi8_mask(v, v); }
  // Bytes of b where the mask has all bits, of a where it has none.
  LOX_OP Reg select8(Reg a, Reg b, Reg mask) {
    return _mm512_ternarylogic_epi32(mask, b, a, 0xCA);
  }
  LOX_OP Reg even32(Reg a, Reg b) {
    return _mm512_castps_si512(_mm512_shuffle_ps(_mm512_castsi512_ps(a),
                                                 _mm512_castsi512_ps(b), 0x88));
  }
  LOX_OP Reg odd32(Reg a, Reg b) {
    return _mm512_castps_si512(_mm512_shuffle_ps(_mm512_castsi512_ps(a),
                                                 _mm512_castsi512_ps(b), 0xDD));
  }
  // A shift by element is one operation, by one number for all it is two.
  using Shift = Reg;
  LOX_OP Shift shift(int by) { return fill32(by); }
  LOX_OP Reg shift_right_signed32_by(Reg v, Shift by) {
    return _mm512_srav_epi32(v, by);
  }
  // Even words of a, odd ones of b.
  LOX_OP Reg select_odd16(Reg a, Reg b) {
    return _mm512_mask_blend_epi16(0xAAAAAAAA, a, b);
  }
  // 16 bytes in every lane.
  LOX_OP Reg load_broadcast128(const uint8_t *p) {
    return broadcast128(load_16(p));
  }
  // Of lanes stored without gaps and loaded again, those of each register.
  LOX_OP void transpose_lanes(Reg &a, Reg &b, Reg &c, Reg &d) {
    const Reg ab_low = _mm512_shuffle_i32x4(a, b, 0x44);
    const Reg ab_high = _mm512_shuffle_i32x4(a, b, 0xEE);
    const Reg cd_low = _mm512_shuffle_i32x4(c, d, 0x44);
    const Reg cd_high = _mm512_shuffle_i32x4(c, d, 0xEE);
    a = _mm512_shuffle_i32x4(ab_low, cd_low, 0x88);
    b = _mm512_shuffle_i32x4(ab_low, cd_low, 0xDD);
    c = _mm512_shuffle_i32x4(ab_high, cd_high, 0x88);
    d = _mm512_shuffle_i32x4(ab_high, cd_high, 0xDD);
  }
  // A dword of each of four registers in turn: 64 bytes of each lane, which are
  // 128 apart.
  LOX_OP void store_dwords_in_turn(uint8_t *p, Reg a, Reg b, Reg c, Reg d) {
    const Reg low = _mm512_setr_epi32(0, 16, 1, 17, 2, 18, 3, 19, 4, 20, 5, 21,
                                      6, 22, 7, 23);
    const Reg high = _mm512_setr_epi32(8, 24, 9, 25, 10, 26, 11, 27, 12, 28, 13,
                                       29, 14, 30, 15, 31);
    store_qwords_in_turn(p, _mm512_permutex2var_epi32(a, low, b),
                         _mm512_permutex2var_epi32(c, low, d));
    store_qwords_in_turn(p + 256, _mm512_permutex2var_epi32(a, high, b),
                         _mm512_permutex2var_epi32(c, high, d));
  }
  LOX_OP void store_qwords_in_turn(uint8_t *p, Reg ab, Reg cd) {
    const Reg low = _mm512_setr_epi64(0, 8, 1, 9, 2, 10, 3, 11);
    const Reg high = _mm512_setr_epi64(4, 12, 5, 13, 6, 14, 7, 15);
    _mm512_storeu_si512(p, _mm512_permutex2var_epi64(ab, low, cd));
    _mm512_storeu_si512(p + 128, _mm512_permutex2var_epi64(ab, high, cd));
  }
  // Four rows that lie one behind the other.
  LOX_OP void store_rows(uint8_t *p, ptrdiff_t stride, Reg v) {
    store_16(p, _mm512_castsi512_si128(v));
    store_16(p + stride, _mm512_extracti32x4_epi32(v, 1));
    store_16(p + 2 * stride, _mm512_extracti32x4_epi32(v, 2));
    store_16(p + 3 * stride, _mm512_extracti32x4_epi32(v, 3));
  }
  LOX_OP void store_16(uint8_t *p, __m128i v) {
    _mm_storeu_si128(reinterpret_cast<__m128i *>(p), v);
  }

  LOX_OP __m128i load_16(const uint8_t *p) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i *>(p));
  }
  LOX_OP Reg load_lanes(const uint8_t *p, ptrdiff_t step) {
    Reg v = _mm512_castsi128_si512(load_16(p));
    v = _mm512_inserti32x4(v, load_16(p + step), 1);
    v = _mm512_inserti32x4(v, load_16(p + 2 * step), 2);
    return _mm512_inserti32x4(v, load_16(p + 3 * step), 3);
  }
  LOX_OP void store_lanes(uint8_t *p, ptrdiff_t step, Reg v) {
    const auto store = [&](ptrdiff_t lane, __m128i bytes) {
      _mm_storeu_si128(reinterpret_cast<__m128i *>(p + lane * step), bytes);
    };
    store(0, _mm512_castsi512_si128(v));
    store(1, _mm512_extracti32x4_epi32(v, 1));
    store(2, _mm512_extracti32x4_epi32(v, 2));
    store(3, _mm512_extracti32x4_epi32(v, 3));
  }
  // 16 bytes in each lane, from every second offset.
  LOX_OP Reg load_groups(const uint8_t *p, const int16_t *offsets) {
    Reg v = _mm512_castsi128_si512(load_16(p + offsets[0]));
    v = _mm512_inserti32x4(v, load_16(p + offsets[2]), 1);
    v = _mm512_inserti32x4(v, load_16(p + offsets[4]), 2);
    return _mm512_inserti32x4(v, load_16(p + offsets[6]), 3);
  }
  LOX_OP Reg unpermute_quads(Reg v) {
    return _mm512_permutexvar_epi64(_mm512_setr_epi64(0, 4, 1, 5, 2, 6, 3, 7),
                                    v);
  }
  LOX_OP Reg permute_quads(Reg v) {
    return _mm512_permutexvar_epi64(_mm512_setr_epi64(0, 2, 4, 6, 1, 3, 5, 7),
                                    v);
  }
  // Four lanes of four: its own reverse.
  LOX_OP Reg permute_dwords(Reg v) {
    return _mm512_permutexvar_epi32(
        _mm512_setr_epi32(0, 4, 8, 12, 1, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11, 15),
        v);
  }
  LOX_OP Reg unpermute_dwords(Reg v) { return permute_dwords(v); }
  // Each lane's first four words and then its second four, a word of each lane
  // in turn.
  LOX_OP Reg permute_words(Reg v) {
    return _mm512_permutexvar_epi16(
        _mm512_setr_epi64(LOX_EVERY_8TH_WORD(0), LOX_EVERY_8TH_WORD(1),
                          LOX_EVERY_8TH_WORD(2), LOX_EVERY_8TH_WORD(3),
                          LOX_EVERY_8TH_WORD(4), LOX_EVERY_8TH_WORD(5),
                          LOX_EVERY_8TH_WORD(6), LOX_EVERY_8TH_WORD(7)),
        v);
  }
  LOX_OP Reg permute_words_by(Reg v, Reg places) {
    return _mm512_permutexvar_epi16(places, v);
  }
  // The lanes of a and b in turn: the lower two of each, the upper two.
  LOX_OP Reg interleave_low_lanes(Reg a, Reg b) {
    return _mm512_permutex2var_epi64(
        a, _mm512_setr_epi64(0, 1, 8, 9, 2, 3, 10, 11), b);
  }
  LOX_OP Reg interleave_high_lanes(Reg a, Reg b) {
    return _mm512_permutex2var_epi64(
        a, _mm512_setr_epi64(4, 5, 12, 13, 6, 7, 14, 15), b);
  }
  LOX_OP void store_halves(uint8_t *low, uint8_t *high, Reg v) {
    _mm256_storeu_si256(reinterpret_cast<__m256i *>(low),
                        _mm512_castsi512_si256(v));
    _mm256_storeu_si256(reinterpret_cast<__m256i *>(high),
                        _mm512_extracti64x4_epi64(v, 1));
  }
};

// Which pixels are where in register a, by Order, for lane k of 0..3; with what
// is added for register b:
//   kBytes  16k..16k+7               8
//   kWords  8k..8k+7                 32
//   kQuads  4k..4k+3, 16+4k..19+4k   32
struct Avx512 : X86Rgb<Avx512Register> {
  using R = Avx512Register;

  // Rearranges 64 bytes so that the low half of each lane is what register a
  // has in this lane, and the high half what b has.
  template <Order O>
  LOX_OP Reg spread(Reg v) {
    if constexpr (O == Order::kBytes) {
      return v;
    } else if constexpr (O == Order::kWords) {
      return R::unpermute_quads(v);
    } else {
      return R::permute_dwords(v);
    }
  }
  template <Order O>
  LOX_OP U8 load(const uint8_t *p) {
    return widen(spread<O>(R::load(p)));
  }
  template <Order O>
  LOX_OP Pairs load_pairs(const uint8_t *p) {
    return double_pairs(spread<O>(R::load(p)));
  }
  // 32 pairs: the first and second bytes to where `spread` wants them.
  template <Order O>
  LOX_OP Reg spread_half(const uint8_t *p) {
    const Reg v = _mm512_castsi256_si512(
        _mm256_loadu_si256(reinterpret_cast<const __m256i *>(p)));
    if constexpr (O == Order::kBytes) {
      return _mm512_permutexvar_epi64(_mm512_setr_epi64(0, 0, 1, 1, 2, 2, 3, 3),
                                      v);
    } else if constexpr (O == Order::kWords) {
      return _mm512_permutexvar_epi32(
          _mm512_setr_epi32(0, 4, 0, 4, 1, 5, 1, 5, 2, 6, 2, 6, 3, 7, 3, 7), v);
    } else {
      constexpr int64_t kPart0 = LOX_WORDS(0, 4, 8, 12);
      constexpr int64_t kNext = LOX_WORDS(1, 1, 1, 1);
      return _mm512_permutexvar_epi16(
          _mm512_setr_epi64(kPart0, 0, kPart0 + kNext, 0, kPart0 + 2 * kNext, 0,
                            kPart0 + 3 * kNext, 0),
          v);
    }
  }
  template <Order O>
  LOX_OP Pairs load_interleave(const uint8_t *first, const uint8_t *second) {
    return double_pairs(
        R::unpack_low8(spread_half<O>(first), spread_half<O>(second)));
  }
  template <Order O>
  LOX_OP WPairs load_interleave_wide(const uint8_t *first,
                                     const uint8_t *second) {
    return interleave(spread<O>(R::load(first)), spread<O>(R::load(second)));
  }

  // 64 words to the 16-bit elements of two registers.
  template <Order O>
  LOX_OP void load_64_words(const uint8_t *p, Reg &a, Reg &b) {
    const Reg low = R::load(p);
    const Reg high = R::load(p + 64);
    if constexpr (O == Order::kBytes) {
      a = _mm512_shuffle_i32x4(low, high, 0x88);
      b = _mm512_shuffle_i32x4(low, high, 0xDD);
    } else if constexpr (O == Order::kWords) {
      a = low;
      b = high;
    } else {
      a = R::unpermute_quads(low);
      b = R::unpermute_quads(high);
    }
  }
  template <Order O, int kLuma>
  LOX_OP void load_422(const uint8_t *p, U8 &luma, Pairs &pairs) {
    Reg a;
    Reg b;
    load_64_words<O>(p, a, b);
    split_422<kLuma>(a, b, luma, pairs);
  }
  template <Order O>
  LOX_OP W16 load_elements(const uint8_t *p) {
    W16 v;
    load_64_words<O>(p, v.a, v.b);
    return v;
  }
  template <Order O>
  LOX_OP U8 load_words(const uint8_t *p) {
    return high_bytes(load_elements<O>(p));
  }
  template <Order O>
  LOX_OP Pairs load_word_pairs(const uint8_t *p) {
    return double_pairs(spread<O>(
        R::permute_quads(pack_high_bytes(R::load(p), R::load(p + 64)))));
  }

  // Of interleave3's registers, each lane of the three in turn.
  template <bool kStream>
  LOX_OP void store3(uint8_t *p, Bytes a, Bytes b, Bytes c) {
    const Three t = interleave3(a.v, b.v, c.v);
    const Reg v01 = R::interleave_low_lanes(t.v0, t.v1);
    R::store<kStream>(
        p, _mm512_permutex2var_epi64(
               v01, _mm512_setr_epi64(0, 1, 2, 3, 8, 9, 4, 5), t.v2));
    const Reg v12 = _mm512_permutex2var_epi64(
        t.v1, _mm512_setr_epi64(2, 3, 10, 11, 4, 5, 12, 13), t.v2);
    R::store<kStream>(
        p + 64, _mm512_permutex2var_epi64(
                    v12, _mm512_setr_epi64(0, 1, 2, 3, 12, 13, 4, 5), t.v0));
    const Reg v20 = _mm512_permutex2var_epi64(
        t.v2, _mm512_setr_epi64(4, 5, 14, 15, 6, 7, 6, 7), t.v0);
    R::store<kStream>(
        p + 128, _mm512_permutex2var_epi64(
                     v20, _mm512_setr_epi64(0, 1, 2, 3, 14, 15, 4, 5), t.v1));
  }
};

#undef LOX_EVERY_8TH_WORD
#undef LOX_WORDS

}  // namespace lox::LOX_SET
