// SPDX-License-Identifier: Apache-2.0
//
// Tone mapping on NEON: 16-bit elements in the order of memory, so that table
// look-ups can come between any two stages.
#pragma once

#include "hdr/tone_rule.h"
#include "simd/simd.h"

namespace lox::LOX_SET {

template <class V>
struct ToneOps {
  using Planes = PlaneOps<V>;
  // Pixels of a group: two vectors of words, one of bytes.
  static constexpr int n = 16;
  // Look-ups that registers hold at a time.
  static constexpr int kLookUps = 8;
  using Words = int16x8_t;
  struct Chroma {
    int16x8_t u, v;
  };

  LOX_OP Words as_signed(uint16x8_t v) { return vreinterpretq_s16_u16(v); }
  LOX_OP uint16x8_t as_unsigned(Words v) { return vreinterpretq_u16_s16(v); }

  LOX_OP Words load(const uint16_t *p) { return as_signed(vld1q_u16(p)); }
  LOX_OP Words fill(int16_t v) { return vdupq_n_s16(v); }
  LOX_OP void store(uint16_t *p, Words v) { vst1q_u16(p, as_unsigned(v)); }

  // The larger of each element, as unsigned, of those that the mask keeps.
  LOX_OP Words max_kept(Words a, const uint16_t *p, Words mask) {
    return as_signed(
        vmaxq_u16(as_unsigned(a), as_unsigned(vandq_s16(load(p), mask))));
  }
  // Every second or every fourth element.
  LOX_OP Words every(int step) {
    return step == 2 ? vreinterpretq_s16_u32(vdupq_n_u32(0xFFFF))
                     : vreinterpretq_s16_u64(vdupq_n_u64(0xFFFF));
  }

  // Samples need not be aligned as words are.
  LOX_OP uint16x8_t words_at(const uint8_t *p) {
    return vreinterpretq_u16_u8(vld1q_u8(p));
  }
  LOX_OP Words low_10(const uint8_t *p) {
    return as_signed(vandq_u16(words_at(p), vdupq_n_u16(kMostCode)));
  }
  LOX_OP Words high_10(const uint8_t *p) {
    return as_signed(vshrq_n_u16(words_at(p), 6));
  }
  LOX_OP Chroma chroma_of_planes(const uint8_t *u, const uint8_t *v) {
    return {low_10(u), low_10(v)};
  }
  LOX_OP Chroma chroma_of_pairs(const uint8_t *p) {
    const uint16x8x2_t v = vuzpq_u16(words_at(p), words_at(p + 16));
    return {as_signed(vshrq_n_u16(v.val[0], 6)),
            as_signed(vshrq_n_u16(v.val[1], 6))};
  }
  // Each sample of half a group twice.
  template <int kHalf>
  LOX_OP Words twice(Words chroma) {
    return vzipq_s16(chroma, chroma).val[kHalf];
  }

  LOX_OP Words centre(Words chroma) {
    return vsubq_s16(vminq_s16(vmaxq_s16(chroma, vdupq_n_s16(kLeastChroma)),
                               vdupq_n_s16(kMostChroma)),
                     vdupq_n_s16(kNoChroma));
  }
  // round(4 k * factor / 2^31), the factor being of 2^29.
  template <Product P>
  LOX_OP Words product(Words k) {
    const int32x4_t factor = vdupq_n_s32(P.scaled(29));
    return vcombine_s16(
        vmovn_s32(vqrdmulhq_s32(vshll_n_s16(vget_low_s16(k), 2), factor)),
        vmovn_s32(vqrdmulhq_s32(vshll_n_s16(vget_high_s16(k), 2), factor)));
  }
  LOX_OP Words luma(Words y) {
    return product<kLuma>(
        vminq_s16(as_signed(vqsubq_u16(as_unsigned(y), vdupq_n_u16(kBlack))),
                  vdupq_n_s16(kWhite - kBlack)));
  }
  LOX_OP Words add(Words a, Words b) { return vaddq_s16(a, b); }
  // So that the sum of luma and this saturates where codes end.
  static constexpr int kCodeBias = 32767 - kMostCode;
  LOX_OP Words bias_chroma(Words chroma) {
    return vaddq_s16(chroma, vdupq_n_s16(kCodeBias));
  }
  LOX_OP Words to_code(Words y, Words biased) {
    return as_signed(
        vqsubq_u16(as_unsigned(vqaddq_s16(y, biased)), vdupq_n_u16(kCodeBias)));
  }

  struct Rgb {
    int16x8_t r, g, b;
  };
  LOX_OP Rgb combine(Words r, Words g, Words b) { return {r, g, b}; }
  template <Row3 K>
  LOX_OP int32x4_t sum(int16x4_t r, int16x4_t g, int16x4_t b) {
    int32x4_t v = vmull_s16(r, vdup_n_s16(K.r));
    v = vmlal_s16(v, g, vdup_n_s16(K.g));
    return vmlal_s16(v, b, vdup_n_s16(K.b));
  }
  template <Row3 K>
  LOX_OP Words mix(const Rgb &c) {
    return vmaxq_s16(
        vcombine_s16(vqshrn_n_s32(sum<K>(vget_low_s16(c.r), vget_low_s16(c.g),
                                         vget_low_s16(c.b)),
                                  8),
                     vqshrn_n_s32(sum<K>(vget_high_s16(c.r), vget_high_s16(c.g),
                                         vget_high_s16(c.b)),
                                  8)),
        vdupq_n_s16(0));
  }
  LOX_OP Words max(Words a, Words b) { return vmaxq_s16(a, b); }
  template <int S>
  LOX_OP Words shift_right(Words v) {
    return as_signed(vshrq_n_u16(as_unsigned(v), S));
  }
  LOX_OP void store_gain_index(uint16_t *p, Words m) {
    store(p, shift_right<7>(m));
  }
  // Between the entries of each pair, by bits 3 to 6 of m.
  LOX_OP Words gain(const uint16_t *pairs, Words m) {
    const uint16x8x2_t v = vld2q_u16(pairs);
    const int16x8_t first = as_signed(v.val[0]);
    const int16x8_t difference = vsubq_s16(as_signed(v.val[1]), first);
    const int16x8_t part = vandq_s16(vshlq_n_s16(m, 8), vdupq_n_s16(15 << 11));
    // The product is doubled.
    return vaddq_s16(first, vqdmulhq_s16(difference, part));
  }
  // The same where the entry for 0 is 0 and the others that count are `entry`.
  LOX_OP Words toe_gain(int entry, Words m) {
    const int16x8_t part = vminq_s16(shift_right<3>(m), vdupq_n_s16(16));
    return shift_right<4>(
        vmulq_s16(part, vdupq_n_s16(static_cast<int16_t>(entry))));
  }
  LOX_OP bool any_above(Words v, int limit) {
    const uint16x8_t over =
        vqsubq_u16(as_unsigned(v), vdupq_n_u16(static_cast<uint16_t>(limit)));
    const uint16x4_t both = vorr_u16(vget_low_u16(over), vget_high_u16(over));
    return vget_lane_u64(vreinterpret_u64_u16(both), 0) != 0;
  }
  LOX_OP Words brighten(Words c, Words gain) {
    const uint16x8_t a = as_unsigned(c);
    const uint16x8_t b = as_unsigned(gain);
    return as_signed(vminq_u16(
        vcombine_u16(
            vqshrn_n_u32(vmull_u16(vget_low_u16(a), vget_low_u16(b)), 11),
            vqshrn_n_u32(vmull_u16(vget_high_u16(a), vget_high_u16(b)), 11)),
        vdupq_n_u16(kMostLight)));
  }

  // --- from bytes -----------------------------------------------------------

  struct Bytes {
    uint8x16_t r, g, b;
  };
  LOX_OP Bytes load_bytes(const uint8_t *r, const uint8_t *g,
                          const uint8_t *b) {
    return {vld1q_u8(r), vld1q_u8(g), vld1q_u8(b)};
  }
  LOX_OP void put_rgba(uint8_t *p, Bytes v) {
    Planes::store_interleave4(p, v.r, v.g, v.b, Planes::all_255());
  }
  LOX_OP void put_argb(uint8_t *p, Bytes v) {
    Planes::store_interleave4(p, Planes::all_255(), v.r, v.g, v.b);
  }
  // The sums shifted right by 12.
  template <Row3 K>
  LOX_OP int16x8_t weighted_sum(const Rgb &c) {
    return vcombine_s16(
        vshrn_n_s32(
            sum<K>(vget_low_s16(c.r), vget_low_s16(c.g), vget_low_s16(c.b)),
            12),
        vshrn_n_s32(
            sum<K>(vget_high_s16(c.r), vget_high_s16(c.g), vget_high_s16(c.b)),
            12));
  }
  LOX_OP int16x8_t widen(uint8x8_t v) { return as_signed(vmovl_u8(v)); }
  template <Row3 K>
  LOX_OP void put_luma(uint8_t *p, Bytes v) {
    const Rgb low = {widen(vget_low_u8(v.r)), widen(vget_low_u8(v.g)),
                     widen(vget_low_u8(v.b))};
    const Rgb high = {widen(vget_high_u8(v.r)), widen(vget_high_u8(v.g)),
                      widen(vget_high_u8(v.b))};
    vst1q_u8(p, vcombine_u8(vqmovun_s16(weighted_sum<K>(low)),
                            vqmovun_s16(weighted_sum<K>(high))));
  }
  // The even pixels.
  LOX_OP int16x8_t even(uint8x16_t v) {
    return as_signed(vandq_u16(vreinterpretq_u16_u8(v), vdupq_n_u16(0x00FF)));
  }
  LOX_OP Rgb even(Bytes v) { return {even(v.r), even(v.g), even(v.b)}; }
  template <Row3 K>
  LOX_OP uint8x8_t chroma(const Rgb &c) {
    return vqmovun_s16(vaddq_s16(weighted_sum<K>(c), vdupq_n_s16(128)));
  }
  template <Row3 K0, Row3 K1>
  LOX_OP void put_chroma_pairs(uint8_t *p, Bytes v) {
    const Rgb c = even(v);
    const uint8x8x2_t pairs = {{chroma<K0>(c), chroma<K1>(c)}};
    vst2_u8(p, pairs);
  }
  template <Row3 K0, Row3 K1>
  LOX_OP void put_chroma_rows(uint8_t *p0, uint8_t *p1, Bytes v) {
    const Rgb c = even(v);
    vst1_u8(p0, chroma<K0>(c));
    vst1_u8(p1, chroma<K1>(c));
  }
};

}  // namespace lox::LOX_SET
