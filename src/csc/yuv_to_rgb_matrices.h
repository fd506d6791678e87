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
#endif

// BT.601 with luma 16..235. With y = Y - 16, u = U - 128, v = V - 128:
//
//   R = clamp((298 y         + 409 v + 128) >> 8)
//   G = clamp((298 y - 100 u - 208 v + 128) >> 8)
//   B = clamp((298 y + 516 u         + 128) >> 8)
//
// The vector form does it in 16-bit elements. 298 is even, so one bit of the
// sums is not needed, and y is taken from 40, so that sums which matter fit and
// others saturate on the right side. With L = 149 (Y - 40), in -5960..32035:
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
struct Bt601 {
  static Rgb pixel(Yuv p) {
    const int y = 298 * (p.y - 16);
    const int u = p.u - 128;
    const int v = p.v - 128;
    return {(y + 409 * v + 128) >> 8, (y - 100 * u - 208 * v + 128) >> 8,
            (y + 516 * u + 128) >> 8};
  }
#if LOX_VECTORS
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
#endif
};

// BT.709 with luma 16..235:
//
//   R = clamp((298 y         + 459 v + 128) >> 8)
//   G = clamp((298 y -  55 u - 137 v + 128) >> 8)
//   B = clamp((298 y + 541 u         + 128) >> 8)
//
// In 16-bit elements, with the saturating L = 149 (Y - 36), in -5364..32631,
// and c = 149 * 20 + 64:
//
//   R = clamp((L + floor(459 v / 2) + c) >> 7)
//   G = clamp((L + floor((-55 u - 137 v) / 2) + c) >> 7)
//
// B's chroma would not fit: 512 of its 541 u are whole steps of 2 u, and
// 149 * 112 + 64 = 130 * 128 + 112, so
//
//   B = clamp(((149 (Y - 128) + floor(29 u / 2) + 112) >> 7) + 2 u + 130)
struct Bt709 {
  static Rgb pixel(Yuv p) {
    const int y = 298 * (p.y - 16);
    const int u = p.u - 128;
    const int v = p.v - 128;
    return {(y + 459 * v + 128) >> 8, (y - 55 * u - 137 * v + 128) >> 8,
            (y + 541 * u + 128) >> 8};
  }
#if LOX_VECTORS
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
#endif
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
