// SPDX-License-Identifier: Apache-2.0
//
// The vector layer on SSE4.1: 16 pixels a step in two registers of 16-bit
// elements, pixels 0 to 7 and 8 to 15, whatever the order asked for.
#pragma once

#include "simd/x86_rgb.h"

namespace lox::LOX_SET {

struct Sse41Register {
  using Reg = __m128i;
#define LOX_MM(name) _mm_##name
#define LOX_BITS(name) _mm_##name##_si128
#include "simd/x86_register.h"

  LOX_OP Reg broadcast128(__m128i v) { return v; }

  // All bits of the bytes that are negative.
  LOX_OP Reg negative8(Reg v) { return _mm_cmpgt_epi8(zero(), v); }
  // A bit for each byte: set where it is zero.
  LOX_OP uint32_t zero_bytes(Reg v) {
    return static_cast<uint32_t>(_mm_movemask_epi8(_mm_cmpeq_epi8(v, zero())));
  }
  // Bytes of b where the mask has its high bit, else of a.
  LOX_OP Reg select8(Reg a, Reg b, Reg mask) {
    return _mm_blendv_epi8(a, b, mask);
  }

  LOX_OP bool any_bit(Reg v) { return _mm_testz_si128(v, v) == 0; }
  // The even 32-bit elements of a, then those of b.
  LOX_OP Reg even32(Reg a, Reg b) {
    return _mm_castps_si128(
        _mm_shuffle_ps(_mm_castsi128_ps(a), _mm_castsi128_ps(b), 0x88));
  }
  LOX_OP Reg odd32(Reg a, Reg b) {
    return _mm_castps_si128(
        _mm_shuffle_ps(_mm_castsi128_ps(a), _mm_castsi128_ps(b), 0xDD));
  }
  using Shift = Reg;
  LOX_OP Shift shift(int by) { return _mm_cvtsi32_si128(by); }
  LOX_OP Reg shift_right_signed32_by(Reg v, Shift by) {
    return _mm_sra_epi32(v, by);
  }
  // Even words of a, odd ones of b.
  LOX_OP Reg select_odd16(Reg a, Reg b) { return _mm_blend_epi16(a, b, 0xAA); }
  // 16 bytes in every lane.
  LOX_OP Reg load_broadcast128(const uint8_t *p) { return load(p); }
  // 16 bytes in each lane, from every second offset.
  LOX_OP Reg load_groups(const uint8_t *p, const int16_t *offsets) {
    return load(p + offsets[0]);
  }
  LOX_OP void store_lanes(uint8_t *p, Reg a, Reg b, Reg c, Reg d) {
    store<false>(p, a);
    store<false>(p + 16, b);
    store<false>(p + 32, c);
    store<false>(p + 48, d);
  }
  // Of lanes stored without gaps and loaded again, those of each register.
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
  LOX_OP void store_lanes(uint8_t *p, ptrdiff_t, Reg v) { store<false>(p, v); }
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

  // To double what is made of pairs is less work than to make it of each twice.
  using Pairs = SharedPairs;

  template <Order>
  LOX_OP U8 load(const uint8_t *p) {
    return {_mm_cvtepu8_epi16(load_8(p)), _mm_cvtepu8_epi16(load_8(p + 8))};
  }
  template <Order>
  LOX_OP Pairs load_pairs(const uint8_t *p) {
    return {R::load(p)};
  }
  template <Order>
  LOX_OP W16 load_elements(const uint8_t *p) {
    return {R::load(p), R::load(p + 16)};
  }
  template <Order O>
  LOX_OP U8 load_words(const uint8_t *p) {
    return high_bytes(load_elements<O>(p));
  }
  template <Order>
  LOX_OP Pairs load_word_pairs(const uint8_t *p) {
    return {pack_high_bytes(R::load(p), R::load(p + 16))};
  }
  LOX_OP __m128i load_8(const uint8_t *p) {
    return _mm_loadl_epi64(reinterpret_cast<const __m128i *>(p));
  }
  template <Order>
  LOX_OP Pairs load_interleave(const uint8_t *first, const uint8_t *second) {
    return {_mm_unpacklo_epi8(load_8(first), load_8(second))};
  }
  template <Order>
  LOX_OP WPairs load_interleave_wide(const uint8_t *first,
                                     const uint8_t *second) {
    return interleave(R::load(first), R::load(second));
  }
  template <Order, int kLuma>
  LOX_OP void load_422(const uint8_t *p, U8 &luma, PackedPairs &pairs) {
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
