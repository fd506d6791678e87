// SPDX-License-Identifier: Apache-2.0
//
// What the x86 backends' operations from YUV to RGB share: everything that
// works inside the 128-bit lanes of a register. A backend gives the operations
// on one register (R) and adds the loads, which decide where pixels lie, and
// store3.
#pragma once

#include <immintrin.h>
#include <stddef.h>
#include <stdint.h>

#include "simd/dither.h"
#include "simd/pixel_format.h"

namespace lox::LOX_SET {

constexpr bool kLoadsMovePointers = false;
constexpr int kAhead = 768;
constexpr int kPage = 4096;

LOX_OP void prefetch(const uint8_t *p, ptrdiff_t away, int bytes = 1) {
  const uintptr_t at =
      reinterpret_cast<uintptr_t>(p) + static_cast<uintptr_t>(away);
  for (int i = 0; i < bytes; i += 64) {
    _mm_prefetch(reinterpret_cast<const char *>(at + i), _MM_HINT_T0);
  }
}

template <class R>
struct X86Yuv {
  using Reg = typename R::Reg;
  // A step is two registers of 16-bit elements.
  static constexpr int n = static_cast<int>(sizeof(Reg));
  static constexpr int kStreamAlignment = n;

  struct W16 {
    Reg a, b;
  };
  // The same, unsigned.
  struct U16 {
    Reg a, b;
  };
  // Each byte in its pixel's element.
  struct U8 {
    Reg a, b;
  };
  struct Words {
    Reg a, b;
  };
  struct Bytes {
    Reg v;
  };
  // The pair of each pixel in its element.
  struct WPairs {
    Reg a, b;
  };
  using Pairs = WPairs;
  using PackedPairs = WPairs;
  // A pair of two pixels in an element.
  struct SharedPairs {
    Reg v;
  };
  struct Factor {
    Reg k;
  };
  template <int K0, int K1>
  struct Dot {
    Reg k, bias;
  };

  LOX_OP Bytes load_bytes(const uint8_t *p) { return {R::load(p)}; }

  // The parts of the loads.
  LOX_OP Reg less_128(Reg v) { return R::exclusive_or(v, R::fill16(0x8080)); }
  LOX_OP U8 widen(Reg v) {
    return {R::unpack_low8(v, R::zero()), R::unpack_high8(v, R::zero())};
  }
  LOX_OP U8 high_bytes(W16 v) {
    return {R::template shift_right16<8>(v.a),
            R::template shift_right16<8>(v.b)};
  }
  LOX_OP WPairs interleave(Reg first, Reg second) {
    return {R::unpack_low8(first, second), R::unpack_high8(first, second)};
  }
  LOX_OP WPairs double_pairs(Reg v) {
    return {R::unpack_low16(v, v), R::unpack_high16(v, v)};
  }
  template <int kLuma>
  LOX_OP void split_422(Reg a, Reg b, U8 &luma, WPairs &pairs) {
    constexpr char c0 = 1 - kLuma;
    constexpr char c1 = 3 - kLuma;
    const Reg pick = R::broadcast128(_mm_setr_epi8(
        c0, c1, c0, c1, c0 + 4, c1 + 4, c0 + 4, c1 + 4, c0 + 8, c1 + 8, c0 + 8,
        c1 + 8, c0 + 12, c1 + 12, c0 + 12, c1 + 12));
    pairs = {R::shuffle8(a, pick), R::shuffle8(b, pick)};
    if constexpr (kLuma == 0) {
      luma = {R::bit_and(a, R::fill16(0x00FF)),
              R::bit_and(b, R::fill16(0x00FF))};
    } else {
      luma = high_bytes({a, b});
    }
  }

  // What kernel makes of registers of pairs, for each pixel.
  template <class Kernel>
  LOX_OP W16 for_pairs(WPairs p, Kernel kernel) {
    return {kernel(p.a), kernel(p.b)};
  }
  template <class Kernel>
  LOX_OP W16 for_pairs(SharedPairs p, Kernel kernel) {
    const Reg v = kernel(p.v);
    return {R::unpack_low16(v, v), R::unpack_high16(v, v)};
  }

  template <int K0, int K1>
  LOX_OP Dot<K0, K1> make_dot(int bias) {
    static_assert((K0 >= 0 && K1 >= 0) || (K0 <= 0 && K1 <= 0));
    constexpr int k0 = K0 < 0 ? -K0 : K0;
    constexpr int k1 = K1 < 0 ? -K1 : K1;
    return {R::fill16(k1 << 8 | k0), R::fill16(bias)};
  }
  template <int K0, int K1, class P>
  LOX_OP W16 dot(P pairs, const Dot<K0, K1> &d) {
    return for_pairs(pairs, [&](Reg p) LOX_INLINE_LAMBDA {
      const Reg sum = R::multiply_add8(d.k, less_128(p));
      return K0 < 0 || K1 < 0 ? R::sub16(d.bias, sum) : R::add16(d.bias, sum);
    });
  }

  LOX_OP Factor make_factor(int k) { return {R::fill16(k)}; }
  LOX_OP void scale(U8 v, Factor k, W16 &whole, W16 &half) {
    whole = {R::multiply_low16(v.a, k.k), R::multiply_low16(v.b, k.k)};
    half = {R::template shift_right16<1>(whole.a),
            R::template shift_right16<1>(whole.b)};
  }
  LOX_OP W16 add(W16 x, W16 y) {
    return {R::add16(x.a, y.a), R::add16(x.b, y.b)};
  }
  template <int S>
  LOX_OP W16 shift_right(W16 v) {
    return {R::template shift_right_signed16<S>(v.a),
            R::template shift_right_signed16<S>(v.b)};
  }

  template <int S>
  LOX_OP Bytes narrow(W16 v) {
    if constexpr (S == 0) return {R::pack_unsigned16(v.a, v.b)};
    const W16 shifted = shift_right<S>(v);
    return {R::pack_unsigned16(shifted.a, shifted.b)};
  }
  template <int S>
  LOX_OP U16 shift_right(U16 v) {
    static_assert(S > 0);
    return {R::template shift_right16<S>(v.a),
            R::template shift_right16<S>(v.b)};
  }
  template <int S>
  LOX_OP Bytes narrow(U16 v) {
    const U16 shifted = shift_right<S>(v);
    return {R::pack_unsigned16(shifted.a, shifted.b)};
  }
  LOX_OP Words interleave_bytes(Reg low, Reg high) {
    return {R::unpack_low8(low, high), R::unpack_high8(low, high)};
  }
  template <int S0, int S1, class L, class H>
  LOX_OP Words pair_narrow(L low, H high) {
    return interleave_bytes(narrow<S0>(low).v, narrow<S1>(high).v);
  }
  template <int S>
  LOX_OP Words pair_narrow_255(W16 low) {
    return interleave_bytes(narrow<S>(low).v, R::fill16(0xFFFF));
  }
  // Below 255 in the high byte the sum saturates at 255 in the low one: that is
  // the upper clamp, and the words are where interleaving would put them.
  template <int S>
  LOX_OP Words pair_narrow_255(U16 low) {
    const Reg top = R::fill16(0xFF00);
    const U16 shifted = shift_right<S>(low);
    return {R::add_saturating_unsigned16(shifted.a, top),
            R::add_saturating_unsigned16(shifted.b, top)};
  }
  template <int S, class H>
  LOX_OP Words pair_255_narrow(H high) {
    return interleave_bytes(R::fill16(0xFFFF), narrow<S>(high).v);
  }
  // In bytes, which are half as many registers as words.
  LOX_OP W16 pack565_bytes(Reg h, Reg m, Reg l) {
    const Reg top5 = R::fill16(0xF8F8);
    const Reg top3 = R::fill16(0xE0E0);
    const Reg second =
        R::bit_or(R::bit_and(top5, h),
                  R::bit_and_not(top5, R::template shift_right16<5>(m)));
    const Reg first =
        R::bit_or(R::bit_and(top3, R::template shift_left16<3>(m)),
                  R::bit_and_not(top3, R::template shift_right16<3>(l)));
    return {R::unpack_low8(first, second), R::unpack_high8(first, second)};
  }
  template <int S0, int S1, int S2, class H, class M, class L>
  LOX_OP W16 pack565(H high, M mid, L low) {
    return pack565_bytes(narrow<S0>(high).v, narrow<S1>(mid).v,
                         narrow<S2>(low).v);
  }
  // Eight bytes of a register are eight pixels beside each other.
  struct Dither {
    Reg five, six;
  };
  LOX_OP Dither make_dither(DitherPlace at) {
    return {R::load_broadcast128(at.five), R::load_broadcast128(at.six)};
  }
  template <int S0, int S1, int S2, class H, class M, class L>
  LOX_OP W16 pack565(H high, M mid, L low, Dither d) {
    return pack565_bytes(
        R::add_saturating_unsigned8(narrow<S0>(high).v, d.five),
        R::add_saturating_unsigned8(narrow<S1>(mid).v, d.six),
        R::add_saturating_unsigned8(narrow<S2>(low).v, d.five));
  }

  LOX_OP void store_bytes(uint8_t *p, Bytes v) {
    R::template store<false>(p, v.v);
  }
  template <bool kStream>
  LOX_OP void store16(uint8_t *p, W16 v) {
    R::template store<kStream>(p, v.a);
    R::template store<kStream>(p + n, v.b);
  }
  template <bool kStream>
  LOX_OP void store4(uint8_t *p, Words ab, Words cd) {
    R::template store<kStream>(p, R::unpack_low16(ab.a, cd.a));
    R::template store<kStream>(p + n, R::unpack_high16(ab.a, cd.a));
    R::template store<kStream>(p + 2 * n, R::unpack_low16(ab.b, cd.b));
    R::template store<kStream>(p + 3 * n, R::unpack_high16(ab.b, cd.b));
  }
  LOX_OP void end_stream() { _mm_sfence(); }
  // The body of store3, within lanes: each source byte has a place of its
  // own, modulo 16, among the three output registers. One shuffle puts it
  // there, two selections a register gather the channels.
  struct Three {
    Reg v0, v1, v2;
  };
  LOX_OP Three interleave3(Reg a, Reg b, Reg c) {
    const Reg x = R::shuffle8(
        a, R::broadcast128(_mm_setr_epi8(0, 11, 6, 1, 12, 7, 2, 13, 8, 3, 14, 9,
                                         4, 15, 10, 5)));
    const Reg y = R::shuffle8(
        b, R::broadcast128(_mm_setr_epi8(5, 0, 11, 6, 1, 12, 7, 2, 13, 8, 3, 14,
                                         9, 4, 15, 10)));
    const Reg z = R::shuffle8(
        c, R::broadcast128(_mm_setr_epi8(10, 5, 0, 11, 6, 1, 12, 7, 2, 13, 8, 3,
                                         14, 9, 4, 15)));
    // Bytes whose place is 1, and 2, modulo 3.
    const Reg one = R::broadcast128(
        _mm_setr_epi8(0, -1, 0, 0, -1, 0, 0, -1, 0, 0, -1, 0, 0, -1, 0, 0));
    const Reg two = R::broadcast128(
        _mm_setr_epi8(0, 0, -1, 0, 0, -1, 0, 0, -1, 0, 0, -1, 0, 0, -1, 0));
    return {R::select8(R::select8(x, y, one), z, two),
            R::select8(R::select8(y, z, one), x, two),
            R::select8(R::select8(z, x, one), y, two)};
  }
};

}  // namespace lox::LOX_SET
