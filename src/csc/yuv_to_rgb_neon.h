// SPDX-License-Identifier: Apache-2.0
//
// The matrices of limited range on NEON: signed sums that saturate. Included by
// csc/yuv_to_rgb_matrices.h.
#pragma once

// BT.601 in 16-bit elements. 298 is even, so one bit of the sums is not needed,
// and y is taken from 40, so that sums which matter fit and others saturate on
// the right side. With L = 149 (Y - 40), in -5960..32035:
//
//   R = clamp((L              + floor(409 v / 2) + 3640) >> 7)
//   G = clamp((floor(149 Y / 2)  - 25 u  - 52 v  - 1160) >> 6)
//   B = clamp((floor(149 Y / 2) + 129 u          - 1160) >> 6)
//
// 3640 being 149 * 24 + 64 and 1160 being 149 * 8 - 32; six bits are enough
// where the chroma factors are multiples of 4, and B's would not fit with more.
// The chroma parts lie within -22536..29611, -10939..8696 and -17672..15223,
// and floor(149 Y / 2) within 0..18997: G's sum always fits, the others
// saturate.
struct Bt601Vectors {
  static constexpr int kRed = 7;
  static constexpr int kGreen = 6;
  static constexpr int kBlue = 6;

  // kU is the place of U in a pair.
  template <class V, int kU>
  struct Constants {
    static constexpr bool kUFirst = kU == 0;
    static constexpr int kGreen0 = kUFirst ? -25 : -52;
    static constexpr int kGreen1 = kUFirst ? -52 : -25;
    static constexpr int kBlue0 = kUFirst ? 129 : 0;
    static constexpr int kBlue1 = kUFirst ? 0 : 129;

    typename V::Factor k149 = V::make_factor(149);
    typename V::W16 from_40 = V::fill(-149 * 40);
    typename V::template HalfDot<1 - kU, 409> red =
        V::template make_half_dot<1 - kU, 409>(149 * 24 + 64);
    typename V::template Dot<kGreen0, kGreen1> green =
        V::template make_dot<kGreen0, kGreen1>(32 - 149 * 8);
    typename V::template Dot<kBlue0, kBlue1> blue =
        V::template make_dot<kBlue0, kBlue1>(32 - 149 * 8);
  };

  template <class V, class Pairs, class C>
  LOX_INLINE static Channels<V> chroma(Pairs p, const C &k) {
    return {V::half_dot(p, k.red), V::dot(p, k.green), V::dot(p, k.blue)};
  }
  template <class V, class C>
  LOX_INLINE static Channels<V> channels(typename V::U8 luma,
                                         const Channels<V> &chroma,
                                         const C &k) {
    typename V::W16 whole;
    typename V::W16 half;
    V::scale(luma, k.k149, whole, half);
    return {V::add_saturating(V::add(whole, k.from_40), chroma.red),
            V::add(half, chroma.green), V::add_saturating(half, chroma.blue)};
  }
};

// BT.709, with the saturating L = 149 (Y - 36), in -5364..32631, and c = 149 *
// 20 + 64:
//
//   R = clamp((L + floor(459 v / 2) + c) >> 7)
//   G = clamp((L + floor((-55 u - 137 v) / 2) + c) >> 7)
//
// B's chroma would not fit: 512 of its 541 u are whole steps of 2 u, and
// 149 * 112 + 64 = 130 * 128 + 112, so
//
//   B = clamp(((149 (Y - 128) + floor(29 u / 2) + 112) >> 7) + 2 u + 130)
struct Bt709Vectors {
  static constexpr int kRed = 7;
  static constexpr int kGreen = 7;
  static constexpr int kBlue = 0;

  template <class V, int kU>
  struct Constants {
    static_assert(kU == 0);
    static constexpr int kHalf = 149 * 20 + 64;

    typename V::Factor k149 = V::make_factor(149);
    typename V::W16 from_36 = V::fill(-149 * 36);
    typename V::W16 from_128 = V::fill(-149 * 128);
    typename V::template HalfDot<1, 459> red =
        V::template make_half_dot<1, 459>(kHalf);
    typename V::template Dot<-55, -137> green =
        V::template make_dot<-55, -137>(0);
    typename V::W16 green_half = V::fill(kHalf);
    typename V::template HalfDot<0, 29> blue =
        V::template make_half_dot<0, 29>(112);
    typename V::template Dot<2, 0> blue_steps = V::template make_dot<2, 0>(130);
  };

  template <class V>
  struct Chroma {
    typename V::W16 red, green, blue, blue_steps;
  };
  template <class V, class Pairs, class C>
  LOX_INLINE static Chroma<V> chroma(Pairs p, const C &k) {
    return {
        V::half_dot(p, k.red),
        V::add(V::template shift_right<1>(V::dot(p, k.green)), k.green_half),
        V::half_dot(p, k.blue), V::dot(p, k.blue_steps)};
  }
  template <class V, class C>
  LOX_INLINE static Channels<V> channels(typename V::U8 luma,
                                         const Chroma<V> &chroma, const C &k) {
    typename V::W16 whole;
    typename V::W16 unused;
    V::scale(luma, k.k149, whole, unused);
    const auto l = V::add(whole, k.from_36);
    const auto blue = V::add(V::add(whole, k.from_128), chroma.blue);
    return {V::add_saturating(l, chroma.red),
            V::add_saturating(l, chroma.green),
            V::add(V::template shift_right<7>(blue), chroma.blue_steps)};
  }
};
