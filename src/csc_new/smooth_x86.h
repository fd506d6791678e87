// SPDX-License-Identifier: Apache-2.0
//
// Interpolated chroma on x86.
#pragma once

#include "csc_new/smooth_rows.h"
#include "simd/simd.h"

namespace lox::LOX_SET {

template <class V, class R = typename V::R>
struct SmoothOps {
  using Reg = typename R::Reg;
  using W16 = typename V::W16;
  static constexpr int n = V::n;

  // --- chroma: elements in the order of memory ------------------------------

  LOX_OP Reg load(const int16_t *p) {
    return R::load(reinterpret_cast<const uint8_t *>(p));
  }
  LOX_OP void store(int16_t *p, Reg v) {
    R::template store<false>(reinterpret_cast<uint8_t *>(p), v);
  }
  LOX_OP void store(int16_t *p, W16 v) {
    store(p, v.a);
    store(p + n / 2, v.b);
  }
  LOX_OP typename V::U8 load_bytes(const uint8_t *p) {
    return V::template load<Order::kWords>(p);
  }
  // n samples, each on top of its element.
  LOX_OP W16 load_words(const uint8_t *p, int factor) {
    const Reg k = R::fill16(factor);
    return {R::multiply_low16(R::load(p), k),
            R::multiply_low16(R::load(p + n), k)};
  }
  LOX_OP Reg centred(Reg v) {
    return R::template shift_right_signed16<4>(
        R::exclusive_or(R::bit_and(v, R::fill16(0xFFC0)), R::fill16(0x8000)));
  }
  LOX_OP W16 centred(W16 v) { return {centred(v.a), centred(v.b)}; }
  LOX_OP Reg centred_byte(Reg v) {
    return R::sub16(R::template shift_left16<4>(v), R::fill16(128 * 16));
  }
  LOX_OP W16 centred(typename V::U8 v) {
    return {centred_byte(v.a), centred_byte(v.b)};
  }
  // The even elements of both, and the odd ones.
  LOX_OP Reg even(W16 v) {
    return R::permute_quads(R::pack_signed32(
        R::template shift_right_signed32<16>(R::template shift_left32<16>(v.a)),
        R::template shift_right_signed32<16>(
            R::template shift_left32<16>(v.b))));
  }
  LOX_OP Reg odd(W16 v) {
    return R::permute_quads(
        R::pack_signed32(R::template shift_right_signed32<16>(v.a),
                         R::template shift_right_signed32<16>(v.b)));
  }
  LOX_OP Reg add(Reg a, Reg b) { return R::add16(a, b); }
  template <int S>
  LOX_OP Reg shift_left(Reg v) {
    return R::template shift_left16<S>(v);
  }
  LOX_OP void store_interleave(int16_t *p, Reg even, Reg odd) {
    const Reg low = R::unpack_low16(even, odd);
    const Reg high = R::unpack_high16(even, odd);
    store(p, R::interleave_low_lanes(low, high));
    store(p + n / 2, R::interleave_high_lanes(low, high));
  }

  // --- pixels: in the order that their store wants --------------------------

  struct Factors {
    Reg luma, red_v, green_u, green_v, blue_u, luma_green, offset, offset_green;
  };
  LOX_OP Factors factors(const SmoothMatrix &m) {
    return {R::fill16(m.luma),    R::fill16(m.red_v),
            R::fill16(m.green_u), R::fill16(m.green_v),
            R::fill16(m.blue_u),  R::fill16(m.luma_green),
            R::fill16(m.offset),  R::fill16(m.offset_green)};
  }
  template <Order O>
  LOX_OP W16 luma_of_bytes(const uint8_t *p) {
    const auto v = V::template load<O>(p);
    return {R::template shift_left16<7>(v.a), R::template shift_left16<7>(v.b)};
  }
  LOX_OP Reg luma(Reg v, int factor) {
    return R::bit_and(
        R::template shift_right16<1>(R::multiply_low16(v, R::fill16(factor))),
        R::fill16(0x7FE0));
  }
  template <Order O>
  LOX_OP W16 luma_of_words(const uint8_t *p, int factor) {
    const W16 v = V::template load_elements<O>(p);
    return {luma(v.a, factor), luma(v.b, factor)};
  }
  template <Order O>
  LOX_OP W16 load_chroma(const int16_t *p) {
    return V::template load_elements<O>(reinterpret_cast<const uint8_t *>(p));
  }

  struct Channels {
    W16 red, green, blue;
  };
  struct Three {
    Reg red, green, blue;
  };
  template <bool kGreenApart>
  LOX_OP Three channels(Reg luma, Reg u, Reg v, const Factors &k) {
    const Reg y = R::add16(R::multiply_round16(luma, k.luma), k.offset);
    const Reg y_green =
        kGreenApart
            ? R::add16(R::multiply_round16(luma, k.luma_green), k.offset_green)
            : y;
    return {R::add_saturating_signed16(y, R::multiply_round16(v, k.red_v)),
            R::add16(y_green, R::add16(R::multiply_round16(u, k.green_u),
                                       R::multiply_round16(v, k.green_v))),
            R::add_saturating_signed16(y, R::multiply_round16(u, k.blue_u))};
  }
  template <bool kGreenApart>
  LOX_OP Channels channels(W16 luma, W16 u, W16 v, const Factors &k) {
    const Three a = channels<kGreenApart>(luma.a, u.a, v.a, k);
    const Three b = channels<kGreenApart>(luma.b, u.b, v.b, k);
    return {{a.red, b.red}, {a.green, b.green}, {a.blue, b.blue}};
  }

  LOX_OP Reg ten_bits(Reg v) {
    return R::min_signed16(
        R::max_signed16(R::template shift_right_signed16<kSmoothBits1010102>(v),
                        R::zero()),
        R::fill16(1023));
  }
  template <bool kStream>
  LOX_OP void store_1010102(uint8_t *p, Reg red, Reg green, Reg blue) {
    const Reg g = ten_bits(green);
    const Reg low = R::bit_or(ten_bits(red), R::template shift_left16<10>(g));
    const Reg high =
        R::bit_or(R::bit_or(R::template shift_right16<6>(g), R::fill16(0xC000)),
                  R::template shift_left16<4>(ten_bits(blue)));
    R::template store<kStream>(p, R::unpack_low16(low, high));
    R::template store<kStream>(p + n, R::unpack_high16(low, high));
  }
  template <bool kStream>
  LOX_OP void store_1010102(uint8_t *p, const Channels &c) {
    store_1010102<kStream>(p, c.red.a, c.green.a, c.blue.a);
    store_1010102<kStream>(p + 2 * n, c.red.b, c.green.b, c.blue.b);
  }

  // The magnitude as a float, less the difference of exponents, rounded to ten
  // bits behind its first one. 0 comes out negative, which packing makes 0.
  LOX_OP Reg magnitude(Reg v) {
    return R::template shift_right_signed32<13>(
        R::add32(R::float_bits(v),
                 R::fill32((1 << 12) - ((127 - 15 + kSmoothBitsF16) << 23))));
  }
  LOX_OP Reg half_float(Reg v) {
    const Reg a = R::abs16(v);
    return R::bit_or(
        R::pack_unsigned32(magnitude(R::unpack_low16(a, R::zero())),
                           magnitude(R::unpack_high16(a, R::zero()))),
        R::bit_and(v, R::fill16(0x8000)));
  }
  template <bool kStream>
  LOX_OP void store_f16(uint8_t *p, Reg red_green, Reg blue_alpha) {
    const Reg low = R::unpack_low32(red_green, blue_alpha);
    const Reg high = R::unpack_high32(red_green, blue_alpha);
    R::template store<kStream>(p, R::interleave_low_lanes(low, high));
    R::template store<kStream>(p + n, R::interleave_high_lanes(low, high));
  }
  // Of each lane the first four elements follow those of the lane before, and
  // then the second four.
  template <bool kStream>
  LOX_OP void store_f16(uint8_t *p, Reg red, Reg green, Reg blue) {
    const Reg one = R::fill16(0x3C00);
    const Reg r = half_float(red);
    const Reg g = half_float(green);
    const Reg b = half_float(blue);
    store_f16<kStream>(p, R::unpack_low16(r, g), R::unpack_low16(b, one));
    store_f16<kStream>(p + 2 * n, R::unpack_high16(r, g),
                       R::unpack_high16(b, one));
  }
  template <bool kStream>
  LOX_OP void store_f16(uint8_t *p, const Channels &c) {
    store_f16<kStream>(p, c.red.a, c.green.a, c.blue.a);
    store_f16<kStream>(p + 4 * n, c.red.b, c.green.b, c.blue.b);
  }
};

}  // namespace lox::LOX_SET
