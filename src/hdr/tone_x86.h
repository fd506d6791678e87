// SPDX-License-Identifier: Apache-2.0
//
// Tone mapping on x86: 16-bit elements in the order of memory, so that table
// look-ups can come between any two stages.
#pragma once

#include "hdr/tone_rule.h"
#include "simd/simd.h"

namespace lox::LOX_SET {

template <class V, class R = typename V::R>
struct ToneOps {
  // Look-ups that registers hold at a time.
  static constexpr int kLookUps = 4;
  using Reg = typename R::Reg;
  using Planes = PlaneOps<V>;
  // Pixels of a group: two vectors of words, one of bytes.
  static constexpr int n = static_cast<int>(sizeof(Reg));
  using Words = Reg;
  struct Chroma {
    Reg u, v;
  };

  LOX_OP Words load(const uint16_t *p) {
    return R::load(reinterpret_cast<const uint8_t *>(p));
  }
  LOX_OP Words fill(int v) { return R::fill16(v); }
  LOX_OP void store(uint16_t *p, Words v) {
    R::template store<false>(reinterpret_cast<uint8_t *>(p), v);
  }

  // The larger of each element, as unsigned, of those that the mask keeps.
  LOX_OP Words max_kept(Words a, const uint16_t *p, Words mask) {
    return R::max_unsigned16(a, R::bit_and(load(p), mask));
  }
  // Every second or every fourth element.
  LOX_OP Words every(int step) {
    return step == 2 ? R::fill32(0xFFFF)
                     : R::broadcast128(_mm_set1_epi64x(0xFFFF));
  }

  LOX_OP Words low_10(const uint8_t *p) {
    return R::bit_and(R::load(p), R::fill16(kMostCode));
  }
  LOX_OP Words high_10(const uint8_t *p) {
    return R::template shift_right16<6>(R::load(p));
  }
  // Samples lie so that twice<> finds them within lanes: those of the
  // group's first half in the low half of each lane. Packing does as much.
  LOX_OP Chroma chroma_of_planes(const uint8_t *u, const uint8_t *v) {
    return {R::unpermute_quads(low_10(u)), R::unpermute_quads(low_10(v))};
  }
  LOX_OP Chroma chroma_of_pairs(const uint8_t *p) {
    const Reg a = R::load(p);
    const Reg b = R::load(p + n);
    return {R::pack_unsigned32(
                R::template shift_right32<22>(R::template shift_left32<16>(a)),
                R::template shift_right32<22>(R::template shift_left32<16>(b))),
            R::pack_unsigned32(R::template shift_right32<22>(a),
                               R::template shift_right32<22>(b))};
  }
  // Each sample of half a group twice.
  template <int kHalf>
  LOX_OP Words twice(Words chroma) {
    return kHalf == 0 ? R::unpack_low16(chroma, chroma)
                      : R::unpack_high16(chroma, chroma);
  }

  LOX_OP Words centre(Words chroma) {
    return R::sub16(
        R::min_signed16(R::max_signed16(chroma, R::fill16(kLeastChroma)),
                        R::fill16(kMostChroma)),
        R::fill16(kNoChroma));
  }
  // A factor of 20 bits is one of 5 for k and one of 15 for 32 k.
  template <Product P>
  LOX_OP Words product(Words k) {
    static_assert(P.limit <= 1023 &&
                  P.factor() >> 5 == int16_t(P.factor() >> 5));
    const Reg factors = R::fill32(static_cast<int>(
        (static_cast<unsigned>(P.factor() >> 5) << 16) | (P.factor() & 31)));
    const Reg half = R::fill32(1 << (P.shift - 1));
    const Reg k32 = R::template shift_left16<5>(k);
    return R::pack_signed32(
        R::template shift_right_signed32<P.shift>(R::add32(
            R::multiply_add16(R::unpack_low16(k, k32), factors), half)),
        R::template shift_right_signed32<P.shift>(R::add32(
            R::multiply_add16(R::unpack_high16(k, k32), factors), half)));
  }
  LOX_OP Words luma(Words y) {
    return product<kLuma>(
        R::min_signed16(R::sub_saturating_unsigned16(y, R::fill16(kBlack)),
                        R::fill16(kWhite - kBlack)));
  }
  LOX_OP Words add(Words a, Words b) { return R::add16(a, b); }
  // So that the sum of luma and this saturates where codes end.
  static constexpr int kCodeBias = 32767 - kMostCode;
  LOX_OP Words bias_chroma(Words chroma) {
    return R::add16(chroma, R::fill16(kCodeBias));
  }
  LOX_OP Words to_code(Words y, Words biased) {
    return R::sub_saturating_unsigned16(R::add_saturating_signed16(y, biased),
                                        R::fill16(kCodeBias));
  }

  struct Rgb {
    Reg rg_low, rg_high, b_low, b_high;
  };
  LOX_OP Rgb combine(Words r, Words g, Words b) {
    return {R::unpack_low16(r, g), R::unpack_high16(r, g),
            R::unpack_low16(b, R::zero()), R::unpack_high16(b, R::zero())};
  }
  LOX_OP Reg pair(int low, int high) {
    return R::fill32(static_cast<int>(static_cast<unsigned>(high) << 16 |
                                      static_cast<uint16_t>(low)));
  }
  // The weighted sums, shifted right by S, as signed words.
  template <Row3 K, int S>
  LOX_OP Words weighted_sum(const Rgb &c) {
    const Reg rg = pair(K.r, K.g);
    const Reg b = pair(K.b, 0);
    return R::pack_signed32(
        R::template shift_right_signed32<S>(R::add32(
            R::multiply_add16(c.rg_low, rg), R::multiply_add16(c.b_low, b))),
        R::template shift_right_signed32<S>(R::add32(
            R::multiply_add16(c.rg_high, rg), R::multiply_add16(c.b_high, b))));
  }
  // Packing limits to 32767.
  template <Row3 K>
  LOX_OP Words mix(const Rgb &c) {
    return R::max_signed16(weighted_sum<K, 8>(c), R::zero());
  }
  LOX_OP Words max(Words a, Words b) { return R::max_signed16(a, b); }
  template <int S>
  LOX_OP Words shift_right(Words v) {
    return R::template shift_right16<S>(v);
  }
  // In the order that gain() takes the entries in: halves of lanes.
  LOX_OP void store_gain_index(uint16_t *p, Words m) {
    store(p, R::permute_quads(R::template shift_right16<7>(m)));
  }
  // Between the entries of each pair, by bits 3 to 6 of m; times 16.
  LOX_OP Words gain(const uint16_t *pairs, Words m) {
    const Reg next = R::bit_and(R::template shift_right16<3>(m), R::fill16(15));
    const Reg first = R::sub16(R::fill16(16), next);
    const Reg sum = R::pack_unsigned32(
        R::multiply_add16(load(pairs), R::unpack_low16(first, next)),
        R::multiply_add16(load(pairs + n / 2), R::unpack_high16(first, next)));
    return R::bit_and(sum, R::fill16(0xFFF0));
  }
  // The same where the entry for 0 is 0 and the others that count are `entry`.
  LOX_OP Words toe_gain(int entry, Words m) {
    const Reg part =
        R::min_signed16(R::template shift_right16<3>(m), R::fill16(16));
    return R::bit_and(R::multiply_low16(part, R::fill16(entry)),
                      R::fill16(0xFFF0));
  }
  LOX_OP bool any_above(Words v, int limit) {
    return R::any_bit(R::sub_saturating_unsigned16(v, R::fill16(limit)));
  }
  // 2 c * 16 gain >> 16 is c * gain >> 11.
  LOX_OP Words brighten(Words c, Words gain) {
    return R::min_unsigned16(R::multiply_high16(R::add16(c, c), gain),
                             R::fill16(kMostLight));
  }

  // --- from bytes -----------------------------------------------------------

  struct Bytes {
    Reg r, g, b;
  };
  LOX_OP Bytes load_bytes(const uint8_t *r, const uint8_t *g,
                          const uint8_t *b) {
    return {R::load(r), R::load(g), R::load(b)};
  }
  LOX_OP void put_rgba(uint8_t *p, Bytes v) {
    Planes::store_interleave4(p, v.r, v.g, v.b, Planes::all_255());
  }
  LOX_OP void put_argb(uint8_t *p, Bytes v) {
    Planes::store_interleave4(p, Planes::all_255(), v.r, v.g, v.b);
  }
  template <Row3 K>
  LOX_OP void put_luma(uint8_t *p, Bytes v) {
    const Reg zero = R::zero();
    const Reg low = weighted_sum<K, 12>(combine(R::unpack_low8(v.r, zero),
                                                R::unpack_low8(v.g, zero),
                                                R::unpack_low8(v.b, zero)));
    const Reg high = weighted_sum<K, 12>(combine(R::unpack_high8(v.r, zero),
                                                 R::unpack_high8(v.g, zero),
                                                 R::unpack_high8(v.b, zero)));
    R::template store<false>(p, R::pack_unsigned16(low, high));
  }
  // Of the even pixels; in each 128-bit lane the first sums, then the second.
  template <Row3 K0, Row3 K1>
  LOX_OP Reg chroma(Bytes v) {
    const Reg even = R::fill16(0x00FF);
    const Rgb c = combine(R::bit_and(v.r, even), R::bit_and(v.g, even),
                          R::bit_and(v.b, even));
    const Reg middle = R::fill16(128);
    return R::pack_unsigned16(R::add16(weighted_sum<K0, 12>(c), middle),
                              R::add16(weighted_sum<K1, 12>(c), middle));
  }
  template <Row3 K0, Row3 K1>
  LOX_OP void put_chroma_pairs(uint8_t *p, Bytes v) {
    R::template store<false>(
        p, R::shuffle8(chroma<K0, K1>(v), R::broadcast128(_mm_setr_epi8(
                                              0, 8, 1, 9, 2, 10, 3, 11, 4, 12,
                                              5, 13, 6, 14, 7, 15))));
  }
  template <Row3 K0, Row3 K1>
  LOX_OP void put_chroma_rows(uint8_t *p0, uint8_t *p1, Bytes v) {
    R::store_halves(p0, p1, R::permute_quads(chroma<K0, K1>(v)));
  }
};

}  // namespace lox::LOX_SET
