// SPDX-License-Identifier: Apache-2.0
//
// The matrices from YUV to RGB, each as the rule (`pixel`, before the clamp to
// a byte) and as the vector form of the same. Included into the unnamed
// namespace of the kernel unit, for its vector types.
//
// A vector form makes what a pair of chroma samples gives once (`chroma`), for
// all luma rows that share it, and then each row's channels, to be shifted
// right by kRed, kGreen and kBlue bits and clamped.

struct Yuv {
  int y, u, v;
};

#if LOX_VECTORS
template <class V>
struct Channels {
  typename V::W16 red, green, blue;
};
#if defined(LOX_SET_neon)
#include "csc/yuv_to_rgb_neon.h"
#else
#include "csc/yuv_to_rgb_x86.h"
#endif
#else
struct Bt601Vectors {};
struct Bt709Vectors {};
#endif

// BT.601 with luma 16..235. With y = Y - 16, u = U - 128, v = V - 128:
//
//   R = clamp((298 y         + 409 v + 128) >> 8)
//   G = clamp((298 y - 100 u - 208 v + 128) >> 8)
//   B = clamp((298 y + 516 u         + 128) >> 8)
struct Bt601 : Bt601Vectors {
  static Rgb pixel(Yuv p) {
    const int y = 298 * (p.y - 16);
    const int u = p.u - 128;
    const int v = p.v - 128;
    return {(y + 409 * v + 128) >> 8, (y - 100 * u - 208 * v + 128) >> 8,
            (y + 516 * u + 128) >> 8};
  }
};

// BT.709 with luma 16..235:
//
//   R = clamp((298 y         + 459 v + 128) >> 8)
//   G = clamp((298 y -  55 u - 137 v + 128) >> 8)
//   B = clamp((298 y + 541 u         + 128) >> 8)
struct Bt709 : Bt709Vectors {
  static Rgb pixel(Yuv p) {
    const int y = 298 * (p.y - 16);
    const int u = p.u - 128;
    const int v = p.v - 128;
    return {(y + 459 * v + 128) >> 8, (y - 55 * u - 137 * v + 128) >> 8,
            (y + 541 * u + 128) >> 8};
  }
};

// A full-range matrix adds to Y, unscaled, what its chroma gives.
struct FullRange {
#if LOX_VECTORS
  static constexpr int kRed = 0;
  static constexpr int kGreen = 0;
  static constexpr int kBlue = 0;

  template <class V, class C>
  LOX_INLINE static Channels<V> channels(typename V::U8 luma,
                                         const Channels<V> &chroma,
                                         const C &k) {
    typename V::W16 y;
    typename V::W16 unused;
    V::scale(luma, k.one, y, unused);
    return {V::add(y, chroma.red), V::add(y, chroma.green),
            V::add(y, chroma.blue)};
  }
#endif
};

// BT.601, full range; green's terms are shifted one by one.
struct Bt601Full : FullRange {
  static Rgb pixel(Yuv p) {
    const int u = p.u - 128;
    const int v = p.v - 128;
    return {p.y + ((179 * v) >> 7), p.y + ((-44 * u) >> 7) + ((-91 * v) >> 7),
            p.y + ((227 * u) >> 7)};
  }

  // Quirk: the columns of an incomplete last group of eight are computed in
  // double precision, sums from the left.
  static constexpr int kGroup = 8;
  static int floor_of(double v) {
    const int whole = static_cast<int>(v);
    return v < whole ? whole - 1 : whole;
  }
  static Rgb tail_pixel(Yuv p) {
    const double y = p.y;
    const double u = p.u - 128;
    const double v = p.v - 128;
    return {floor_of(y + 1.402 * v), floor_of(y + -0.344 * u + -0.714 * v),
            floor_of(y + 1.772 * u)};
  }
#if LOX_VECTORS
  template <class V, int kU>
  struct Constants {
    static constexpr bool kUFirst = kU == 0;
    static constexpr int u(int k) { return kUFirst ? k : 0; }
    static constexpr int v(int k) { return kUFirst ? 0 : k; }
    template <int kOfU, int kOfV>
    using Dot = typename V::template Dot<u(kOfU) + v(kOfV), v(kOfU) + u(kOfV)>;
    template <int kOfU, int kOfV>
    static Dot<kOfU, kOfV> make() {
      return V::template make_dot<u(kOfU) + v(kOfV), v(kOfU) + u(kOfV)>(0);
    }

    typename V::Factor one = V::make_factor(1);
    Dot<0, 179> red = make<0, 179>();
    Dot<-44, 0> green_u = make<-44, 0>();
    Dot<0, -91> green_v = make<0, -91>();
    Dot<227, 0> blue = make<227, 0>();
  };

  template <class V, class Pairs, class C>
  LOX_INLINE static Channels<V> chroma(Pairs p, const C &k) {
    return {V::template shift_right<7>(V::dot(p, k.red)),
            V::add(V::template shift_right<7>(V::dot(p, k.green_u)),
                   V::template shift_right<7>(V::dot(p, k.green_v))),
            V::template shift_right<7>(V::dot(p, k.blue))};
  }
#endif
};

// BT.709, full range:
//
//   R = clamp((256 Y         + 394 v + 128) >> 8)
//   G = clamp((256 Y -  47 u - 118 v + 128) >> 8)
//   B = clamp((256 Y + 465 u         + 128) >> 8)
//
// of which in 16-bit elements 394 v is halved and 256 of the 465 u are whole.
struct Bt709Full : FullRange {
  static Rgb pixel(Yuv p) {
    const int y = 256 * p.y;
    const int u = p.u - 128;
    const int v = p.v - 128;
    return {(y + 394 * v + 128) >> 8, (y - 47 * u - 118 * v + 128) >> 8,
            (y + 465 * u + 128) >> 8};
  }
#if LOX_VECTORS
  template <class V, int kU>
  struct Constants {
    static_assert(kU == 0);
    typename V::Factor one = V::make_factor(1);
    typename V::template Dot<0, 197> red = V::template make_dot<0, 197>(64);
    typename V::template Dot<-47, -118> green =
        V::template make_dot<-47, -118>(128);
    typename V::template Dot<209, 0> blue = V::template make_dot<209, 0>(128);
    typename V::template Dot<1, 0> blue_steps = V::template make_dot<1, 0>(0);
  };

  template <class V, class Pairs, class C>
  LOX_INLINE static Channels<V> chroma(Pairs p, const C &k) {
    return {V::template shift_right<7>(V::dot(p, k.red)),
            V::template shift_right<8>(V::dot(p, k.green)),
            V::add(V::template shift_right<8>(V::dot(p, k.blue)),
                   V::dot(p, k.blue_steps))};
  }
#endif
};
