// SPDX-License-Identifier: Apache-2.0
//
// The vector layer on SSE4.1: 16 pixels a step in two registers of 16-bit
// elements, pixels 0 to 7 and 8 to 15, whatever the order asked for.
#pragma once

#include "simd/x86_rgb.h"

namespace lox::LOX_SET {

struct Sse41Register {
  using Reg = __m128i;

  LOX_OP Reg load(const uint8_t *p) {
    return _mm_loadu_si128(reinterpret_cast<const Reg *>(p));
  }
  template <bool kStream>
  LOX_OP void store(uint8_t *p, Reg v) {
    if constexpr (kStream) {
      _mm_stream_si128(reinterpret_cast<Reg *>(p), v);
    } else {
      _mm_storeu_si128(reinterpret_cast<Reg *>(p), v);
    }
  }
  LOX_OP Reg zero() { return _mm_setzero_si128(); }
  LOX_OP Reg fill16(int k) { return _mm_set1_epi16(static_cast<short>(k)); }
  LOX_OP Reg broadcast128(__m128i v) { return v; }

  LOX_OP Reg add16(Reg a, Reg b) { return _mm_add_epi16(a, b); }
  LOX_OP Reg add_saturating_signed16(Reg a, Reg b) {
    return _mm_adds_epi16(a, b);
  }
  LOX_OP Reg sub16(Reg a, Reg b) { return _mm_sub_epi16(a, b); }
  LOX_OP Reg add8(Reg a, Reg b) { return _mm_add_epi8(a, b); }
  LOX_OP Reg add_saturating_unsigned8(Reg a, Reg b) {
    return _mm_adds_epu8(a, b);
  }
  LOX_OP Reg sub_saturating_unsigned8(Reg a, Reg b) {
    return _mm_subs_epu8(a, b);
  }
  LOX_OP Reg add_saturating_signed8(Reg a, Reg b) {
    return _mm_adds_epi8(a, b);
  }
  LOX_OP Reg min_unsigned8(Reg a, Reg b) { return _mm_min_epu8(a, b); }
  LOX_OP Reg min_signed8(Reg a, Reg b) { return _mm_min_epi8(a, b); }
  LOX_OP Reg max_signed8(Reg a, Reg b) { return _mm_max_epi8(a, b); }
  LOX_OP Reg abs8(Reg v) { return _mm_abs_epi8(v); }
  // All bits of the bytes that are negative.
  LOX_OP Reg negative8(Reg v) { return _mm_cmpgt_epi8(zero(), v); }
  // A bit for each byte: set where it is zero.
  LOX_OP uint32_t zero_bytes(Reg v) {
    return static_cast<uint32_t>(_mm_movemask_epi8(_mm_cmpeq_epi8(v, zero())));
  }
  LOX_OP Reg multiply_high16(Reg a, Reg b) { return _mm_mulhi_epu16(a, b); }
  LOX_OP Reg multiply_add8(Reg a, Reg b) { return _mm_maddubs_epi16(a, b); }
  LOX_OP Reg bit_and(Reg a, Reg b) { return _mm_and_si128(a, b); }
  // The bits of b where the mask has none.
  LOX_OP Reg bit_and_not(Reg mask, Reg b) { return _mm_andnot_si128(mask, b); }
  LOX_OP Reg bit_or(Reg a, Reg b) { return _mm_or_si128(a, b); }
  LOX_OP Reg exclusive_or(Reg a, Reg b) { return _mm_xor_si128(a, b); }
  template <int S>
  LOX_OP Reg shift_left16(Reg v) {
    return _mm_slli_epi16(v, S);
  }
  template <int S>
  LOX_OP Reg shift_right16(Reg v) {
    return _mm_srli_epi16(v, S);
  }
  template <int S>
  LOX_OP Reg shift_right_signed16(Reg v) {
    return _mm_srai_epi16(v, S);
  }
  template <int S>
  LOX_OP Reg narrowing_shift16(Reg v) {
    return S == 0 ? v : _mm_srai_epi16(v, S);
  }
  LOX_OP Reg pack_unsigned16(Reg a, Reg b) { return _mm_packus_epi16(a, b); }
  LOX_OP Reg unpack_low8(Reg a, Reg b) { return _mm_unpacklo_epi8(a, b); }
  LOX_OP Reg unpack_high8(Reg a, Reg b) { return _mm_unpackhi_epi8(a, b); }
  LOX_OP Reg unpack_low16(Reg a, Reg b) { return _mm_unpacklo_epi16(a, b); }
  LOX_OP Reg unpack_high16(Reg a, Reg b) { return _mm_unpackhi_epi16(a, b); }
  LOX_OP Reg unpack_low32(Reg a, Reg b) { return _mm_unpacklo_epi32(a, b); }
  LOX_OP Reg unpack_high32(Reg a, Reg b) { return _mm_unpackhi_epi32(a, b); }
  LOX_OP Reg unpack_low64(Reg a, Reg b) { return _mm_unpacklo_epi64(a, b); }
  LOX_OP Reg unpack_high64(Reg a, Reg b) { return _mm_unpackhi_epi64(a, b); }
  LOX_OP Reg shuffle8(Reg v, Reg places) { return _mm_shuffle_epi8(v, places); }
  // Bytes of b where the mask has its high bit, else of a.
  LOX_OP Reg select8(Reg a, Reg b, Reg mask) {
    return _mm_blendv_epi8(a, b, mask);
  }

  LOX_OP Reg fill32(int k) { return _mm_set1_epi32(k); }
  LOX_OP Reg add32(Reg a, Reg b) { return _mm_add_epi32(a, b); }
  LOX_OP Reg multiply_low16(Reg a, Reg b) { return _mm_mullo_epi16(a, b); }
  template <int S>
  LOX_OP Reg shift_left32(Reg v) {
    return _mm_slli_epi32(v, S);
  }
  template <int S>
  LOX_OP Reg shift_right32(Reg v) {
    return _mm_srli_epi32(v, S);
  }
  LOX_OP bool any_bit(Reg v) { return _mm_testz_si128(v, v) == 0; }
  LOX_OP Reg sub8(Reg a, Reg b) { return _mm_sub_epi8(a, b); }
  LOX_OP Reg average8(Reg a, Reg b) { return _mm_avg_epu8(a, b); }
  LOX_OP Reg multiply_add16(Reg a, Reg b) { return _mm_madd_epi16(a, b); }
  LOX_OP Reg min_signed16(Reg a, Reg b) { return _mm_min_epi16(a, b); }
  LOX_OP Reg min_unsigned16(Reg a, Reg b) { return _mm_min_epu16(a, b); }
  LOX_OP Reg max_unsigned16(Reg a, Reg b) { return _mm_max_epu16(a, b); }
  LOX_OP Reg sub_saturating_unsigned16(Reg a, Reg b) {
    return _mm_subs_epu16(a, b);
  }
  LOX_OP Reg max_signed16(Reg a, Reg b) { return _mm_max_epi16(a, b); }
  template <int S>
  LOX_OP Reg shift_right_signed32(Reg v) {
    return _mm_srai_epi32(v, S);
  }
  LOX_OP Reg pack_signed32(Reg a, Reg b) { return _mm_packs_epi32(a, b); }
  LOX_OP Reg pack_unsigned32(Reg a, Reg b) { return _mm_packus_epi32(a, b); }
  // The even 32-bit elements of a, then those of b.
  LOX_OP Reg even32(Reg a, Reg b) {
    return _mm_castps_si128(
        _mm_shuffle_ps(_mm_castsi128_ps(a), _mm_castsi128_ps(b), 0x88));
  }
  LOX_OP Reg odd32(Reg a, Reg b) {
    return _mm_castps_si128(
        _mm_shuffle_ps(_mm_castsi128_ps(a), _mm_castsi128_ps(b), 0xDD));
  }
  LOX_OP Reg sub32(Reg a, Reg b) { return _mm_sub_epi32(a, b); }
  LOX_OP Reg min_signed32(Reg a, Reg b) { return _mm_min_epi32(a, b); }
  using Shift = Reg;
  LOX_OP Shift shift(int by) { return _mm_cvtsi32_si128(by); }
  LOX_OP Reg shift_right_signed32_by(Reg v, Shift by) {
    return _mm_sra_epi32(v, by);
  }
  LOX_OP Reg pack_signed16(Reg a, Reg b) { return _mm_packs_epi16(a, b); }
  // Even words of a, odd ones of b.
  LOX_OP Reg select_odd16(Reg a, Reg b) { return _mm_blend_epi16(a, b, 0xAA); }
  // 16 bytes in every lane.
  LOX_OP Reg load_broadcast128(const uint8_t *p) { return load(p); }
  // 16 of the bytes of low and then high, from byte K on.
  template <int K>
  LOX_OP Reg bytes_from(Reg low, Reg high) {
    return _mm_alignr_epi8(high, low, K);
  }
  // 16 bytes in each lane, from every second offset.
  LOX_OP Reg load_groups(const uint8_t *p, const int16_t *offsets) {
    return load(p + offsets[0]);
  }
  // The lanes of four registers, 64 bytes together, which are 128 apart; and of
  // lanes stored without gaps and loaded again, those of each register.
  LOX_OP void store_lanes(uint8_t *p, Reg a, Reg b, Reg c, Reg d) {
    store<false>(p, a);
    store<false>(p + 16, b);
    store<false>(p + 32, c);
    store<false>(p + 48, d);
  }
  LOX_OP void transpose_lanes(Reg &, Reg &, Reg &, Reg &) {}
  // Four rows that lie one behind the other.
  LOX_OP void store_rows(uint8_t *p, ptrdiff_t stride, Reg v) {
    _mm_storeu_si32(p, v);
    _mm_storeu_si32(p + stride, _mm_shuffle_epi32(v, 0x55));
    _mm_storeu_si32(p + 2 * stride, _mm_unpackhi_epi64(v, v));
    _mm_storeu_si32(p + 3 * stride, _mm_shuffle_epi32(v, 0xFF));
  }
  // One lane: nothing to put right.
  LOX_OP Reg load_lanes(const uint8_t *p, ptrdiff_t) { return load(p); }
  LOX_OP Reg unpermute_quads(Reg v) { return v; }
  LOX_OP Reg permute_words(Reg v) { return v; }
  LOX_OP Reg permute_dwords(Reg v) { return v; }
  LOX_OP Reg unpermute_dwords(Reg v) { return v; }
  LOX_OP Reg permute_quads(Reg v) { return v; }
  LOX_OP Reg interleave_low_lanes(Reg a, Reg) { return a; }
  LOX_OP Reg interleave_high_lanes(Reg, Reg b) { return b; }
  LOX_OP void store_halves(uint8_t *low, uint8_t *high, Reg v) {
    _mm_storel_epi64(reinterpret_cast<Reg *>(low), v);
    _mm_storel_epi64(reinterpret_cast<Reg *>(high), _mm_unpackhi_epi64(v, v));
  }
};

struct Sse41 : X86Rgb<Sse41Register> {
  using R = Sse41Register;

  template <Order>
  LOX_OP U8 load(const uint8_t *p) {
    return widen(R::load(p));
  }
  template <Order>
  LOX_OP Pairs load_pairs(const uint8_t *p) {
    return double_pairs(R::load(p));
  }
  template <Order>
  LOX_OP U8 load_words(const uint8_t *p) {
    const Reg high = R::fill16(0xFF00);
    return {R::bit_and(R::load(p), high), R::bit_and(R::load(p + 16), high)};
  }
  template <Order>
  LOX_OP Pairs load_word_pairs(const uint8_t *p) {
    return double_pairs(pack_high_bytes(R::load(p), R::load(p + 16)));
  }
  LOX_OP __m128i load_8(const uint8_t *p) {
    return _mm_loadl_epi64(reinterpret_cast<const __m128i *>(p));
  }
  template <Order>
  LOX_OP Pairs load_interleave(const uint8_t *first, const uint8_t *second) {
    return double_pairs(_mm_unpacklo_epi8(load_8(first), load_8(second)));
  }
  template <Order>
  LOX_OP WPairs load_interleave_wide(const uint8_t *first,
                                     const uint8_t *second) {
    return interleave(R::load(first), R::load(second));
  }
  template <Order, int kLuma>
  LOX_OP void load_422(const uint8_t *p, U8 &luma, Pairs &pairs) {
    split_422<kLuma>(R::load(p), R::load(p + 16), luma, pairs);
  }

  template <bool kStream>
  LOX_OP void store3(uint8_t *p, Bytes a, Bytes b, Bytes c) {
    const Three t = interleave3(a.v, b.v, c.v);
    R::store<kStream>(p, t.v0);
    R::store<kStream>(p + 16, t.v1);
    R::store<kStream>(p + 32, t.v2);
  }
};

}  // namespace lox::LOX_SET
