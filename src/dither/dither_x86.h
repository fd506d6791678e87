// SPDX-License-Identifier: Apache-2.0
//
// Samples that lose bits on the x86 backends.
#pragma once

#include "dither/dither_rows.h"
#include "simd/simd.h"

namespace lox::LOX_SET {

template <class V>
struct DitherOps : V {
  using typename V::Bytes;
  using typename V::R;
  using typename V::Reg;
  using V::n;
  template <PixelFormat F>
  using Pixels = typename V::template Pixels<F>;

  // --- pixels ---------------------------------------------------------------

  // What is added to the registers of pixels in turn.
  template <PixelFormat>
  struct Thresholds {
    Reg even, odd;
  };
  template <PixelFormat F>
  LOX_OP Thresholds<F> thresholds(DitherPlace at) {
    const Reg five = R::load_broadcast128(at.five);
    const Reg six = R::load_broadcast128(at.six);
    // Where alpha is, or nothing, zero.
    const Reg a = alpha_first(F) ? R::unpack_low8(R::zero(), five)
                                 : R::unpack_low8(five, six);
    const Reg b = alpha_first(F) ? R::unpack_low8(six, five)
                                 : R::unpack_low8(five, R::zero());
    // Of four pixels, and of the next four, in every lane.
    const Reg low = R::unpack_low16(a, b);
    const Reg high = R::unpack_high16(a, b);
    if constexpr (F.bytes == 3) {
      return {low, high};
    } else {
      return {R::interleave_low_lanes(low, high),
              R::interleave_high_lanes(low, high)};
    }
  }
  template <PixelFormat F>
  LOX_OP Pixels<F> add(const Pixels<F> &p, Thresholds<F> t) {
    return {{R::add_saturating_unsigned8(p.v[0], t.even),
             R::add_saturating_unsigned8(p.v[1], t.odd),
             R::add_saturating_unsigned8(p.v[2], t.even),
             R::add_saturating_unsigned8(p.v[3], t.odd)}};
  }
  LOX_OP void store_grey_565(uint8_t *to, const uint8_t *from,
                             typename V::Dither d) {
    const Reg v = R::unpermute_quads(R::load(from));
    const Reg five = R::add_saturating_unsigned8(v, d.five);
    V::template store16<false>(
        to,
        V::pack565_bytes(five, R::add_saturating_unsigned8(v, d.six), five));
  }

  // --- samples --------------------------------------------------------------

  struct WordsToBytes {
    Reg even, odd, most;
    __m128i shift;
  };
  // From the sample at `phase` of the period on.
  LOX_OP WordsToBytes words_to_bytes(const FewerBits &how, ptrdiff_t phase) {
    const auto *const added =
        reinterpret_cast<const uint8_t *>(how.added + phase);
    const Reg low = R::load_broadcast128(added);
    const Reg high = R::load_broadcast128(added + 16);
    return {R::interleave_low_lanes(low, high),
            R::interleave_high_lanes(low, high), R::fill16(how.most),
            _mm_cvtsi32_si128(how.shift)};
  }
  LOX_OP Reg fewer(Reg v, Reg added, const WordsToBytes &k) {
    return R::shift_right16_by(
        R::min_unsigned16(R::add_saturating_unsigned16(v, added), k.most),
        k.shift);
  }
  LOX_OP Bytes take(const uint8_t *p, const WordsToBytes &k) {
    return {R::permute_quads(R::pack_unsigned16(
        fewer(R::load(p), k.even, k), fewer(R::load(p + n), k.odd, k)))};
  }
  struct BytesToBytes {
    Reg added, mask;
    __m128i shift;
  };
  LOX_OP BytesToBytes bytes_to_bytes(const FewerBits &how, ptrdiff_t phase) {
    const auto *const added =
        reinterpret_cast<const uint8_t *>(how.added + phase);
    return {R::pack_unsigned16(R::load_broadcast128(added),
                               R::load_broadcast128(added + 16)),
            R::fill16(0x0101 * (how.most >> how.shift)),
            _mm_cvtsi32_si128(how.shift)};
  }
  LOX_OP Bytes take(const uint8_t *p, const BytesToBytes &k) {
    return {R::bit_and(
        R::shift_right16_by(R::add_saturating_unsigned8(R::load(p), k.added),
                            k.shift),
        k.mask)};
  }

  // --- words of ten bits ----------------------------------------------------

  template <bool kUp>
  LOX_OP Reg shifted(Reg v) {
    return kUp ? R::template shift_left16<6>(v)
               : R::template shift_right16<6>(v);
  }
  template <bool kUp>
  LOX_OP void shift_words(const uint8_t *from, uint8_t *to) {
    R::template store<false>(to, shifted<kUp>(R::load(from)));
  }
  LOX_OP void pairs_down(const uint8_t *from, uint8_t *first, uint8_t *second) {
    const Reg a = R::load(from);
    const Reg b = R::load(from + n);
    const Reg low = R::fill32(0xFFFF);
    R::template store<false>(first,
                             R::permute_quads(shifted<false>(R::pack_unsigned32(
                                 R::bit_and(a, low), R::bit_and(b, low)))));
    R::template store<false>(second, R::permute_quads(R::pack_unsigned32(
                                         R::template shift_right32<22>(a),
                                         R::template shift_right32<22>(b))));
  }
  LOX_OP void pairs_up(const uint8_t *first, const uint8_t *second,
                       uint8_t *to) {
    const Reg a = R::unpermute_quads(shifted<true>(R::load(first)));
    const Reg b = R::unpermute_quads(shifted<true>(R::load(second)));
    R::template store<false>(to, R::unpack_low16(a, b));
    R::template store<false>(to + n, R::unpack_high16(a, b));
  }
};

}  // namespace lox::LOX_SET
