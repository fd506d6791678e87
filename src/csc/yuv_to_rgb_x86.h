// SPDX-License-Identifier: Apache-2.0
//
// The matrices of limited range on x86, in unsigned elements of 16 bits. Luma
// is moved up until chroma only takes away: the difference saturates at 0,
// which is the lower clamp, and no chroma needs a constant of its own. Where
// chroma adds, its complement takes away: with V' = 255 - V and an odd k
//
//   floor(k V / 2) = floor(k 255 / 2) - floor(k V' / 2)
//
// Included by csc/yuv_to_rgb_matrices.h.
#pragma once

template <class V>
struct Differences {
  typename V::U16 red, green, blue;
};

// 255 less the first byte of each pair, in its element, or less the second, on
// top of it.
template <class V, class Reg = typename V::Reg>
LOX_INLINE Reg complement_of_first(Reg pairs) {
  return V::R::bit_and_not(pairs, V::R::fill16(0x00FF));
}
template <class V, class Reg = typename V::Reg>
LOX_INLINE Reg complement_of_second(Reg pairs) {
  return V::R::bit_and_not(pairs, V::R::fill16(0xFF00));
}
// k times that of byte I of each pair, and half of it rounded down.
template <class V, int I, int k, class Reg = typename V::Reg>
LOX_INLINE Reg times_complement(Reg pairs) {
  using R = typename V::R;
  if constexpr (I == 0) {
    Reg factor = R::fill16(k);
    // GCC would shift, copy and add.
    __asm__("" : "+v"(factor));
    return R::multiply_low16(complement_of_first<V>(pairs), factor);
  } else {
    return R::multiply_high16(complement_of_second<V>(pairs),
                              R::fill16(k << 8));
  }
}
template <class V, int I, int k, class Reg = typename V::Reg>
LOX_INLINE Reg half_of_complement(Reg pairs) {
  using R = typename V::R;
  const Reg top =
      I == 0 ? R::template shift_left16<8>(complement_of_first<V>(pairs))
             : complement_of_second<V>(pairs);
  return R::multiply_high16(top, R::fill16(k << 7));
}
template <class V>
LOX_INLINE typename V::U16 take_away(typename V::U16 from,
                                     typename V::W16 what) {
  using R = typename V::R;
  return {R::sub_saturating_unsigned16(from.a, what.a),
          R::sub_saturating_unsigned16(from.b, what.b)};
}
template <class V, int kLuma, int kOffset>
LOX_INLINE typename V::U16 scale_luma(typename V::U8 luma) {
  using R = typename V::R;
  const auto k = R::fill16(kLuma);
  const auto offset = R::fill16(kOffset);
  return {R::add16(R::multiply_low16(luma.a, k), offset),
          R::add16(R::multiply_low16(luma.b, k), offset)};
}

// BT.601. 298 is even, so one bit of the sums is not needed; where the chroma
// factors are multiples of 4, another one is not, and is dropped to fit. With
// L = 149 Y + 23651 and H = floor(149 Y / 2) + 15223:
//
//   R = clamp((L - floor(409 V' / 2)) >> 7)
//   G = clamp((H - (25 U + 52 V + 6527)) >> 6)
//   B = clamp((H - 129 U') >> 6)
//
// 23651 being floor(409 255 / 2) - 409 64 - 149 16 + 64, 15223 being 129 255 -
// 129 128 - 149 8 + 32, and 6527 what that is more than (25 + 52) 128 - 149 8 +
// 32. L is odd where Y is even: H = (L + 6794 + 1) >> 1.
struct Bt601Vectors {
  static constexpr int kRed = 7;
  static constexpr int kGreen = 6;
  static constexpr int kBlue = 6;

  template <class V, int kU>
  struct Constants {
    static constexpr int kPlace = kU;
  };
  template <class V, class Pairs, class C>
  LOX_INLINE static Channels<V> chroma(Pairs pairs, const C &) {
    using R = typename V::R;
    using Reg = typename V::Reg;
    constexpr int kU = C::kPlace;
    return {V::for_pairs(pairs,
                         [](Reg p) LOX_INLINE_LAMBDA {
                           return half_of_complement<V, 1 - kU, 409>(p);
                         }),
            V::for_pairs(pairs,
                         [](Reg p) LOX_INLINE_LAMBDA {
                           constexpr int kFactors =
                               kU == 0 ? 25 | 52 << 8 : 52 | 25 << 8;
                           return R::add16(
                               R::multiply_add8(p, R::fill16(kFactors)),
                               R::fill16(6527));
                         }),
            V::for_pairs(pairs, [](Reg p) LOX_INLINE_LAMBDA {
              return times_complement<V, kU, 129>(p);
            })};
  }
  template <class V, class C>
  LOX_INLINE static Differences<V> channels(typename V::U8 luma,
                                            const Channels<V> &chroma,
                                            const C &) {
    using R = typename V::R;
    const auto whole = scale_luma<V, 149, 23651>(luma);
    const auto offset = R::fill16(6794);
    const typename V::U16 half = {R::average16(whole.a, offset),
                                  R::average16(whole.b, offset)};
    return {take_away<V>(whole, chroma.red), take_away<V>(half, chroma.green),
            take_away<V>(half, chroma.blue)};
  }
};

// BT.709, with L = 149 Y + 26826, which is floor(459 255 / 2) - 459 64 -
// 149 16 + 64 more:
//
//   R = clamp((L - floor(459 V' / 2)) >> 7)
//   G = clamp((L - (ceil((55 u + 137 v) / 2) + 29146)) >> 7)
//
// 29146 being 26826 + 149 16 - 64. B's chroma would not fit: 512 of its 541 u
// are whole steps of 2 u, so
//
//   B = clamp(((L - floor(29 U' / 2) - 41) >> 7) - (2 U' - 41))
//
// the first 41 being what makes the rest of the constants whole steps.
struct Bt709Vectors {
  static constexpr int kRed = 7;
  static constexpr int kGreen = 7;
  static constexpr int kBlue = 0;

  template <class V, int kU>
  struct Constants {
    static_assert(kU == 0);
  };
  template <class V>
  struct Chroma {
    typename V::W16 red, green, blue, blue_steps;
  };
  template <class V, class Pairs, class C>
  LOX_INLINE static Chroma<V> chroma(Pairs pairs, const C &) {
    using R = typename V::R;
    using Reg = typename V::Reg;
    return {V::for_pairs(pairs,
                         [](Reg p) LOX_INLINE_LAMBDA {
                           return half_of_complement<V, 1, 459>(p);
                         }),
            V::for_pairs(pairs,
                         [](Reg p) LOX_INLINE_LAMBDA {
                           // The product's rounding halves upwards.
                           return R::add16(
                               R::multiply_round16(
                                   R::multiply_add8(R::fill16(55 | 137 << 8),
                                                    V::less_128(p)),
                                   R::fill16(1 << 14)),
                               R::fill16(29146));
                         }),
            V::for_pairs(pairs,
                         [](Reg p) LOX_INLINE_LAMBDA {
                           return R::average16(times_complement<V, 0, 29>(p),
                                               R::fill16(2 * 41 - 1));
                         }),
            V::for_pairs(pairs, [](Reg p) LOX_INLINE_LAMBDA {
              const Reg u = complement_of_first<V>(p);
              return R::sub16(R::add16(u, u), R::fill16(41));
            })};
  }
  template <class V>
  struct Result {
    typename V::U16 red, green;
    typename V::W16 blue;
  };
  template <class V, class C>
  LOX_INLINE static Result<V> channels(typename V::U8 luma,
                                       const Chroma<V> &chroma, const C &) {
    using R = typename V::R;
    using Reg = typename V::Reg;
    const auto whole = scale_luma<V, 149, 26826>(luma);
    const auto blue = [](Reg l, Reg rest, Reg steps) LOX_INLINE_LAMBDA {
      return R::sub16(R::template shift_right16<7>(R::sub16(l, rest)), steps);
    };
    return {take_away<V>(whole, chroma.red),
            take_away<V>(whole, chroma.green),
            {blue(whole.a, chroma.blue.a, chroma.blue_steps.a),
             blue(whole.b, chroma.blue.b, chroma.blue_steps.b)}};
  }
};
